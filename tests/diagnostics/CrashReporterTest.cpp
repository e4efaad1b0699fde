// The reporter against a fake bridge in virtual time: the walk's verdicts, consent, the pace, a
// second pass, intake during a walk and from another thread, and the status fold's part in it.
#include "bridge/Bridge.h"
#include "diagnostics/CrashReporter.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeProcesses.h"
#include "fakes/TempFolder.h"
#include "foundation/Files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <atomic>
#include <thread>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::Reply;

DiagnosticPayload crashes(std::vector<int> codes) {
    DiagnosticPayload payload;
    payload.timeStampEnd = TimePoint(1700000000s);
    for (int s : codes) {
        CrashDiagnostic crash;
        crash.meta.applicationVersion = "1.0";
        crash.signal = s;
        crash.terminationReason = "SIGSEGV";
        crash.exceptionReason = "at /home/ada/secret-project/main.cpp";
        payload.crashDiagnostics.push_back(crash);
    }
    return payload;
}

class CrashReporterTest : public testing::Test {
protected:
    void SetUp() override {
        defaults_->set(Consent::onKey, true);
        defaults_->set(Consent::answeredKey, 2);
    }
    CrashReporter& reporter() {
        if (!reporter_) {
            // Passes a foreign thread asks for are collected, not run: the fake bridge is single-threaded.
            reporter_ = std::make_unique<CrashReporter>(api_, clock_, environment_, defaults_,
                                                        [this](std::function<void()> work) { posted_.push_back(std::move(work)); });
            reporter_->start(nullptr);
        }
        return *reporter_;
    }
    // Intake with the passes it asks for left aside.
    void take(std::vector<int> codes) {
        reporter().didReceive({crashes(std::move(codes))});
        posted_.clear();
    }
    std::vector<std::int64_t> queued() {
        std::vector<std::int64_t> out;
        for (const auto& r : CrashQueue::decode(Files::read(reporter().file()))) out.push_back(*r.exception->signal);
        return out;
    }
    void runPass() {
        auto started = test::start(reporter().pass());
        while (!started.done() && clock_.step()) {}
        ASSERT_TRUE(started.done());
    }

    test::TempFolder temp_;
    Environment environment_{{"HOME", temp_.path().string()}, {"ORVAN_DIR", (temp_.path() / "data").string()}};
    std::shared_ptr<UserDefaults> defaults_ = UserDefaults::at(temp_.path() / "defaults.json");
    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    std::vector<std::function<void()>> posted_;
    std::unique_ptr<CrashReporter> reporter_;
};

TEST_F(CrashReporterTest, IntakeRedactsAndKeepsTheFilePrivateInTheDataFolder) {
    take({11});
    EXPECT_EQ(reporter().file(), temp_.path() / "data" / "companion-reports.json");
    struct stat info {};
    ASSERT_EQ(::stat(reporter().file().c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    const std::string file = *Files::read(reporter().file());
    EXPECT_EQ(file.find("ada"), std::string::npos) << file;
    EXPECT_EQ(file.find("secret-project"), std::string::npos) << file;
    EXPECT_EQ(queued(), (std::vector<std::int64_t>{11}));
}

TEST_F(CrashReporterTest, EachAnswerDecidesWhetherTheWalkGoesOn) {
    const struct {
        const char* name;
        Reply second;
        std::vector<std::int64_t> left;
        std::size_t posts;
    } cases[] = {
        {"sent", Reply::empty(204), {}, 4},
        {"413 drops and goes on", Reply::json(413, "{}"), {}, 4},
        {"400 drops", Reply::json(400, "{}"), {}, 4},
        {"401 keeps it and the rest", Reply::json(401, "{}"), {2, 3, 4}, 2},
        {"503 keeps it and the rest", Reply::json(503, "{}"), {2, 3, 4}, 2},
        {"302 is later", Reply::json(302, ""), {2, 3, 4}, 2},
        {"500 is later", Reply::json(500, "{}"), {2, 3, 4}, 2},
        {"no answer is later", Reply::failure(), {2, 3, 4}, 2},
    };
    for (const auto& c : cases) {
        reporter_.reset();
        std::filesystem::remove(CrashReporter::queueFile(environment_));
        api_.clearRequests();
        take({1, 2, 3, 4});
        // The second report gets the answer under test; the others are taken.
        api_.on("POST", CrashReporter::reportPath, [&c](const HttpRequest& request) {
            auto report = CrashReport::read(*request.body);
            return report && report->exception->signal == 2 ? c.second : Reply::empty(204);
        });
        runPass();
        EXPECT_EQ(queued(), c.left) << c.name;
        EXPECT_EQ(api_.count(CrashReporter::reportPath), c.posts) << c.name;
        EXPECT_FALSE(reporter().handing()) << c.name;
    }
    // What went out is the record itself, with the key.
    auto sent = api_.requestsTo(CrashReporter::reportPath).front();
    EXPECT_TRUE(sent.header("X-Tulm-Local").has_value());
    EXPECT_EQ(sent.timeout, 8s);
    EXPECT_TRUE(CrashReport::read(*sent.body).has_value());
}

TEST_F(CrashReporterTest, WithoutConsentAPassChangesNothingAndUnansweredOnlyQueues) {
    defaults_->remove(Consent::onKey);
    defaults_->remove(Consent::answeredKey);
    take({5});
    runPass();
    EXPECT_EQ(queued(), (std::vector<std::int64_t>{5}));
    EXPECT_EQ(reporter().lastPass(), distantPast());
    EXPECT_EQ(api_.count(CrashReporter::reportPath), 0u);
    // An answer under the earlier revision still doesn't allow sending.
    defaults_->set(Consent::onKey, true);
    defaults_->set(Consent::answeredKey, 1);
    runPass();
    EXPECT_EQ(reporter().lastPass(), distantPast());
}

TEST_F(CrashReporterTest, RefusingKeepsNothingAndTakingConsentBackDeletesTheFile) {
    take({5});
    ASSERT_TRUE(std::filesystem::exists(reporter().file()));
    Consent::answer(false, *defaults_);
    EXPECT_FALSE(std::filesystem::exists(reporter().file()));
    take({6});
    EXPECT_FALSE(std::filesystem::exists(reporter().file()));
    EXPECT_TRUE(posted_.empty());
    // Given again: a pass starts at once, whatever the pace.
    Consent::answer(true, *defaults_);
    EXPECT_NE(reporter().lastPass(), distantPast());
}

TEST_F(CrashReporterTest, SecondPassEndsAtOnceAndAReportArrivingDuringTheWalkSurvives) {
    take({1, 2});
    api_.on("POST", CrashReporter::reportPath, Reply::empty(204).after(2s));
    auto first = test::start(reporter().pass());
    EXPECT_TRUE(reporter().handing());
    auto second = test::start(reporter().pass());
    EXPECT_TRUE(second.done());
    EXPECT_EQ(api_.count(CrashReporter::reportPath), 1u);
    take({3});
    while (!first.done() && clock_.step()) {}
    ASSERT_TRUE(first.done());
    EXPECT_EQ(queued(), (std::vector<std::int64_t>{3}));
    EXPECT_EQ(api_.count(CrashReporter::reportPath), 2u);
}

TEST_F(CrashReporterTest, HandOverWaitsTenMinutesUnlessForced) {
    take({1});
    api_.on("POST", CrashReporter::reportPath, Reply::json(500, "{}"));
    reporter().handOver(false);
    EXPECT_EQ(api_.count(CrashReporter::reportPath), 1u);
    clock_.advance(599s);
    reporter().handOver(false);
    EXPECT_EQ(api_.count(CrashReporter::reportPath), 1u);
    reporter().handOver(true);
    EXPECT_EQ(api_.count(CrashReporter::reportPath), 2u);
    clock_.advance(600s);
    reporter().handOver(false);
    EXPECT_EQ(api_.count(CrashReporter::reportPath), 3u);
}

TEST_F(CrashReporterTest, IntakeFromAnotherThreadIsNeverLostToAPass) {
    std::set<std::string> sent;
    api_.on("POST", CrashReporter::reportPath, [&](const HttpRequest& r) {
        sent.insert(CrashReport::read(*r.body)->signature);
        return Reply::empty(204);
    });
    reporter();
    constexpr int reports = 150;
    std::atomic<bool> done{false};
    std::thread intake([&] {
        for (int n = 1; n <= reports; ++n) reporter_->didReceive({crashes({n})});
        done = true;
    });
    while (!done) runPass();
    intake.join();
    runPass();
    // Every report was either handed over or still waits; none vanished between a read and a write.
    EXPECT_EQ(sent.size() + queued().size(), static_cast<std::size_t>(reports));
}

class StatusFoldTest : public CrashReporterTest {
protected:
    void SetUp() override {
        CrashReporterTest::SetUp();
        setup_.environment = environment_;
        setup_.reporter = &reporter();
        setup_.defaults = defaults_;
        bridge_ = std::make_unique<Bridge>(api_, clock_, processes_, setup_);
        bridge_->startDiagnostics();
        api_.on("POST", "/companion/diagnostics", Reply::empty(204));
        api_.on("POST", CrashReporter::reportPath, Reply::empty(204));
    }
    void status(const char* json) {
        api_.on("GET", "/companion/status", Reply::json(200, json));
        auto started = test::start(bridge_->refresh());
        while (!started.done() && clock_.step()) {}
    }
    std::vector<bool> told() {
        std::vector<bool> out;
        for (const auto& r : api_.requestsTo("/companion/diagnostics")) out.push_back(json::parse(*r.body)->at("allowed").get<bool>());
        return out;
    }
    BridgeSetup setup_;
    test::FakeProcesses processes_;
    std::unique_ptr<Bridge> bridge_;
};

TEST_F(StatusFoldTest, TellsTheBridgeOncePerMinuteUnlessTheConsentChanged) {
    Consent::answer(false, *defaults_);
    status(R"({"diagnostics":true,"diagnosticsAnswered":true})");
    EXPECT_EQ(told(), (std::vector<bool>{false}));
    clock_.advance(30s);
    status(R"({"diagnostics":true,"diagnosticsAnswered":true})");
    EXPECT_EQ(told(), (std::vector<bool>{false}));
    Consent::answer(true, *defaults_);
    status(R"({"diagnostics":false,"diagnosticsAnswered":true})");
    EXPECT_EQ(told(), (std::vector<bool>{false, true}));
    // A bridge that says nothing is told nothing.
    clock_.advance(61s);
    status(R"({})");
    EXPECT_EQ(told().size(), 2u);
}

TEST_F(StatusFoldTest, HandsOverOnlyWhenBothSidesAllow) {
    const struct { const char* status; bool owner; std::size_t posts; } cases[] = {
        {R"({"diagnostics":false})", true, 0},
        {R"({})", true, 0},
        {R"({"diagnostics":true})", false, 0},
        {R"({"diagnostics":true})", true, 1},
    };
    for (const auto& c : cases) {
        defaults_->set(Consent::onKey, c.owner);
        defaults_->set(Consent::answeredKey, 2);
        take({1});
        api_.clearRequests();
        clock_.advance(601s);
        status(c.status);
        EXPECT_EQ(api_.count(CrashReporter::reportPath), c.posts) << c.status << " owner " << c.owner;
    }
}

} // namespace
} // namespace orvan
