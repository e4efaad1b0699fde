// The accounts section at scale: decoding a list of 1,000 accounts and their usage and making the
// rows; one full render of the section; and a status round of the main window with the section in it.
#include "accounts/AccountsList.h"
#include "accounts/AccountsListing.h"
#include "accounts/AccountsSection.h"
#include "bridge/DeskView.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeProcesses.h"
#include "ui/TextRenderer.h"

#include <benchmark/benchmark.h>

namespace {

using namespace orvan;

const char* kinds[] = {"login", "apikey", "token", "bedrock"};
const char* providers[] = {"claude", "codex", "grok", "cursor", "gemini"};

std::string accountsBody(int count) {
    Json rows = Json::array();
    for (int i = 0; i < count; ++i) {
        Json row = {{"id", "acc-" + std::to_string(i)}, {"provider", providers[i % 5]}, {"label", "Account " + std::to_string(i)},
                    {"kind", kinds[i % 4]}, {"status", i % 7 == 0 ? "limited" : "ready"}, {"home", "/home/o/.claude-" + std::to_string(i)},
                    {"threads", i % 3}, {"usage", {{"meter", {{"name", "5-hour"}, {"usedPercent", i % 100}}}, {"week", {{"turns", i}}}}}};
        if (i % 7 == 0) row["until"] = "2026-11-24T15:30:00Z";
        if (i % 4 == 3) row["bedrock"] = {{"region", "us-east-1"}, {"model", "sonnet"}, {"auth", "keys"}};
        rows.push_back(row);
    }
    Json chain = Json::array();
    for (int i = 0; i < count; i += 10) chain.push_back("acc-" + std::to_string(i));
    return Json{{"accounts", rows}, {"chain", chain}, {"autoSwitch", true}, {"found", Json::array()}, {"awsProfiles", {"default"}}}.dump();
}

std::string usageBody(int count) {
    Json rows = Json::array();
    for (int i = 0; i < count; ++i) {
        Json days = Json::array();
        for (int d = 0; d < 7; ++d) days.push_back({{"day", "2026-11-1" + std::to_string(d)}, {"turns", d}, {"tokens", 1000 * d}});
        rows.push_back({{"id", "acc-" + std::to_string(i)}, {"provider", providers[i % 5]}, {"plan", "max"},
                        {"meters", {{{"name", "5-hour"}, {"usedPercent", i % 100}, {"resetsAt", "2026-11-23T15:00:00Z"}},
                                    {{"name", "7-day"}, {"usedPercent", 40.5}}}},
                        {"today", {{"turns", 3}, {"tokens", 12000}, {"costUSD", 0.4}}},
                        {"week", {{"turns", 30}, {"tokens", 120000}, {"costUSD", 4.1}}}, {"days", days},
                        {"checked", "2026-11-23T10:00:00Z"}});
    }
    return Json{{"accounts", rows}, {"defaults", Json::array()}}.dump();
}

void DecodeAndList1000(benchmark::State& state) {
    const std::string list = accountsBody(1000), usage = usageBody(1000);
    for (auto _ : state) {
        auto accounts = decodeJson<AccountsList>(list);
        auto read = decodeJson<UsageList>(usage);
        auto rows = AccountsListing::rows(accounts->accounts, read);
        benchmark::DoNotOptimize(rows);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * (list.size() + usage.size())));
}
BENCHMARK(DecodeAndList1000)->Unit(benchmark::kMillisecond);

struct Loaded {
    test::FakeClock clock{*AccountWords::date("2026-11-23T10:00:00Z")};
    test::FakeBridge api{clock};
    Accounts accounts{api, clock, AccountsSetup{{{"LANG", "en_US.UTF-8"}}, "/home/o"}};
    explicit Loaded(int count) {
        api.on("GET", "/companion/accounts", test::Reply::json(200, accountsBody(count)));
        api.on("GET", "/companion/accounts/usage", test::Reply::json(200, usageBody(count)));
        accounts.place.timeZone = "UTC";
        test::start(accounts.refreshAll(false));
    }
};

void RenderSection(benchmark::State& state) {
    Loaded loaded(static_cast<int>(state.range(0)));
    AccountsViewState view;
    for (auto _ : state) {
        ui::Node tree = AccountsSection::build(loaded.accounts, view, loaded.clock.now(), {});
        benchmark::DoNotOptimize(tree);
    }
}
BENCHMARK(RenderSection)->Arg(10)->Arg(1000)->Unit(benchmark::kMicrosecond);

void RenderSectionAsText(benchmark::State& state) {
    Loaded loaded(static_cast<int>(state.range(0)));
    AccountsViewState view;
    for (auto _ : state) {
        ui::Node tree = AccountsSection::build(loaded.accounts, view, loaded.clock.now(), {});
        std::string text = ui::TextRenderer({.numbered = true}).frame(tree).text;
        benchmark::DoNotOptimize(text);
    }
}
BENCHMARK(RenderSectionAsText)->Arg(10)->Arg(1000)->Unit(benchmark::kMicrosecond);

// A status read folded in, then the whole window drawn again with the section open, as a host does
// when the poll changes something.
void StatusRoundWithSection(benchmark::State& state) {
    Loaded loaded(static_cast<int>(state.range(0)));
    test::FakeProcesses processes;
    loaded.api.on("GET", "/companion/status",
                  test::Reply::json(200, R"({"name":"Studio","on":true,"line":"Ready for your phone.","phones":[]})"));
    BridgeSetup setup;
    setup.environment = {{"HOME", "/nonexistent"}};
    Bridge bridge(loaded.api, loaded.clock, processes, setup);
    DeskState desk;
    DeskContext context;
    context.accounts = &loaded.accounts;
    for (auto _ : state) {
        auto done = test::start(bridge.refresh());
        if (!done.done()) state.SkipWithError("refresh did not finish synchronously");
        ui::Node tree = DeskView::build(bridge, desk, loaded.clock.now(), context);
        benchmark::DoNotOptimize(tree);
        loaded.api.clearRequests();
    }
}
BENCHMARK(StatusRoundWithSection)->Arg(10)->Arg(1000)->Unit(benchmark::kMicrosecond)->MeasureProcessCPUTime();

} // namespace
