#include "platform/linux/LoadedImages.h"

#include <QCoreApplication>
#include <cstdio>
#include <dlfcn.h>

namespace orvan {

LoadedImages::LoadedImages(std::filesystem::path module) : module_(std::move(module)) {}

std::filesystem::path LoadedImages::besideProgram() {
    const std::filesystem::path bin = QCoreApplication::applicationDirPath().toStdString();
    return (bin.parent_path() / "libexec" / "orvan-companion" / "orvan-images.so").lexically_normal();
}

const Images* LoadedImages::loaded() const {
    // Pictures are read on worker threads, possibly two at once: the module is opened by one.
    std::call_once(once_, [this] {
        // Only by its full path, never through the library search path someone else could set.
        if (!module_.is_absolute()) return;
        void* handle = ::dlopen(module_.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!handle) {
            std::fprintf(stderr, "Pictures can't be read: %s\n", ::dlerror());
            return;
        }
        using Make = Images* (*)();
        if (auto make = reinterpret_cast<Make>(::dlsym(handle, "orvan_images_make"))) images_.reset(make());
    });
    return images_.get();
}

std::optional<Images::Size> LoadedImages::size(std::string_view bytes) const {
    const Images* images = loaded();
    return images ? images->size(bytes) : std::nullopt;
}

std::string LoadedImages::redrawJpeg(std::string_view bytes, int longestSide, double quality) const {
    const Images* images = loaded();
    return images ? images->redrawJpeg(bytes, longestSide, quality) : std::string();
}

} // namespace orvan
