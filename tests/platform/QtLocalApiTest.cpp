// The transport against a real HTTP server on an ephemeral loopback port.
#include "bridge/LocalRequest.h"
#include "fakes/TempFolder.h"
#include "foundation/Files.h"
#include "platform/linux/QtLocalApi.h"

#include "CoreApp.h"
#include "RawServer.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <condition_variable>
#include <gtest/gtest.h>
#include <httplib.h>
#include <mutex>
#include <thread>

namespace orvan {
namespace {

using namespace std::chrono_literals;

struct Seen {
    std::string method, path, body, contentType, key;
    bool hadKey = false, hadContentType = false;
};

class LocalApiTest : public testing::Test {
protected:
    void SetUp() override {
        test::coreApp();
        server_.Get("/echo", [this](const httplib::Request& req, httplib::Response& res) { record(req, res); });
        server_.Post("/echo", [this](const httplib::Request& req, httplib::Response& res) { record(req, res); });
        server_.Post("/empty", [](const httplib::Request&, httplib::Response& res) { res.status = 204; });
        server_.Get("/html", [](const httplib::Request&, httplib::Response& res) {
            res.status = 502;
            res.set_content("<html>Bad gateway</html>", "text/html");
        });
        server_.Get("/silent", [this](const httplib::Request&, httplib::Response& res) {
            std::unique_lock lock(mutex_);
            released_.wait_for(lock, 5s, [this] { return release_; });
            res.set_content("{}", "application/json");
        });
        server_.Get("/trickle", [](const httplib::Request&, httplib::Response& res) {
            // A type the server won't compress: a compressor would hold the pieces back.
            res.set_chunked_content_provider("application/octet-stream", [](size_t offset, httplib::DataSink& sink) {
                if (offset >= 6) {
                    sink.done();
                    return true;
                }
                std::this_thread::sleep_for(400ms); // each piece well inside the time-out, the whole well past it
                sink.write(&"[1,2,]"[offset], 1);
                return true;
            });
        });
        port_ = server_.bind_to_any_port("127.0.0.1");
        thread_ = std::thread([this] { server_.listen_after_bind(); });
        while (!server_.is_running()) std::this_thread::yield();
        api_ = std::make_unique<QtLocalApi>(QString("http://127.0.0.1:%1").arg(port_));
    }
    void TearDown() override {
        api_.reset(); // closes the kept-alive connection, so the server needn't wait it out
        {
            std::lock_guard lock(mutex_);
            release_ = true;
        }
        released_.notify_all();
        server_.stop();
        thread_.join();
    }
    void record(const httplib::Request& req, httplib::Response& res) {
        std::lock_guard lock(mutex_);
        seen_.method = req.method;
        seen_.path = req.target;
        seen_.body = req.body;
        seen_.hadKey = req.has_header("X-Tulm-Local");
        seen_.key = req.get_header_value("X-Tulm-Local");
        seen_.hadContentType = req.has_header("Content-Type");
        seen_.contentType = req.get_header_value("Content-Type");
        res.set_content(R"({"ok":true})", "application/json");
    }
    HttpAnswer send(HttpRequest request) { return QCoro::waitFor(api_->send(std::move(request))); }

    httplib::Server server_;
    std::thread thread_;
    int port_ = 0;
    std::unique_ptr<QtLocalApi> api_;
    std::mutex mutex_;
    std::condition_variable released_;
    bool release_ = false;
    Seen seen_;
};

TEST_F(LocalApiTest, KeyComesTrimmedFromTheFirstFolderThatIsSet) {
    test::TempFolder temp;
    const std::filesystem::path& root = temp.path();
    ASSERT_TRUE(Files::write(root / "new" / "local.key", "new-key\n"));
    ASSERT_TRUE(Files::write(root / "old" / "local.key", "  old-key \r\n"));
    ASSERT_TRUE(Files::write(root / "home" / ".local/share/Orvan" / "local.key", "home-key"));

    struct Case {
        Environment env;
        std::string key;
    };
    const std::string home = (root / "home").string();
    for (const auto& c : std::vector<Case>{
             {{{"HOME", home}, {"ORVAN_DIR", (root / "new").string()}, {"TULM_MOBILE_DIR", (root / "old").string()}}, "new-key"},
             {{{"HOME", home}, {"ORVAN_DIR", ""}, {"TULM_MOBILE_DIR", (root / "old").string()}}, "old-key"},
             {{{"HOME", home}, {"ORVAN_DIR", ""}, {"TULM_MOBILE_DIR", ""}}, "home-key"},
             {{{"HOME", (root / "nowhere").string()}}, ""},
         }) {
        HttpAnswer a = send(LocalRequest::make("/echo", std::nullopt, 8s, c.env));
        ASSERT_EQ(a.status, 200);
        EXPECT_EQ(seen_.hadKey, !c.key.empty()); // the server drops a header with an empty value
        EXPECT_EQ(seen_.key, c.key);
    }
}

TEST_F(LocalApiTest, BodyMakesAPostWithJsonAndNoBodyAGetWithoutContentType) {
    Environment env{{"HOME", "/nonexistent"}};
    HttpAnswer get = send(LocalRequest::make("/echo?fresh=1", std::nullopt, 8s, env));
    EXPECT_EQ(get.status, 200);
    EXPECT_EQ(seen_.method, "GET");
    EXPECT_EQ(seen_.path, "/echo?fresh=1");
    EXPECT_FALSE(seen_.hadContentType);

    send(LocalRequest::make("/echo", Json::object(), 8s, env));
    EXPECT_EQ(seen_.method, "POST");
    EXPECT_EQ(seen_.contentType, "application/json");
    EXPECT_EQ(seen_.body, "{}");

    send(LocalRequest::make("/echo", Json{{"name", "Studio \xF0\x9F\x8E\xB9"}}, 8s, env));
    EXPECT_EQ(Json::parse(seen_.body), (Json{{"name", "Studio \xF0\x9F\x8E\xB9"}}));

    // Text that can't be written as JSON leaves the request a POST without a body.
    send(LocalRequest::make("/echo", Json{{"name", std::string("\xFF")}}, 8s, env));
    EXPECT_EQ(seen_.method, "POST");
    EXPECT_EQ(seen_.body, "");
}

TEST_F(LocalApiTest, AnswersKeepTheirStatusAndBody) {
    Environment env{{"HOME", "/nonexistent"}};
    HttpAnswer empty = send(LocalRequest::make("/empty", Json::object(), 8s, env));
    EXPECT_TRUE(empty.isHttp());
    EXPECT_EQ(empty.status, 204);
    EXPECT_EQ(empty.body, "");
    EXPECT_TRUE(LocalRequest::ok(empty));

    HttpAnswer html = send(LocalRequest::make("/html", std::nullopt, 8s, env));
    EXPECT_EQ(html.status, 502);
    EXPECT_FALSE(LocalRequest::ok(html));
    EXPECT_FALSE(LocalRequest::message(html.body));
    // Other statuses and the bridge's own sentences are TransportFaults' first case.
}

TEST_F(LocalApiTest, SilenceLongerThanTheTimeOutIsATransportFailure) {
    QElapsedTimer timer;
    timer.start();
    HttpAnswer a = send(LocalRequest::make("/silent", std::nullopt, 1s, Environment{}));
    EXPECT_FALSE(a.isHttp());
    ASSERT_TRUE(a.failure);
    EXPECT_FALSE(LocalRequest::ok(a));
    // Fired by the time-out, not by the server giving up after five seconds.
    EXPECT_LT(timer.elapsed(), 4500);
}

TEST_F(LocalApiTest, AnAnswerThatKeepsTricklingInIsNotCutOff) {
    HttpAnswer a = send(LocalRequest::make("/trickle", std::nullopt, 1s, Environment{}));
    ASSERT_TRUE(a.isHttp()) << a.failure.value_or("");
    EXPECT_EQ(a.status, 200);
    EXPECT_EQ(a.body, "[1,2,]");
}

TEST_F(LocalApiTest, NobodyListeningIsATransportFailure) {
    QtLocalApi nowhere("http://127.0.0.1:1");
    HttpAnswer a = QCoro::waitFor(nowhere.send(LocalRequest::health()));
    EXPECT_TRUE(a.failure);
    EXPECT_EQ(a.status, 0);
}

// The test server above drops empty header values, so the empty key is looked for in the raw request.
TEST(LocalApiRaw, AnEmptyKeyStillSendsTheHeader) {
    test::coreApp();
    std::string raw;
    HttpAnswer a;
    {
        test::RawServer server([&](test::RawServer& s, int fd) {
            raw = s.next(fd);
            test::writeAll(fd, "HTTP/1.1 204 No Content\r\nContent-Length: 0\r\n\r\n");
        });
        QtLocalApi api(server.base());
        a = QCoro::waitFor(api.send(LocalRequest::make("/x", std::nullopt, 2s, Environment{})));
    } // the server thread is joined before its record is read
    EXPECT_EQ(a.status, 204);
    EXPECT_NE(raw.find("\r\nX-Tulm-Local:"), std::string::npos) << raw;
}

TEST_F(LocalApiTest, HealthGoesWithoutTheKey) {
    HttpRequest health = LocalRequest::health();
    health.path = "/echo";
    send(health);
    EXPECT_FALSE(seen_.hadKey);
    EXPECT_EQ(LocalRequest::health().timeout, 1500ms);
}

} // namespace
} // namespace orvan
