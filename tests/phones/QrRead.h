#pragma once
// Reads a QR code back the way a phone's camera would, with a decoder that shares nothing with
// the encoders under test: from a module grid, or from the half-block art the text view prints.

#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include <zbar.h>

namespace orvan::test {

using Grid = std::vector<std::vector<bool>>; // rows of dark modules

inline std::optional<std::string> decodeGrid(const Grid& grid) {
    if (grid.empty()) return std::nullopt;
    constexpr int scale = 4, quiet = 4;
    const int rows = static_cast<int>(grid.size()), columns = static_cast<int>(grid.front().size());
    const int width = (columns + 2 * quiet) * scale, height = (rows + 2 * quiet) * scale;
    std::vector<unsigned char> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0xff);
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < columns && x < static_cast<int>(grid[static_cast<std::size_t>(y)].size()); ++x)
            if (grid[static_cast<std::size_t>(y)][static_cast<std::size_t>(x)])
                for (int dy = 0; dy < scale; ++dy)
                    for (int dx = 0; dx < scale; ++dx)
                        pixels[static_cast<std::size_t>((y + quiet) * scale + dy) * static_cast<std::size_t>(width) +
                               static_cast<std::size_t>((x + quiet) * scale + dx)] = 0;
    zbar::ImageScanner scanner;
    scanner.set_config(zbar::ZBAR_NONE, zbar::ZBAR_CFG_ENABLE, 0);
    scanner.set_config(zbar::ZBAR_QRCODE, zbar::ZBAR_CFG_ENABLE, 1);
    zbar::Image image(static_cast<unsigned>(width), static_cast<unsigned>(height), "Y800", pixels.data(),
                      static_cast<unsigned long>(pixels.size()));
    if (scanner.scan(image) <= 0) return std::nullopt;
    for (auto symbol = image.symbol_begin(); symbol != image.symbol_end(); ++symbol) return symbol->get_data();
    return std::nullopt;
}

// The grid drawn by the lines of half blocks that follow the line holding `caption` in `text`
// (a frame, or the "+ " lines of a changed frame). Each character is two modules stacked.
inline Grid gridAfter(std::string_view text, std::string_view caption) {
    Grid grid;
    auto at = text.rfind(caption);
    if (at == std::string_view::npos) return grid;
    at = text.find('\n', at);
    while (at != std::string_view::npos && at + 1 < text.size()) {
        auto end = text.find('\n', at + 1);
        std::string_view line = text.substr(at + 1, end == std::string_view::npos ? std::string_view::npos : end - at - 1);
        at = end;
        if (line.starts_with("+ ")) line.remove_prefix(2);
        std::vector<bool> upper, lower;
        bool art = false, other = false;
        for (std::size_t i = 0; i < line.size();) {
            if (line[i] == ' ') {
                upper.push_back(false);
                lower.push_back(false);
                ++i;
                continue;
            }
            std::string_view ch = line.substr(i, 3);
            if (ch == "\u2588") upper.push_back(true), lower.push_back(true);
            else if (ch == "\u2580") upper.push_back(true), lower.push_back(false);
            else if (ch == "\u2584") upper.push_back(false), lower.push_back(true);
            else {
                other = true;
                break;
            }
            art = true;
            i += 3;
        }
        if (other || !art) {
            if (grid.empty()) continue; // lines before the art, such as blank ones
            break;
        }
        grid.push_back(upper);
        grid.push_back(lower);
    }
    // Every line carries the indent as light modules on the left; they are quiet zone to a reader.
    std::size_t widest = 0;
    for (const auto& row : grid) widest = std::max(widest, row.size());
    for (auto& row : grid) row.resize(widest, false);
    return grid;
}

} // namespace orvan::test
