#pragma once
// Joins the program's own reports to the bridge: reports from the diagnostics source go through
// redaction into the queue file, and passes hand them over one by one while the owner allows it.
// Intake may come on any thread; the lock guards the file, `handing` and `lastPass`, and is never
// held across a wait on the network.

#include "diagnostics/Consent.h"
#include "diagnostics/CrashInput.h"
#include "diagnostics/CrashQueue.h"
#include "foundation/Async.h"
#include "foundation/Carryover.h"
#include "foundation/UserDefaults.h"
#include "platform/DiagnosticsSource.h"
#include "platform/LocalApi.h"

#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace orvan {

class CrashReporter {
public:
    // Runs work on the main thread, where passes reach the bridge. Absent: the Qt event loop when
    // there is one, else at once.
    using ToMain = std::function<void(std::function<void()>)>;

    static constexpr Duration pace = std::chrono::seconds(600);
    static constexpr Duration postTimeout = std::chrono::seconds(8);
    static constexpr const char* reportPath = "/companion/diagnostics/report";
    static constexpr const char* fileName = "companion-reports.json";

    CrashReporter(LocalApi& api, Clock& clock, Environment environment, std::shared_ptr<UserDefaults> defaults,
                  ToMain toMain = {});
    ~CrashReporter();

    // ORVAN_DIR when set and not empty, else the data folder.
    static std::filesystem::path queueFile(const Environment& environment);
    const std::filesystem::path& file() const { return file_; }

    // Subscribes to the source and, once, to consent changes; may be called again.
    void start(DiagnosticsSource* source);
    // Starts a pass, unless `force` is false and the last one began less than `pace` ago.
    void handOver(bool force);
    Task<void> pass();
    // From the source, on its thread.
    void didReceive(std::vector<DiagnosticPayload> payloads);
    void consentChanged();

    // The rows one payload gives, crashes first, each dated at the payload's end.
    static std::vector<CrashInput> inputs(const DiagnosticPayload& payload);

    TimePoint lastPass() const;
    bool handing() const;

private:
    void readConsent();
    CrashQueue::Queue readQueue() const;
    void writeQueue(const CrashQueue::Queue& queue) const;
    void onMain(std::function<void()> work);

    LocalApi& api_;
    Clock& clock_;
    Environment environment_;
    std::shared_ptr<UserDefaults> defaults_;
    ToMain toMain_;
    std::filesystem::path file_;

    mutable std::mutex lock_;
    bool handing_ = false;
    TimePoint lastPass_ = distantPast();
    // The consent as last read where the defaults live, for intake on other threads.
    std::atomic<bool> refused_{false};
    Consent::Observation listening_;
    UserDefaults::Subscription stored_;
    Cancel alive_;
};

} // namespace orvan
