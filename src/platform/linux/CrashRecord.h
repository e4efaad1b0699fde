#pragma once
// The pending record a crash leaves behind: fixed in size, so the crash handler writes it with
// one write and no allocation, and read at the next start into a call-stack tree.

#include "platform/DiagnosticsSource.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace orvan {

struct CrashRecord {
    static constexpr char magicText[8] = {'O', 'R', 'V', 'C', 'R', 'S', 'H', '1'};
    static constexpr int maxFrames = 128;
    static constexpr int maxModules = 32;
    static constexpr int maxPath = 256;

    struct Frame {
        std::int32_t module; // index into `modules`, -1 when the address lies in no file
        std::int32_t unused;
        std::uint64_t offset; // from the module's load address; the raw address when no module
    };
    struct Module {
        char path[maxPath];
    };

    char magic[8];
    std::uint32_t layout; // sizeof(CrashRecord), so a record of another build is not misread
    std::int32_t signal;
    std::int32_t code;
    std::int32_t frameCount;
    std::int32_t moduleCount;
    std::int32_t unused;
    std::int64_t seconds;
    std::int64_t nanoseconds;
    char version[32];
    char build[32];
    // The mangled type of an exception nobody caught, when that is how the process ended.
    char exceptionType[256];
    Frame frames[maxFrames];
    Module modules[maxModules];
};

namespace CrashRecords {

// Where the handler leaves its record: beside the crash queue.
std::filesystem::path pendingFile(const std::filesystem::path& folder);

// The record in the file, or none for a missing, short or foreign one.
std::optional<CrashRecord> read(const std::filesystem::path& file);

// "SIGSEGV" for 11, and so on; "Signal <n>" for others.
std::string signalName(int signal);

// The first 16 bytes of a file's GNU build id in UUID form, upper case; none without one.
std::optional<std::string> buildId(const std::filesystem::path& file);

// The record as the diagnostics service tells a crash: its numbers, its reason, and the frames as
// a call-stack tree whose root frame is where it stopped.
CrashDiagnostic diagnostic(const CrashRecord& record, const std::string& os, const std::string& device);

} // namespace CrashRecords

} // namespace orvan
