#include "platform/linux/PosixProcesses.h"

#include <atomic>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <mutex>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace orvan {

namespace {

class PosixChild final : public Child {
public:
    explicit PosixChild(pid_t pid) : pid_(pid) {}

    ~PosixChild() override {
        // Letting go of a running child leaves it running; someone must still collect its exit.
        std::lock_guard lock(mutex_);
        if (!reaped_ && !handedOff_) handOff();
    }

    bool isRunning() override {
        std::lock_guard lock(mutex_);
        if (reaped_) return false;
        if (handedOff_) return ::kill(pid_, 0) == 0;
        int status = 0;
        pid_t r = ::waitpid(pid_, &status, WNOHANG);
        if (r == pid_ || (r < 0 && errno == ECHILD)) {
            reaped_ = true;
            return false;
        }
        return true;
    }

    void terminate() override {
        std::lock_guard lock(mutex_);
        if (reaped_) return;
        ::kill(pid_, SIGTERM);
        if (!handedOff_) handOff();
    }

    int processIdentifier() const override { return pid_; }

private:
    void handOff() {
        handedOff_ = true;
        pid_t pid = pid_;
        std::thread([pid] {
            int status = 0;
            while (::waitpid(pid, &status, 0) < 0 && errno == EINTR) {
            }
        }).detach();
    }

    const pid_t pid_;
    std::mutex mutex_;
    bool reaped_ = false;
    bool handedOff_ = false;
};

} // namespace

std::shared_ptr<Child> PosixProcesses::launch(const ChildSpec& request, std::string& error) {
    std::vector<std::string> argStrings;
    argStrings.push_back(request.executable.string());
    argStrings.insert(argStrings.end(), request.arguments.begin(), request.arguments.end());
    std::vector<char*> argv;
    for (auto& a : argStrings) argv.push_back(a.data());
    argv.push_back(nullptr);

    std::vector<std::string> envStrings;
    for (const auto& [k, v] : request.environment) envStrings.push_back(k + "=" + v);
    std::vector<char*> envp;
    for (auto& e : envStrings) envp.push_back(e.data());
    envp.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);

    // The child starts with default signal handling whatever this process has blocked or ignored.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none, all;
    sigemptyset(&none);
    sigfillset(&all);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &all);
    // A process group of its own: a terminal's Ctrl-C or hang-up is meant for the companion, which
    // decides whether its child stops; a killed companion leaves the child for the next to adopt.
    posix_spawnattr_setpgroup(&attributes, 0);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);

    pid_t pid = 0;
    int rc = ::posix_spawn(&pid, request.executable.c_str(), &actions, &attributes, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (rc != 0) {
        error = std::strerror(rc);
        return nullptr;
    }
    return std::make_shared<PosixChild>(pid);
}

} // namespace orvan
