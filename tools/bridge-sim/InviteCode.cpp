#include "InviteCode.h"

#include <qrencode.h>
#include <vector>
#include <zlib.h>

namespace orvan::sim::InviteCode {

namespace {

constexpr int modulePixels = 6;
constexpr int quietModules = 4;

void putBig(std::string& out, std::uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<char>((value >> shift) & 0xff));
}

void chunk(std::string& out, const char* type, const std::string& data) {
    putBig(out, static_cast<std::uint32_t>(data.size()));
    std::string typed = std::string(type, 4) + data;
    out += typed;
    putBig(out, static_cast<std::uint32_t>(crc32(0, reinterpret_cast<const Bytef*>(typed.data()), static_cast<uInt>(typed.size()))));
}

// An 8-bit greyscale PNG of the rows given, each row `side` bytes.
std::optional<std::string> greyPng(const std::vector<std::uint8_t>& pixels, int side) {
    std::string raw;
    raw.reserve(static_cast<std::size_t>(side) * static_cast<std::size_t>(side + 1));
    for (int y = 0; y < side; ++y) {
        raw.push_back(0); // no filter
        raw.append(reinterpret_cast<const char*>(&pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(side)]),
                   static_cast<std::size_t>(side));
    }
    uLongf packedSize = compressBound(static_cast<uLong>(raw.size()));
    std::string packed(packedSize, '\0');
    if (compress2(reinterpret_cast<Bytef*>(packed.data()), &packedSize, reinterpret_cast<const Bytef*>(raw.data()),
                  static_cast<uLong>(raw.size()), 9) != Z_OK)
        return std::nullopt;
    packed.resize(packedSize);
    std::string out = "\x89PNG\r\n\x1a\n";
    std::string header;
    putBig(header, static_cast<std::uint32_t>(side));
    putBig(header, static_cast<std::uint32_t>(side));
    header += std::string("\x08\x00\x00\x00\x00", 5); // depth 8, greyscale, deflate, no filter choice, not interlaced
    chunk(out, "IHDR", header);
    chunk(out, "IDAT", packed);
    chunk(out, "IEND", "");
    return out;
}

} // namespace

std::optional<std::string> png(const std::string& text) {
    QRcode* code = QRcode_encodeString8bit(text.c_str(), 0, QR_ECLEVEL_M);
    if (!code) return std::nullopt;
    const int modules = code->width + 2 * quietModules;
    const int side = modules * modulePixels;
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(side) * static_cast<std::size_t>(side), 0xff);
    for (int y = 0; y < code->width; ++y)
        for (int x = 0; x < code->width; ++x) {
            if (!(code->data[y * code->width + x] & 1)) continue;
            for (int dy = 0; dy < modulePixels; ++dy)
                for (int dx = 0; dx < modulePixels; ++dx) {
                    int px = (x + quietModules) * modulePixels + dx;
                    int py = (y + quietModules) * modulePixels + dy;
                    pixels[static_cast<std::size_t>(py) * static_cast<std::size_t>(side) + static_cast<std::size_t>(px)] = 0;
                }
        }
    QRcode_free(code);
    return greyPng(pixels, side);
}

} // namespace orvan::sim::InviteCode
