#include "ui/QrModules.h"

#include <qrencode.h>
#include <string>

namespace orvan::ui {

std::optional<Modules> qrModules(std::string_view text) {
    // The encoder wants a terminated string and counts bytes: a text with a NUL in it is cut there.
    const std::string bytes(text);
    if (bytes.find('\0') != std::string::npos) return std::nullopt;
    QRcode* code = QRcode_encodeString8bit(bytes.c_str(), 0, QR_ECLEVEL_M);
    if (!code) return std::nullopt;
    Modules modules;
    modules.columns = code->width;
    modules.rows = code->width;
    modules.dark.resize(static_cast<std::size_t>(code->width) * static_cast<std::size_t>(code->width));
    for (std::size_t i = 0; i < modules.dark.size(); ++i) modules.dark[i] = code->data[i] & 1;
    QRcode_free(code);
    return modules;
}

} // namespace orvan::ui
