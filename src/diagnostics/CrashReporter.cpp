#include "diagnostics/CrashReporter.h"

#include "bridge/LocalRequest.h"
#include "diagnostics/CrashConsent.h"
#include "diagnostics/CrashSend.h"
#include "foundation/Files.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <cstdio>
#include <set>

namespace orvan {

namespace {
std::string printed(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof text, format, value);
    return text;
}

CrashInput base(const char* kind, const DiagnosticMeta& meta, TimePoint at) {
    CrashInput in;
    in.kind = kind;
    in.version = meta.applicationVersion;
    in.build = meta.applicationBuildVersion;
    in.os = meta.osVersion;
    in.device = meta.deviceType;
    in.tree = meta.callStackTree;
    in.at = at;
    return in;
}
} // namespace

CrashReporter::CrashReporter(LocalApi& api, Clock& clock, Environment environment, std::shared_ptr<UserDefaults> defaults,
                             ToMain toMain)
    : api_(api), clock_(clock), environment_(std::move(environment)), defaults_(std::move(defaults)),
      toMain_(std::move(toMain)), file_(queueFile(environment_)) {
    readConsent();
}

CrashReporter::~CrashReporter() { alive_.cancel(); }

std::filesystem::path CrashReporter::queueFile(const Environment& environment) {
    // The same folder the bridge keeps its key in: ORVAN_DIR, else the standard data folder.
    return DataFolder::bridge(environment) / fileName;
}

void CrashReporter::readConsent() { refused_ = CrashConsent::refused(*defaults_); }

void CrashReporter::onMain(std::function<void()> work) {
    if (toMain_) return toMain_(std::move(work));
    if (QCoreApplication* app = QCoreApplication::instance())
        QMetaObject::invokeMethod(app, std::move(work), Qt::QueuedConnection);
    else
        work();
}

void CrashReporter::start(DiagnosticsSource* source) {
    if (!listening_) {
        listening_ = Consent::observeChanged([this] { consentChanged(); });
        // A change written by hand or by another window of the same store is seen too.
        stored_ = defaults_->observe([this](const std::string& key) {
            if (key == Consent::onKey || key == Consent::answeredKey) readConsent();
        });
    }
    readConsent();
    if (source) source->subscribe([this](std::vector<DiagnosticPayload> payloads) { didReceive(std::move(payloads)); });
}

std::vector<CrashInput> CrashReporter::inputs(const DiagnosticPayload& payload) {
    std::vector<CrashInput> rows;
    const TimePoint at = payload.timeStampEnd;
    for (const auto& crash : payload.crashDiagnostics) {
        CrashInput in = base("crash", crash.meta, at);
        in.reason = crash.terminationReason;
        if (!in.reason.empty()) in.reason += '\n';
        in.reason += crash.exceptionReason;
        in.exceptionName = crash.exceptionName;
        in.exceptionType = crash.exceptionType;
        in.exceptionCode = crash.exceptionCode;
        in.signal = crash.signal;
        rows.push_back(std::move(in));
    }
    for (const auto& hang : payload.hangDiagnostics) {
        CrashInput in = base("hang", hang.meta, at);
        in.reason = "Hung for " + printed("%.1f", hang.hangSeconds) + " s.";
        rows.push_back(std::move(in));
    }
    for (const auto& cpu : payload.cpuExceptionDiagnostics) {
        CrashInput in = base("cpu", cpu.meta, at);
        in.reason = "Used " + printed("%.1f", cpu.totalCPUSeconds) + " s of CPU in " +
                    printed("%.1f", cpu.totalSampledSeconds) + " s.";
        rows.push_back(std::move(in));
    }
    for (const auto& disk : payload.diskWriteExceptionDiagnostics) {
        CrashInput in = base("disk", disk.meta, at);
        in.reason = "Wrote " + printed("%.0f", disk.writtenMegabytes) + " MB.";
        rows.push_back(std::move(in));
    }
    return rows;
}

void CrashReporter::didReceive(std::vector<DiagnosticPayload> payloads) {
    // Refused: nothing is kept at all.
    if (refused_) return;
    std::vector<CrashReport> reports;
    for (const auto& payload : payloads)
        for (const auto& row : inputs(payload)) reports.push_back(CrashReport::make("companion", row));
    if (reports.empty()) return;
    {
        std::lock_guard guard(lock_);
        CrashQueue::Queue queue = readQueue();
        for (const auto& report : reports) queue = CrashQueue::add(report, std::move(queue));
        writeQueue(queue);
    }
    Cancel alive = alive_;
    onMain([this, alive] {
        if (!alive.cancelled()) spawn(pass());
    });
}

void CrashReporter::handOver(bool force) {
    if (!force) {
        std::lock_guard guard(lock_);
        if (clock_.now() - lastPass_ < pace) return;
    }
    spawn(pass());
}

Task<void> CrashReporter::pass() {
    Cancel alive = alive_;
    CrashQueue::Queue queue;
    {
        std::lock_guard guard(lock_);
        if (handing_) co_return;
        if (!CrashConsent::allowed(*defaults_)) co_return;
        handing_ = true;
        lastPass_ = clock_.now();
        queue = readQueue();
    }
    std::set<std::string> finished;
    for (const auto& report : queue) {
        auto encoded = report.encode();
        CrashSend::Verdict verdict = CrashSend::Verdict::drop; // a record that can't be written never blocks
        if (encoded) {
            HttpRequest request = LocalRequest::make(reportPath, Json::object(), postTimeout, environment_);
            request.body = std::move(*encoded); // the record's own key order, as written to the file
            HttpAnswer answer = co_await api_.send(std::move(request));
            if (alive.cancelled()) co_return;
            verdict = CrashSend::outcome(answer.isHttp() ? std::optional(answer.status) : std::nullopt);
        }
        if (verdict == CrashSend::Verdict::later || verdict == CrashSend::Verdict::otherKey) break;
        finished.insert(report.signature);
    }
    std::lock_guard guard(lock_);
    if (!finished.empty()) {
        // Read again: an intake may have added records while the walk waited on the bridge.
        CrashQueue::Queue now = readQueue();
        std::erase_if(now, [&](const CrashReport& r) { return finished.count(r.signature) > 0; });
        writeQueue(now);
    }
    handing_ = false;
}

void CrashReporter::consentChanged() {
    readConsent();
    if (CrashConsent::allowed(*defaults_)) {
        spawn(pass());
        return;
    }
    // Taking consent back removes what waits.
    std::lock_guard guard(lock_);
    std::error_code ignored;
    std::filesystem::remove(file_, ignored);
}

CrashQueue::Queue CrashReporter::readQueue() const {
    std::error_code ec;
    const auto size = std::filesystem::file_size(file_, ec);
    if (ec || size > CrashQueue::maxFileBytes) return {};
    return CrashQueue::decode(Files::read(file_));
}

void CrashReporter::writeQueue(const CrashQueue::Queue& queue) const { Files::write(file_, CrashQueue::encode(queue)); }

TimePoint CrashReporter::lastPass() const {
    std::lock_guard guard(lock_);
    return lastPass_;
}

bool CrashReporter::handing() const {
    std::lock_guard guard(lock_);
    return handing_;
}

} // namespace orvan
