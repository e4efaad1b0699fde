#include "foundation/PathPart.h"

namespace orvan::PathPart {

std::string escape(std::string_view id) {
    static const char hex[] = "0123456789ABCDEF";
    std::string out;
    out.reserve(id.size());
    for (unsigned char c : id) {
        bool unreserved = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
                          c == '.' || c == '_' || c == '~';
        if (unreserved) {
            out += static_cast<char>(c);
        } else {
            out += '%';
            out += hex[c >> 4];
            out += hex[c & 0xF];
        }
    }
    return out;
}

} // namespace orvan::PathPart
