#include "ui/PngPixels.h"

#include <QByteArray>
#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

namespace orvan::ui {

namespace {

// A code scaled up without smoothing compresses to a few kilobytes. qUncompress keeps growing its
// buffer until the stream ends, whatever size it was told, so the compressed cap is what bounds
// the memory a hostile stream can take: deflate expands at most about a thousandfold.
constexpr std::size_t maxCompressed = 64u << 10;
constexpr std::size_t maxRaw = 64u << 20;

std::uint32_t be32(const unsigned char* p) {
    return (std::uint32_t(p[0]) << 24) | (std::uint32_t(p[1]) << 16) | (std::uint32_t(p[2]) << 8) | std::uint32_t(p[3]);
}

int channelsOf(int colourType) {
    switch (colourType) {
    case 0: return 1;
    case 2: return 3;
    case 3: return 1;
    case 4: return 2;
    case 6: return 4;
    default: return 0;
    }
}

bool depthAllowed(int colourType, int depth) {
    switch (colourType) {
    case 0: return depth == 1 || depth == 2 || depth == 4 || depth == 8 || depth == 16;
    case 3: return depth == 1 || depth == 2 || depth == 4 || depth == 8;
    case 2:
    case 4:
    case 6: return depth == 8 || depth == 16;
    default: return false;
    }
}

int paeth(int a, int b, int c) {
    const int p = a + b - c;
    const int pa = std::abs(p - a), pb = std::abs(p - b), pc = std::abs(p - c);
    if (pa <= pb && pa <= pc) return a;
    return pb <= pc ? b : c;
}

// Undoes the per-row filters in place; `raw` holds each row behind its filter byte.
bool unfilter(std::string& raw, std::size_t rows, std::size_t rowBytes, std::size_t step, std::string& out) {
    out.assign(rows * rowBytes, '\0');
    auto* o = reinterpret_cast<unsigned char*>(out.data());
    const auto* in = reinterpret_cast<const unsigned char*>(raw.data());
    for (std::size_t y = 0; y < rows; ++y) {
        const unsigned char filter = in[y * (rowBytes + 1)];
        const unsigned char* src = in + y * (rowBytes + 1) + 1;
        unsigned char* row = o + y * rowBytes;
        const unsigned char* up = y ? row - rowBytes : nullptr;
        for (std::size_t x = 0; x < rowBytes; ++x) {
            const int a = x >= step ? row[x - step] : 0;
            const int b = up ? up[x] : 0;
            const int c = (up && x >= step) ? up[x - step] : 0;
            int v = src[x];
            switch (filter) {
            case 0: break;
            case 1: v += a; break;
            case 2: v += b; break;
            case 3: v += (a + b) / 2; break;
            case 4: v += paeth(a, b, c); break;
            default: return false;
            }
            row[x] = static_cast<unsigned char>(v & 0xff);
        }
    }
    return true;
}

// One sample of `depth` bits at sample index `i` of a row, scaled to 0...255.
int sample(const unsigned char* row, std::size_t i, int depth) {
    switch (depth) {
    case 16: return row[i * 2];
    case 8: return row[i];
    default: {
        const std::size_t bit = i * static_cast<std::size_t>(depth);
        const int shift = 8 - depth - static_cast<int>(bit % 8);
        const int value = (row[bit / 8] >> shift) & ((1 << depth) - 1);
        return value * 255 / ((1 << depth) - 1);
    }
    }
}

int rawSample(const unsigned char* row, std::size_t i, int depth) {
    if (depth >= 8) return sample(row, i, depth);
    const std::size_t bit = i * static_cast<std::size_t>(depth);
    const int shift = 8 - depth - static_cast<int>(bit % 8);
    return (row[bit / 8] >> shift) & ((1 << depth) - 1);
}

} // namespace

std::optional<DarkPixels> readPngDarkness(std::string_view png) {
    static constexpr unsigned char signature[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    const auto* bytes = reinterpret_cast<const unsigned char*>(png.data());
    if (png.size() < 8 || std::char_traits<char>::compare(png.data(), reinterpret_cast<const char*>(signature), 8) != 0)
        return std::nullopt;

    int width = 0, height = 0, depth = 0, colourType = -1;
    bool sawHeader = false, sawEnd = false;
    std::string compressed;
    std::vector<std::array<int, 4>> palette; // r, g, b, alpha
    std::size_t at = 8;
    while (at + 12 <= png.size() && !sawEnd) {
        const std::uint32_t length = be32(bytes + at);
        const std::string_view type = png.substr(at + 4, 4);
        if (length > png.size() - at - 12) return std::nullopt;
        const unsigned char* data = bytes + at + 8;
        if (type == "IHDR") {
            if (length != 13 || sawHeader) return std::nullopt;
            const std::uint32_t w = be32(data), h = be32(data + 4);
            depth = data[8];
            colourType = data[9];
            if (data[10] != 0 || data[11] != 0) return std::nullopt;
            if (data[12] != 0) return std::nullopt; // interlaced: not worth the code for a text view
            if (w == 0 || h == 0 || w > maxPngSide || h > maxPngSide) return std::nullopt;
            if (!depthAllowed(colourType, depth)) return std::nullopt;
            width = static_cast<int>(w);
            height = static_cast<int>(h);
            sawHeader = true;
        } else if (!sawHeader) {
            return std::nullopt;
        } else if (type == "PLTE") {
            if (length % 3 != 0 || length / 3 > 256) return std::nullopt;
            palette.clear();
            for (std::uint32_t i = 0; i < length / 3; ++i)
                palette.push_back({data[i * 3], data[i * 3 + 1], data[i * 3 + 2], 255});
        } else if (type == "tRNS") {
            if (colourType == 3)
                for (std::uint32_t i = 0; i < length && i < palette.size(); ++i) palette[i][3] = data[i];
        } else if (type == "IDAT") {
            if (compressed.size() + length > maxCompressed) return std::nullopt;
            compressed.append(reinterpret_cast<const char*>(data), length);
        } else if (type == "IEND") {
            sawEnd = true;
        }
        at += 12 + length;
    }
    if (!sawHeader || compressed.empty()) return std::nullopt;
    if (colourType == 3 && palette.empty()) return std::nullopt;

    const int channels = channelsOf(colourType);
    const std::size_t bitsPerPixel = static_cast<std::size_t>(channels) * static_cast<std::size_t>(depth);
    const std::size_t rowBytes = (static_cast<std::size_t>(width) * bitsPerPixel + 7) / 8;
    const std::size_t expected = static_cast<std::size_t>(height) * (rowBytes + 1);
    if (expected > maxRaw) return std::nullopt;

    // qUncompress wants the inflated size in front, big-endian; IHDR tells it exactly.
    QByteArray stream;
    stream.reserve(static_cast<qsizetype>(compressed.size() + 4));
    for (int shift = 24; shift >= 0; shift -= 8) stream.append(static_cast<char>((expected >> shift) & 0xff));
    stream.append(compressed.data(), static_cast<qsizetype>(compressed.size()));
    const QByteArray inflated = qUncompress(stream);
    if (static_cast<std::size_t>(inflated.size()) < expected) return std::nullopt;

    std::string raw(inflated.constData(), expected);
    std::string rows;
    if (!unfilter(raw, static_cast<std::size_t>(height), rowBytes, std::max<std::size_t>(1, bitsPerPixel / 8), rows))
        return std::nullopt;

    DarkPixels out;
    out.width = width;
    out.height = height;
    out.dark.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
    const auto* data = reinterpret_cast<const unsigned char*>(rows.data());
    for (int y = 0; y < height; ++y) {
        const unsigned char* row = data + static_cast<std::size_t>(y) * rowBytes;
        for (int x = 0; x < width; ++x) {
            const std::size_t s = static_cast<std::size_t>(x) * static_cast<std::size_t>(channels);
            int r = 0, g = 0, b = 0, alpha = 255;
            switch (colourType) {
            case 0: r = g = b = sample(row, s, depth); break;
            case 4: r = g = b = sample(row, s, depth); alpha = sample(row, s + 1, depth); break;
            case 2: r = sample(row, s, depth); g = sample(row, s + 1, depth); b = sample(row, s + 2, depth); break;
            case 6:
                r = sample(row, s, depth);
                g = sample(row, s + 1, depth);
                b = sample(row, s + 2, depth);
                alpha = sample(row, s + 3, depth);
                break;
            case 3: {
                const int index = rawSample(row, s, depth);
                if (static_cast<std::size_t>(index) >= palette.size()) return std::nullopt;
                r = palette[static_cast<std::size_t>(index)][0];
                g = palette[static_cast<std::size_t>(index)][1];
                b = palette[static_cast<std::size_t>(index)][2];
                alpha = palette[static_cast<std::size_t>(index)][3];
                break;
            }
            default: return std::nullopt;
            }
            // A transparent pixel shows whatever is behind it, which for a code is its light side.
            const int luminance = (299 * r + 587 * g + 114 * b) / 1000;
            out.dark[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x)] =
                (alpha >= 128 && luminance < 128) ? 1 : 0;
        }
    }
    return out;
}

} // namespace orvan::ui
