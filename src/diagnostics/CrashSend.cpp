#include "diagnostics/CrashSend.h"

namespace orvan {

CrashSend::Verdict CrashSend::outcome(std::optional<int> status) {
    if (!status) return Verdict::later;
    const int s = *status;
    if (s >= 200 && s <= 299) return Verdict::sent;
    if (s == 400 || s == 413 || s == 422) return Verdict::drop;
    // Whatever answers doesn't take this machine's key, or isn't ready: keep everything.
    if (s == 401 || s == 403 || s == 503) return Verdict::otherKey;
    return Verdict::later;
}

} // namespace orvan
