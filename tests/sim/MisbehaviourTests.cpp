// Each kind of misbehaviour does what it says, whether asked for on the command line or through
// the control paths, and /_sim/clear undoes it.

#include "SimProcess.h"

#include <functional>
#include <gtest/gtest.h>

namespace orvan::simtest {
namespace {

using nlohmann::json;
using namespace std::chrono_literals;

struct Misdeed {
    const char* name;
    std::vector<std::string> flags;
    std::string control; // the /_sim/ path that does the same
    json controlBody;
    std::function<void(const SimProcess&)> probe;
};

void PrintTo(const Misdeed& value, std::ostream* out) { *out << value.name; }

json parsed(const httplib::Result& answer) { return json::parse(answer->body, nullptr, false); }

void expectStatus(const httplib::Result& answer, int status) {
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, status) << answer->body;
}

enum class Way { flag, control };
void PrintTo(Way way, std::ostream* out) { *out << (way == Way::flag ? "by flag" : "by control"); }

class SimMisbehaviour : public testing::TestWithParam<std::tuple<Misdeed, Way>> {};

TEST_P(SimMisbehaviour, DoesWhatItSaysUntilCleared) {
    const auto& [misdeed, way] = GetParam();
    SimProcess sim(way == Way::flag ? misdeed.flags : std::vector<std::string>{});
    ASSERT_TRUE(sim.ready()) << sim.errors();
    if (way == Way::control) expectStatus(sim.post(misdeed.control, misdeed.controlBody), 204);

    misdeed.probe(sim);

    expectStatus(sim.post("/_sim/clear"), 204);
    expectStatus(sim.get("/companion/status"), 200);
    expectStatus(sim.client().Get("/healthz"), 200);
}

const std::vector<Misdeed> misdeeds = {
    {"FailWithAMessage", {"--fail", "/companion/status=503"}, "/_sim/fail",
     {{"path", "/companion/status"}, {"status", 503}},
     [](const SimProcess& sim) {
         auto answer = sim.get("/companion/status");
         expectStatus(answer, 503);
         EXPECT_FALSE(parsed(answer).value("message", "").empty()) << answer->body;
     }},
    {"FailWithTheBodyGiven", {"--fail", R"(/companion/phone/role=404:{"error":"not_found"})"}, "/_sim/fail",
     {{"path", "/companion/phone/role"}, {"status", 404}, {"body", {{"error", "not_found"}}}},
     [](const SimProcess& sim) {
         auto answer = sim.post("/companion/phone/role", {{"id", "x"}, {"role", "owner"}});
         expectStatus(answer, 404);
         EXPECT_EQ(parsed(answer), json({{"error", "not_found"}}));
     }},
    {"FailWithNoBody", {"--fail", "/companion/name=500:"}, "/_sim/fail",
     {{"path", "/companion/name"}, {"status", 500}, {"body", ""}},
     [](const SimProcess& sim) {
         auto answer = sim.post("/companion/name", {{"name", "Studio"}});
         expectStatus(answer, 500);
         EXPECT_EQ(answer->body, "");
         EXPECT_NE(sim.status()["name"], "Studio") << "a failed write changes nothing";
     }},
    {"FailEveryPathButControl", {"--fail", "*=502"}, "/_sim/fail", {{"path", "*"}, {"status", 502}},
     [](const SimProcess& sim) {
         expectStatus(sim.get("/companion/status"), 502);
         expectStatus(sim.get("/local/devices"), 502);
         expectStatus(sim.client().Get("/healthz"), 502);
     }},
    {"Garbage", {"--garbage", "/companion/status"}, "/_sim/garbage", {{"path", "/companion/status"}},
     [](const SimProcess& sim) {
         auto answer = sim.get("/companion/status");
         expectStatus(answer, 200);
         EXPECT_TRUE(parsed(answer).is_discarded()) << answer->body;
     }},
    {"WrongTypeOfStatus", {"--wrong-type", "/companion/status"}, "/_sim/wrong-type", {{"path", "/companion/status"}},
     [](const SimProcess& sim) {
         auto answer = sim.get("/companion/status");
         expectStatus(answer, 200);
         EXPECT_TRUE(parsed(answer)["on"].is_string()) << answer->body;
     }},
    {"WrongTypeOfDevices", {"--wrong-type", "/local/devices"}, "/_sim/wrong-type", {{"path", "/local/devices"}},
     [](const SimProcess& sim) {
         auto answer = sim.get("/local/devices");
         expectStatus(answer, 200);
         EXPECT_FALSE(parsed(answer)["devices"].is_array()) << answer->body;
     }},
    {"WrongTypeOfAWrite", {"--wrong-type", "/companion/remote"}, "/_sim/wrong-type", {{"path", "/companion/remote"}},
     [](const SimProcess& sim) {
         auto answer = sim.post("/companion/remote", {{"on", false}});
         expectStatus(answer, 200);
         EXPECT_TRUE(parsed(answer).is_array()) << answer->body;
     }},
    {"Drop", {"--drop", "/companion/status"}, "/_sim/drop", {{"path", "/companion/status"}},
     [](const SimProcess& sim) {
         auto answer = sim.get("/companion/status");
         EXPECT_FALSE(answer) << "an answer came: " << answer->status;
         expectStatus(sim.get("/local/devices"), 200);
     }},
    {"Slow", {"--slow", "/companion/status=1"}, "/_sim/slow", {{"path", "/companion/status"}, {"seconds", 1}},
     [](const SimProcess& sim) {
         auto impatient = sim.client(200ms).Get("/companion/status", httplib::Headers{{"X-Tulm-Local", sim.key()}});
         EXPECT_FALSE(impatient) << "a client that waits 200 ms got an answer";
         auto patient = sim.client(30s).Get("/companion/status", httplib::Headers{{"X-Tulm-Local", sim.key()}});
         expectStatus(patient, 200);
         expectStatus(sim.client(200ms).Get("/healthz"), 200);
     }},
    {"NoKey", {"--no-key"}, "/_sim/keys", {{"refuse", true}},
     [](const SimProcess& sim) {
         expectStatus(sim.get("/companion/status"), 401);
         expectStatus(sim.post("/companion/name", {{"name", "x"}}), 401);
         expectStatus(sim.client().Get("/healthz"), 200);
     }},
    {"NoHealthz", {"--no-healthz"}, "/_sim/healthz", {{"on", false}},
     [](const SimProcess& sim) {
         auto answer = sim.client().Get("/healthz");
         expectStatus(answer, 404);
         EXPECT_FALSE(parsed(answer).value("message", "").empty());
         expectStatus(sim.get("/companion/status"), 200);
     }},
};

INSTANTIATE_TEST_SUITE_P(Kinds, SimMisbehaviour, testing::Combine(testing::ValuesIn(misdeeds),
                                                                  testing::Values(Way::flag, Way::control)),
                         [](const auto& info) {
                             return std::string(std::get<0>(info.param).name) +
                                    (std::get<1>(info.param) == Way::flag ? "ByFlag" : "ByControl");
                         });

TEST(SimMisbehaviour, ClearingOnePathLeavesTheOthers) {
    SimProcess sim({"--fail", "/companion/status=500", "--garbage", "/local/devices"});
    ASSERT_TRUE(sim.ready());
    expectStatus(sim.post("/_sim/clear", {{"path", "/companion/status"}}), 204);
    expectStatus(sim.get("/companion/status"), 200);
    auto devices = sim.get("/local/devices");
    expectStatus(devices, 200);
    EXPECT_TRUE(parsed(devices).is_discarded());
}

} // namespace
} // namespace orvan::simtest
