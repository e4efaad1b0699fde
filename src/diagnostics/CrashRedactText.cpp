// Line handling around the rules: which lines are read at all, how invisible characters are
// treated, and how the newest lines of a long text are kept within the caller's byte budget.

#include "diagnostics/CrashRedact.h"
#include "foundation/Text.h"

#include <algorithm>
#include <array>

#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace orvan::CrashRedact {

namespace {

struct Range {
    char32_t first;
    char32_t last;
};

constexpr std::array<Range, 19> invisibleRanges{{
    {0x0080, 0x0084}, {0x0086, 0x009F}, {0x00AD, 0x00AD}, {0x034F, 0x034F}, {0x061C, 0x061C},
    {0x115F, 0x1160}, {0x17B4, 0x17B5}, {0x180B, 0x180F}, {0x200B, 0x200F}, {0x202A, 0x202E},
    {0x2060, 0x206F}, {0x3164, 0x3164}, {0xFE00, 0xFE0F}, {0xFEFF, 0xFEFF}, {0xFFA0, 0xFFA0},
    {0xFFF0, 0xFFFB}, {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A}, {0xE0000, 0xE0FFF},
}};

// Walks the scalars of UTF-8 text; an ill-formed byte reads as U+FFFD so nothing is skipped unseen.
template <class Visit> void eachScalar(std::string_view text, Visit visit) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const int32_t size = static_cast<int32_t>(text.size());
    for (int32_t i = 0; i < size;) {
        UChar32 c;
        U8_NEXT(bytes, i, size, c);
        visit(static_cast<char32_t>(c < 0 ? 0xFFFD : c));
    }
}

void appendScalar(std::string& out, char32_t c) {
    char buffer[4];
    int32_t length = 0;
    UBool error = false;
    U8_APPEND(reinterpret_cast<uint8_t*>(buffer), length, 4, static_cast<UChar32>(c), error);
    if (!error) out.append(buffer, static_cast<std::size_t>(length));
}

bool isControl(char32_t c) { return c < 0x20 || c == 0x7F; }

// What a line that is not read becomes: nothing visible stays nothing, anything else is hidden.
bool holdsText(std::string_view line) {
    bool found = false;
    eachScalar(line, [&](char32_t c) {
        if (found || c == '\t' || isControl(c) || (c >= 0x80 && isInvisible(c)) || Text::isSpace(c)) return;
        found = true;
    });
    return found;
}

// Kept lines, newest first. A run of empty lines is one entry, so a flood of blank lines costs
// nothing while the budget is worked out.
struct Kept {
    std::string text;
    std::size_t repeat = 1;
};

struct Budget {
    std::vector<Kept> newestFirst;
    std::size_t lines = 0;
    std::size_t bytes = 0;    // sum of line lengths
    std::size_t leading = 0;  // white space at the start of the joined text
    std::size_t trailing = 0; // white space at its end, known once a line has content
    bool content = false;

    // The joined text's length, trimmed at both ends.
    std::size_t trimmedLength() const {
        if (!content) return 0;
        return bytes + (lines - 1) - leading - trailing;
    }

    void add(std::string line) {
        const bool blank = trimSpace(line).empty();
        const std::size_t joinedBefore = lines == 0 ? 0 : bytes + (lines - 1);
        if (!blank && !content) {
            content = true;
            trailing = spaceBytes(line, true) + (lines == 0 ? 0 : joinedBefore + 1);
        }
        if (blank) leading = line.size() + (lines == 0 ? 0 : 1 + leading);
        else leading = spaceBytes(line, false);
        bytes += line.size();
        ++lines;
        if (line.empty() && !newestFirst.empty() && newestFirst.back().text.empty()) ++newestFirst.back().repeat;
        else newestFirst.push_back(Kept{std::move(line), 1});
    }

    std::string joined(std::size_t max) const {
        std::string out;
        bool first = true;
        for (auto it = newestFirst.rbegin(); it != newestFirst.rend(); ++it) {
            // A run longer than the budget ends the same way however long it is.
            std::size_t repeat = it->text.empty() ? std::min(it->repeat, max < it->repeat ? max + 2 : it->repeat)
                                                  : it->repeat;
            for (std::size_t k = 0; k < repeat; ++k) {
                if (!first) out += '\n';
                first = false;
                out += it->text;
            }
        }
        return out;
    }
};

std::string cutLine(std::string line) {
    while (!line.empty() && line.back() == ' ') line.pop_back();
    if (line.size() > maxLine) line = Text::prefixBytes(line, maxLine);
    return line;
}

std::string toUtf8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

icu::UnicodeString toUnicode(std::string_view text) {
    return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

// One raw line, read: its redacted form, or "<line>" when it cannot be trusted.
std::string readLine(const std::string& line) {
    if (invisibleBetweenText(line)) {
        // Redaction that finds something once the invisible character is a space means it was
        // hiding a word boundary; neither form can be trusted then. Asked first, so that such a
        // line costs one redaction, not two.
        icu::UnicodeString spaced = toUnicode(redactLine(line, true));
        auto again = redactClean(spaced);
        if (!again || *again != spaced) return "<line>";
    }
    auto r = redactClean(toUnicode(redactLine(line, false)));
    if (!r) return "<line>";
    return cutLine(toUtf8(*r));
}

} // namespace

bool isInvisible(char32_t c) {
    for (const Range& r : invisibleRanges)
        if (c >= r.first && c <= r.last) return true;
    return false;
}

bool unreadable(std::string_view line) {
    return line.find('\v') != std::string_view::npos || line.find('\f') != std::string_view::npos;
}

std::string redactLine(std::string_view line, bool spaced) {
    std::string out;
    out.reserve(line.size());
    eachScalar(line, [&](char32_t c) {
        if (c == '\t') out += ' ';
        else if (c >= 0x80 && isInvisible(c)) {
            if (spaced) out += ' ';
        } else if (isControl(c)) {
        } else appendScalar(out, c);
    });
    return out;
}

bool invisibleBetweenText(std::string_view line) {
    bool flag = false;
    bool havePrevious = false;
    bool previousSpace = false;
    bool found = false;
    eachScalar(line, [&](char32_t c) {
        if (found) return;
        if (c != '\t' && u_charType(static_cast<UChar32>(c)) == U_CONTROL_CHAR) return;
        if (isInvisible(c)) {
            flag = true;
            return;
        }
        const bool space = Text::isSpace(c);
        if (!space && havePrevious && !previousSpace && flag) found = true;
        havePrevious = true;
        previousSpace = space;
        flag = false;
    });
    return found;
}

std::string trimSpace(std::string_view text) { return Text::trimmed(text); }

std::size_t spaceBytes(std::string_view text, bool atEnd) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const int32_t size = static_cast<int32_t>(text.size());
    if (atEnd) {
        int32_t i = size;
        while (i > 0) {
            int32_t at = i;
            UChar32 c;
            U8_PREV(bytes, 0, at, c);
            if (c < 0 || !Text::isSpace(static_cast<char32_t>(c))) break;
            i = at;
        }
        return static_cast<std::size_t>(size - i);
    }
    int32_t i = 0;
    while (i < size) {
        int32_t at = i;
        UChar32 c;
        U8_NEXT(bytes, at, size, c);
        if (c < 0 || !Text::isSpace(static_cast<char32_t>(c))) break;
        i = at;
    }
    return static_cast<std::size_t>(i);
}

std::string text(std::string_view input, std::size_t max) {
    Budget budget;
    std::size_t raw = 0;
    std::size_t end = input.size();
    bool last = true;
    while (true) {
        if (raw >= maxRawInput) break;
        std::size_t newline = end == 0 ? std::string_view::npos : input.rfind('\n', end - 1);
        std::size_t begin = newline == std::string_view::npos ? 0 : newline + 1;
        std::string_view piece = input.substr(begin, end - begin);
        // A carriage return before a line feed belongs to the line break, not the line.
        if (!last && !piece.empty() && piece.back() == '\r') piece.remove_suffix(1);
        // Too long to read is decided on the raw bytes first: making them valid only lengthens them.
        std::string line;
        bool read = piece.size() <= maxRawLine && !unreadable(piece);
        if (read) {
            line = Text::toValidUtf8(piece);
            read = line.size() <= maxRawLine;
        }
        if (read) {
            raw += line.size();
            budget.add(readLine(line));
        } else {
            budget.add(holdsText(piece) ? std::string("<line>") : std::string());
        }
        if (budget.content && budget.trimmedLength() > max) break;
        if (newline == std::string_view::npos) break;
        end = newline;
        last = false;
    }

    std::string out = trimSpace(budget.joined(max));
    if (out.size() <= max) return out;
    std::size_t cut = out.size() - max;
    while (cut < out.size() && (static_cast<unsigned char>(out[cut]) & 0xC0) == 0x80) ++cut;
    out.erase(0, cut);
    std::size_t firstBreak = out.find('\n');
    if (firstBreak != std::string::npos && firstBreak + 1 < out.size()) out.erase(0, firstBreak + 1);
    return out;
}

} // namespace orvan::CrashRedact
