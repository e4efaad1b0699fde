#include "foundation/Text.h"

#include <memory>
#include <vector>
#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

namespace orvan::Text {

namespace {

// Steps one scalar forward from `i`; ill-formed input advances by the bytes ICU skips, yields a negative.
UChar32 next(std::string_view s, int32_t& i) {
    UChar32 c;
    U8_NEXT(reinterpret_cast<const uint8_t*>(s.data()), i, static_cast<int32_t>(s.size()), c);
    return c;
}

UChar32 previous(std::string_view s, int32_t& i) {
    UChar32 c;
    U8_PREV(reinterpret_cast<const uint8_t*>(s.data()), 0, i, c);
    return c;
}

// Offsets in UTF-8 of each scalar boundary is what cutting needs; ICU's break iterator wants UTF-16.
icu::BreakIterator* characterBreaks() {
    thread_local std::unique_ptr<icu::BreakIterator> iterator = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> it(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        if (U_FAILURE(status)) it.reset();
        return it;
    }();
    return iterator.get();
}

} // namespace

bool isSpace(char32_t scalar) {
    // The ASCII white space is exactly tab to carriage return and the space; asking ICU would load
    // its property tables for the commonest case.
    if (scalar < 0x80) return scalar == 0x20 || (scalar >= 0x09 && scalar <= 0x0D);
    return u_hasBinaryProperty(static_cast<UChar32>(scalar), UCHAR_WHITE_SPACE);
}

std::string trimmed(std::string_view text) {
    int32_t begin = 0;
    const int32_t size = static_cast<int32_t>(text.size());
    while (begin < size) {
        int32_t at = begin;
        UChar32 c = next(text, at);
        if (c < 0 || !isSpace(static_cast<char32_t>(c))) break;
        begin = at;
    }
    int32_t end = size;
    while (end > begin) {
        int32_t at = end;
        UChar32 c = previous(text, at);
        if (c < 0 || !isSpace(static_cast<char32_t>(c))) break;
        end = at;
    }
    return std::string(text.substr(static_cast<size_t>(begin), static_cast<size_t>(end - begin)));
}

bool isValidUtf8(std::string_view text) {
    int32_t i = 0;
    const int32_t size = static_cast<int32_t>(text.size());
    while (i < size) {
        if (next(text, i) < 0) return false;
    }
    return true;
}

std::string toValidUtf8(std::string_view text) {
    // Almost every text is valid, so runs of good bytes are copied whole and only a bad sequence
    // costs a step of its own.
    std::string out;
    out.reserve(text.size());
    int32_t i = 0;
    int32_t run = 0;
    const int32_t size = static_cast<int32_t>(text.size());
    while (i < size) {
        if (static_cast<unsigned char>(text[static_cast<size_t>(i)]) < 0x80) {
            ++i;
            continue;
        }
        const int32_t start = i;
        if (next(text, i) < 0) {
            out.append(text.substr(static_cast<size_t>(run), static_cast<size_t>(start - run)));
            out += "\xEF\xBF\xBD";
            run = i;
        }
    }
    out.append(text.substr(static_cast<size_t>(run)));
    return out;
}

std::size_t scalarCount(std::string_view text) {
    std::size_t count = 0;
    int32_t i = 0;
    const int32_t size = static_cast<int32_t>(text.size());
    while (i < size) {
        next(text, i);
        ++count;
    }
    return count;
}

std::string prefixScalars(std::string_view text, std::size_t count) {
    int32_t i = 0;
    const int32_t size = static_cast<int32_t>(text.size());
    for (std::size_t n = 0; n < count && i < size; ++n) next(text, i);
    return std::string(text.substr(0, static_cast<size_t>(i)));
}

std::string prefixBytes(std::string_view text, std::size_t maxBytes) {
    if (text.size() <= maxBytes) return std::string(text);
    int32_t i = 0;
    int32_t last = 0;
    const int32_t limit = static_cast<int32_t>(maxBytes);
    const int32_t size = static_cast<int32_t>(text.size());
    while (i < size) {
        next(text, i);
        if (i > limit) break;
        last = i;
    }
    return std::string(text.substr(0, static_cast<size_t>(last)));
}

std::u16string toUtf16(std::string_view text) {
    icu::UnicodeString u = icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    return std::u16string(reinterpret_cast<const char16_t*>(u.getBuffer()), static_cast<size_t>(u.length()));
}

std::string fromUtf16(std::u16string_view text) {
    icu::UnicodeString u(text.data(), static_cast<int32_t>(text.size()));
    std::string out;
    u.toUTF8String(out);
    return out;
}

namespace {

// Walks the grapheme boundaries of `text`, mapped back to UTF-8 offsets. `visit` gets each boundary
// after the start and answers whether to go on.
template <class Visit> void characterBoundaries(std::string_view text, Visit visit) {
    // In ASCII every byte is a character of its own but for CR LF, which is one: no ASCII character
    // extends, joins or prepends. Most of what the program measures is ASCII, and this keeps the
    // break iterator's rules out of memory until a text needs them.
    bool ascii = true;
    for (char c : text) ascii = ascii && static_cast<unsigned char>(c) < 0x80;
    if (ascii) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
            if (!visit(i + 1)) return;
        }
        return;
    }
    icu::UnicodeString u = icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
    icu::BreakIterator* it = characterBreaks();
    // UTF-8 offset of every UTF-16 index that starts a scalar. Ill-formed bytes became U+FFFD,
    // one unit each, and stand for the bytes ICU skipped.
    std::vector<int32_t> utf8At(static_cast<size_t>(u.length()) + 1, static_cast<int32_t>(text.size()));
    {
        int32_t i8 = 0;
        int32_t i16 = 0;
        const int32_t size = static_cast<int32_t>(text.size());
        while (i8 < size && i16 < u.length()) {
            utf8At[static_cast<size_t>(i16)] = i8;
            UChar32 c = next(text, i8);
            i16 += (c >= 0) ? U16_LENGTH(c) : 1;
        }
    }
    if (!it) {
        // No break iterator (ICU data missing): fall back to scalars.
        for (int32_t i16 = 0; i16 < u.length();) {
            UChar32 c = u.char32At(i16);
            i16 += U16_LENGTH(c);
            if (!visit(static_cast<size_t>(utf8At[static_cast<size_t>(i16)]))) return;
        }
        return;
    }
    it->setText(u);
    for (int32_t b = it->next(); b != icu::BreakIterator::DONE; b = it->next()) {
        if (!visit(static_cast<size_t>(utf8At[static_cast<size_t>(b)]))) return;
    }
}

} // namespace

std::size_t characterCount(std::string_view text) {
    std::size_t count = 0;
    characterBoundaries(text, [&](std::size_t) {
        ++count;
        return true;
    });
    return count;
}

std::string prefixCharacters(std::string_view text, std::size_t count) {
    if (count == 0) return {};
    std::size_t end = 0;
    std::size_t seen = 0;
    characterBoundaries(text, [&](std::size_t at) {
        end = at;
        return ++seen < count;
    });
    return std::string(text.substr(0, end));
}

} // namespace orvan::Text
