#include "app/SingleInstance.h"

#include <QLocalSocket>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace orvan::app {

namespace {

constexpr const char* socketName = "orvan-companion.sock";
// Bounds on what either side keeps of the other's words.
constexpr qsizetype maxRequest = 64 * 1024;
constexpr std::size_t maxAnswers = 4u << 20;

std::string environmentValue(const char* name) {
    const char* value = std::getenv(name);
    return value ? std::string(value) : std::string{};
}

// A folder only we can enter: a real directory (no symlink), ours, mode 0700. One we make
// ourselves may be put right; one we were handed must already be so.
bool privateFolder(const std::string& path, bool ours) {
    if (path.empty() || path.front() != '/') return false;
    if (ours && ::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) return false;
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0) return false;
    if (!S_ISDIR(st.st_mode) || st.st_uid != ::getuid()) return false;
    if ((st.st_mode & 07777) == 0700) return true;
    return ours && ::chmod(path.c_str(), 0700) == 0;
}

bool fits(const std::string& path) { return path.size() < sizeof(sockaddr_un::sun_path); }

// Connect only to a socket of ours: someone else's could answer in our place.
bool ourSocket(const std::string& path) {
    struct stat st {};
    return !path.empty() && ::lstat(path.c_str(), &st) == 0 && S_ISSOCK(st.st_mode) && st.st_uid == ::getuid();
}

std::string tempFolder() {
    std::string temp = environmentValue("TMPDIR");
    if (temp.empty() || temp.front() != '/') temp = "/tmp";
    return temp + "/orvan-companion-run-" + std::to_string(::getuid());
}

std::string cacheFolder() {
    std::string cache = environmentValue("XDG_CACHE_HOME");
    if (cache.empty() || cache.front() != '/') {
        const std::string home = environmentValue("HOME");
        if (home.empty() || home.front() != '/') return {};
        cache = home + "/.cache";
        ::mkdir(cache.c_str(), 0700);
    }
    return cache + "/orvan-companion";
}

} // namespace

std::string SingleInstance::socketPath() {
    const std::string runtime = environmentValue("XDG_RUNTIME_DIR");
    if (privateFolder(runtime, false) && fits(runtime + "/" + socketName)) return runtime + "/" + socketName;
    for (const std::string& folder : {tempFolder(), cacheFolder()})
        if (privateFolder(folder, true) && fits(folder + "/" + socketName)) return folder + "/" + socketName;
    return {};
}

bool SingleInstance::askRunningToShow() {
    const std::string path = socketPath();
    if (!ourSocket(path)) return false;
    QLocalSocket socket;
    socket.connectToServer(QString::fromStdString(path));
    if (!socket.waitForConnected(500)) return false;
    socket.write("show\n");
    socket.waitForBytesWritten(500);
    socket.disconnectFromServer();
    return true;
}

int SingleInstance::send(const std::vector<std::string>& commands, std::FILE* out) {
    const std::string path = socketPath();
    QLocalSocket socket;
    if (ourSocket(path)) socket.connectToServer(QString::fromStdString(path));
    if (!ourSocket(path) || !socket.waitForConnected(2000)) {
        std::fputs("Orvan Companion is not running.\n", stderr);
        return 2;
    }
    int result = 0;
    std::string buffer;
    std::size_t received = 0;
    for (const auto& command : commands) {
        if (command.find_first_of("\r\n") != std::string::npos) {
            std::fputs("> A command is one line; this one was not sent.\n", out);
            result = 1;
            continue;
        }
        socket.write(QByteArray::fromStdString("run " + command + "\n"));
        socket.flush();
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(15);
        bool answered = false;
        while (!answered) {
            std::size_t end;
            while (!answered && (end = buffer.find('\n')) != std::string::npos) {
                const std::string line = buffer.substr(0, end);
                buffer.erase(0, end + 1);
                if (line.rfind("| ", 0) == 0) {
                    std::fputs((line.substr(2) + "\n").c_str(), out);
                } else if (line.rfind("= ", 0) == 0) {
                    answered = true;
                    if (line != "= 0") result = 1;
                }
            }
            if (answered) break;
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
            const bool more = left.count() > 0 && socket.waitForReadyRead(static_cast<int>(left.count()));
            const QByteArray chunk = socket.readAll();
            received += static_cast<std::size_t>(chunk.size());
            buffer += chunk.toStdString();
            if (received > maxAnswers || (!more && chunk.isEmpty())) {
                std::fputs("> Orvan Companion did not answer.\n", out);
                std::fflush(out);
                return 1;
            }
        }
    }
    std::fflush(out);
    socket.disconnectFromServer();
    return result;
}

SingleInstance::SingleInstance(std::function<void()> show, Commands commands)
    : server_(std::make_unique<QLocalServer>()), path_(socketPath()) {
    if (path_.empty()) {
        std::fputs("Orvan Companion found no private folder for its socket; a second launch will not find this one.\n",
                   stderr);
        return;
    }
    // Nobody of ours answered there, so whatever holds the name is stale or not ours; the folder
    // is ours, so the name is ours to take.
    struct stat st {};
    if (::lstat(path_.c_str(), &st) == 0) ::unlink(path_.c_str());
    server_->setSocketOptions(QLocalServer::UserAccessOption);
    if (!server_->listen(QString::fromStdString(path_)))
        std::fprintf(stderr, "Orvan Companion could not listen for a second launch: %s\n",
                     server_->errorString().toLocal8Bit().constData());
    QObject::connect(server_.get(), &QLocalServer::newConnection, server_.get(),
                     [this, show = std::move(show), commands = std::move(commands)] {
        while (QLocalSocket* socket = server_->nextPendingConnection()) {
            QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            auto pending = std::make_shared<QByteArray>();
            QObject::connect(socket, &QLocalSocket::readyRead, socket, [socket, pending, show, commands] {
                pending->append(socket->readAll());
                qsizetype end;
                while ((end = pending->indexOf('\n')) >= 0) {
                    const std::string line = pending->left(end).toStdString();
                    pending->remove(0, end + 1);
                    if (line == "show") {
                        show();
                    } else if (line.rfind("run ", 0) == 0) {
                        const CommandAnswer answer = commands(line.substr(4));
                        std::string reply;
                        std::size_t start = 0;
                        while (start < answer.text.size()) {
                            auto stop = answer.text.find('\n', start);
                            if (stop == std::string::npos) stop = answer.text.size();
                            reply += "| " + answer.text.substr(start, stop - start) + "\n";
                            start = stop + 1;
                        }
                        reply += answer.accepted ? "= 0\n" : "= 1\n";
                        socket->write(QByteArray::fromStdString(reply));
                        socket->flush();
                    }
                }
                if (pending->size() > maxRequest) socket->abort();
            });
        }
    });
}

SingleInstance::~SingleInstance() {
    if (server_) server_->close();
}

} // namespace orvan::app
