// The feed and the package over real HTTPS, through the Qt adapter trusting a throwaway authority.
#include "HttpsServer.h"
#include "platform/CoreApp.h"
#include "platform/linux/QtWeb.h"
#include "updates/UpdateCheck.h"
#include "updates/UpdateDownload.h"
#include "updates/UpdateFeed.h"

#include <QCoreApplication>
#include <QCoroTask>
#include <atomic>

namespace orvan {
namespace {

using Outcome = UpdateDownload::Outcome;
constexpr std::int64_t mib = 1024 * 1024;

std::string body(std::int64_t size) {
    std::string out(static_cast<std::size_t>(size), '\0');
    for (std::size_t i = 0; i < out.size(); ++i) out[i] = static_cast<char>((i * 7 + i / 4096) & 0xff);
    return out;
}

class DownloadTest : public testing::Test {
protected:
    static constexpr std::int64_t size = 3 * mib + 17;

    void SetUp() override {
        test::coreApp();
        auto& r = server_.routes();
        r.Get("/exact.tgz", [](const httplib::Request&, httplib::Response& res) { res.set_content(body(size), "application/gzip"); });
        r.Get("/chunked.tgz", [](const httplib::Request&, httplib::Response& res) {
            auto data = std::make_shared<std::string>(body(size));
            res.set_chunked_content_provider("application/gzip", [data](size_t offset, httplib::DataSink& sink) {
                if (offset >= data->size()) {
                    sink.done();
                    return true;
                }
                return sink.write(data->data() + offset, std::min<size_t>(64 * 1024, data->size() - offset));
            });
        });
        r.Get("/endless.tgz", [this](const httplib::Request&, httplib::Response& res) {
            // Ten megabytes with no length given, counting what actually went out.
            res.set_chunked_content_provider("application/gzip", [this](size_t offset, httplib::DataSink& sink) {
                if (offset >= 10 * mib) {
                    sink.done();
                    return true;
                }
                static const std::string piece(64 * 1024, 'z');
                if (!sink.write(piece.data(), piece.size())) return false;
                sent_ += piece.size();
                return true;
            });
        });
        r.Get("/lying.tgz", [](const httplib::Request&, httplib::Response& res) {
            auto data = std::make_shared<std::string>(body(size));
            res.set_content_provider(static_cast<size_t>(size + 1), "application/gzip", [data](size_t offset, size_t length, httplib::DataSink& sink) {
                if (offset >= data->size()) return false;
                return sink.write(data->data() + offset, std::min(length, data->size() - offset));
            });
        });
        r.Get("/missing.tgz", [](const httplib::Request&, httplib::Response& res) {
            res.status = 404;
            res.set_content(body(size), "application/gzip");
        });
        r.Get("/to-http.tgz", [this](const httplib::Request&, httplib::Response& res) {
            res.set_redirect("http://127.0.0.1:" + std::to_string(server_.port()) + "/exact.tgz");
        });
        r.Get("/to-https.tgz", [this](const httplib::Request&, httplib::Response& res) { res.set_redirect(server_.url("/exact.tgz")); });
        r.Get("/companion/latest.json", [](const httplib::Request& req, httplib::Response& res) {
            if (req.get_header_value("Accept") != "application/json") res.status = 406;
            res.set_content(R"({"version":"9.9","url":"https://x.org/a.tgz","size":1,"sha256":")" + std::string(64, 'a') + "\"}",
                            "application/json");
        });
        r.Get("/gone/companion/latest.json", [](const httplib::Request&, httplib::Response& res) { res.status = 404; });
        r.Get("/broken/companion/latest.json", [](const httplib::Request&, httplib::Response& res) { res.status = 500; });
        server_.start();
        web_ = std::make_unique<QtWeb>(server_.authority());
    }
    void TearDown() override {
        // Replies and connections go with deleteLater; the loop that would delete them ends with the test.
        web_.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    Outcome fetch(const std::string& path, std::int64_t promised) {
        return QCoro::waitFor(UpdateDownload::fetch(*web_, server_.url(path), promised, temp_.path() / "got.tgz"));
    }

    test::HttpsServer server_;
    test::TempFolder temp_;
    std::unique_ptr<QtWeb> web_;
    std::atomic<std::int64_t> sent_{0};
};

TEST_F(DownloadTest, TheSizeRuleRedirectsAndStatusesDecideTheOutcome) {
    struct Case {
        const char* what;
        std::string path;
        std::int64_t promised;
        Outcome outcome;
    } cases[] = {
        {"exact size", "/exact.tgz", size, Outcome::done},
        {"chunked with no length, exact size", "/chunked.tgz", size, Outcome::done},
        {"one byte more than promised", "/exact.tgz", size - 1, Outcome::tooBig},
        {"chunked, one byte more than promised", "/chunked.tgz", size - 1, Outcome::tooBig},
        {"a Content-Length that differs", "/lying.tgz", size, Outcome::tooBig},
        {"404", "/missing.tgz", size, Outcome::failed},
        {"https to http", "/to-http.tgz", size, Outcome::failed},
        {"https to https", "/to-https.tgz", size, Outcome::done},
    };
    for (const auto& c : cases) {
        std::filesystem::remove(temp_.path() / "got.tgz");
        EXPECT_EQ(fetch(c.path, c.promised), c.outcome) << c.what;
        EXPECT_EQ(std::filesystem::exists(temp_.path() / "got.tgz"), c.outcome == Outcome::done) << c.what;
        if (c.outcome == Outcome::done) EXPECT_EQ(UpdateDownload::size(temp_.path() / "got.tgz"), size) << c.what;
        // Nothing half-written stays behind.
        EXPECT_FALSE(std::filesystem::exists(temp_.path() / "got.tgz.part")) << c.what;
    }
}

TEST_F(DownloadTest, AnOverlongBodyIsCutOffLongBeforeItsEnd) {
    EXPECT_EQ(fetch("/endless.tgz", mib), Outcome::tooBig);
    server_.stop(); // waits for the handler, which ends when the dropped connection refuses a write
    EXPECT_LT(sent_.load(), 8 * mib);
}

TEST_F(DownloadTest, ADigestWrongOnlyInTheLastChunkIsAMismatch) {
    ASSERT_EQ(fetch("/exact.tgz", size), Outcome::done);
    std::string expected = body(size);
    UpdateManifest release;
    release.size = size;
    release.sha256 = *UpdateDownload::sha256(temp_.path() / "got.tgz");
    EXPECT_FALSE(UpdateCheck::download(UpdateDownload::size(temp_.path() / "got.tgz"),
                                       UpdateDownload::sha256(temp_.path() / "got.tgz"), release));
    {
        std::FILE* f = std::fopen((temp_.path() / "got.tgz").c_str(), "r+b");
        std::fseek(f, -3, SEEK_END);
        std::fputc(expected[expected.size() - 3] ^ 1, f);
        std::fclose(f);
    }
    EXPECT_EQ(UpdateCheck::download(UpdateDownload::size(temp_.path() / "got.tgz"),
                                    UpdateDownload::sha256(temp_.path() / "got.tgz"), release),
              UpdateCheck::mismatch);
}

TEST_F(DownloadTest, TheFeedOverHttps) {
    auto read = [&](const std::string& base) {
        return QCoro::waitFor(UpdateFeed::latest(*web_, UpdateFeed::manifestURL(server_.url(base))));
    };
    auto good = read("/");
    ASSERT_TRUE(std::holds_alternative<UpdateManifest>(good));
    EXPECT_EQ(std::get<UpdateManifest>(good).version, "9.9");
    EXPECT_EQ(std::get<UpdateNotice>(read("/gone")).text, UpdateManifest::unreadable);
    EXPECT_EQ(std::get<UpdateNotice>(read("/broken")).text, UpdateFeed::unreachable);
    // A server whose authority isn't trusted is unreachable.
    QtWeb stranger(std::filesystem::path("/nonexistent.pem"));
    auto refused = QCoro::waitFor(UpdateFeed::latest(stranger, UpdateFeed::manifestURL(server_.url("/"))));
    EXPECT_EQ(std::get<UpdateNotice>(refused).text, UpdateFeed::unreachable);
}

} // namespace
} // namespace orvan
