// Any bytes from a connection, in any pieces: the reader never crashes, never keeps more than its
// cap, and the way the bytes were cut never changes what it read.
#include "platform/linux/HttpReader.h"

#include <cstdint>
#include <cstdlib>
#include <string_view>

using orvan::HttpReader;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    // The first byte says where to cut the rest in two.
    std::string_view bytes(reinterpret_cast<const char*>(data + 1), size - 1);
    std::size_t cut = bytes.empty() ? 0 : data[0] % (bytes.size() + 1);
    constexpr std::size_t cap = 256;

    HttpReader whole(cap), pieces(cap);
    whole.feed(bytes);
    pieces.feed(bytes.substr(0, cut));
    pieces.feed(bytes.substr(cut));
    if (whole.state() != pieces.state()) std::abort();
    if (whole.body().size() > cap || pieces.body() != whole.body()) std::abort();
    if (whole.state() == HttpReader::State::Done && (whole.status() < 200 || whole.status() > 999)) std::abort();
    if (whole.closed() != pieces.closed()) std::abort();
    if (whole.state() == HttpReader::State::Failed && (whole.failure().empty() || !whole.body().empty())) std::abort();
    return 0;
}
