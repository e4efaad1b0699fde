#pragma once
// The verdict on one hand-over of a crash report to the bridge.

#include <optional>

namespace orvan::CrashSend {

enum class Verdict { sent, drop, later, otherKey };

// `status` is absent when nothing came back.
Verdict outcome(std::optional<int> status);

} // namespace orvan::CrashSend
