#pragma once
// One release package, downloaded with hard limits, and the two measures it is judged by.

#include "platform/Web.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace orvan::UpdateDownload {

enum class Outcome { done, tooBig, failed };

// Stops at the first block that goes past `size`, and at once when the server announces another
// length; follows redirects only to https.
Task<Outcome> fetch(Web& web, std::string url, std::int64_t size, std::filesystem::path to);

// Lower-case hexadecimal, read in 1 MiB chunks, so a package is never in memory whole. Runs on the
// calling thread: callers with a large file run it off the main one.
std::optional<std::string> sha256(const std::filesystem::path& of);
// The same on a thread of its own, resuming on the main thread's loop, so the window stays live
// while a large package is read; without a running application it reads on the calling thread.
Task<std::optional<std::string>> sha256Apart(std::filesystem::path of);
// The file's size, or -1 when it can't be read.
std::int64_t size(const std::filesystem::path& of);

} // namespace orvan::UpdateDownload
