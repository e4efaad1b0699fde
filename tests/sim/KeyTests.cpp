// The door: which folder holds local.key, how the key is made and kept, and who gets in.

#include "SimProcess.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace orvan::simtest {
namespace {

namespace fs = std::filesystem;

unsigned mode(const fs::path& path) {
    struct stat info {};
    if (::stat(path.c_str(), &info) != 0) return 0;
    return info.st_mode & 0777;
}

TEST(SimKey, IsMadePrivateAndRandomAndKeptAcrossStarts) {
    std::string first;
    fs::path folder;
    {
        SimProcess sim;
        ASSERT_TRUE(sim.ready()) << sim.errors();
        first = sim.key();
        EXPECT_EQ(mode(sim.dataFolder() / "local.key"), 0600u);
        EXPECT_EQ(first.size(), 64u);
        EXPECT_EQ(first.find_first_not_of("0123456789abcdef"), std::string::npos) << first;
    }
    SimProcess other;
    EXPECT_NE(other.key(), first) << "two data folders must not share a key";
}

TEST(SimKey, AnExistingKeyIsTrimmedAndHonoured) {
    fs::path folder = fs::temp_directory_path() / ("orvan-sim-key-" + std::to_string(::getpid()));
    fs::create_directories(folder / "data");
    std::ofstream(folder / "data" / "local.key") << "  chosen-key\n\n";
    {
        SimProcess sim({}, {}, folder);
        ASSERT_TRUE(sim.ready()) << sim.errors();
        auto answer = sim.client().Get("/companion/status", httplib::Headers{{"X-Tulm-Local", "chosen-key"}});
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, 200);
    }
    fs::remove_all(folder);
}

struct FolderCase {
    const char* name;
    Environment environment; // "@" stands for the test's temporary folder
    const char* expected;    // relative to that folder
};

void PrintTo(const FolderCase& value, std::ostream* out) { *out << value.name; }

class SimDataFolder : public testing::TestWithParam<FolderCase> {};

TEST_P(SimDataFolder, FollowsTheEnvironment) {
    SimProcess probe; // only for a folder of our own
    ASSERT_TRUE(probe.ready());
    Environment environment;
    for (auto [name, value] : GetParam().environment) {
        if (value.rfind('@', 0) == 0) value = probe.folder().string() + value.substr(1);
        environment[name] = value;
    }
    fs::path folder = probe.folder() / "second";
    fs::create_directories(folder);
    environment.try_emplace("HOME", (folder / "home").string());
    SimProcess sim({}, environment, folder);
    ASSERT_TRUE(sim.ready()) << sim.errors();
    EXPECT_TRUE(fs::exists(probe.folder() / GetParam().expected / "local.key")) << GetParam().expected;
}

INSTANTIATE_TEST_SUITE_P(
    Variables, SimDataFolder,
    testing::Values(FolderCase{"OrvanDir", {{"ORVAN_DIR", "@/orvan"}, {"TULM_MOBILE_DIR", "@/tulm"}}, "orvan"},
                    FolderCase{"EmptyOrvanDirFallsToOldName", {{"ORVAN_DIR", ""}, {"TULM_MOBILE_DIR", "@/tulm"}}, "tulm"},
                    FolderCase{"XdgDataHome", {{"ORVAN_DIR", ""}, {"XDG_DATA_HOME", "@/xdg"}}, "xdg/Orvan"},
                    FolderCase{"RelativeXdgIsIgnored",
                               {{"ORVAN_DIR", ""}, {"XDG_DATA_HOME", "relative"}, {"HOME", "@/h"}},
                               "h/.local/share/Orvan"},
                    FolderCase{"Home", {{"ORVAN_DIR", ""}, {"HOME", "@/h"}}, "h/.local/share/Orvan"}),
    [](const auto& info) { return std::string(info.param.name); });

struct DoorCase {
    const char* name;
    const char* method;
    const char* path;
    std::optional<std::string> key; // "!" stands for the right key
    int status;
};

void PrintTo(const DoorCase& value, std::ostream* out) { *out << value.name; }

class SimDoor : public testing::TestWithParam<DoorCase> {};

TEST_P(SimDoor, LetsInOnlyTheRightKey) {
    SimProcess sim;
    ASSERT_TRUE(sim.ready());
    const auto& door = GetParam();
    httplib::Headers headers;
    if (door.key) headers.emplace("X-Tulm-Local", *door.key == "!" ? sim.key() : *door.key);
    auto client = sim.client();
    auto answer = std::string(door.method) == "GET" ? client.Get(door.path, headers)
                                                     : client.Post(door.path, headers, "{}", "application/json");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, door.status);
    if (door.status == 401) {
        auto body = nlohmann::json::parse(answer->body, nullptr, false);
        ASSERT_TRUE(body.is_object()) << answer->body;
        EXPECT_FALSE(body.value("message", "").empty()) << answer->body;
    }
}

INSTANTIATE_TEST_SUITE_P(
    Requests, SimDoor,
    testing::Values(DoorCase{"HealthWithoutKey", "GET", "/healthz", std::nullopt, 200},
                    DoorCase{"StatusWithoutKey", "GET", "/companion/status", std::nullopt, 401},
                    DoorCase{"StatusWithEmptyKey", "GET", "/companion/status", "", 401},
                    DoorCase{"StatusWithWrongKey", "GET", "/companion/status", "0123", 401},
                    DoorCase{"StatusWithRightKey", "GET", "/companion/status", "!", 200},
                    DoorCase{"WriteWithWrongKey", "POST", "/companion/remote", "nope", 401},
                    DoorCase{"DevicesWithoutKey", "GET", "/local/devices", std::nullopt, 401},
                    DoorCase{"UnknownPathWithoutKey", "GET", "/companion/nothing", std::nullopt, 401},
                    DoorCase{"ControlWithoutKey", "POST", "/_sim/clear", std::nullopt, 401},
                    DoorCase{"ControlWithRightKey", "POST", "/_sim/clear", "!", 204}),
    [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace orvan::simtest
