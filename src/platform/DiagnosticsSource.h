#pragma once
// Where the program's own crash, hang, CPU and disk reports come from. A source delivers them in
// payloads, on a thread of its own choosing; a source that has none simply never calls.

#include "foundation/Time.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

// What every report says about the program that made it.
struct DiagnosticMeta {
    std::string applicationVersion;
    std::string applicationBuildVersion;
    std::string osVersion;
    std::string deviceType;
    // The call-stack tree as JSON text: callStacks, callStackRootFrames, subFrames.
    std::string callStackTree;
};

struct CrashDiagnostic {
    DiagnosticMeta meta;
    std::optional<std::int64_t> exceptionType;
    std::optional<std::int64_t> exceptionCode;
    std::optional<std::int64_t> signal;
    std::optional<std::string> exceptionName;
    std::string terminationReason;
    std::string exceptionReason; // its format text
};

struct HangDiagnostic {
    DiagnosticMeta meta;
    double hangSeconds = 0;
};

struct CpuDiagnostic {
    DiagnosticMeta meta;
    double totalCPUSeconds = 0;
    double totalSampledSeconds = 0;
};

struct DiskDiagnostic {
    DiagnosticMeta meta;
    double writtenMegabytes = 0;
};

struct DiagnosticPayload {
    TimePoint timeStampEnd;
    std::vector<CrashDiagnostic> crashDiagnostics;
    std::vector<HangDiagnostic> hangDiagnostics;
    std::vector<CpuDiagnostic> cpuExceptionDiagnostics;
    std::vector<DiskDiagnostic> diskWriteExceptionDiagnostics;
};

class DiagnosticsSource {
public:
    using Receiver = std::function<void(std::vector<DiagnosticPayload>)>;
    virtual ~DiagnosticsSource() = default;
    // Replaces the receiver; reports that waited for one are delivered to it.
    virtual void subscribe(Receiver receiver) = 0;
};

} // namespace orvan
