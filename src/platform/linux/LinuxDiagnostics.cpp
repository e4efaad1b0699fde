#include "platform/linux/LinuxDiagnostics.h"

#include "platform/linux/CrashRecord.h"

#include <fstream>
#include <sys/utsname.h>

namespace orvan {

LinuxDiagnostics::LinuxDiagnostics(std::filesystem::path folder, std::string version, std::string build)
    : folder_(std::move(folder)), version_(std::move(version)), build_(std::move(build)) {}

LinuxDiagnostics::~LinuxDiagnostics() {
    if (watchdog_) watchdog_->stop();
}

std::string LinuxDiagnostics::osVersion() {
    utsname name{};
    if (::uname(&name) != 0) return "Linux";
    return std::string(name.sysname) + " " + name.release;
}

std::string LinuxDiagnostics::deviceType() {
    // The computer's model where the firmware tells it, else the processor's kind.
    std::ifstream product("/sys/class/dmi/id/product_name");
    std::string model;
    if (product && std::getline(product, model) && !model.empty() && model.size() < 80) return model;
    utsname name{};
    return ::uname(&name) == 0 ? std::string(name.machine) : std::string();
}

std::optional<DiagnosticPayload> LinuxDiagnostics::takePending() {
    const auto file = CrashRecords::pendingFile(folder_);
    auto record = CrashRecords::read(file);
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    std::filesystem::remove(file.string() + ".part", ignored);
    if (!record) return std::nullopt;
    DiagnosticPayload payload;
    payload.timeStampEnd = TimePoint(std::chrono::duration_cast<TimePoint::duration>(
        std::chrono::seconds(record->seconds) + std::chrono::nanoseconds(record->nanoseconds)));
    payload.crashDiagnostics.push_back(CrashRecords::diagnostic(*record, osVersion(), deviceType()));
    return payload;
}

void LinuxDiagnostics::deliver(std::vector<DiagnosticPayload> payloads) {
    Receiver receiver;
    {
        std::lock_guard guard(lock_);
        receiver = receiver_;
    }
    if (receiver) receiver(std::move(payloads));
}

void LinuxDiagnostics::subscribe(Receiver receiver) {
    {
        std::lock_guard guard(lock_);
        receiver_ = std::move(receiver);
    }
    if (auto pending = takePending()) deliver({std::move(*pending)});
    if (watchdog_) return;
    watchdog_ = std::make_unique<DiagnosticsWatchdog>(hangThreshold, [this](double seconds) {
        DiagnosticPayload payload;
        payload.timeStampEnd = std::chrono::system_clock::now();
        HangDiagnostic hang;
        hang.meta.applicationVersion = version_;
        hang.meta.applicationBuildVersion = build_;
        hang.meta.osVersion = osVersion();
        hang.meta.deviceType = deviceType();
        hang.hangSeconds = seconds;
        payload.hangDiagnostics.push_back(std::move(hang));
        deliver({std::move(payload)});
    });
    watchdog_->start();
}

} // namespace orvan
