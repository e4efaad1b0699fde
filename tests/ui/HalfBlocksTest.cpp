#include "ui/HalfBlocks.h"
#include "ui/PngPixels.h"
#include "ui/TextRenderer.h"

#include <QByteArray>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

using namespace orvan;

namespace {

// A code-like 21x21 pattern: three finder squares and bits from a fixed generator, so the same
// pattern every run and both colours in every run length.
std::vector<std::uint8_t> pattern21() {
    std::vector<std::uint8_t> bits(21 * 21);
    std::uint32_t state = 12345;
    for (auto& bit : bits) {
        state = state * 1103515245u + 12345u;
        bit = (state >> 16) & 1;
    }
    auto finder = [&](int left, int top) {
        for (int y = 0; y < 7; ++y)
            for (int x = 0; x < 7; ++x) {
                const int ring = std::max(std::abs(x - 3), std::abs(y - 3));
                bits[(top + y) * 21 + left + x] = ring != 2;
            }
    };
    finder(0, 0);
    finder(14, 0);
    finder(0, 14);
    return bits;
}

void put32(std::string& out, std::uint32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8) out += static_cast<char>((v >> shift) & 0xff);
}

void chunk(std::string& png, const char* type, const std::string& data) {
    put32(png, static_cast<std::uint32_t>(data.size()));
    png += type;
    png += data;
    put32(png, 0); // the reader does not check sums
}

struct Format {
    int colourType;
    int depth;
};

// The modules scaled by `scale` inside a light margin, as a PNG of the given format. Each row
// uses the filter (row % 5), so every filter is undone somewhere.
std::string png(const std::vector<std::uint8_t>& modules, int side, int scale, int margin, Format format,
                int forcedFilter = -1) {
    const int width = side * scale + 2 * margin;
    const int channels = format.colourType == 2 ? 3 : format.colourType == 4 ? 2 : format.colourType == 6 ? 4 : 1;
    const int bits = channels * format.depth;
    const int rowBytes = (width * bits + 7) / 8;
    const int step = std::max(1, bits / 8);
    std::vector<std::vector<unsigned char>> rows(width, std::vector<unsigned char>(rowBytes, 0));
    for (int y = 0; y < width; ++y) {
        std::vector<unsigned char>& row = rows[y];
        for (int x = 0; x < width; ++x) {
            const int mx = (x - margin) / scale, my = (y - margin) / scale;
            const bool inside = x >= margin && y >= margin && mx < side && my < side;
            const bool dark = inside && modules[my * side + mx];
            // Dark is black; light is white, or transparent black where there is an alpha channel.
            std::vector<int> samples;
            const int full = (1 << format.depth) - 1;
            switch (format.colourType) {
            case 0: samples = {dark ? 0 : full}; break;
            case 2: samples = {dark ? 0 : full, dark ? 0 : full, dark ? 0 : full}; break;
            case 3: samples = {dark ? 1 : 0}; break;
            case 4: samples = {0, dark ? full : 0}; break;
            case 6: samples = {0, 0, 0, dark ? full : 0}; break;
            }
            for (int c = 0; c < channels; ++c) {
                const int index = x * channels + c;
                if (format.depth == 16) {
                    row[index * 2] = static_cast<unsigned char>(samples[c] >> 8);
                    row[index * 2 + 1] = static_cast<unsigned char>(samples[c] & 0xff);
                } else if (format.depth == 8) {
                    row[index] = static_cast<unsigned char>(samples[c]);
                } else {
                    const int bit = index * format.depth;
                    row[bit / 8] |= static_cast<unsigned char>(samples[c] << (8 - format.depth - bit % 8));
                }
            }
        }
    }
    std::string raw;
    for (int y = 0; y < width; ++y) {
        const int filter = forcedFilter >= 0 ? forcedFilter : y % 5;
        raw += static_cast<char>(filter);
        for (int i = 0; i < rowBytes; ++i) {
            const int a = i >= step ? rows[y][i - step] : 0;
            const int b = y ? rows[y - 1][i] : 0;
            const int c = (y && i >= step) ? rows[y - 1][i - step] : 0;
            int predictor = 0;
            if (filter == 1) predictor = a;
            if (filter == 2) predictor = b;
            if (filter == 3) predictor = (a + b) / 2;
            if (filter == 4) {
                const int p = a + b - c, pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
                predictor = (pa <= pb && pa <= pc) ? a : pb <= pc ? b : c;
            }
            raw += static_cast<char>((rows[y][i] - predictor) & 0xff);
        }
    }
    std::string out = "\x89PNG\r\n\x1a\n";
    std::string header;
    put32(header, static_cast<std::uint32_t>(width));
    put32(header, static_cast<std::uint32_t>(width));
    header += static_cast<char>(format.depth);
    header += static_cast<char>(format.colourType);
    header += std::string(3, '\0');
    chunk(out, "IHDR", header);
    if (format.colourType == 3) chunk(out, "PLTE", std::string("\xff\xff\xff\x00\x00\x00", 6));
    const QByteArray packed = qCompress(QByteArray::fromStdString(raw), 9);
    // Split the stream over two chunks, as writers may.
    const std::string stream = packed.mid(4).toStdString();
    chunk(out, "IDAT", stream.substr(0, stream.size() / 2));
    chunk(out, "IDAT", stream.substr(stream.size() / 2));
    chunk(out, "IEND", "");
    return out;
}

// Reads half-block lines back into modules, dropping the quiet zone.
std::vector<std::uint8_t> readBack(const std::vector<std::string>& lines, int quiet, bool invert) {
    std::vector<std::vector<std::uint8_t>> rows;
    for (const auto& line : lines) {
        std::vector<std::uint8_t> upper, lower;
        for (std::size_t i = 0; i < line.size();) {
            bool u = false, l = false;
            if (line.compare(i, 3, "\u2588") == 0) u = l = true, i += 3;
            else if (line.compare(i, 3, "\u2580") == 0) u = true, i += 3;
            else if (line.compare(i, 3, "\u2584") == 0) l = true, i += 3;
            else if (line[i] == ' ') i += 1;
            else return {};
            upper.push_back(u != invert);
            lower.push_back(l != invert);
        }
        rows.push_back(upper);
        rows.push_back(lower);
    }
    std::vector<std::uint8_t> out;
    const int side = static_cast<int>(rows.front().size()) - 2 * quiet;
    for (int y = 0; y < side; ++y)
        for (int x = 0; x < side; ++x) out.push_back(rows[y + quiet][x + quiet]);
    return out;
}

TEST(HalfBlocks, DrawsTwoModuleRowsPerLineWithAQuietZone) {
    const ui::Modules modules{3, 3, {1, 0, 1, 0, 1, 1, 1, 1, 0}};
    EXPECT_EQ(ui::halfBlocks(modules, 1, false),
              (std::vector<std::string>{" \u2584 \u2584 ", " \u2584\u2588\u2580 ", "     "}));
    EXPECT_EQ(ui::halfBlocks(modules, 1, true),
              (std::vector<std::string>{"\u2588\u2580\u2588\u2580\u2588", "\u2588\u2580 \u2584\u2588",
                                        "\u2588\u2588\u2588\u2588\u2588"}));
}

TEST(HalfBlocks, ACodeReadFromAnyPngFormatComesBackModuleForModule) {
    const auto modules = pattern21();
    const std::vector<Format> formats = {{0, 1}, {0, 2}, {0, 8}, {0, 16}, {2, 8}, {2, 16},
                                         {3, 1}, {3, 4}, {3, 8}, {4, 8}, {6, 8}, {6, 16}};
    for (const Format format : formats) {
        for (int scale : {1, 4}) {
            SCOPED_TRACE("colour type " + std::to_string(format.colourType) + ", depth " +
                         std::to_string(format.depth) + ", scale " + std::to_string(scale));
            const auto pixels = ui::readPngDarkness(png(modules, 21, scale, 3 * scale + 1, format));
            ASSERT_TRUE(pixels);
            const auto grid = ui::modulesOf(*pixels);
            ASSERT_TRUE(grid);
            EXPECT_EQ(grid->columns, 21);
            EXPECT_EQ(grid->rows, 21);
            EXPECT_EQ(grid->dark, modules);
            for (bool invert : {false, true}) {
                const auto lines = ui::halfBlocks(*grid, ui::quietModules, invert);
                ASSERT_EQ(lines.size(), 13u); // 21 + 2 + 2 rows, two to a line
                EXPECT_EQ(readBack(lines, ui::quietModules, invert), modules);
            }
        }
    }
    // The finder's top edge over its hollow row, then its sides over its core.
    const auto lines = ui::halfBlocks(*ui::modulesOf(*ui::readPngDarkness(png(modules, 21, 2, 0, {0, 8}))), 2, false);
    EXPECT_EQ(lines[1].substr(0, 2 + 7 * 3), "  \u2588\u2580\u2580\u2580\u2580\u2580\u2588");
    EXPECT_EQ(lines[2].substr(0, 2 + 5 * 3 + 2), "  \u2588 \u2588\u2588\u2588 \u2588");
}

TEST(HalfBlocks, BadOrUnfitPicturesGiveNothing) {
    const std::string good = png(pattern21(), 21, 2, 2, {0, 8});
    std::string interlaced = good;
    interlaced[8 + 8 + 12] = 1;
    std::string wide = good;
    wide[8 + 8] = '\x7f'; // width far past the cap
    const std::vector<std::pair<const char*, std::string>> cases = {
        {"empty", ""},
        {"not a PNG", "GIF89a and some more bytes"},
        {"cut in its header", good.substr(0, 20)},
        {"cut in its data", good.substr(0, good.size() / 2)},
        {"interlaced", interlaced},
        {"too wide", wide},
        {"a chunk longer than the file", good.substr(0, 33) + std::string("\xff\xff\xff\xf0IDAT", 8)},
        {"no data", good.substr(0, 33)},
        {"an unknown row filter", png(pattern21(), 21, 2, 2, {0, 8}, 5)},
        {"a palette index past the palette", png(pattern21(), 21, 2, 2, {3, 8}).replace(33, 18, std::string("\0\0\0\x03PLTE\xff\xff\xff\0\0\0\0", 15))},
    };
    for (const auto& [name, bytes] : cases) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(ui::readPngDarkness(bytes));
    }
    // Nothing dark, or more modules than any code has (a photograph, say): no grid to draw.
    std::vector<std::uint8_t> noise(300 * 300);
    for (std::size_t i = 0; i < noise.size(); ++i) noise[i] = (i * 7919 % 13) < 6;
    EXPECT_FALSE(ui::modulesOf({300, 300, noise}));
    EXPECT_FALSE(ui::modulesOf({4, 4, std::vector<std::uint8_t>(16, 0)}));
}

TEST(HalfBlocks, TheTextViewDrawsACodeWhenItFitsAndSaysSoWhenNot) {
    const auto modules = pattern21();
    const ui::Node code = ui::section("Invite", {ui::picture(png(modules, 21, 4, 8, {0, 8}), 100, 100, "Invite code").pixelated()});
    const std::string fits = ui::TextRenderer({.width = 40, .drawCodes = true}).render(code);
    const auto start = fits.find("<picture: Invite code, 100x100>\n");
    ASSERT_NE(start, std::string::npos) << fits;
    std::vector<std::string> art;
    for (std::size_t at = fits.find('\n', start) + 1; at < fits.size(); at = fits.find('\n', at) + 1)
        art.push_back(fits.substr(at + 2, fits.find('\n', at) - at - 2)); // under the section's indent
    EXPECT_EQ(readBack(art, ui::quietModules, false), modules);

    EXPECT_EQ(ui::TextRenderer({.width = 20, .drawCodes = true}).render(code),
              "== Invite ==\n  <picture: Invite\n      code, 100x100>\n      (needs a\n      terminal 27\n      columns wide)\n");
    EXPECT_EQ(ui::TextRenderer().render(code), "== Invite ==\n  <picture: Invite code, 100x100>\n");
}

} // namespace
