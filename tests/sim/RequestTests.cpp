// What each request gets: 204 and nothing for a write, 200 and an object for a read, an object with
// a message for every failure; the key at the door; and each misbehaviour, by flag or by control
// path, until /_sim/clear undoes it.

#include "SimProcess.h"

#include <functional>
#include <gtest/gtest.h>

namespace orvan::simtest {
namespace {

struct Exchange {
    const char* name;
    const char* method;
    const char* path;
    std::optional<std::string> body; // sent as is
    int status;
    const char* key = "!"; // "!" for the right key, nullptr for no header
};

std::string idBody(const std::string& id, const std::string& rest = "") {
    return R"({"id":")" + id + "\"" + rest + "}";
}

// None of these changes what a later one sees, so one process answers them all.
TEST(SimExchange, AnswersInTheBridgesShape) {
    const Exchange exchanges[] = {
        {"ReadStatus", "GET", "/companion/status", {}, 200},
        {"ReadDevices", "GET", "/local/devices", {}, 200},
        {"ScreenStopWithoutBody", "POST", "/companion/screen/stop", {}, 204},
        {"PromoteAnOwnerAgain", "POST", "/companion/phone/role", idBody(owner, R"(,"role":"owner")"), 204},
        {"BodyNotJson", "POST", "/companion/name", "name=Studio", 400},
        {"BodyNotObject", "POST", "/companion/remote", "[true]", 400},
        {"WrongFieldType", "POST", "/companion/remote", R"({"on":"yes"})", 400},
        {"BlankName", "POST", "/companion/name", R"({"name":" \n "})", 400},
        {"SidebarTop", "POST", "/companion/sidebar", R"({"position":"top"})", 400},
        {"RoleGuest", "POST", "/companion/phone/role", idBody(guest, R"(,"role":"guest")"), 400},
        {"ExtendWithBadDate", "POST", "/local/devices/extend", idBody(guest, R"(,"ends":"Friday")"), 400},
        {"ExtendAnOwner", "POST", "/local/devices/extend", idBody(owner, R"(,"ends":"2030-01-02T03:04:05Z")"),
         409},
        {"UnknownPath", "GET", "/companion/nothing", {}, 404},
        {"ReadAWrite", "GET", "/companion/name", {}, 405},
        {"WriteARead", "POST", "/companion/status", "{}", 405},
        {"HealthWithoutKey", "GET", "/healthz", {}, 200, nullptr},
        {"StatusWithoutKey", "GET", "/companion/status", {}, 401, nullptr},
        {"StatusWithEmptyKey", "GET", "/companion/status", {}, 401, ""},
        {"StatusWithWrongKey", "GET", "/companion/status", {}, 401, "0123"},
        {"WriteWithWrongKey", "POST", "/companion/remote", "{}", 401, "nope"},
        {"DevicesWithoutKey", "GET", "/local/devices", {}, 401, nullptr},
        {"UnknownPathWithoutKey", "GET", "/companion/nothing", {}, 401, nullptr},
        {"ControlWithoutKey", "POST", "/_sim/clear", "{}", 401, nullptr},
        {"ControlWithRightKey", "POST", "/_sim/clear", "{}", 204},
    };
    SimProcess sim({"--seed", "demo"});
    ASSERT_TRUE(sim.ready());
    for (const auto& c : exchanges) {
        SCOPED_TRACE(c.name);
        httplib::Headers headers;
        if (c.key) headers.emplace("X-Tulm-Local", std::string(c.key) == "!" ? sim.key() : c.key);
        auto answer = std::string(c.method) == "GET" ? sim.client().Get(c.path, headers)
                                                     : sim.client().Post(c.path, headers, c.body.value_or(""),
                                                                         c.body ? "application/json" : "");
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, c.status) << answer->body;
        if (c.status == 204) {
            EXPECT_EQ(answer->body, "");
            continue;
        }
        json body = json::parse(answer->body, nullptr, false);
        ASSERT_TRUE(body.is_object()) << answer->body;
        EXPECT_EQ(answer->get_header_value("Content-Type"), "application/json");
        EXPECT_TRUE(c.status < 400 || !body.value("message", "").empty()) << answer->body;
    }
}

json parsed(const std::string& body) { return json::parse(body, nullptr, false); }
bool hasMessage(const std::string& body) {
    json value = parsed(body);
    return value.is_object() && !value.value("message", "").empty();
}

// One request a misbehaviour spoils: its status (0 for no answer at all) and what its body must be.
struct Probe {
    const char* method;
    const char* path;
    int status;
    std::function<bool(const std::string&)> body = nullptr;
    json sent = json::object();
    std::chrono::milliseconds patience = 10s;
};

struct Misdeed {
    const char* name;
    std::vector<std::string> flags;
    std::string control; // the /_sim/ path that does the same
    json controlBody;
    std::vector<Probe> probes;
};

enum class Way { flag, control };
class SimMisbehaviour : public testing::TestWithParam<std::tuple<Misdeed, Way>> {};

TEST_P(SimMisbehaviour, DoesWhatItSaysUntilCleared) {
    const auto& [misdeed, way] = GetParam();
    SimProcess sim(way == Way::flag ? misdeed.flags : std::vector<std::string>{});
    ASSERT_TRUE(sim.ready()) << sim.errors();
    auto expect = [&](const Probe& probe) {
        SCOPED_TRACE(std::string(probe.method) + " " + probe.path);
        auto answer = std::string(probe.method) == "GET"
                          ? sim.client(probe.patience).Get(probe.path, sim.keyed())
                          : sim.client(probe.patience).Post(probe.path, sim.keyed(), probe.sent.dump(), "application/json");
        if (probe.status == 0) {
            EXPECT_FALSE(answer) << "an answer came: " << answer->status;
            return;
        }
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, probe.status) << answer->body;
        EXPECT_TRUE(!probe.body || probe.body(answer->body)) << answer->body;
    };
    if (way == Way::control) expect({"POST", misdeed.control.c_str(), 204, nullptr, misdeed.controlBody});
    for (const auto& probe : misdeed.probes) expect(probe);
    expect({"POST", "/_sim/clear", 204});
    expect({"GET", "/companion/status", 200});
    expect({"GET", "/healthz", 200});
}

const json studio = {{"name", "Studio"}};
const std::vector<Misdeed> misdeeds = {
    {"FailWithAMessage", {"--fail", "/companion/status=503"}, "/_sim/fail", {{"path", "/companion/status"}, {"status", 503}},
     {{"GET", "/companion/status", 503, hasMessage}}},
    {"FailWithTheBodyGiven", {"--fail", R"(/companion/phone/role=404:{"error":"not_found"})"}, "/_sim/fail",
     {{"path", "/companion/phone/role"}, {"status", 404}, {"body", {{"error", "not_found"}}}},
     {{"POST", "/companion/phone/role", 404, [](auto& b) { return parsed(b) == json{{"error", "not_found"}}; }}}},
    {"FailWithNoBodyAndChangeNothing", {"--fail", "/companion/name=500:"}, "/_sim/fail",
     {{"path", "/companion/name"}, {"status", 500}, {"body", ""}},
     {{"POST", "/companion/name", 500, [](auto& b) { return b.empty(); }, studio},
      {"GET", "/companion/status", 200, [](auto& b) { return parsed(b)["name"] != "Studio"; }}}},
    {"FailEveryPathButControl", {"--fail", "*=502"}, "/_sim/fail", {{"path", "*"}, {"status", 502}},
     {{"GET", "/companion/status", 502}, {"GET", "/local/devices", 502}, {"GET", "/healthz", 502}}},
    {"Garbage", {"--garbage", "/companion/status"}, "/_sim/garbage", {{"path", "/companion/status"}},
     {{"GET", "/companion/status", 200, [](auto& b) { return parsed(b).is_discarded(); }}}},
    {"WrongTypeOfStatus", {"--wrong-type", "/companion/status"}, "/_sim/wrong-type", {{"path", "/companion/status"}},
     {{"GET", "/companion/status", 200, [](auto& b) { return parsed(b)["on"].is_string(); }}}},
    {"WrongTypeOfDevices", {"--wrong-type", "/local/devices"}, "/_sim/wrong-type", {{"path", "/local/devices"}},
     {{"GET", "/local/devices", 200, [](auto& b) { return !parsed(b)["devices"].is_array(); }}}},
    {"WrongTypeOfAWrite", {"--wrong-type", "/companion/remote"}, "/_sim/wrong-type", {{"path", "/companion/remote"}},
     {{"POST", "/companion/remote", 200, [](auto& b) { return parsed(b).is_array(); }, {{"on", false}}}}},
    {"Drop", {"--drop", "/companion/status"}, "/_sim/drop", {{"path", "/companion/status"}},
     {{"GET", "/companion/status", 0}, {"GET", "/local/devices", 200}}},
    {"Slow", {"--slow", "/companion/status=1"}, "/_sim/slow", {{"path", "/companion/status"}, {"seconds", 1}},
     {{"GET", "/companion/status", 0, nullptr, {}, 200ms},
      {"GET", "/companion/status", 200, nullptr, {}, 30s},
      {"GET", "/healthz", 200, nullptr, {}, 200ms}}},
    {"NoKey", {"--no-key"}, "/_sim/keys", {{"refuse", true}},
     {{"GET", "/companion/status", 401}, {"POST", "/companion/name", 401, nullptr, studio}, {"GET", "/healthz", 200}}},
    {"NoHealthz", {"--no-healthz"}, "/_sim/healthz", {{"on", false}},
     {{"GET", "/healthz", 404, hasMessage}, {"GET", "/companion/status", 200}}},
};

INSTANTIATE_TEST_SUITE_P(Kinds, SimMisbehaviour,
                         testing::Combine(testing::ValuesIn(misdeeds), testing::Values(Way::flag, Way::control)),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param).name) +
                                    (std::get<1>(info.param) == Way::flag ? "ByFlag" : "ByControl");
                         });

TEST(SimMisbehaviourClear, OnePathLeavesTheOthers) {
    SimProcess sim({"--fail", "/companion/status=500", "--garbage", "/local/devices"});
    ASSERT_TRUE(sim.ready());
    EXPECT_EQ(sim.post("/_sim/clear", {{"path", "/companion/status"}})->status, 204);
    EXPECT_EQ(sim.get("/companion/status")->status, 200);
    auto devices = sim.get("/local/devices");
    ASSERT_TRUE(devices);
    EXPECT_TRUE(parsed(devices->body).is_discarded()) << devices->body;
}

} // namespace
} // namespace orvan::simtest
