#pragma once
// Words and tests over the state of the shared sandbox desktop image, for this computer's section
// and for the computers' cards.

#include <cstdint>
#include <optional>
#include <string>

namespace orvan::SandboxImage {

// Something is happening to the image: downloading, unpacking, adding the browser or building.
bool busy(const std::string& image);
// Only a download knows how far along it is.
bool measured(const std::string& image);
// The line for the step under way, on `on` ("this Mac", a computer's name); absent when none runs.
std::optional<std::string> step(const std::string& image, double progress, const std::string& on);
std::string button(bool failed);
std::string help(std::int64_t download, const std::string& on);
std::string sources(std::int64_t download);

} // namespace orvan::SandboxImage
