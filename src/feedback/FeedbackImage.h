#pragma once
// One picture of a report, already drawn again as a JPEG: only these bytes ever leave.

#include <string>

namespace orvan {

struct FeedbackImage {
    std::string id;   // a UUID, so the same picture added twice is still two rows
    std::string data; // JPEG bytes
    std::string type = "image/jpeg";
    bool operator==(const FeedbackImage&) const = default;
};

} // namespace orvan
