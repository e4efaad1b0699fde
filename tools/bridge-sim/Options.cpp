#include "Options.h"

#include <cerrno>
#include <cmath>
#include <cstdlib>

namespace orvan::sim {

namespace {

std::optional<long> wholeNumber(const std::string& text) {
    if (text.empty()) return std::nullopt;
    char* end = nullptr;
    errno = 0;
    long value = std::strtol(text.c_str(), &end, 10);
    if (errno != 0 || *end != '\0') return std::nullopt;
    return value;
}

std::optional<double> seconds(const std::string& text) {
    if (text.empty()) return std::nullopt;
    char* end = nullptr;
    double value = std::strtod(text.c_str(), &end);
    if (*end != '\0' || !std::isfinite(value) || value < 0) return std::nullopt;
    return value;
}

// The real bridge takes ":PORT"; a loopback host in front is accepted, any other host is not.
std::optional<int> loopbackPort(const std::string& address) {
    auto colon = address.rfind(':');
    if (colon == std::string::npos) return std::nullopt;
    std::string host = address.substr(0, colon);
    if (!host.empty() && host != "127.0.0.1" && host != "localhost") return std::nullopt;
    auto number = wholeNumber(address.substr(colon + 1));
    if (!number || *number < 0 || *number > 65535) return std::nullopt;
    return static_cast<int>(*number);
}

bool isPath(const std::string& path) { return path == Misbehaviour::everyPath || path.rfind('/', 0) == 0; }

} // namespace

Options::Parsed Options::parse(const std::vector<std::string>& arguments) {
    Parsed parsed;
    Options& options = parsed.options;
    for (size_t i = 0; i < arguments.size() && parsed.error.empty(); ++i) {
        std::string flag = arguments[i];
        std::optional<std::string> inlineValue;
        if (auto equals = flag.find('='); flag.rfind("--", 0) == 0 && equals != std::string::npos) {
            inlineValue = flag.substr(equals + 1);
            flag = flag.substr(0, equals);
        }
        auto value = [&]() -> std::optional<std::string> {
            if (inlineValue) return inlineValue;
            if (i + 1 < arguments.size()) return arguments[++i];
            parsed.error = flag + " needs a value.";
            return std::nullopt;
        };
        auto pathValue = [&]() -> std::optional<std::string> {
            auto path = value();
            if (path && !isPath(*path)) {
                parsed.error = flag + " needs a path beginning with \"/\", or \"*\".";
                return std::nullopt;
            }
            return path;
        };
        // PATH=REST, split at the first "=", since a path never holds one.
        auto pathAndRest = [&](std::string& rest) -> std::optional<std::string> {
            auto text = value();
            if (!text) return std::nullopt;
            auto equals = text->find('=');
            if (equals == std::string::npos || !isPath(text->substr(0, equals))) {
                parsed.error = flag + " takes PATH=VALUE, got \"" + *text + "\".";
                return std::nullopt;
            }
            rest = text->substr(equals + 1);
            return text->substr(0, equals);
        };

        if (flag == "--help" || flag == "-h") {
            options.help = true;
        } else if (flag == "--addr") {
            auto text = value();
            if (!text) break;
            auto number = loopbackPort(*text);
            if (!number) parsed.error = "--addr takes :PORT or 127.0.0.1:PORT (loopback only), got \"" + *text + "\".";
            else options.port = *number;
        } else if (flag == "--seed") {
            auto text = value();
            if (!text) break;
            auto seed = Seeds::named(*text);
            if (!seed) parsed.error = "--seed is \"demo\" or \"empty\", got \"" + *text + "\".";
            else options.seed = *seed;
        } else if (flag == "--port-file") {
            options.portFile = value();
        } else if (flag == "--exit-after") {
            auto text = value();
            if (!text) break;
            options.exitAfter = seconds(*text);
            if (!options.exitAfter) parsed.error = "--exit-after takes a number of seconds, got \"" + *text + "\".";
        } else if (flag == "--fail") {
            std::string rest;
            auto path = pathAndRest(rest);
            if (!path) break;
            auto colon = rest.find(':');
            auto status = wholeNumber(rest.substr(0, colon));
            if (!status || *status < 100 || *status > 599) {
                parsed.error = "--fail takes PATH=STATUS[:BODY] with a status from 100 to 599.";
                break;
            }
            options.misbehaviour.fail(*path, static_cast<int>(*status),
                                      colon == std::string::npos ? Misbehaviour::defaultFailBody()
                                                                 : rest.substr(colon + 1));
        } else if (flag == "--slow") {
            std::string rest;
            auto path = pathAndRest(rest);
            if (!path) break;
            auto delay = seconds(rest);
            if (!delay) parsed.error = "--slow takes PATH=SECONDS.";
            else options.misbehaviour.slow(*path, *delay);
        } else if (flag == "--garbage") {
            if (auto path = pathValue()) options.misbehaviour.garbage(*path);
        } else if (flag == "--wrong-type") {
            if (auto path = pathValue()) options.misbehaviour.wrongType(*path);
        } else if (flag == "--drop") {
            if (auto path = pathValue()) options.misbehaviour.drop(*path);
        } else if (flag == "--no-key") {
            options.misbehaviour.refuseEveryKey = true;
        } else if (flag == "--no-healthz") {
            options.misbehaviour.noHealthz = true;
        } else {
            parsed.error = "Unknown argument \"" + arguments[i] + "\". Try --help.";
        }
    }
    return parsed;
}

std::string Options::usage() {
    return R"(orvan-bridge-sim: a stand-in for the bridge, serving its local API on loopback.

Usage: orvan-bridge-sim [--addr :PORT] [--seed demo|empty] [misbehaviour...]

  --addr :PORT          Listen on 127.0.0.1:PORT (default :8787; 127.0.0.1:PORT works too).
                        With :0 the system picks a free port; see --port-file.
  --port-file PATH      Once bound, write the port number to PATH (atomically).
  --seed demo|empty     The state to start from (default demo). demo: a named Mac with remote
                        control on, an owner iPhone and a guest iPad whose access ends in a few
                        days, Tulm up with its sidebar on the left, screen sharing available.
                        empty: no owner and no phones, remote control off.

Misbehaviour (PATH is a request path such as /companion/status, or * for every path but /_sim/...):
  --fail PATH=STATUS[:BODY]  Answer STATUS with BODY (default: a JSON message; "PATH=500:" sends
                             an empty body).
  --slow PATH=SECONDS        Wait that long before answering.
  --garbage PATH             Answer 200 with a body that is not JSON.
  --wrong-type PATH          Answer 200 with JSON of the wrong shape ({"on":"yes"} for the status,
                             a "devices" that is no list for /local/devices, an array elsewhere).
  --drop PATH                Close the connection without any answer.
  --exit-after SECONDS       Exit (status 0) after that long.
  --no-key                   Refuse every key with 401 (the control paths still take the real one).
  --no-healthz               /healthz answers 404, as on a process that is not the bridge.
Several kinds of misbehaviour on one path combine: the wait comes first, then a drop, a failure,
garbage or the wrong type, in that order. Misbehaviour applies after the key check.

Key: every path but /healthz needs the header X-Tulm-Local equal to local.key in the data folder:
ORVAN_DIR, else TULM_MOBILE_DIR, else $XDG_DATA_HOME/Orvan (~/.local/share/Orvan). The folder and
a random key (mode 0600) are made when absent; an existing key is kept.

Control (key required, JSON bodies, 204 unless said):
  POST /_sim/fail {"path","status","body"?}   /_sim/slow {"path","seconds"}
  POST /_sim/garbage, /_sim/wrong-type, /_sim/drop {"path"}
  POST /_sim/keys {"refuse": bool}   /_sim/healthz {"on": bool}
  POST /_sim/clear {"path"?}       all misbehaviour, or that of one path
  POST /_sim/seed {"seed": "demo"|"empty"}   back to a seed's state
  POST /_sim/phone {"id"?,"name"?,"role"?,"ownerSince"?,"guest"?}   answers 200 {"id"}
  POST /_sim/watcher {"name","seconds"?,"control"?}   watches (and controls) the shared screen,
                                                      leaving after seconds when given
  POST /_sim/set {"tulm"?,"sidebar"?,"line"?,"available"?,"phoneFirst"?,"leanStatus"?,"control"?,
                  "helperScreen"?,"helperInput"?}
                   helperScreen and helperInput: what the screen helper says it was granted;
                   leanStatus leaves guests' scopes out of the status (they stay in /local/devices);
                   a null tulm, sidebar or line removes it (line: back to the bridge's own)
  POST /_sim/exit {"code"?}        exit with that status (default 0) just after answering

Environment: ORVAN_QUIET=1 prints nothing but a reason not to start; otherwise one line per
request on standard error.
SIGTERM and SIGINT stop the server and exit 0.
)";
}

} // namespace orvan::sim
