#pragma once
// The simulator as a real child process on a port of its own choosing, in a temporary home, with
// what it prints kept in files for the test to read.

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <httplib.h>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <vector>

extern char** environ;

namespace orvan::simtest {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using nlohmann::json;
using Environment = std::map<std::string, std::string>;

inline std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The demo seed's two phones, by the ids the simulator gives them.
inline const std::string owner = "9F2C4E1A-7B3D-4C21-A8E5-3D6F0B7C9A12";
inline const std::string guest = "C81D5A73-2E9F-4B6A-9C0D-5E7F1A2B3C48";

// An answer's body as JSON: discarded when it isn't JSON, null when no answer came.
inline json body(const httplib::Result& answer) { return answer ? json::parse(answer->body, nullptr, false) : json(); }

// Checks often for a bounded time: a quick start costs milliseconds and a broken one can't hang the suite.
template <class Condition> bool eventually(Condition condition, std::chrono::milliseconds bound = 10s) {
    for (auto end = std::chrono::steady_clock::now() + bound; std::chrono::steady_clock::now() < end;)
        if (condition()) return true;
        else std::this_thread::sleep_for(5ms);
    return condition();
}

class SimProcess {
public:
    // `overrides` go over the parent's environment stripped of every variable that names a data
    // folder, with HOME and ORVAN_DIR inside the temporary folder; "" sets a variable to the empty
    // text. With `serve` false the arguments are the whole command line and nothing waits for a port.
    explicit SimProcess(std::vector<std::string> arguments = {}, Environment overrides = {},
                        std::optional<fs::path> at = std::nullopt, bool serve = true)
        : folder_(at ? *at : temporaryFolder()), ownsFolder_(!at) {
        fs::create_directories(folder_ / "home");
        const fs::path portFile = folder_ / "port";
        fs::remove(portFile);
        std::vector<std::string> all{ORVAN_SIM_PATH};
        if (serve) all.insert(all.end(), {"--addr", ":0", "--port-file", portFile.string()});
        all.insert(all.end(), arguments.begin(), arguments.end());
        if (!spawn(all, overrides) || !serve) return;
        if (!eventually([&] { return !readFile(portFile).empty() || waitExit(0ms); }) || exit_) return;
        int port = std::atoi(readFile(portFile).c_str());
        // Bound is not yet serving: wait for any HTTP answer at all (it may be a 404 without /healthz).
        httplib::Client probe("127.0.0.1", port);
        if (eventually([&] { return static_cast<bool>(probe.Get("/healthz")); })) port_ = port;
    }
    ~SimProcess() {
        if (pid_ > 0 && !exit_) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
        std::error_code ignored;
        if (ownsFolder_) fs::remove_all(folder_, ignored);
    }
    SimProcess(const SimProcess&) = delete;
    SimProcess& operator=(const SimProcess&) = delete;

    bool ready() const { return port_ > 0; } // came up and answers HTTP
    int port() const { return port_; }
    const fs::path& folder() const { return folder_; }
    fs::path dataFolder() const { return folder_ / "data"; }
    std::string errors() const { return readFile(folder_ / "stderr"); }
    std::string output() const { return readFile(folder_ / "stdout"); }
    std::string key() const {
        std::string text = readFile(dataFolder() / "local.key");
        while (!text.empty() && (text.back() == '\n' || text.back() == ' ')) text.pop_back();
        return text;
    }

    httplib::Client client(std::chrono::milliseconds readTimeout = 10s) const {
        httplib::Client client("127.0.0.1", port_);
        client.set_connection_timeout(2s);
        client.set_read_timeout(readTimeout);
        return client;
    }
    // With the right key.
    httplib::Headers keyed() const { return {{"X-Tulm-Local", key()}}; }
    httplib::Result get(const std::string& path) const { return client().Get(path, keyed()); }
    httplib::Result post(const std::string& path, const json& body = json::object()) const {
        return client().Post(path, keyed(), body.dump(), "application/json");
    }
    // A read's body, null unless it was answered 200.
    json read(const std::string& path) const {
        auto answer = get(path);
        return answer && answer->status == 200 ? json::parse(answer->body, nullptr, false) : json(nullptr);
    }
    json status() const { return read("/companion/status"); }

    void signal(int number) const {
        if (pid_ > 0 && !exit_) ::kill(pid_, number);
    }
    // The exit status once it has ended, waiting at most `bound`; absent while it still runs.
    std::optional<int> waitExit(std::chrono::milliseconds bound = 10s) {
        if (exit_ || pid_ < 0) return exit_;
        eventually([&] {
            int status = 0;
            if (::waitpid(pid_, &status, WNOHANG) != pid_) return false;
            exit_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
            return true;
        }, bound);
        return exit_;
    }

    static fs::path temporaryFolder() {
        std::string pattern = (fs::temp_directory_path() / "orvan-sim-test.XXXXXX").string();
        if (!::mkdtemp(pattern.data())) std::abort();
        return pattern;
    }
private:
    bool spawn(std::vector<std::string> arguments, const Environment& overrides) {
        Environment environment;
        for (char** entry = environ; *entry; ++entry) {
            std::string pair = *entry;
            if (auto equals = pair.find('='); equals != std::string::npos)
                environment[pair.substr(0, equals)] = pair.substr(equals + 1);
        }
        for (const char* name : {"TULM_MOBILE_DIR", "XDG_DATA_HOME", "ORVAN_QUIET"}) environment.erase(name);
        environment["HOME"] = (folder_ / "home").string();
        environment["ORVAN_DIR"] = dataFolder().string();
        for (const auto& [name, value] : overrides) environment[name] = value;
        std::vector<std::string> pairs;
        for (const auto& [name, value] : environment) pairs.push_back(name + "=" + value);
        std::vector<char*> argv, envp;
        for (auto& argument : arguments) argv.push_back(argument.data());
        for (auto& pair : pairs) envp.push_back(pair.data());
        argv.push_back(nullptr);
        envp.push_back(nullptr);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        const std::string out = (folder_ / "stdout").string(), err = (folder_ / "stderr").string();
        posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (posix_spawn(&pid_, argv[0], &actions, nullptr, argv.data(), envp.data()) != 0) pid_ = -1;
        posix_spawn_file_actions_destroy(&actions);
        return pid_ > 0;
    }

    fs::path folder_;
    bool ownsFolder_;
    pid_t pid_ = -1;
    int port_ = -1;
    std::optional<int> exit_;
};

// Most suites want nothing but the simulator as it starts by default, up before the test begins.
class SimTest : public testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(sim.ready()) << sim.errors(); }
    SimProcess sim;
};

} // namespace orvan::simtest
