// The answer convention the companion relies on: 204 and nothing for a write, 200 and an object
// for a read, an object with a message for every failure.

#include "SimProcess.h"

#include <gtest/gtest.h>

namespace orvan::simtest {
namespace {

using nlohmann::json;

const char* const ownerId = "9F2C4E1A-7B3D-4C21-A8E5-3D6F0B7C9A12";
const char* const guestId = "C81D5A73-2E9F-4B6A-9C0D-5E7F1A2B3C48";

struct Exchange {
    const char* name;
    const char* method;
    const char* path;
    std::optional<std::string> body; // sent as is
    int status;
};

void PrintTo(const Exchange& value, std::ostream* out) { *out << value.name; }

class SimConvention : public testing::TestWithParam<Exchange> {};

TEST_P(SimConvention, AnswersInTheBridgesShape) {
    SimProcess sim({"--seed", "demo"});
    ASSERT_TRUE(sim.ready());
    const auto& exchange = GetParam();
    httplib::Headers headers{{"X-Tulm-Local", sim.key()}};
    auto client = sim.client();
    auto answer = std::string(exchange.method) == "GET"
                      ? client.Get(exchange.path, headers)
                      : client.Post(exchange.path, headers, exchange.body.value_or(""),
                                    exchange.body ? "application/json" : "");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, exchange.status) << answer->body;
    if (exchange.status == 204) {
        EXPECT_EQ(answer->body, "");
        return;
    }
    json body = json::parse(answer->body, nullptr, false);
    ASSERT_TRUE(body.is_object()) << answer->body;
    EXPECT_EQ(answer->get_header_value("Content-Type"), "application/json");
    if (exchange.status >= 400) {
        EXPECT_FALSE(body.value("message", "").empty()) << answer->body;
    }
}

std::string idBody(const char* id, const std::string& rest = "") {
    return std::string(R"({"id":")") + id + "\"" + rest + "}";
}

INSTANTIATE_TEST_SUITE_P(
    Endpoints, SimConvention,
    testing::Values(
        Exchange{"ReadStatus", "GET", "/companion/status", std::nullopt, 200},
        Exchange{"ReadDevices", "GET", "/local/devices", std::nullopt, 200},
        Exchange{"Rename", "POST", "/companion/name", R"({"name":"Studio"})", 204},
        Exchange{"RemoteOff", "POST", "/companion/remote", R"({"on":false})", 204},
        Exchange{"SidebarRight", "POST", "/companion/sidebar", R"({"position":"right"})", 204},
        Exchange{"ScreenOff", "POST", "/companion/screen", R"({"on":false})", 204},
        Exchange{"ScreenStopWithoutBody", "POST", "/companion/screen/stop", std::nullopt, 204},
        Exchange{"Diagnostics", "POST", "/companion/diagnostics", R"({"allowed":false})", 204},
        Exchange{"RemovePhone", "POST", "/companion/phone", idBody(guestId), 204},
        Exchange{"PromoteAnOwnerAgain", "POST", "/companion/phone/role", idBody(ownerId, R"(,"role":"owner")"), 204},
        Exchange{"ExtendGuest", "POST", "/local/devices/extend", idBody(guestId, R"(,"ends":"2030-01-02T03:04:05Z")"),
                 204},
        Exchange{"BodyNotJson", "POST", "/companion/name", "name=Studio", 400},
        Exchange{"BodyNotObject", "POST", "/companion/remote", "[true]", 400},
        Exchange{"WrongFieldType", "POST", "/companion/remote", R"({"on":"yes"})", 400},
        Exchange{"BlankName", "POST", "/companion/name", R"({"name":" \n "})", 400},
        Exchange{"SidebarTop", "POST", "/companion/sidebar", R"({"position":"top"})", 400},
        Exchange{"RoleGuest", "POST", "/companion/phone/role", idBody(guestId, R"(,"role":"guest")"), 400},
        Exchange{"ExtendWithBadDate", "POST", "/local/devices/extend", idBody(guestId, R"(,"ends":"Friday")"), 400},
        Exchange{"ExtendAnOwner", "POST", "/local/devices/extend", idBody(ownerId, R"(,"ends":"2030-01-02T03:04:05Z")"),
                 409},
        Exchange{"UnknownPath", "GET", "/companion/nothing", std::nullopt, 404},
        Exchange{"ReadAWrite", "GET", "/companion/name", std::nullopt, 405},
        Exchange{"WriteARead", "POST", "/companion/status", "{}", 405}),
    [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace orvan::simtest
