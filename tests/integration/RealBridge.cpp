#include "RealBridge.h"

#include "platform/linux/QtClock.h"

#include <QCoroTask>
#include <QEventLoop>
#include <QTimer>
#include <arpa/inet.h>
#include <cstring>
#include <fstream>
#include <httplib.h>
#include <netinet/in.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvan::test {

QCoreApplication& qtApp() {
    static int argc = 1;
    static char name[] = "integration_tests";
    static char* argv[] = {name, nullptr};
    static QCoreApplication* app = new QCoreApplication(argc, argv);
    return *app;
}

int freePort() {
    int s = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    ::bind(s, reinterpret_cast<sockaddr*>(&a), sizeof a);
    socklen_t len = sizeof a;
    ::getsockname(s, reinterpret_cast<sockaddr*>(&a), &len);
    ::close(s);
    return ntohs(a.sin_port);
}

bool waitUntil(const std::function<bool()>& done, std::chrono::milliseconds deadline) {
    qtApp();
    auto end = std::chrono::steady_clock::now() + deadline;
    while (!done()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        QEventLoop loop;
        QTimer::singleShot(25, &loop, &QEventLoop::quit);
        loop.exec();
    }
    return true;
}

void runFor(std::chrono::milliseconds span) {
    auto end = std::chrono::steady_clock::now() + span;
    waitUntil([&] { return std::chrono::steady_clock::now() >= end; }, span + std::chrono::seconds(1));
}

bool healthzAnswers(int port) {
    httplib::Client client("127.0.0.1", port);
    client.set_connection_timeout(1);
    client.set_read_timeout(1);
    auto res = client.Get("/healthz");
    return res && res->status == 200;
}

TempHome::TempHome() { std::filesystem::create_directories(data()); }

Environment TempHome::environment() const {
    Environment env = Carryover::processEnvironment();
    env["HOME"] = root.string();
    env["XDG_DATA_HOME"] = (root / "share").string();
    env["XDG_CONFIG_HOME"] = (root / "config").string();
    env["ORVAN_DIR"] = data().string();
    env.erase("TULM_MOBILE_DIR");
    env.erase("ORVAN_COMPANION_BIN");
    env.erase("TULM_COMPANION_BIN");
    return env;
}

std::filesystem::path simulatorPath() { return ORVAN_SIM_PATH; }

StartedSim::StartedSim(int port, const Environment& environment, std::vector<std::string> extra) {
    std::vector<std::string> args{simulatorPath().string(), "--addr", ":" + std::to_string(port)};
    args.insert(args.end(), extra.begin(), extra.end());
    std::vector<char*> argv;
    for (auto& a : args) argv.push_back(a.data());
    argv.push_back(nullptr);
    Environment env = environment;
    env["ORVAN_QUIET"] = "1";
    std::vector<std::string> envStrings;
    for (const auto& [k, v] : env) envStrings.push_back(k + "=" + v);
    std::vector<char*> envp;
    for (auto& e : envStrings) envp.push_back(e.data());
    envp.push_back(nullptr);
    pid_t child = 0;
    if (::posix_spawn(&child, argv[0], nullptr, nullptr, argv.data(), envp.data()) == 0) pid = child;
    waitUntil([&] { return healthzAnswers(port); }, std::chrono::seconds(10));
}

StartedSim::~StartedSim() {
    if (pid > 0) {
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
    }
}

bool StartedSim::running() const {
    if (pid <= 0) return false;
    int status = 0;
    return ::waitpid(pid, &status, WNOHANG) == 0;
}

std::vector<std::string> procList(int pid, const char* file) {
    std::ifstream in("/proc/" + std::to_string(pid) + "/" + file, std::ios::binary);
    std::string all((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::vector<std::string> out;
    size_t start = 0;
    while (start < all.size()) {
        size_t end = all.find('\0', start);
        if (end == std::string::npos) end = all.size();
        out.push_back(all.substr(start, end - start));
        start = end + 1;
    }
    return out;
}

} // namespace orvan::test
