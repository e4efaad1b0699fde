#pragma once
// Pictures the owner hands the program: whether they can be read, and drawing them again as JPEG.
// Both calls are pure functions of the bytes, so they may run on any thread.

#include <optional>
#include <string>
#include <string_view>

namespace orvan {

class Images {
public:
    struct Size {
        int width = 0;
        int height = 0;
        bool operator==(const Size&) const = default;
    };

    virtual ~Images() = default;
    // The pixel size of a picture this port can read; absent for anything else.
    virtual std::optional<Size> size(std::string_view bytes) const = 0;
    // The picture drawn again from its pixels on a white ground, scaled down (never up) so its longer
    // side is at most `longestSide`, encoded as JPEG at `quality` (0...1). Empty when it can't be read.
    virtual std::string redrawJpeg(std::string_view bytes, int longestSide, double quality) const = 0;
};

} // namespace orvan
