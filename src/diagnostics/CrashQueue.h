#pragma once
// The waiting crash reports, oldest first, as kept in one small file. A fault that repeats stays
// one record with its newest details and a count, so no fault can push out the others.

#include "diagnostics/CrashReport.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan::CrashQueue {

using Queue = std::vector<CrashReport>;

inline constexpr std::size_t limit = 32;
inline constexpr std::int64_t maxCount = 1'000'000;
// A queue file is at most 32 records of at most 48 KiB; anything much larger isn't ours.
inline constexpr std::size_t maxFileBytes = 4 * 1024 * 1024;

// Merged into the oldest record of the same signature, else added at the end, dropping the oldest
// beyond the limit.
Queue add(const CrashReport& report, Queue queue);
// The JSON array; "[]" when a record can't be written.
std::string encode(const Queue& queue);
// Empty for no bytes or bytes that don't decode as a whole; the last `limit` records otherwise.
Queue decode(const std::optional<std::string>& bytes);

} // namespace orvan::CrashQueue
