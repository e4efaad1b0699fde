#include "SimProcess.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

extern char** environ;

namespace orvan::simtest {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

namespace {

std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

fs::path makeTemporaryFolder() {
    std::string pattern = (fs::temp_directory_path() / "orvan-sim-test.XXXXXX").string();
    if (!::mkdtemp(pattern.data())) std::abort();
    return pattern;
}

// Waits for a bounded time, checking often, so a quick start costs milliseconds and a broken one
// can't hang the suite.
template <class Condition> bool eventually(Condition condition, std::chrono::milliseconds bound = 10s) {
    auto deadline = std::chrono::steady_clock::now() + bound;
    while (std::chrono::steady_clock::now() < deadline) {
        if (condition()) return true;
        std::this_thread::sleep_for(5ms);
    }
    return condition();
}

pid_t spawn(const std::vector<std::string>& arguments, const Environment& environment, const fs::path& folder) {
    std::vector<std::string> envText;
    for (const auto& [name, value] : environment) envText.push_back(name + "=" + value);
    std::vector<char*> argv, envp;
    for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    for (auto& entry : envText) envp.push_back(entry.data());
    envp.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    std::string out = (folder / "stdout").string(), err = (folder / "stderr").string();
    posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t pid = -1;
    if (posix_spawn(&pid, arguments[0].c_str(), &actions, nullptr, argv.data(), envp.data()) != 0) pid = -1;
    posix_spawn_file_actions_destroy(&actions);
    return pid;
}

// The parent's environment without anything that would point the child at a real data folder.
Environment cleanEnvironment(const fs::path& folder) {
    Environment environment;
    for (char** entry = environ; *entry; ++entry) {
        std::string pair = *entry;
        auto equals = pair.find('=');
        if (equals != std::string::npos) environment[pair.substr(0, equals)] = pair.substr(equals + 1);
    }
    for (const char* name : {"ORVAN_DIR", "TULM_MOBILE_DIR", "XDG_DATA_HOME", "ORVAN_QUIET"}) environment.erase(name);
    environment["HOME"] = (folder / "home").string();
    environment["ORVAN_DIR"] = (folder / "data").string();
    return environment;
}

} // namespace

SimProcess::SimProcess(std::vector<std::string> arguments, Environment overrides, std::optional<fs::path> folder) {
    ownsFolder_ = !folder;
    folder_ = folder ? *folder : makeTemporaryFolder();
    fs::create_directories(folder_ / "home");
    Environment environment = cleanEnvironment(folder_);
    for (const auto& [name, value] : overrides) environment[name] = value;
    fs::path portFile = folder_ / "port";
    fs::remove(portFile);

    std::vector<std::string> all{ORVAN_SIM_PATH, "--addr", ":0", "--port-file", portFile.string()};
    all.insert(all.end(), arguments.begin(), arguments.end());
    pid_ = spawn(all, environment, folder_);
    if (pid_ < 0) return;

    bool bound = eventually([&] { return !readFile(portFile).empty() || waitExit(0ms).has_value(); });
    if (!bound || exitStatus_) return;
    int port = std::atoi(readFile(portFile).c_str());
    // Bound is not yet serving: wait for any HTTP answer at all (it may be a 404 without /healthz).
    httplib::Client probe("127.0.0.1", port);
    probe.set_connection_timeout(1s);
    if (eventually([&] { return static_cast<bool>(probe.Get("/healthz")); })) port_ = port;
}

SimProcess::~SimProcess() {
    if (pid_ > 0 && !exitStatus_) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    std::error_code ignored;
    if (ownsFolder_) fs::remove_all(folder_, ignored);
}

std::string SimProcess::key() const {
    std::string text = readFile(dataFolder() / "local.key");
    while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
    return text;
}

std::string SimProcess::errors() const { return readFile(folder_ / "stderr"); }
std::string SimProcess::output() const { return readFile(folder_ / "stdout"); }

httplib::Client SimProcess::client(std::chrono::milliseconds readTimeout) const {
    httplib::Client client("127.0.0.1", port_);
    client.set_connection_timeout(2s);
    client.set_read_timeout(readTimeout);
    return client;
}

httplib::Result SimProcess::get(const std::string& path) const {
    return client().Get(path.c_str(), httplib::Headers{{"X-Tulm-Local", key()}});
}

httplib::Result SimProcess::post(const std::string& path, const nlohmann::json& body) const {
    return client().Post(path.c_str(), httplib::Headers{{"X-Tulm-Local", key()}}, body.dump(), "application/json");
}

nlohmann::json SimProcess::status() const {
    auto result = get("/companion/status");
    if (!result || result->status != 200) return nullptr;
    return nlohmann::json::parse(result->body, nullptr, false);
}

void SimProcess::signal(int number) const {
    if (pid_ > 0 && !exitStatus_) ::kill(pid_, number);
}

std::optional<int> SimProcess::waitExit(std::chrono::milliseconds bound) {
    if (exitStatus_ || pid_ < 0) return exitStatus_;
    eventually(
        [&] {
            int status = 0;
            if (::waitpid(pid_, &status, WNOHANG) != pid_) return false;
            exitStatus_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            return true;
        },
        bound);
    return exitStatus_;
}

Finished runToEnd(std::vector<std::string> arguments) {
    fs::path folder = makeTemporaryFolder();
    arguments.insert(arguments.begin(), ORVAN_SIM_PATH);
    pid_t pid = spawn(arguments, cleanEnvironment(folder), folder);
    int status = 0;
    ::waitpid(pid, &status, 0);
    Finished finished{WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(folder / "stdout"),
                      readFile(folder / "stderr")};
    std::error_code ignored;
    fs::remove_all(folder, ignored);
    return finished;
}

} // namespace orvan::simtest
