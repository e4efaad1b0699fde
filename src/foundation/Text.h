#pragma once
// Text in UTF-8, measured the three ways the program needs: user-perceived characters
// (grapheme clusters), Unicode scalars, and bytes cut at a scalar boundary.

#include <cstddef>
#include <string>
#include <string_view>

namespace orvan::Text {

// Whether the scalar is white space or a newline (the Unicode White_Space property).
bool isSpace(char32_t scalar);

// Removes leading and trailing white space and newlines, Unicode's not just ASCII's.
std::string trimmed(std::string_view text);

bool isValidUtf8(std::string_view text);

// Decodes leniently: every ill-formed sequence becomes U+FFFD.
std::string toValidUtf8(std::string_view text);

// User-perceived characters (extended grapheme clusters).
std::size_t characterCount(std::string_view text);
std::string prefixCharacters(std::string_view text, std::size_t count);

// Unicode scalars. Ill-formed bytes count one scalar each.
std::size_t scalarCount(std::string_view text);
std::string prefixScalars(std::string_view text, std::size_t count);

// The longest prefix of at most `maxBytes` bytes that ends on a scalar boundary.
std::string prefixBytes(std::string_view text, std::size_t maxBytes);

// UTF-16 bridges for code that works with ICU.
std::u16string toUtf16(std::string_view text);
std::string fromUtf16(std::u16string_view text);

} // namespace orvan::Text
