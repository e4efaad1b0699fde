#pragma once
// The program's own reports on Linux: a crash leaves a record through the crash handler, which
// becomes a crash report at the next start; the watchdog reports a main thread that hung.
// Nothing on Linux measures a process's CPU or disk use against a budget the way this source's
// reports need, so this source never sends CPU or disk reports.

#include "platform/DiagnosticsSource.h"
#include "platform/linux/DiagnosticsWatchdog.h"

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>

namespace orvan {

class LinuxDiagnostics final : public DiagnosticsSource {
public:
    static constexpr bool sendsResourceReports = false;
    static constexpr std::chrono::milliseconds hangThreshold{3000};

    // `folder` holds the pending crash record; version and build are what hangs report.
    LinuxDiagnostics(std::filesystem::path folder, std::string version, std::string build);
    ~LinuxDiagnostics() override;

    // Delivers a crash left by an earlier run first, once, then starts watching the main thread.
    // On the main thread.
    void subscribe(Receiver receiver) override;

    // The crash an earlier run left, turned into a payload; the record is gone afterwards.
    std::optional<DiagnosticPayload> takePending();

    static std::string osVersion();
    static std::string deviceType();

private:
    void deliver(std::vector<DiagnosticPayload> payloads);

    std::filesystem::path folder_;
    std::string version_, build_;
    std::mutex lock_;
    Receiver receiver_;
    std::unique_ptr<DiagnosticsWatchdog> watchdog_;
};

} // namespace orvan
