#include "connections/Connections.h"
#include "connections/Tunnel.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::FakeBridge;
using test::FakeClock;
using test::Reply;

class TunnelTest : public testing::Test {
protected:
    void run(Task<void> task) {
        auto started = test::start(std::move(task));
        while (!started.done() && clock_.step()) {
        }
        ASSERT_TRUE(started.done());
    }

    FakeClock clock_;
    FakeBridge api_{clock_};
    Tunnel model_{api_, clock_, {{"ORVAN_DIR", "/nowhere"}}};
};

TEST_F(TunnelTest, ReadsKeepTheLastGoodStateAndA404MeansAnOlderBridge) {
    api_.queue("GET", "/local/tunnel", Reply::json(200, R"({"hostname":"a.io","status":"up"})"));
    api_.queue("GET", "/local/tunnel", Reply::json(500, R"({"message":"no"})"));
    api_.queue("GET", "/local/tunnel", Reply::failure());
    api_.queue("GET", "/local/tunnel", Reply::json(200, "not json"));
    api_.queue("GET", "/local/tunnel", Reply::json(404, ""));
    api_.queue("GET", "/local/tunnel", Reply::json(200, R"({"quick":true})"));
    run(model_.refresh());
    ASSERT_TRUE(model_.state);
    EXPECT_EQ(model_.state->hostname, "a.io");
    for (int i = 0; i < 3; ++i) run(model_.refresh());
    ASSERT_TRUE(model_.state);
    EXPECT_EQ(model_.state->status, "up");
    EXPECT_FALSE(model_.unavailable);
    run(model_.refresh());
    EXPECT_TRUE(model_.unavailable);
    EXPECT_FALSE(model_.state);
    run(model_.refresh());
    EXPECT_FALSE(model_.unavailable);
    ASSERT_TRUE(model_.state);
    EXPECT_TRUE(model_.state->quick);
    auto sent = api_.requestsTo("/local/tunnel");
    EXPECT_EQ(sent.back().timeout, 4s);
}

TEST_F(TunnelTest, SendsSayTheBridgesSentenceOrTheirOwnAndReadAgain) {
    api_.on("GET", "/local/tunnel", Reply::json(200, R"({"quick":true,"quickStatus":"up"})"));
    api_.queue("POST", "/local/tunnel", Reply::json(400, R"({"message":"That hostname is taken."})"));
    api_.queue("POST", "/local/tunnel", Reply::json(500, "oops"));
    api_.queue("POST", "/local/tunnel", Reply::failure());
    api_.queue("POST", "/local/tunnel", Reply::empty(204));
    const char* notes[] = {"That hostname is taken.", "The quick tunnel did not turn on.",
                           "The quick tunnel did not turn on.", ""};
    for (const char* expected : notes) {
        std::size_t reads = api_.count("/local/tunnel");
        run(model_.send(Connections::quick(true), "The quick tunnel did not turn on."));
        EXPECT_EQ(model_.note, expected);
        EXPECT_FALSE(model_.busy);
        // The send and then one read.
        EXPECT_EQ(api_.count("/local/tunnel"), reads + 2);
    }
    auto posted = api_.requestsTo("/local/tunnel");
    const auto& post = posted[posted.size() - 2];
    EXPECT_EQ(post.method, "POST");
    EXPECT_EQ(post.timeout, 20s);
    EXPECT_EQ(*json::parse(*post.body), (Json{{"quick", true}}));
}

TEST_F(TunnelTest, ASecondSendWhileOneIsOutIsDroppedAndThePollGoesOn) {
    api_.on("GET", "/local/tunnel", Reply::json(200, "{}"));
    api_.on("POST", "/local/tunnel", Reply::empty(204).after(10s));
    Cancel cancel;
    auto poll = test::start(model_.poll(cancel));
    auto first = test::start(model_.send(Connections::remove(), "The domain was not removed."));
    auto second = test::start(model_.send(Connections::remove(), "The domain was not removed."));
    EXPECT_TRUE(second.done());
    clock_.advance(11s);
    EXPECT_TRUE(first.done());
    std::size_t posts = 0, reads = 0;
    for (const auto& r : api_.requestsTo("/local/tunnel")) (r.method == "POST" ? posts : reads)++;
    EXPECT_EQ(posts, 1u);
    // Reads at 0, 5 and 10 seconds, and the one after the send.
    EXPECT_EQ(reads, 4u);
    cancel.cancel();
    clock_.advance(1s);
    EXPECT_TRUE(poll.done());
}

} // namespace
} // namespace orvan
