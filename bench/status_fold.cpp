// One status read folded into the model: decoding a status with 50 phones, and the whole refresh
// (decode plus assignments and notifications) against an in-memory bridge.
#include "bridge/Bridge.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeProcesses.h"

#include <benchmark/benchmark.h>

namespace {

using namespace orvan;

std::string statusWithPhones(int count) {
    Json phones = Json::array();
    for (int i = 0; i < count; ++i) {
        Json p = {{"id", "device-" + std::to_string(i)}, {"name", "Phone number " + std::to_string(i)},
                  {"role", i == 0 ? "owner" : (i % 5 == 0 ? "guest" : "member")}};
        if (i == 0) p["ownerSince"] = "2026-11-01T10:00:00Z";
        if (i % 5 == 0 && i > 0)
            p["guest"] = {{"projects", {"p1", "p2"}}, {"sessions", Json::array()}, {"mode", "projects"},
                          {"ends", "2026-12-01T10:00:00.250Z"}};
        phones.push_back(p);
    }
    Json status = {{"name", "Studio"},   {"on", true},   {"line", "Ready for your phone."},
                   {"phones", phones},   {"sidebar", "left"}, {"tulm", "up"},
                   {"screen", {{"available", true}, {"on", true}, {"watching", {"Ada"}}, {"phoneFirst", false}}},
                   {"diagnostics", true}, {"diagnosticsAnswered", true}};
    return status.dump();
}

void DecodeStatus50(benchmark::State& state) {
    const std::string body = statusWithPhones(50);
    for (auto _ : state) {
        auto status = CompanionStatus::read(body);
        benchmark::DoNotOptimize(status);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * body.size()));
}
BENCHMARK(DecodeStatus50);

void RefreshFold50(benchmark::State& state) {
    test::FakeClock clock;
    test::FakeBridge api(clock);
    test::FakeProcesses processes;
    api.on("GET", "/companion/status", test::Reply::json(200, statusWithPhones(50)));
    BridgeSetup setup;
    setup.environment = {{"HOME", "/nonexistent"}};
    Bridge bridge(api, clock, processes, setup);
    int notified = 0;
    auto sub = bridge.observe([&] { ++notified; });
    for (auto _ : state) {
        auto done = test::start(bridge.refresh());
        if (!done.done()) state.SkipWithError("refresh did not finish synchronously");
        api.clearRequests();
    }
    benchmark::DoNotOptimize(notified);
}
BENCHMARK(RefreshFold50);

} // namespace
