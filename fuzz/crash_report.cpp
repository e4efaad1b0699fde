// Reading a queued crash record back from any bytes: no crash, and what reads back writes out and
// reads back the same.
#include "diagnostics/CrashReport.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace orvan;
    std::string_view bytes(reinterpret_cast<const char*>(data), size);
    auto report = CrashReport::read(bytes);
    if (!report) return 0;
    auto encoded = report->encode();
    if (!encoded) std::abort();
    auto again = CrashReport::read(*encoded);
    if (!again || !(*again == *report)) std::abort();
    return 0;
}
