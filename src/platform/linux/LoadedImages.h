#pragma once
// Pictures through the pictures module, loaded on the first call. Qt Gui's library and the font,
// X and GL libraries it pulls in cost a few MiB in every process that links them, for a port that
// most runs never use; the text program would otherwise carry them for its whole life.

#include "platform/Images.h"

#include <filesystem>
#include <memory>
#include <mutex>

namespace orvan {

class LoadedImages final : public Images {
public:
    explicit LoadedImages(std::filesystem::path module);
    // Where the bundle keeps the module: libexec/orvan-companion beside the program's bin/.
    static std::filesystem::path besideProgram();

    // Without the module nothing can be read: no size, and no redrawn picture.
    std::optional<Size> size(std::string_view bytes) const override;
    std::string redrawJpeg(std::string_view bytes, int longestSide, double quality) const override;

private:
    const Images* loaded() const;

    std::filesystem::path module_;
    mutable std::once_flag once_;
    // Made by the module, which is never unloaded, so its code is still there when this goes.
    mutable std::unique_ptr<const Images> images_;
};

} // namespace orvan
