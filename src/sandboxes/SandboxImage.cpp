#include "sandboxes/SandboxImage.h"

#include <algorithm>
#include <cmath>

namespace orvan::SandboxImage {

bool busy(const std::string& image) {
    return image == "downloading" || image == "loading" || image == "chrome" || image == "building";
}

bool measured(const std::string& image) { return image == "downloading"; }

std::optional<std::string> step(const std::string& image, double progress, const std::string& on) {
    if (image == "downloading") {
        // A bridge that overshoots or sends nonsense still reads as a share of a whole.
        double share = std::isfinite(progress) ? std::clamp(progress, 0.0, 1.0) : 0.0;
        auto percent = static_cast<int>(std::trunc(share * 100));
        return "Downloading the sandbox desktop… " + std::to_string(percent) + "%";
    }
    if (image == "loading") return "Unpacking the sandbox desktop…";
    if (image == "chrome") return "Adding Google Chrome…";
    if (image == "building") return "Building the sandbox desktop on " + on + "…";
    return std::nullopt;
}

std::string button(bool failed) { return failed ? "Try again" : "Get the sandbox desktop"; }

std::string help(std::int64_t download, const std::string& on) {
    if (download >= 1) {
        auto megabytes = std::max<std::int64_t>(1, std::llround(static_cast<double>(download) / 1'000'000.0));
        return "Downloads the sandbox desktop's base, about " + std::to_string(megabytes) +
               " MB, and adds Google Chrome to it from Google on " + on +
               ", once, so a session's sandbox starts in seconds. Without it, the first sandbox gets it then.";
    }
    return "Builds the sandbox desktop on " + on +
           ", once, from the recipe inside Orvan Companion, so a session's sandbox starts in seconds. Without it, the "
           "first sandbox builds it then.";
}

std::string sources(std::int64_t download) {
    if (download >= 1)
        return "The base is Debian Linux and its tools, built from their makers' packages under their own terms. "
               "Google Chrome is never in it: it comes from Google, under Google's Terms of Service.";
    return "Building downloads Debian Linux, Google Chrome and the other tools from their makers, under their own "
           "terms; Chrome's are Google's Terms of Service. Orvan sends only its recipe.";
}

} // namespace orvan::SandboxImage
