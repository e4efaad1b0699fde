// Where the engine need try a rule. Left to itself, the engine tries a pattern at every position
// of a line, and for patterns that open with a long run (`[\w.+-]+@...`) each try walks the run to
// its end and back: a 500-character word costs a quarter of a million steps for one rule. The
// scanners below find, in one pass, the few positions where a match can begin, so every rule
// costs time in proportion to the line.
//
// Each scanner keeps one promise: no match begins between `from` and the position it names, and
// when the engine fails there, none begins before `resume`. The patterns themselves stay exactly as
// written; the tests hold every scanner against the engine trying everywhere.

#include "diagnostics/CrashRedact.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <string_view>
#include <vector>

#include <unicode/uniset.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

namespace orvan::CrashRedact {

namespace {

using Text16 = std::u16string_view;

Text16 view(const icu::UnicodeString& text) {
    return Text16(text.getBuffer() ? text.getBuffer() : u"", static_cast<std::size_t>(text.length()));
}

int32_t size(Text16 s) { return static_cast<int32_t>(s.size()); }

bool letter(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }
bool digit(char16_t c) { return c >= u'0' && c <= u'9'; }
bool hex(char16_t c) { return digit(c) || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F'); }
bool word(char16_t c) { return letter(c) || digit(c) || c == u'_'; }
bool space(char16_t c) { return c == u' ' || c == u'\t' || c == u'\n' || c == u'\f' || c == u'\r'; }

bool wordDotDash(char16_t c) { return word(c) || c == u'.' || c == u'-'; }   // [\w.-]
bool mailLocal(char16_t c) { return wordDotDash(c) || c == u'+'; }          // [\w.+-]
bool wordDash(char16_t c) { return word(c) || c == u'-'; }                   // [\w-]
bool commandName(char16_t c) { return mailLocal(c) || c == u'@'; }          // [\w.@+-]
bool scheme(char16_t c) { return letter(c) || digit(c) || c == u'+' || c == u'.' || c == u'-'; }
bool addressPart(char16_t c) { return hex(c) || c == u':' || c == u'.'; } // [0-9A-Fa-f:.]
bool urlStop(char16_t c) { return space(c) || c == u'"' || c == u'\'' || c == u'<' || c == u'>'; }

// The word boundary as the rules spell it: ASCII word characters on one side only.
bool boundary(Text16 s, int32_t p) {
    const bool before = p > 0 && word(s[p - 1]);
    const bool after = p < size(s) && word(s[p]);
    return before != after;
}

// Whether the `length` code units from `p` (or up to the end) are all ASCII.
bool asciiFrom(Text16 s, int32_t p, int32_t length) {
    return std::all_of(s.begin() + p, s.begin() + std::min(p + length, size(s)), [](char16_t c) { return c < 0x80; });
}

bool startsWith(Text16 s, int32_t p, Text16 literal) {
    return p <= size(s) && s.substr(static_cast<std::size_t>(p)).starts_with(literal);
}

int32_t runEnd(Text16 s, int32_t p, bool (*in)(char16_t)) {
    while (p < size(s) && in(s[p])) ++p;
    return p;
}

bool anywhere(Text16, int32_t) { return true; }
bool atLetter(Text16 s, int32_t p) { return letter(s[p]); }
bool jwtHead(Text16 s, int32_t p) { return boundary(s, p) && startsWith(s, p, u"eyJ"); }

bool urlAfter(Text16 s, int32_t, int32_t e) { return startsWith(s, e, u"://") && e + 3 < size(s) && !urlStop(s[e + 3]); }
bool atSignAfter(Text16 s, int32_t, int32_t e) { return e < size(s) && s[e] == u'@'; }
bool dotAfter(Text16 s, int32_t, int32_t e) { return e < size(s) && s[e] == u'.'; }
bool slashAfter(Text16 s, int32_t, int32_t e) { return e < size(s) && s[e] == u'/'; }
bool notFoundAfter(Text16 s, int32_t, int32_t e) {
    constexpr Text16 words = u": command not found";
    const int32_t after = e + static_cast<int32_t>(words.size());
    return startsWith(s, e, words) && (after == size(s) || s[after] != u':');
}

// The shape behind most slow scans: a match opens with a run of class `In`, the run must pass what
// `After` checks (given its start and end), and whether the rest matches does not depend on where
// in the run the match began. So the first place in the run where `Head` holds stands for the
// whole run: if the match fails there, it fails at every later place of the run too.
template <bool (*In)(char16_t), bool (*Head)(Text16, int32_t), bool (*After)(Text16, int32_t, int32_t)>
Try runStarts(const icu::UnicodeString& text, int32_t from) {
    const Text16 s = view(text);
    for (int32_t p = from; p < size(s);) {
        if (!In(s[p])) {
            ++p;
            continue;
        }
        const int32_t e = runEnd(s, p, In);
        if (After(s, p, e))
            for (int32_t q = p; q < e; ++q)
                if (Head(s, q)) return {q, e};
        p = e;
    }
    return {};
}

// Positions that are each checked on their own, by a test cheap enough to run everywhere.
template <bool (*Head)(Text16, int32_t)> Try pointStarts(const icu::UnicodeString& text, int32_t from) {
    const Text16 s = view(text);
    for (int32_t q = from; q < size(s); ++q)
        if (Head(s, q)) return {q, q + 1};
    return {};
}

// `(^|[^\w.:%])` then an address part with two colons in it; with two colons the rest always
// matches, so this test is exact.
bool twoColons(Text16 s, int32_t i) {
    for (int colons = 0; i < size(s) && addressPart(s[i]); ++i)
        if (s[i] == u':' && ++colons == 2) return true;
    return false;
}
bool addressHead(Text16 s, int32_t q) {
    const char16_t c = s[q];
    const bool lead = !word(c) && c != u'.' && c != u':' && c != u'%';
    return (q == 0 && twoColons(s, 0)) || (lead && twoColons(s, q + 1));
}

// `\b[A-Za-z]:\\` and at least one character that may follow it.
bool drivePathHead(Text16 s, int32_t q) {
    return letter(s[q]) && q + 1 < size(s) && s[q + 1] == u':' && startsWith(s, q + 1, u":\\") && q + 3 < size(s) && !urlStop(s[q + 3]) && boundary(s, q);
}

// A quote with white space before the next quote: `Q[^Q]*\s[^Q]*Q`. Exact, and each stretch
// between quotes is read once.
template <char16_t Q> Try quotedStarts(const icu::UnicodeString& text, int32_t from) {
    const Text16 s = view(text);
    for (int32_t q = from; q < size(s); ++q) {
        if (s[q] != Q) continue;
        const auto close = s.find(Q, static_cast<std::size_t>(q) + 1);
        if (close == Text16::npos) return {};
        if (std::any_of(s.begin() + q + 1, s.begin() + static_cast<std::ptrdiff_t>(close), space)) return {q, q + 1};
        q = static_cast<int32_t>(close) - 1;
    }
    return {};
}

// `(^|[^\w])'[^']*\s[^']*'($|[^\w])`: the quote at `q` closes at the next quote, with white space
// between and no word character after.
bool singlePair(Text16 s, int32_t q) {
    const auto close = s.find(u'\'', static_cast<std::size_t>(q) + 1);
    if (close == Text16::npos) return false;
    const auto after = static_cast<int32_t>(close) + 1;
    return std::any_of(s.begin() + q + 1, s.begin() + static_cast<std::ptrdiff_t>(close), space) &&
           (after == size(s) || !word(s[after]));
}
bool singleQuotedHead(Text16 s, int32_t p) {
    if (p == 0 && s[0] == u'\'' && singlePair(s, 0)) return true;
    return !word(s[p]) && p + 1 < size(s) && s[p + 1] == u'\'' && singlePair(s, p + 1);
}

// Heads for rules that open with a boundary and a fixed word: cheap tests that every match
// passes, so that the engine is only started where they hold.
bool upper(char16_t c) { return c >= u'A' && c <= u'Z'; }
bool lowerIs(char16_t c, std::u16string_view any) { return any.find(static_cast<char16_t>(c | 0x20)) != std::u16string_view::npos && letter(c); }
bool foldsToAscii(char16_t c);
// Without case, a word may begin with a character whose folding gives ASCII letters.
bool foldingHead(Text16 s, int32_t p, std::u16string_view firsts) {
    return (lowerIs(s[p], firsts) || (s[p] >= 0x80 && foldsToAscii(s[p]))) && boundary(s, p);
}

bool jsonHead(Text16 s, int32_t p) { // "key" : "
    if (s[p] != u'"' || p + 1 >= size(s) || !(letter(s[p + 1]) || s[p + 1] == u'_')) return false;
    const int32_t e = runEnd(s, p + 2, wordDotDash);
    if (e - (p + 2) > 40 || e >= size(s) || s[e] != u'"') return false;
    int32_t i = e + 1;
    while (i < size(s) && space(s[i])) ++i;
    if (i >= size(s) || s[i] != u':') return false;
    ++i;
    while (i < size(s) && space(s[i])) ++i;
    if (i >= size(s) || s[i] != u'"') return false;
    // The value, `(?:[^"\\]|\\.)*"`, ends at the first quote not taken by a backslash; without
    // one there is no match.
    for (++i; i < size(s); ++i) {
        if (s[i] == u'"') return true;
        if (s[i] == u'\\') ++i;
    }
    return false;
}
bool ipv4Head(Text16 s, int32_t p) { return digit(s[p]) && boundary(s, p); }
// Whether `word` (lower case) stands at `i` without case; a character outside ASCII in the way
// leaves it open, since case folding may still make it the word.
bool maybeWord(Text16 s, int32_t i, Text16 word) {
    for (std::size_t k = 0; k < word.size(); ++k) {
        if (i + static_cast<int32_t>(k) >= size(s)) return false;
        const char16_t c = s[static_cast<std::size_t>(i) + k];
        if (c >= 0x80) return true;
        if (static_cast<char16_t>(c | 0x20) != word[k] || !letter(c)) return false;
    }
    return true;
}
bool bearerHead(Text16 s, int32_t p) { // (?i)\bbearer\s+\S
    if (!foldingHead(s, p, u"b") || !maybeWord(s, p, u"bearer")) return false;
    if (!asciiFrom(s, p, 6)) return true;
    int32_t i = p + 6;
    if (i >= size(s) || !space(s[i])) return false;
    while (i < size(s) && space(s[i])) ++i;
    return i < size(s);
}
bool alnum(char16_t c) { return letter(c) || digit(c); }
// At least `count` characters of class `in` from `i`.
bool atLeast(Text16 s, int32_t i, int32_t count, bool (*in)(char16_t)) {
    for (int32_t k = 0; k < count; ++k)
        if (i + k >= size(s) || !in(s[i + k])) return false;
    return true;
}
bool keyDashHead(Text16 s, int32_t p) { // (sk|pk|rk)-[\w-]{8,}
    return (s[p] == u's' || s[p] == u'p' || s[p] == u'r') && startsWith(s, p + 1, u"k-") &&
           atLeast(s, p + 3, 8, wordDash) && boundary(s, p);
}
bool stripeAt(Text16 s, int32_t i) { // (sk|pk|rk)_(live|test)_[\w-]{8,}
    return i < size(s) && (s[i] == u's' || s[i] == u'p' || s[i] == u'r') && startsWith(s, i + 1, u"k_") &&
           (startsWith(s, i + 3, u"live_") || startsWith(s, i + 3, u"test_")) && atLeast(s, i + 8, 8, wordDash);
}
bool stripeHead(Text16 s, int32_t p) {
    return (p == 0 && stripeAt(s, 0)) || (!letter(s[p]) && !digit(s[p]) && stripeAt(s, p + 1));
}
bool githubPatHead(Text16 s, int32_t p) {
    return s[p] == u'g' && startsWith(s, p, u"github_pat_") && atLeast(s, p + 11, 20, word) && boundary(s, p);
}
bool githubHead(Text16 s, int32_t p) {
    return s[p] == u'g' && startsWith(s, p, u"gh") && p + 3 < size(s) && Text16(u"pousr").find(s[p + 2]) != Text16::npos &&
           s[p + 3] == u'_' && atLeast(s, p + 4, 16, alnum) && boundary(s, p);
}
bool slackHead(Text16 s, int32_t p) {
    return s[p] == u'x' && startsWith(s, p, u"xox") && p + 4 < size(s) && Text16(u"abprs").find(s[p + 3]) != Text16::npos &&
           s[p + 4] == u'-' && atLeast(s, p + 5, 1, wordDash) && boundary(s, p);
}
bool upperOrDigit(char16_t c) { return (c >= u'A' && c <= u'Z') || digit(c); }
bool awsHead(Text16 s, int32_t p) {
    return s[p] == u'A' && p + 1 < size(s) && (s[p + 1] == u'K' || s[p + 1] == u'S') && startsWith(s, p + 2, u"IA") &&
           atLeast(s, p + 4, 16, upperOrDigit) && boundary(s, p) && boundary(s, p + 20);
}
bool upperWord(char16_t c) { return upper(c) || digit(c) || c == u'_'; } // [A-Z0-9_]
bool upperHead(Text16 s, int32_t p) { return upper(s[p]) && boundary(s, p); }
bool equalsAfter(Text16 s, int32_t, int32_t e) { return e < size(s) && s[e] == u'='; }
bool spawnHead(Text16 s, int32_t p) { return foldingHead(s, p, u"s"); }

// `(?i)\b(command|cmd|exec(?:uting)?|spawn(?:ing)?|shell)\b([^:]{0,40}?):\s*\S`
bool commandHead(Text16 s, int32_t p) {
    static constexpr std::array<Text16, 7> words{u"command", u"cmd", u"executing", u"exec", u"spawning", u"spawn", u"shell"};
    if (!foldingHead(s, p, u"ces")) return false;
    if (!asciiFrom(s, p, 9)) return true; // folding may spell the word otherwise: the engine decides
    for (Text16 w : words) {
        const int32_t end = p + static_cast<int32_t>(w.size());
        if (!maybeWord(s, p, w) || !boundary(s, end)) continue;
        // The first colon within 40 characters (counted in code units, so never fewer), then a
        // character that is not white space.
        for (int32_t i = end; i < size(s) && i - end <= 80; ++i) {
            if (s[i] != u':') continue;
            int32_t j = i + 1;
            while (j < size(s) && space(s[j])) ++j;
            if (j < size(s)) return true;
            break;
        }
    }
    return false;
}

// `(?i)\b(repo...|owner)\b(\s*[:=]\s*|\s+)` and the first character of a value.
bool valueStop(char16_t c) {
    switch (c) {
    case u',': case u';': case u':': case u'(': case u')': case u'[': case u']': case u'{': case u'}': return true;
    default: return space(c);
    }
}
bool projectHead(Text16 s, int32_t p) {
    static constexpr std::array<Text16, 11> words{u"repository", u"repositories", u"repos",  u"repo",
                                                  u"project",    u"workspace",    u"worktree", u"branch",
                                                  u"organization", u"org",        u"owner"};
    if (!foldingHead(s, p, u"rpwbo")) return false;
    if (!asciiFrom(s, p, 12)) return true;
    for (Text16 w : words) {
        const int32_t end = p + static_cast<int32_t>(w.size());
        if (!maybeWord(s, p, w) || !boundary(s, end)) continue;
        int32_t j = end;
        while (j < size(s) && space(s[j])) ++j;
        if (j < size(s) && (s[j] == u':' || s[j] == u'=')) {
            int32_t k = j + 1;
            while (k < size(s) && space(s[k])) ++k;
            if (k < size(s) && !valueStop(s[k])) return true;
        }
        if (j > end && j < size(s) && !valueStop(s[j])) return true;
    }
    return false;
}

// `(^|[\s"'(=\[<,:])(?:~|\.{1,2})?/` and one character that may follow.
bool pathStop(char16_t c) { return space(c) || Text16(u"\"'<>()[]{},;:").find(c) != Text16::npos; }
bool pathAt(Text16 s, int32_t i) {
    auto slashAt = [&](int32_t j) { return j < size(s) && s[j] == u'/' && j + 1 < size(s) && !pathStop(s[j + 1]); };
    if (i >= size(s)) return false;
    if (slashAt(i)) return true;
    if ((s[i] == u'~' || s[i] == u'.') && slashAt(i + 1)) return true;
    return s[i] == u'.' && i + 1 < size(s) && s[i + 1] == u'.' && slashAt(i + 2);
}
bool pathLead(char16_t c) {
    switch (c) {
    case u' ': case u'\t': case u'\n': case u'\f': case u'\r':
    case u'"': case u'\'': case u'(': case u'=': case u'[': case u'<': case u',': case u':': return true;
    default: return false;
    }
}
bool pathHead(Text16 s, int32_t p) { return (p == 0 && pathAt(s, 0)) || (pathLead(s[p]) && pathAt(s, p + 1)); }

// `Q[^Q]{40,}Q`: a quote whose next quote is at least 40 characters on. Exact.
template <char16_t Q> Try longQuotedStarts(const icu::UnicodeString& text, int32_t from) {
    const Text16 s = view(text);
    for (auto q = s.find(Q, static_cast<std::size_t>(from)); q != Text16::npos;) {
        const auto close = s.find(Q, q + 1);
        if (close == Text16::npos) return {};
        if (close - q - 1 >= 40) return {static_cast<int32_t>(q), static_cast<int32_t>(q) + 1};
        q = close;
    }
    return {};
}

// `[A-Za-z0-9+/_=-]{32,}`: a run of at least 32. Exact.
bool opaque(char16_t c) { return letter(c) || digit(c) || c == u'+' || c == u'/' || c == u'_' || c == u'=' || c == u'-'; }
bool longRun(Text16, int32_t start, int32_t end) { return end - start >= 32; }

// The key rule reads `(?i)\b([\w.-]*(?:key|token|...)[\w.-]*)(["']?\s*[:=]\s*)\S.*$`. Without
// case the class also takes the two letters whose case folds to ASCII (U+017F, U+212A), and a key
// word may also be spelt with characters whose full folding gives ASCII letters ("ß" for "ss").
bool keyClass(char16_t c) { return wordDotDash(c) || c == 0x017F || c == 0x212A; }

// Characters outside ASCII whose full case folding holds an ASCII letter, found once from the
// Unicode data itself.
bool foldsToAscii(char16_t c) {
    static const std::vector<char16_t> found = [] {
        std::vector<char16_t> out;
        UErrorCode status = U_ZERO_ERROR;
        icu::UnicodeSet changing(icu::UnicodeString(u"[:Changes_When_Casefolded:]"), status);
        for (int32_t r = 0; U_SUCCESS(status) && r < changing.getRangeCount(); ++r)
            for (UChar32 c = std::max<UChar32>(changing.getRangeStart(r), 0x80); c <= changing.getRangeEnd(r); ++c) {
                UChar in[2];
                int32_t length = 0;
                U16_APPEND_UNSAFE(in, length, c);
                UChar folded[8];
                UErrorCode foldStatus = U_ZERO_ERROR;
                const int32_t n = u_strFoldCase(folded, 8, in, length, U_FOLD_CASE_DEFAULT, &foldStatus);
                if (U_SUCCESS(foldStatus) && std::any_of(folded, folded + std::min(n, 8), letter))
                    for (int32_t k = 0; k < length; ++k) out.push_back(in[k]);
            }
        // A character beyond the first plane is two code units; should one ever fold to ASCII,
        // every surrogate counts, which only ever means more tries.
        if (std::any_of(out.begin(), out.end(), [](char16_t u) { return U16_IS_SURROGATE(u); }))
            for (char16_t u = 0xD800; u < 0xE000; ++u) out.push_back(u);
        return out;
    }();
    return std::find(found.begin(), found.end(), c) != found.end();
}
bool keyRun(char16_t c) { return keyClass(c) || (c >= 0x80 && foldsToAscii(c)); }

// `["']?\s*[:=]\s*\S`, exactly.
bool separatorAfter(Text16 s, int32_t i) {
    const int32_t n = size(s);
    if (i < n && (s[i] == u'"' || s[i] == u'\'')) ++i;
    while (i < n && space(s[i])) ++i;
    if (i >= n || (s[i] != u':' && s[i] != u'=')) return false;
    ++i;
    while (i < n && space(s[i])) ++i;
    return i < n;
}

// In ASCII, matching without case is comparing lower-cased letters.
bool hasKeyWord(Text16 s, int32_t from, int32_t to) {
    static constexpr std::array<Text16, 9> words{u"key",    u"token",    u"secret",     u"passwd", u"password",
                                                 u"passphrase", u"credential", u"cookie", u"auth"};
    for (int32_t i = from; i < to; ++i)
        for (Text16 w : words) {
            const auto length = static_cast<int32_t>(w.size());
            if (to - i < length) continue;
            bool same = true;
            for (int32_t k = 0; same && k < length; ++k) same = static_cast<char16_t>(s[i + k] | 0x20) == w[k];
            if (same) return true;
        }
    return false;
}

// The same for text outside ASCII, after full case folding: the engine compares folded text, so
// a key word it can match is in the folded text too.
bool foldedKeyWord(Text16 s, int32_t from, int32_t to) {
    if (asciiFrom(s, from, to - from)) return hasKeyWord(s, from, to);
    icu::UnicodeString folded(s.data() + from, to - from);
    folded.foldCase();
    const Text16 f = view(folded);
    return hasKeyWord(f, 0, size(f));
}

// The name and its key word lie within one run of `keyRun` characters and end where it ends, so a
// run without a separator after it is passed over whole. Within a run, a stretch of the class
// itself behaves like the runs above (its first boundary stands for it); each folding character
// is tried on its own.
Try keyStarts(const icu::UnicodeString& text, int32_t from) {
    const Text16 s = view(text);
    for (int32_t p = from; p < size(s);) {
        if (!keyRun(s[p])) {
            ++p;
            continue;
        }
        const int32_t e = runEnd(s, p, keyRun);
        if (separatorAfter(s, e)) {
            for (int32_t q = p; q < e && foldedKeyWord(s, q, e);) {
                const int32_t piece = keyClass(s[q]) ? runEnd(s, q, keyClass) : q + 1;
                for (int32_t b = q; b < piece; ++b)
                    if (boundary(s, b)) return {b, piece};
                q = piece;
            }
        }
        p = e;
    }
    return {};
}

} // namespace

Starts startsFor(int rule) {
    switch (rule) {
    case 2: return pointStarts<jsonHead>;
    case 3: return runStarts<scheme, atLetter, urlAfter>;
    case 4: return runStarts<wordDotDash, boundary, atSignAfter>;
    case 5: return runStarts<mailLocal, anywhere, atSignAfter>;
    case 7: return pointStarts<addressHead>;
    case 8: return pointStarts<ipv4Head>;
    case 9: return pointStarts<bearerHead>;
    case 10: return runStarts<wordDash, jwtHead, dotAfter>;
    case 11: return pointStarts<keyDashHead>;
    case 12: return pointStarts<stripeHead>;
    case 13: return pointStarts<githubPatHead>;
    case 14: return pointStarts<githubHead>;
    case 15: return pointStarts<slackHead>;
    case 16: return pointStarts<awsHead>;
    case 17: return keyStarts;
    case 18: return runStarts<upperWord, upperHead, equalsAfter>;
    case 19: return pointStarts<commandHead>;
    case 20: return runStarts<commandName, anywhere, notFoundAfter>;
    case 21: return pointStarts<spawnHead>;
    case 22: return pointStarts<projectHead>;
    case 23: return pointStarts<pathHead>;
    case 24: return pointStarts<drivePathHead>;
    case 25: return runStarts<wordDotDash, boundary, slashAfter>;
    case 26: return quotedStarts<u'"'>;
    case 27: return pointStarts<singleQuotedHead>;
    case 28: return quotedStarts<u'`'>;
    case 29: return longQuotedStarts<u'"'>;
    case 30: return longQuotedStarts<u'\''>;
    case 31: return longQuotedStarts<u'`'>;
    case 32: return runStarts<opaque, anywhere, longRun>;
    default: return nullptr; // 1 is anchored at the start, 6 opens with two backslashes
    }
}

} // namespace orvan::CrashRedact
