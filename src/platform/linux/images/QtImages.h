#pragma once
// Pictures through QImage. Only the raster engine is used, so it needs no display and no
// QGuiApplication, and runs on worker threads.

#include "platform/Images.h"

namespace orvan {

class QtImages final : public Images {
public:
    std::optional<Size> size(std::string_view bytes) const override;
    std::string redrawJpeg(std::string_view bytes, int longestSide, double quality) const override;
};

} // namespace orvan
