#include "platform/LocalApi.h"

#include <algorithm>
#include <cctype>

namespace orvan {

std::optional<std::string> HttpRequest::header(std::string_view name) const {
    auto same = [&](const std::string& other) {
        return std::equal(other.begin(), other.end(), name.begin(), name.end(),
                          [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) ==
                                                      std::tolower(static_cast<unsigned char>(b)); });
    };
    for (const auto& [key, value] : headers)
        if (same(key)) return value;
    return std::nullopt;
}

} // namespace orvan
