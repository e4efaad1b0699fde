#include "connections/Connections.h"

#include "foundation/Text.h"

#include <QString>
#include <QUrl>

#include <algorithm>
#include <vector>

namespace orvan::Connections {

namespace {

constexpr std::string_view labelCharacters = "abcdefghijklmnopqrstuvwxyz0123456789-";
constexpr std::string_view tokenCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=_-";

bool startsWith(std::string_view text, std::string_view prefix) { return text.substr(0, prefix.size()) == prefix; }

bool allIn(std::string_view text, std::string_view allowed) {
    return std::all_of(text.begin(), text.end(), [&](char c) { return allowed.find(c) != std::string_view::npos; });
}

bool goodLabel(std::string_view label) {
    if (label.empty() || label.size() > 63) return false;
    if (label.front() == '-' || label.back() == '-') return false;
    return allIn(label, labelCharacters);
}

std::optional<std::string> hostOf(const std::string& address) {
    QUrl url(QString::fromStdString(address), QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty()) return std::nullopt;
    return url.host().toStdString();
}

} // namespace

Json remove() { return Json{{"hostname", ""}, {"token", ""}}; }

Json quick(bool on) { return Json{{"quick", on}}; }

Json save(std::string_view typedHostname, std::string_view typedToken) {
    Json body = Json::object();
    body["hostname"] = hostname(typedHostname).value_or(Text::trimmed(typedHostname));
    if (auto clean = token(typedToken)) body["token"] = *clean;
    return body;
}

std::optional<std::string> hostname(std::string_view text) {
    std::string clean = QString::fromStdString(Text::trimmed(text)).toLower().toStdString();
    if (startsWith(clean, "https://")) clean.erase(0, 8);
    if (startsWith(clean, "http://")) clean.erase(0, 7);
    if (!clean.empty() && clean.back() == '/') clean.pop_back();
    if (clean.empty() || Text::characterCount(clean) > 253) return std::nullopt;
    std::vector<std::string_view> labels;
    std::string_view rest = clean;
    for (;;) {
        auto dot = rest.find('.');
        labels.push_back(rest.substr(0, dot));
        if (dot == std::string_view::npos) break;
        rest.remove_prefix(dot + 1);
    }
    if (labels.size() < 2) return std::nullopt;
    if (!std::all_of(labels.begin(), labels.end(), goodLabel)) return std::nullopt;
    return clean;
}

std::optional<std::string> token(std::string_view text) {
    std::string clean = Text::trimmed(text);
    if (clean.empty() || clean.size() > 4096 || !allIn(clean, tokenCharacters)) return std::nullopt;
    return clean;
}

std::optional<std::string> problem(std::string_view typedHostname, std::string_view typedToken, bool kept) {
    if (!hostname(typedHostname)) return std::string("Type this Mac's hostname, such as orvan.example.com.");
    if (Text::trimmed(typedToken).empty()) {
        if (kept) return std::nullopt;
        return std::string("Paste the Cloudflare tunnel token.");
    }
    if (!token(typedToken)) return std::string("That does not look like a tunnel token.");
    return std::nullopt;
}

std::string targetLine(const TunnelState& state) {
    std::string target = "http://127.0.0.1:8788";
    int forbidden = 8787;
    QUrl origin(QString::fromStdString(state.origin), QUrl::StrictMode);
    if (origin.isValid() && origin.scheme() == "http" && origin.host() == "127.0.0.1" && origin.port() >= 2) {
        target = "http://127.0.0.1:" + std::to_string(origin.port());
        forbidden = origin.port() - 1;
    }
    return "In Cloudflare, point the tunnel at " + target + " only: never at port " + std::to_string(forbidden) +
           ", and never as a TCP service.";
}

std::string domainLine(const TunnelState& state) {
    bool named = !state.hostname.empty();
    if (state.status == "up") return named ? "Up. Your devices can reach this Mac at " + state.hostname + "." : "Up.";
    if (state.status == "starting")
        return named ? "Starting the tunnel to " + state.hostname + "\u2026" : std::string("Starting\u2026");
    if (state.status == "refused") return "Cloudflare refused this tunnel token.";
    return named ? "Off." : "Not set up.";
}

std::string reason(std::string_view text) { return Text::prefixCharacters(Text::trimmed(text), 300); }

std::string quickLine(const TunnelState& state) {
    if (!state.quick) return "Off.";
    if (state.quickStatus == "up")
        if (auto host = hostOf(state.quickURL)) return "Up at " + *host;
    if (state.quickStatus == "refused") return "The quick tunnel did not start.";
    return "Starting\u2026";
}

std::optional<std::string> quickNote(const TunnelState& state) {
    if (!state.quick || state.quickStatus != "up") return std::nullopt;
    if (Text::prefixCharacters(Text::trimmed(state.quickReason), 200) != unchecked) return std::nullopt;
    return std::string(unchecked);
}

std::string tailscaleLine(const TunnelState& state) {
    if (state.tailscale.empty() || state.tailscale.front().empty()) return "Not found on this Mac.";
    std::string address = state.tailscale.front();
    if (address.find("://") != std::string::npos) {
        // QUrl gives an IPv6 host without its brackets and keeps the port apart.
        if (auto host = hostOf(address)) return "On a tailnet at " + *host;
    } else if (address.front() == '[') {
        auto close = address.find(']');
        address = address.substr(1, close == std::string::npos ? std::string::npos : close - 1);
    } else if (std::count(address.begin(), address.end(), ':') == 1) {
        // One colon is a port; more than one is a bare IPv6 address, which has none to drop.
        address = address.substr(0, address.find(':'));
    }
    return "On a tailnet at " + address;
}

} // namespace orvan::Connections
