// Where the redaction engine is told to try a rule must never change what the rule does: for any
// text, each rule run from its scanner gives exactly what the engine gives trying every position.
#include "diagnostics/CrashRedact.h"

#include <cstdint>
#include <cstdlib>
#include <cstdio>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // Lines are never longer than this when the rules see them.
    const auto length = static_cast<int32_t>(size < 600 ? size : 600);
    const auto text = icu::UnicodeString::fromUTF8(icu::StringPiece(reinterpret_cast<const char*>(data), length));
    const auto& rules = orvan::CrashRedact::rules();
    for (std::size_t r = 0; r < rules.size(); ++r) {
        if (!rules[r].starts) continue;
        auto everywhere = orvan::CrashRedact::replaceEverywhere(rules[r], text);
        if (!everywhere) continue; // the engine alone ran out of time: nothing to compare with
        auto fast = orvan::CrashRedact::replace(rules[r], text);
        if (!fast || *fast != *everywhere) {
            std::string a, b;
            if (fast) fast->toUTF8String(a);
            everywhere->toUTF8String(b);
            std::fprintf(stderr, "rule %zu differs:\n  scanned:    %s\n  everywhere: %s\n", r + 1, a.c_str(), b.c_str());
            std::abort();
        }
    }
    return 0;
}
