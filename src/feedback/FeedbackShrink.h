#pragma once
// Pictures made small enough to send by drawing them again, so that nothing but their pixels goes
// along: no metadata, no location, no file hidden inside. `jpeg` is plain work for any thread;
// `offMainThread` is how the window calls it, on a thread of its own.

#include "foundation/Async.h"
#include "platform/Images.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orvan::FeedbackShrink {

// The first redraw along the shrink steps that fits one picture's budget; absent when the picture
// can't be read, has no pixels, or fits at no step.
std::optional<std::string> jpeg(const Images& images, std::string_view bytes);

// Runs `jpeg` for each picture on a worker thread, and resumes the awaiting coroutine on the thread
// that started it, through that thread's event loop. `images` must outlive the work.
Task<std::vector<std::optional<std::string>>> offMainThread(const Images& images, std::vector<std::string> pictures);

// This computer's model as its firmware names it, trimmed; empty when it can't be read.
std::string model(const std::filesystem::path& file = "/sys/devices/virtual/dmi/id/product_name");

} // namespace orvan::FeedbackShrink
