#include "bridge/Bridge.h"
#include "bridge/Carryover.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeProcesses.h"
#include "platform/LoginItem.h"
#include "foundation/UserDefaults.h"

#include "fakes/TempFolder.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

namespace fs = std::filesystem;
using Status = LoginItem::Status;

const std::string kRefused = "Move Orvan Companion into Applications, then turn this on.";

// A login item whose answers the test decides, and which remembers what it was asked to do.
struct FakeLoginItem final : LoginItem {
    bool works = true;
    Status current = Status::NotRegistered;
    std::optional<Status> settlesAs; // where a call that works leaves it, when a desktop holds it back
    std::vector<std::string> calls;

    bool registerItem(std::string& error) override { return answer("register", Status::Enabled, error); }
    bool unregisterItem(std::string& error) override { return answer("unregister", Status::NotRegistered, error); }
    Status status() const override { return current; }
    bool launchedAtLogin() const override { return false; }
    bool answer(const char* call, Status after, std::string& error) {
        calls.emplace_back(call);
        if (!works) return error = "Operation not permitted", false;
        return current = settlesAs.value_or(after), true;
    }
};

class BridgeLoginTest : public testing::Test {
protected:

    // A fresh model over a fresh settings folder, as a new launch would have.
    std::unique_ptr<Bridge> bridge(const std::string& folder, LoginItem* item) {
        BridgeSetup setup;
        setup.environment = {{"HOME", root_.string()}, {"XDG_CONFIG_HOME", (root_ / folder).string()}};
        setup.loginItem = item;
        return std::make_unique<Bridge>(api_, clock_, processes_, setup);
    }
    std::optional<Json> settled(const std::string& folder) const {
        Environment env{{"XDG_CONFIG_HOME", (root_ / folder).string()}};
        return UserDefaults(UserDefaults::fileOf(Carryover::bundle, env)).value(Carryover::loginSettledKey);
    }

    test::TempFolder temp_;
    fs::path root_ = temp_.path();
    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    test::FakeProcesses processes_;
};

TEST_F(BridgeLoginTest, AChoiceSettlesTheCarryOverAndShowsWhatTheLoginItemSays) {
    struct Case {
        const char* name;
        bool on;
        bool works;
        Status before;
        std::optional<Status> settlesAs;
        const char* call; // nullptr: no login facility at all
        bool loginOn;
        std::string note;
    };
    const Case cases[] = {
        {"turned on", true, true, Status::NotRegistered, std::nullopt, "register", true, ""},
        {"turned off", false, true, Status::Enabled, std::nullopt, "unregister", false, ""},
        {"turned on but held for approval", true, true, Status::NotRegistered, Status::RequiresApproval, "register", false, ""},
        {"turning on refused", true, false, Status::NotRegistered, std::nullopt, "register", false, kRefused},
        {"turning off refused leaves it on", false, false, Status::Enabled, std::nullopt, "unregister", true, kRefused},
        {"no login facility: the switch stays off and says so", true, true, Status::NotRegistered, std::nullopt, nullptr, false,
         kRefused},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        FakeLoginItem item;
        item.works = c.works;
        item.current = c.before;
        item.settlesAs = c.settlesAs;
        auto model = bridge(c.name, c.call ? &item : nullptr);
        model->loginNote = "a note from before";
        model->loginOn = !c.loginOn;
        int published = 0;
        auto watching = model->observe([&] { ++published; });

        model->setLogin(c.on);

        EXPECT_EQ(item.calls, c.call ? std::vector<std::string>{c.call} : std::vector<std::string>{});
        EXPECT_EQ(model->loginOn, c.loginOn);
        EXPECT_EQ(model->loginNote, c.note);
        EXPECT_GT(published, 0);
        // Turning it off settles too, so a later launch at login doesn't register it again.
        EXPECT_EQ(settled(c.name), Json(true));
    }
}

} // namespace
} // namespace orvan
