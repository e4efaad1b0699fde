// The real program, headless, against the simulator: a phone that followed a link invite waits in
// a block of its own with its code; an approval sent with a code the bridge has since replaced is
// refused with the sentence that says so, and one with the new code lets the phone in. The first
// owner's setup code prints as a QR code in its own block, goes when the owner takes it, and is
// cancelled when the program quits while it shows.
#include "DrivenProgram.h"

#include <gtest/gtest.h>
#include <regex>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;
using nlohmann::json;

constexpr const char* kFrame = "\u2500\u2500\u2500\u2500\u2500\u2500\u2500\u2500 Remote control";

class JoinsProgram : public DrivenProgram {
protected:
    void adjust(QProcessEnvironment& env) override { env.insert("ORVAN_SIM_HOSTS", "badrow"); }
    std::string frame() const {
        auto at = output_.rfind(kFrame);
        return at == std::string::npos ? std::string() : output_.substr(at);
    }
    bool inFrame(const std::string& words) const { return frame().find(words) != std::string::npos; }
    std::string lineWith(const std::string& words) const {
        std::string f = frame();
        auto at = f.find(words);
        if (at == std::string::npos) return {};
        auto start = f.rfind('\n', at) + 1;
        return f.substr(start, f.find('\n', start) - start);
    }
    bool settles(const std::function<bool()>& done) { return waitUntil(done, 20s); }
    std::string code() const {
        std::smatch m;
        std::string f = frame();
        return std::regex_search(f, m, std::regex("Code (\\d{4})\n")) ? std::string(m[1]) : std::string();
    }
    bool approvable() const {
        std::string line = lineWith("[Approve]");
        return !line.empty() && line.find("(disabled)") == std::string::npos;
    }
};

TEST_F(JoinsProgram, AStaleCodeIsRefusedAndTheCodeShownNowLetsThePhoneIn) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(settles([&] { return saw("== Phones =="); })) << output_;
    std::string id;
    ASSERT_TRUE(settles([&] {
        auto made = ask("/local/invite", json{{"role", "member"}, {"kind", "link"}});
        if (made && made->status == 200) id = json::parse(made->body, nullptr, false).value("id", "");
        return !id.empty();
    }));
    ASSERT_TRUE(ask("/_sim/follow", json{{"id", id}, {"name", "Ann\u2019s phone"}}));

    ASSERT_TRUE(settles([&] { return inFrame("== Join request ==") && approvable(); })) << frame();
    EXPECT_TRUE(inFrame("Ann\u2019s phone is waiting to join.")) << frame();
    EXPECT_TRUE(inFrame("Approve only if Ann\u2019s phone reads you this code.")) << frame();
    const std::string first = code();
    ASSERT_FALSE(first.empty()) << frame();

    // The phone asks again with a new code just before the owner's click lands; the poll may
    // have shown it first, and then the click is refused in the window and tried again.
    bool refused = false;
    for (int attempt = 0; attempt < 3 && !refused; ++attempt) {
        ASSERT_TRUE(settles([&] { return approvable(); })) << frame();
        const std::string shown = code();
        const std::string next = shown == "0042" ? "0043" : "0042";
        ASSERT_TRUE(ask("/_sim/join-code", json{{"code", next}}));
        if (!type("press Approve", "> ")) continue;
        refused = settles([&] {
            return inFrame("That request changed since it was shown: the code below is the one to check now.");
        });
    }
    ASSERT_TRUE(refused) << frame();
    const json waiting = read("/local/joins").value("joins", json::array());
    ASSERT_EQ(waiting.size(), 1u);
    const std::string now = waiting[0].value("code", "");
    ASSERT_TRUE(settles([&] { return code() == now && approvable(); })) << frame();
    ASSERT_TRUE(type("press Approve", "> Pressed")) << output_;
    ASSERT_TRUE(settles([&] { return !inFrame("== Join request ==") && inFrame("Ann\u2019s phone"); })) << frame();
    EXPECT_TRUE(read("/local/joins")["joins"].empty());
}

TEST_F(JoinsProgram, TheOwnersCodePrintsAsAQrCodeAndClosesTwoSecondsAfterItWasTaken) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(settles([&] { return saw("== Phones =="); })) << output_;
    EXPECT_FALSE(inFrame("Set up this Mac's owner\u2026")) << "the seeded Mac has an owner";
    ASSERT_TRUE(settles([&] {
        auto seeded = ask("/_sim/seed", json{{"seed", "empty"}});
        return seeded && seeded->status == 204;
    }));
    ASSERT_TRUE(settles([&] { return inFrame("[Set up this Mac's owner\u2026]"); })) << frame();
    ASSERT_TRUE(type("press \"Set up this Mac's owner\u2026\"", "> Pressed")) << output_;
    ASSERT_TRUE(settles([&] { return inFrame("Works until"); })) << frame();
    EXPECT_TRUE(inFrame("== Set up this Mac's owner ==")) << frame();
    EXPECT_TRUE(inFrame("<picture: Setup code")) << frame();
    EXPECT_NE(frame().find("\u2580"), std::string::npos) << "the code prints as half blocks";

    ASSERT_TRUE(ask("/_sim/owner-setup", json{{"take", true}}));
    ASSERT_TRUE(settles([&] { return inFrame("Owner added."); })) << frame();
    EXPECT_FALSE(inFrame("<picture: Setup code"));
    const auto added = std::chrono::steady_clock::now();
    ASSERT_TRUE(settles([&] { return !inFrame("== Set up this Mac's owner =="); })) << frame();
    EXPECT_GE(std::chrono::steady_clock::now() - added, 1500ms) << "Owner added. stays about 2 seconds";
    ASSERT_TRUE(settles([&] { return !inFrame("[Set up this Mac's owner\u2026]"); })) << frame();
}

TEST_F(JoinsProgram, QuittingWhileTheCodeShowsCancelsIt) {
    // A bridge the program adopts outlives it, so what the quit did can be read afterwards.
    StartedSim bridge(8787, home_.environment());
    ASSERT_TRUE(waitUntil([] { return healthzAnswers(8787); })) << "the simulator did not come up";
    ASSERT_TRUE(start());
    ASSERT_TRUE(settles([&] { return saw("== Phones =="); })) << output_;
    ASSERT_TRUE(settles([&] {
        auto seeded = ask("/_sim/seed", json{{"seed", "empty"}});
        return seeded && seeded->status == 204;
    }));
    ASSERT_TRUE(settles([&] { return inFrame("[Set up this Mac's owner\u2026]"); })) << frame();
    ASSERT_TRUE(type("press \"Set up this Mac's owner\u2026\"", "> Pressed")) << output_;
    ASSERT_TRUE(settles([&] { return inFrame("Works until"); })) << frame();
    ASSERT_EQ(read("/local/owner-setup")["live"], true);
    program_.terminate();
    ASSERT_TRUE(finished());
    EXPECT_EQ(read("/local/owner-setup")["live"], false) << errors_;
}

} // namespace
} // namespace orvan
