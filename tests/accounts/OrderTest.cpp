#include "accounts/Accounts.h"
#include "accounts/FallbackOrder.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::FakeBridge;
using test::FakeClock;
using test::Reply;
using Chain = std::vector<std::string>;

std::vector<CompanionAccount> rows(const Chain& ids) {
    std::vector<CompanionAccount> out;
    for (const auto& id : ids) {
        CompanionAccount a;
        a.id = id;
        out.push_back(a);
    }
    return out;
}

TEST(FallbackOrderTest, ListOperationsOnTheOwnersChanges) {
    const auto accounts = rows({"a", "b", "c"});
    EXPECT_EQ(FallbackOrder::clean({"b", "gone", "a", "b"}, accounts), (Chain{"b", "a"}));
    std::vector<std::string> excluded;
    for (const auto& a : FallbackOrder::excluded({"b"}, accounts)) excluded.push_back(a.id);
    EXPECT_EQ(excluded, (Chain{"a", "c"}));

    struct Move { std::set<int> from; int to; Chain want; };
    const Chain abc{"a", "b", "c"};
    for (const auto& m : std::vector<Move>{{{0}, 2, {"b", "a", "c"}},
                                           {{2}, 0, {"c", "a", "b"}},
                                           {{0, 1}, 3, {"c", "a", "b"}},
                                           {{1, 7, -1}, 0, {"b", "a", "c"}},
                                           {{}, 1, abc}})
        EXPECT_EQ(FallbackOrder::moved(abc, m.from, m.to), m.want) << "to " << m.to;

    EXPECT_EQ(FallbackOrder::stepped(abc, "a", -1), abc);
    EXPECT_EQ(FallbackOrder::stepped(abc, "c", 1), abc);
    EXPECT_EQ(FallbackOrder::stepped(abc, "x", 1), abc);
    EXPECT_EQ(FallbackOrder::stepped(abc, "b", 1), (Chain{"a", "c", "b"}));
    EXPECT_EQ(FallbackOrder::including(abc, "a", true), (Chain{"b", "c", "a"}));
    EXPECT_EQ(FallbackOrder::including(abc, "b", false), (Chain{"a", "c"}));
    EXPECT_EQ(FallbackOrder::including({}, "z", true), (Chain{"z"}));
}

// Whatever is dragged where, nothing is lost or doubled, and the dragged ids stay together in
// their old order; a step is a swap of neighbours or nothing.
TEST(FallbackOrderTest, MovesAndStepsArePermutationsOverRandomChains) {
    std::mt19937 random(20261123);
    for (int round = 0; round < 500; ++round) {
        const int size = static_cast<int>(random() % 8);
        Chain raw;
        for (int i = 0; i < size + 3; ++i) raw.push_back(std::string(1, static_cast<char>('a' + random() % 10)));
        Chain ids;
        for (char c = 'a'; c <= 'j'; ++c)
            if (random() % 4) ids.push_back(std::string(1, c));
        const Chain chain = FallbackOrder::clean(raw, rows(ids));
        const int n = static_cast<int>(chain.size());
        std::set<int> from;
        for (int i = -1; i <= n; ++i)
            if (random() % 3 == 0) from.insert(i);
        const int to = n ? static_cast<int>(random() % static_cast<unsigned>(n + 1)) : 0;
        const Chain out = FallbackOrder::moved(chain, from, to);
        Chain sortedIn = chain, sortedOut = out;
        std::sort(sortedIn.begin(), sortedIn.end());
        std::sort(sortedOut.begin(), sortedOut.end());
        ASSERT_EQ(sortedIn, sortedOut) << "round " << round;
        Chain dragged, seen;
        for (int i : from)
            if (i >= 0 && i < n) dragged.push_back(chain[static_cast<std::size_t>(i)]);
        for (const auto& id : out)
            if (std::find(dragged.begin(), dragged.end(), id) != dragged.end()) seen.push_back(id);
        ASSERT_EQ(seen, dragged) << "round " << round;
        if (!dragged.empty()) {
            auto first = std::find(out.begin(), out.end(), dragged.front());
            ASSERT_TRUE(std::equal(dragged.begin(), dragged.end(), first)) << "dragged ids stay together, round " << round;
        }
        if (n) {
            const std::string id = chain[random() % static_cast<unsigned>(n)];
            for (int by : {-1, 1}) {
                const Chain step = FallbackOrder::stepped(chain, id, by);
                Chain s = step;
                std::sort(s.begin(), s.end());
                ASSERT_EQ(s, sortedIn);
                int differ = 0;
                for (int i = 0; i < n; ++i) differ += step[static_cast<std::size_t>(i)] != chain[static_cast<std::size_t>(i)];
                ASSERT_TRUE(differ == 0 || differ == 2);
            }
        }
    }
}

const char* kList = R"({"accounts":[{"id":"a"},{"id":"b"},{"id":"c"}],"chain":["a","b"],"autoSwitch":false})";

class SaveOrderTest : public testing::Test {
protected:
    void SetUp() override { api_.on("GET", "/companion/accounts", Reply::json(200, kList)); }
    void TearDown() override {
        model_.reset();
        settle();
    }
    void settle() { while (clock_.step()) {} }
    FakeClock clock_;
    FakeBridge api_{clock_};
    std::unique_ptr<Accounts> model_ = std::make_unique<Accounts>(api_, clock_, AccountsSetup{{}, "/home/o"});
};

TEST_F(SaveOrderTest, OnlyTheLastSaveStartedHasASayEvenWhenTheFirstAnswersLastAndFails) {
    Accounts& m = *model_;
    api_.queue("POST", "/companion/accounts/chain", Reply::json(500, R"({"message":"Disk full."})").after(5s));
    api_.queue("POST", "/companion/accounts/chain",
               Reply::json(200, R"({"accounts":[{"id":"a"},{"id":"b"}],"chain":["b","a"],"autoSwitch":true})").after(1s));
    auto first = test::start(m.saveOrder({"c"}, false));
    EXPECT_EQ(m.chain, (Chain{"c"})) << "shown at once";
    auto second = test::start(m.saveOrder({"b", "a"}, true));
    EXPECT_EQ(m.chain, (Chain{"b", "a"}));
    EXPECT_TRUE(m.autoSwitch);
    settle();
    ASSERT_TRUE(first.done() && second.done());
    EXPECT_EQ(m.chain, (Chain{"b", "a"}));
    EXPECT_EQ(m.list.size(), 2u) << "the good answer is shown";
    EXPECT_EQ(m.orderNote, "");
    EXPECT_EQ(api_.count("/companion/accounts"), 0u) << "the stale failure asks for no refresh";
    auto bodies = api_.requestsTo("/companion/accounts/chain");
    ASSERT_EQ(bodies.size(), 2u);
    EXPECT_EQ(Json::parse(*bodies[0].body), Json::parse(R"({"chain":["c"],"autoSwitch":false})"));
}

TEST_F(SaveOrderTest, AFailedSaveSaysSoAndShowsWhatTheBridgeHolds) {
    struct Case { Reply reply; std::string note; };
    std::vector<Case> cases = {{Reply::json(409, R"({"message":"Chain is locked."})"), "Not saved. Chain is locked."},
                               {Reply::json(200, "not json"), "Not saved. The bridge did not answer."},
                               {Reply::failure(), "Not saved. The bridge did not answer."}};
    for (auto& c : cases) {
        model_ = std::make_unique<Accounts>(api_, clock_, AccountsSetup{{}, "/home/o"});
        Accounts& m = *model_;
        api_.queue("POST", "/companion/accounts/chain", std::move(c.reply));
        test::start(m.saveOrder({"c", "a"}, true));
        settle();
        EXPECT_EQ(m.orderNote, c.note);
        EXPECT_EQ(m.chain, (Chain{"a", "b"})) << c.note << ": back to the bridge's order";
        EXPECT_FALSE(m.autoSwitch);
    }
}

} // namespace
} // namespace orvan
