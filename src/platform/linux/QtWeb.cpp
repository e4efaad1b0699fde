#include "platform/linux/QtWeb.h"

#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QTimer>
#include <QUrl>

#include <fcntl.h>
#include <memory>
#include <unistd.h>

namespace orvan {

namespace {

// The reply is deleted on the next turn of the loop, after every signal of it has run.
struct ReplyOwner {
    QNetworkReply* reply;
    ~ReplyOwner() {
        if (reply) {
            reply->disconnect();
            reply->abort();
            reply->deleteLater();
        }
    }
};

// A manager for one request. It is let go on a later turn of the loop, as the request's task may
// end inside one of its reply's signals.
struct LetGo {
    void operator()(QNetworkAccessManager* m) const { m->deleteLater(); }
};
using Manager = std::unique_ptr<QNetworkAccessManager, LetGo>;

Manager freshManager() {
    Manager manager(new QNetworkAccessManager);
    manager->setCache(nullptr);
    return manager;
}

int statusOf(QNetworkReply* reply) {
    QVariant code = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    return code.isValid() ? code.toInt() : 0;
}

} // namespace

QtWeb::QtWeb(std::optional<std::filesystem::path> trusted) : trusted_(std::move(trusted)) {}

QtWeb::~QtWeb() = default;

QNetworkRequest QtWeb::prepare(const std::string& url) const {
    QNetworkRequest request(QUrl(QString::fromStdString(url), QUrl::StrictMode));
    request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
    request.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
    request.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
    request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
    request.setRawHeader("Cache-Control", "no-cache");
    request.setRawHeader("Pragma", "no-cache");
    if (trusted_) {
        QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
        tls.setCaCertificates(QSslCertificate::fromPath(QString::fromStdString(trusted_->string())));
        request.setSslConfiguration(tls);
    }
    return request;
}

Task<WebAnswer> QtWeb::get(WebRequest ask) {
    QNetworkRequest request = prepare(ask.url);
    for (const auto& [name, value] : ask.headers) request.setRawHeader(QByteArray::fromStdString(name), QByteArray::fromStdString(value));
    // The feed never moves: an answer of 3xx is an answer like any other.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setTransferTimeout(static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(ask.timeout).count()));
    Manager manager = freshManager();
    QNetworkReply* reply = manager->get(request);
    ReplyOwner owner{reply};
    auto wake = std::make_shared<Wakeup>();
    std::string body;
    bool tooLong = false;
    QObject::connect(reply, &QNetworkReply::readyRead, reply, [&] {
        QByteArray piece = reply->readAll();
        if (body.size() + static_cast<std::size_t>(piece.size()) > ask.cap) {
            tooLong = true;
            reply->abort();
            return;
        }
        body.append(piece.constData(), static_cast<std::size_t>(piece.size()));
    });
    QObject::connect(reply, &QNetworkReply::finished, reply, [wake] { wake->fire(true); });
    co_await *wake;
    if (!tooLong) {
        QByteArray rest = reply->readAll();
        if (body.size() + static_cast<std::size_t>(rest.size()) > ask.cap) tooLong = true;
        else body.append(rest.constData(), static_cast<std::size_t>(rest.size()));
    }
    WebAnswer answer;
    int status = statusOf(reply);
    if (tooLong) {
        answer.failure = "The answer was longer than " + std::to_string(ask.cap) + " bytes.";
    } else if (status > 0 && (reply->error() == QNetworkReply::NoError || reply->error() >= QNetworkReply::ContentAccessDenied)) {
        // Qt files 4xx and 5xx under errors; they are answers.
        answer.status = status;
        answer.body = std::move(body);
    } else {
        answer.failure = reply->errorString().toStdString();
    }
    co_return answer;
}

Task<WebDownloadResult> QtWeb::download(WebDownload ask) {
    WebDownloadResult result;
    std::filesystem::path partial = ask.destination;
    partial += ".part";
    std::error_code ec;
    std::filesystem::remove(partial, ec);
    int fd = ::open(partial.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (fd < 0) {
        result.failure = "The download could not be written.";
        co_return result;
    }
    QNetworkRequest request = prepare(ask.url);
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::UserVerifiedRedirectPolicy);
    request.setMaximumRedirectsAllowed(10);
    request.setTransferTimeout(static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(ask.idleTimeout).count()));
    Manager manager = freshManager();
    QNetworkReply* reply = manager->get(request);
    ReplyOwner owner{reply};
    // Read no further ahead than a block, so a cancel stops the server's sending, not only our writing.
    reply->setReadBufferSize(1024 * 1024);
    auto wake = std::make_shared<Wakeup>();
    std::int64_t written = 0;
    bool writeFailed = false;
    QTimer whole;
    whole.setSingleShot(true);
    QObject::connect(&whole, &QTimer::timeout, reply, [reply] { reply->abort(); });
    whole.start(std::chrono::duration_cast<std::chrono::milliseconds>(ask.wholeTimeout));

    QObject::connect(reply, &QNetworkReply::redirected, reply, [&](const QUrl& next) {
        if (ask.followRedirect && ask.followRedirect(next.toString().toStdString())) {
            emit reply->redirectAllowed();
            return;
        }
        result.cancelled = true;
        reply->abort();
    });
    QObject::connect(reply, &QNetworkReply::readyRead, reply, [&] {
        if (result.cancelled || writeFailed) return;
        // Block by block: the caller sees each one before the next is written.
        while (reply->bytesAvailable() > 0) {
            QByteArray block = reply->read(1024 * 1024);
            if (block.isEmpty()) break;
            WebProgress progress;
            progress.status = statusOf(reply);
            QVariant length = reply->header(QNetworkRequest::ContentLengthHeader);
            progress.expected = length.isValid() ? length.toLongLong() : -1;
            progress.written = written + block.size();
            if (ask.keepGoing && !ask.keepGoing(progress)) {
                result.cancelled = true;
                reply->abort();
                return;
            }
            const char* at = block.constData();
            qsizetype left = block.size();
            while (left > 0) {
                ssize_t n = ::write(fd, at, static_cast<size_t>(left));
                if (n < 0 && errno == EINTR) continue;
                if (n <= 0) {
                    writeFailed = true;
                    reply->abort();
                    return;
                }
                at += n;
                left -= n;
            }
            written += block.size();
        }
    });
    QObject::connect(reply, &QNetworkReply::finished, reply, [wake] { wake->fire(true); });
    co_await *wake;
    whole.stop();
    result.status = statusOf(reply);
    bool closed = ::fsync(fd) == 0;
    closed = ::close(fd) == 0 && closed;
    if (!result.cancelled && !writeFailed && closed && reply->error() == QNetworkReply::NoError) {
        std::filesystem::rename(partial, ask.destination, ec);
        if (!ec) result.complete = true;
        else result.failure = "The download could not be put in place.";
    } else if (!result.cancelled) {
        result.failure = writeFailed ? std::string("The download could not be written.") : reply->errorString().toStdString();
    }
    if (!result.complete) std::filesystem::remove(partial, ec);
    co_return result;
}

} // namespace orvan
