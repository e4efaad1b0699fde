#pragma once
// The simulator as a real child process on a port of its own choosing, in a temporary home, with
// its standard error kept for the test to read.

#include <chrono>
#include <filesystem>
#include <httplib.h>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace orvan::simtest {

using Environment = std::map<std::string, std::string>;

class SimProcess {
public:
    // `environment` is laid over a clean one whose HOME and ORVAN_DIR are inside the temporary
    // folder; a value of "" sets the variable to the empty text.
    explicit SimProcess(std::vector<std::string> arguments = {}, Environment environment = {},
                        std::optional<std::filesystem::path> folder = std::nullopt);
    ~SimProcess();
    SimProcess(const SimProcess&) = delete;
    SimProcess& operator=(const SimProcess&) = delete;

    // Whether it came up and answers HTTP on its port.
    bool ready() const { return port_ > 0; }
    int port() const { return port_; }
    const std::filesystem::path& folder() const { return folder_; }
    std::filesystem::path dataFolder() const { return folder_ / "data"; }
    std::string key() const;
    std::string errors() const;
    std::string output() const;

    httplib::Client client(std::chrono::milliseconds readTimeout = std::chrono::seconds(10)) const;
    // Requests with the right key unless told otherwise.
    httplib::Result get(const std::string& path) const;
    httplib::Result post(const std::string& path, const nlohmann::json& body = nlohmann::json::object()) const;
    nlohmann::json status() const;

    void signal(int number) const;
    // The exit status once it has ended, waiting at most `bound`; absent while it still runs.
    std::optional<int> waitExit(std::chrono::milliseconds bound = std::chrono::seconds(10));

private:
    std::filesystem::path folder_;
    bool ownsFolder_ = false;
    pid_t pid_ = -1;
    int port_ = -1;
    std::optional<int> exitStatus_;
};

// The sim's exit status, and what it printed, for runs that end by themselves (--help, bad flags).
struct Finished {
    int status;
    std::string output;
    std::string errors;
};
Finished runToEnd(std::vector<std::string> arguments);

} // namespace orvan::simtest
