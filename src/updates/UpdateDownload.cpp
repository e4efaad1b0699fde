#include "updates/UpdateDownload.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QPointer>
#include <QUrl>

#include <fcntl.h>
#include <openssl/evp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>
#include <thread>
#include <vector>

namespace orvan::UpdateDownload {

Task<Outcome> fetch(Web& web, std::string url, std::int64_t size, std::filesystem::path to) {
    bool tooBig = false;
    WebDownload request;
    request.url = std::move(url);
    request.destination = to;
    request.idleTimeout = std::chrono::seconds(60);
    request.wholeTimeout = std::chrono::seconds(1800);
    request.keepGoing = [&tooBig, size](const WebProgress& p) {
        if (p.status != 200) return false;
        if (p.written > size || (p.expected >= 0 && p.expected != size)) {
            tooBig = true;
            return false;
        }
        return true;
    };
    request.followRedirect = [](const std::string& next) {
        return QUrl(QString::fromStdString(next)).scheme() == "https";
    };
    WebDownloadResult result = co_await web.download(std::move(request));
    if (tooBig) co_return Outcome::tooBig;
    if (result.complete && result.status == 200) co_return Outcome::done;
    co_return Outcome::failed;
}

std::optional<std::string> sha256(const std::filesystem::path& of) {
    int fd = ::open(of.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) return std::nullopt;
    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> context(EVP_MD_CTX_new(), EVP_MD_CTX_free);
    bool ok = context && EVP_DigestInit_ex(context.get(), EVP_sha256(), nullptr) == 1;
    std::vector<unsigned char> chunk(1024 * 1024);
    while (ok) {
        ssize_t n = ::read(fd, chunk.data(), chunk.size());
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) ok = false;
        if (n <= 0) break;
        ok = EVP_DigestUpdate(context.get(), chunk.data(), static_cast<size_t>(n)) == 1;
    }
    ::close(fd);
    unsigned char digest[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (!ok || EVP_DigestFinal_ex(context.get(), digest, &length) != 1) return std::nullopt;
    static const char hex[] = "0123456789abcdef";
    std::string out;
    for (unsigned int i = 0; i < length; ++i) {
        out += hex[digest[i] >> 4];
        out += hex[digest[i] & 15];
    }
    return out;
}

Task<std::optional<std::string>> sha256Apart(std::filesystem::path of) {
    QCoreApplication* app = QCoreApplication::instance();
    if (!app) co_return sha256(of);
    // The thread only reads the file; the result comes back to this thread through the loop.
    struct Shared {
        std::optional<std::string> digest;
        Wakeup done;
    };
    auto shared = std::make_shared<Shared>();
    std::thread([shared, of, guard = QPointer<QCoreApplication>(app)] {
        auto digest = sha256(of);
        if (!guard) return;
        QMetaObject::invokeMethod(guard, [shared, digest = std::move(digest)]() mutable {
            shared->digest = std::move(digest);
            shared->done.fire(true);
        }, Qt::QueuedConnection);
    }).detach();
    co_await shared->done;
    co_return shared->digest;
}

std::int64_t size(const std::filesystem::path& of) {
    struct stat info {};
    if (::stat(of.c_str(), &info) != 0) return -1;
    return static_cast<std::int64_t>(info.st_size);
}

} // namespace orvan::UpdateDownload
