#include "bridge/Bridge.h"
#include "bridge/MenuDesk.h"
#include "connections/LidStore.h"
#include "connections/LidWake.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeProcesses.h"
#include "fakes/TempFolder.h"
#include "foundation/Files.h"
#include "platform/linux/PowerSupplies.h"
#include "ui/TextCommands.h"
#include "ui/TextRenderer.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <map>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::Reply;

using Supply = std::map<std::string, std::string>;

// Writes a power_supply folder as the kernel lays it out: one folder per supply, one file per attribute.
std::filesystem::path tree(const std::filesystem::path& root, const std::map<std::string, Supply>& supplies) {
    std::filesystem::create_directories(root);
    for (const auto& [name, attributes] : supplies)
        for (const auto& [attribute, value] : attributes) Files::write(root / name / attribute, value + "\n");
    return root;
}

TEST(LidBatteryTest, OnlyTheMachinesOwnBatteryOnItsOwnPowerAndUnderAFifthIsTooLow) {
    const Supply mainsOff{{"type", "Mains"}, {"online", "0"}};
    const Supply mainsOn{{"type", "Mains"}, {"online", "1"}};
    struct Case {
        const char* what;
        std::map<std::string, Supply> supplies;
        bool low;
    } cases[] = {
        {"no battery at all", {{"AC", mainsOn}}, false},
        {"19 % on battery", {{"AC", mainsOff}, {"BAT0", {{"type", "Battery"}, {"status", "Discharging"}, {"capacity", "19"}}}}, true},
        {"20 % on battery", {{"AC", mainsOff}, {"BAT0", {{"type", "Battery"}, {"status", "Discharging"}, {"capacity", "20"}}}}, false},
        {"19 % on mains", {{"AC", mainsOn}, {"BAT0", {{"type", "Battery"}, {"status", "Not charging"}, {"capacity", "19"}}}}, false},
        {"19 % charging", {{"BAT0", {{"type", "Battery"}, {"status", "Charging"}, {"capacity", "19"}}}}, false},
        {"charge form, 17 %", {{"BAT1", {{"type", "Battery"}, {"status", "Discharging"}, {"charge_now", "700"}, {"charge_full", "4000"}}}}, true},
        {"energy form, 50 %", {{"BAT1", {{"type", "Battery"}, {"status", "Discharging"}, {"energy_now", "2000"}, {"energy_full", "4000"}}}}, false},
        {"a mouse's battery is not the machine's", {{"hid-mouse", {{"type", "Battery"}, {"scope", "Device"}, {"capacity", "5"}}}}, false},
        {"unreadable level counts as full", {{"BAT0", {{"type", "Battery"}, {"status", "Discharging"}, {"capacity", "x"}}}}, false},
        {"a full of zero compares the level alone", {{"BAT0", {{"type", "Battery"}, {"charge_now", "19"}, {"charge_full", "0"}}}}, true},
    };
    test::TempFolder temp;
    int n = 0;
    for (const auto& c : cases) {
        auto folder = tree(temp.path() / std::to_string(n++), c.supplies);
        auto sources = PowerSupplies::read(folder);
        ASSERT_TRUE(sources) << c.what;
        EXPECT_EQ(LidWake::batteryTooLow(*sources), c.low) << c.what;
    }
    EXPECT_FALSE(PowerSupplies::read(temp.path() / "missing"));
}

// The system's lock as the lid model sees it: refusals and a battery that tests change.
class FakePower final : public Power {
public:
    bool hold() override {
        if (refuses) return false;
        if (!held) ++taken;
        held = true;
        return true;
    }
    void letGo() override { held = false; }
    bool holding() const override { return held; }
    std::optional<std::vector<PowerSource>> sources() override { return battery; }

    bool refuses = false;
    bool held = false;
    int taken = 0;
    std::optional<std::vector<PowerSource>> battery;
};

PowerSource battery(std::int64_t percent, bool mains) {
    return PowerSource{"InternalBattery", mains ? "AC Power" : "Battery Power", false, percent, 100};
}

class LidTest : public testing::Test {
protected:
    void SetUp() override {
        setup_.environment = {{"HOME", temp_.path().string()}, {"XDG_DATA_HOME", (temp_.path() / "data").string()},
                              {"ORVAN_DIR", (temp_.path() / "bridge").string()}, {"PATH", "/usr/bin:/bin"}};
        setup_.lid = &wake_;
        api_.on("GET", "/healthz", Reply::json(200, "ok"));
        api_.on("GET", "/companion/status", Reply::json(200, R"({"name":"Studio"})"));
    }
    Bridge& bridge() {
        if (!bridge_) bridge_ = std::make_unique<Bridge>(api_, clock_, processes_, setup_);
        return *bridge_;
    }
    std::filesystem::path file() const { return temp_.path() / "data" / "Orvan" / "lid.json"; }

    test::TempFolder temp_;
    FakePower power_;
    LidWake wake_{power_};
    BridgeSetup setup_;
    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    test::FakeProcesses processes_;
    std::unique_ptr<Bridge> bridge_;
};

TEST_F(LidTest, LowBatteryLetsGoKeepsTheWishAndChargingTakesTheHoldBackWithinARound) {
    Bridge& b = bridge();
    b.start();
    EXPECT_FALSE(b.lidOn);
    EXPECT_EQ(b.lidNote, "Closing the lid puts this Mac to sleep.");

    b.setLid(true);
    EXPECT_TRUE(b.lidHeld && power_.held);
    EXPECT_EQ(b.lidNote, "This Mac keeps running with the lid closed, as long as Orvan Companion is open. Leave it "
                         "out of a bag.");
    auto stored = Files::read(file());
    ASSERT_TRUE(stored);
    EXPECT_EQ(*json::parse(*stored), (Json{{"on", true}}));
    struct stat info {};
    ASSERT_EQ(::stat(file().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);

    // A poll round keeps the one lock it has.
    clock_.advance(2s);
    EXPECT_EQ(power_.taken, 1);

    power_.battery = std::vector<PowerSource>{battery(19, false)};
    clock_.advance(2s);
    EXPECT_FALSE(b.lidHeld || power_.held);
    EXPECT_TRUE(b.lidOn);
    EXPECT_EQ(b.lidNote, "Battery is low, so closing the lid can sleep this Mac again.");

    power_.battery = std::vector<PowerSource>{battery(19, true)};
    clock_.advance(2s);
    EXPECT_TRUE(b.lidHeld && power_.held);

    // A round runs even while no bridge answers.
    api_.setDown(true);
    power_.battery = std::vector<PowerSource>{battery(5, false)};
    clock_.advance(2s);
    EXPECT_FALSE(power_.held);

    b.setLid(false);
    EXPECT_EQ(b.lidNote, "Closing the lid puts this Mac to sleep.");
    EXPECT_EQ(*json::parse(*Files::read(file())), (Json{{"on", false}}));
}

TEST_F(LidTest, ARefusedLockSaysSoAndQuittingLetsGo) {
    power_.refuses = true;
    bridge().setLid(true);
    EXPECT_FALSE(bridge().lidHeld);
    EXPECT_EQ(bridge().lidNote, "macOS did not allow the lid to stay awake.");

    power_.refuses = false;
    clock_.advance(2s); // no poll yet: the wish alone changes nothing until a round or a set
    bridge().start();
    EXPECT_TRUE(bridge().lidOn) << "an early setLid marks the wish loaded, so start keeps it";
    EXPECT_TRUE(power_.held);
    bridge().releaseLidHold();
    EXPECT_FALSE(power_.held || bridge().lidHeld);
}

TEST_F(LidTest, TheFirstStartReadsTheStoredWishAndABadFileIsOff) {
    struct Case {
        std::optional<std::string> file;
        bool on;
    } cases[] = {{std::nullopt, false}, {R"({"on":true})", true}, {"{}", false}, {R"({"on":"yes"})", false}, {"{", false}};
    for (const auto& c : cases) {
        std::filesystem::remove(file());
        if (c.file) Files::write(file(), *c.file);
        bridge_.reset();
        power_.held = !c.on; // a lock left standing is undone when the wish is off
        bridge().start();
        EXPECT_EQ(bridge().lidOn, c.on) << c.file.value_or("(none)");
        EXPECT_EQ(power_.held, c.on) << c.file.value_or("(none)");
        EXPECT_EQ(LidStore::read(setup_.environment), c.on);
    }
}

TEST_F(LidTest, TheMenuRowSaysTheWishTurnsItOverAndQuittingLetsGoFirst) {
    Bridge& b = bridge();
    int quits = 0;
    MenuContext context;
    context.quit = [&] {
        EXPECT_FALSE(power_.held) << "the lock goes before the program does";
        ++quits;
    };
    auto act = [&](const char* title) {
        ui::Node menu = MenuDesk::build(b, context);
        auto frame = ui::TextRenderer({.numbered = true}).frame(menu);
        auto found = ui::resolve(frame.controls, title);
        ASSERT_TRUE(found.control) << found.error << "\n" << frame.text;
        ASSERT_TRUE(ui::perform(frame.controls, {ui::Verb::Activate, std::to_string(found.control->number), {}}).accepted);
    };
    act("Sleep when the lid closes");
    EXPECT_TRUE(b.lidOn && power_.held);
    act("Quit Orvan Companion");
    EXPECT_EQ(quits, 1);
    EXPECT_TRUE(b.lidOn) << "quitting keeps the wish for the next launch";
}

} // namespace
} // namespace orvan
