#include "appearance/Swatch.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <mutex>

namespace orvan::Swatch {

namespace {

std::uint32_t crc32(const std::string& bytes, std::size_t from) {
    static const auto table = [] {
        std::array<std::uint32_t, 256> t{};
        for (std::uint32_t n = 0; n < 256; ++n) {
            std::uint32_t c = n;
            for (int k = 0; k < 8; ++k) c = (c & 1) ? 0xedb88320u ^ (c >> 1) : c >> 1;
            t[n] = c;
        }
        return t;
    }();
    std::uint32_t c = 0xffffffffu;
    for (std::size_t i = from; i < bytes.size(); ++i)
        c = table[(c ^ static_cast<std::uint8_t>(bytes[i])) & 0xff] ^ (c >> 8);
    return c ^ 0xffffffffu;
}

void put32(std::string& out, std::uint32_t v) {
    for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<char>((v >> shift) & 0xff));
}

void chunk(std::string& out, const char* type, const std::string& data) {
    put32(out, static_cast<std::uint32_t>(data.size()));
    const std::size_t start = out.size();
    out.append(type, 4);
    out += data;
    put32(out, crc32(out, start));
}

// A zlib stream of stored blocks: the picture is tiny, so there is nothing worth compressing.
std::string zlibStored(const std::string& raw) {
    std::string out("\x78\x01", 2);
    std::size_t at = 0;
    do {
        const std::size_t n = std::min<std::size_t>(raw.size() - at, 65535);
        const bool last = at + n == raw.size();
        out.push_back(last ? 1 : 0);
        out.push_back(static_cast<char>(n & 0xff));
        out.push_back(static_cast<char>(n >> 8));
        out.push_back(static_cast<char>(~n & 0xff));
        out.push_back(static_cast<char>((~n >> 8) & 0xff));
        out.append(raw, at, n);
        at += n;
    } while (at < raw.size());
    std::uint32_t a = 1, b = 0;
    for (unsigned char c : raw) {
        a = (a + c) % 65521;
        b = (b + a) % 65521;
    }
    put32(out, (b << 16) | a);
    return out;
}

using Bands = std::array<Rgb, 8>;

std::string encode(const Bands& bands) {
    const int bandWidth = width / static_cast<int>(bands.size());
    std::string raw;
    for (int y = 0; y < height; ++y) {
        raw.push_back(0); // no filter
        for (int x = 0; x < width; ++x) {
            const Rgb c = bands[static_cast<std::size_t>(x / bandWidth)];
            raw.push_back(static_cast<char>((c >> 16) & 0xff));
            raw.push_back(static_cast<char>((c >> 8) & 0xff));
            raw.push_back(static_cast<char>(c & 0xff));
        }
    }
    std::string header;
    put32(header, width);
    put32(header, height);
    header += std::string("\x08\x02\x00\x00\x00", 5); // 8 bits a channel, RGB, no interlace

    std::string out("\x89PNG\r\n\x1a\n", 8);
    chunk(out, "IHDR", header);
    chunk(out, "IDAT", zlibStored(raw));
    chunk(out, "IEND", {});
    return out;
}

} // namespace

std::shared_ptr<const std::string> png(const ThemePalette& palette) {
    const Bands bands = {palette.light.bg, palette.light.card, palette.light.accent, palette.light.ink,
                         palette.dark.bg,  palette.dark.card,  palette.dark.accent,  palette.dark.ink};
    // The Appearance section is built on every render; a palette's picture only changes with its
    // colours, so each is encoded once. Keyed by the colours drawn, not the palette's id, so an
    // edited palette gets a new picture. Bounded: user palettes could otherwise grow it forever.
    static std::mutex mutex;
    static std::map<Bands, std::shared_ptr<const std::string>> drawn;
    const std::lock_guard lock(mutex);
    if (auto found = drawn.find(bands); found != drawn.end()) return found->second;
    if (drawn.size() >= 256) drawn.clear();
    return drawn.emplace(bands, std::make_shared<const std::string>(encode(bands))).first->second;
}

} // namespace orvan::Swatch
