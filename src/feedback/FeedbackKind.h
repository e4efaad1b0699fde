#pragma once
// What a report is about; the raw value is what the bridge is sent, the title what the owner reads.

#include <array>
#include <string>

namespace orvan {

enum class FeedbackKind { bug, feature, other };

namespace FeedbackKinds {
inline constexpr std::array<FeedbackKind, 3> all = {FeedbackKind::bug, FeedbackKind::feature, FeedbackKind::other};

inline const char* raw(FeedbackKind kind) {
    switch (kind) {
    case FeedbackKind::feature: return "feature";
    case FeedbackKind::other: return "other";
    case FeedbackKind::bug: break;
    }
    return "bug";
}

inline const char* title(FeedbackKind kind) {
    switch (kind) {
    case FeedbackKind::feature: return "Feature request";
    case FeedbackKind::other: return "Other";
    case FeedbackKind::bug: break;
    }
    return "Bug";
}

// Unknown raw text reads as a bug, the kind the window opens with.
inline FeedbackKind from(const std::string& raw) {
    if (raw == "feature") return FeedbackKind::feature;
    if (raw == "other") return FeedbackKind::other;
    return FeedbackKind::bug;
}
} // namespace FeedbackKinds

} // namespace orvan
