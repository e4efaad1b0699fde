// orvan-bridge-sim: stands in for the bridge so that the companion, its tests and a newcomer's first
// run have something real to talk to. See --help.

#include "KeyFile.h"
#include "Options.h"
#include "Seeds.h"
#include "Server.h"

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <thread>
#include <unistd.h>

extern char** environ;

using namespace orvan::sim;

namespace {

std::atomic<int> requestedExit{-1};

Environment processEnvironment() {
    Environment environment;
    for (char** entry = environ; entry && *entry; ++entry) {
        std::string pair = *entry;
        auto equals = pair.find('=');
        if (equals != std::string::npos) environment.emplace(pair.substr(0, equals), pair.substr(equals + 1));
    }
    return environment;
}

bool writePortFile(const std::string& path, int port) {
    std::string temp = path + ".partial";
    {
        std::ofstream out(temp, std::ios::trunc);
        out << port << "\n";
        if (!out.flush()) return false;
    }
    return std::rename(temp.c_str(), path.c_str()) == 0;
}

// Waits on the main thread for the reason to stop: a signal, the end of --exit-after, an exit asked
// for through the control paths (SIGUSR1 from a request thread), or the server ending by itself.
int awaitEnd(const sigset_t& signals, std::optional<double> exitAfter) {
    auto deadline = std::chrono::steady_clock::now();
    if (exitAfter)
        deadline += std::chrono::duration_cast<std::chrono::steady_clock::duration>(
            std::chrono::duration<double>(*exitAfter));
    for (;;) {
        int signal = -1;
        if (exitAfter) {
            auto left = deadline - std::chrono::steady_clock::now();
            if (left <= std::chrono::steady_clock::duration::zero()) return 0;
            auto nanos = std::chrono::duration_cast<std::chrono::nanoseconds>(left).count();
            timespec wait{static_cast<time_t>(nanos / 1000000000), static_cast<long>(nanos % 1000000000)};
            signal = ::sigtimedwait(&signals, nullptr, &wait);
            if (signal < 0) continue; // timed out (checked above on the next turn) or interrupted
        } else if (::sigwait(&signals, &signal) != 0) {
            continue;
        }
        if (signal != SIGUSR1) return 0;
        int code = requestedExit.load();
        return code >= 0 ? code : 1;
    }
}

} // namespace

int main(int argc, char** argv) {
    auto parsed = Options::parse(std::vector<std::string>(argv + 1, argv + argc));
    if (!parsed.error.empty()) {
        std::fprintf(stderr, "orvan-bridge-sim: %s\n", parsed.error.c_str());
        return 2;
    }
    const Options& options = parsed.options;
    if (options.help) {
        std::fputs(Options::usage().c_str(), stdout);
        return 0;
    }
    const char* quietValue = std::getenv("ORVAN_QUIET");
    bool quiet = quietValue && std::string(quietValue) == "1";

    std::string problem;
    auto folder = KeyFile::folder(processEnvironment());
    auto key = KeyFile::ensure(folder, problem);
    // A reason not to start is printed even when quiet: nothing else would tell.
    if (!key) {
        std::fprintf(stderr, "orvan-bridge-sim: %s\n", problem.c_str());
        return 1;
    }

    // Signals are taken by the main thread alone; every thread started later inherits the mask.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    // A client that hangs up mid-answer must not end the process.
    std::signal(SIGPIPE, SIG_IGN);

    Server server(Server::Setup{*key,
                                Sim{Seeds::make(options.seed, std::chrono::system_clock::now()),
                                    options.misbehaviour, std::nullopt},
                                !quiet, [](int code) {
                                    requestedExit = code;
                                    ::kill(::getpid(), SIGUSR1);
                                }});
    int port = server.bind(options.port);
    if (port < 0) {
        std::fprintf(stderr, "orvan-bridge-sim: could not listen on 127.0.0.1:%d.\n", options.port);
        return 1;
    }
    if (options.portFile && !writePortFile(*options.portFile, port)) {
        std::fprintf(stderr, "orvan-bridge-sim: could not write %s.\n", options.portFile->c_str());
        return 1;
    }
    if (!quiet)
        std::fprintf(stderr, "orvan-bridge-sim: serving http://127.0.0.1:%d, key in %s\n", port,
                     (folder / "local.key").c_str());

    std::thread serving([&server] {
        server.run();
        ::kill(::getpid(), SIGUSR1);
    });
    int code = awaitEnd(signals, options.exitAfter);
    server.stop();
    serving.join();
    if (!quiet) std::fprintf(stderr, "orvan-bridge-sim: stopped.\n");
    return code;
}
