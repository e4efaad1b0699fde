// The rule list and the engine around it. Rules run in a fixed order, each on the output of the
// one before; the order carries meaning (addresses before secrets, key = value before paths, the
// catch-all for long opaque runs last).

#include "diagnostics/CrashRedact.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cctype>
#include <cstdlib>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <string_view>

#include <unicode/locid.h>
#include <unicode/regex.h>
#include <unicode/uchar.h>

namespace orvan::CrashRedact {

namespace {

// How long one rule may work on one text, in the engine's own steps (each unit is a fixed count
// of backtracking states, so the limit is the same on every machine). A rule that needs more is
// treated as unreadable input. Legitimate text of 512 bytes stays far below it.
constexpr int32_t timeLimit = 3;

struct Row {
    const char* pattern;
    const char16_t* with;
    RuleFunction fn;
};

// Patterns as written, before `ascii`; templates use $n for groups.
const std::array<Row, 32> table{{
    {R"re(^([\s\x{FEFF}]*[$%#>+])\s+\S.*$)re", u"$1 <command>", nullptr},
    {R"re("([A-Za-z_][\w.-]{0,40})"(\s*:\s*)"((?:[^"\\]|\\.)*)")re", u"", jsonValue},
    {R"re([A-Za-z][A-Za-z0-9+.-]*://[^\s"'<>]+)re", u"<url>", nullptr},
    {R"re(\b[\w.-]+@[\w.-]+:[\w./~-]+)re", u"<url>", nullptr},
    {R"re([\w.+-]+@[\w-]+\.[\w.-]+)re", u"<email>", nullptr},
    {R"re(\\\\(?:[?.]\\(?:[A-Za-z]:)?)?[^\s"'<>|:;,()\[\]{}]+)re", u"<path>", nullptr},
    {R"re((^|[^\w.:%])([0-9A-Fa-f.]*:[0-9A-Fa-f:.]*:[0-9A-Fa-f:.]*(?:%[\w.-]+)?))re", u"", ipv6},
    {R"re(\b(?:\d{1,3}\.){3}\d{1,3}\b(?::\d{1,5}\b)?)re", u"<ip>", nullptr},
    {R"re((?i)\bbearer\s+\S+)re", u"Bearer <secret>", nullptr},
    {R"re(\beyJ[\w-]+\.[\w-]+\.[\w-]+)re", u"<secret>", nullptr},
    {R"re(\b(?:sk|pk|rk)-[\w-]{8,})re", u"<secret>", nullptr},
    {R"re((^|[^A-Za-z0-9])(?:sk|pk|rk)_(?:live|test)_[\w-]{8,})re", u"$1<secret>", nullptr},
    {R"re(\bgithub_pat_[A-Za-z0-9_]{20,})re", u"<secret>", nullptr},
    {R"re(\bgh[pousr]_[A-Za-z0-9]{16,})re", u"<secret>", nullptr},
    {R"re(\bxox[abprs]-[\w-]+)re", u"<secret>", nullptr},
    {R"re(\bA[KS]IA[0-9A-Z]{16}\b)re", u"<secret>", nullptr},
    {R"re((?i)\b([\w.-]*(?:key|token|secret|passw(?:or)?d|passphrase|credential|cookie|auth)[\w.-]*)(["']?\s*[:=]\s*)\S.*$)re",
     u"$1$2<hidden>", nullptr},
    {R"re(\b([A-Z][A-Z0-9_]{2,})=("[^"]*"|'[^']*'|\S*))re", u"$1=<hidden>", nullptr},
    {R"re((?i)\b(command|cmd|exec(?:uting)?|spawn(?:ing)?|shell)\b([^:]{0,40}?):\s*\S.*$)re",
     u"$1$2: <command>", nullptr},
    {R"re([\w.@+-]+: command not found($|[^:]))re", u"<command>: command not found$1", nullptr},
    {R"re((?i)\b(spawn)\s+\S+)re", u"$1 <command>", nullptr},
    {R"re((?i)\b(repo(?:sitory|sitories|s)?|project|workspace|worktree|branch|org(?:anization)?|owner)\b(\s*[:=]\s*|\s+)("[^"]*"|'[^']*'|[^\s,;:()\[\]{}]+))re",
     u"", projectName},
    {R"re((^|[\s"'(=\[<,:])(?:~|\.{1,2})?/[^\s"'<>()\[\]{},;:]+)re", u"$1<path>", nullptr},
    {R"re(\b[A-Za-z]:\\[^\s"'<>]+)re", u"<path>", nullptr},
    {R"re(\b[\w.-]+(?:/[\w.@-]+)+)re", u"<path>", nullptr},
    {R"re("[^"]*\s[^"]*")re", u"\"<text>\"", nullptr},
    {R"re((^|[^\w])'[^']*\s[^']*'($|[^\w]))re", u"$1'<text>'$2", nullptr},
    {R"re(`[^`]*\s[^`]*`)re", u"`<text>`", nullptr},
    {R"re("[^"]{40,}")re", u"\"<text>\"", nullptr},
    {R"re('[^']{40,}')re", u"'<text>'", nullptr},
    {R"re(`[^`]{40,}`)re", u"`<text>`", nullptr},
    {R"re([A-Za-z0-9+/_=-]{32,})re", u"<secret>", nullptr},
}};

// JSON keys whose short values are vocabulary, not data.
constexpr std::array<std::string_view, 11> kindKeys{"jsonrpc", "method", "type",      "kind",  "level", "severity",
                                                    "code",    "status", "stopreason", "errno", "syscall"};

// Plain English after "repo", "project" and the like, not a name.
constexpr std::array<std::string_view, 64> notNames{
    "a",        "an",      "the",     "this",    "that",     "which",    "and",     "or",     "not",
    "no",       "is",      "isn't",   "was",     "wasn't",   "are",      "were",    "has",    "hasn't",
    "have",     "had",     "does",    "doesn't", "did",      "didn't",   "do",      "can",    "cannot",
    "can't",    "could",   "couldn't", "must",   "should",   "will",     "would",   "may",    "might",
    "for",      "in",      "at",      "of",      "on",       "to",       "from",    "with",   "by",
    "as",       "if",      "failed",  "found",   "missing",  "exists",   "already", "required", "unknown",
    "invalid",  "empty",   "name",    "path",    "root",     "settings", "config",  "access", "error",
    "list"};

template <std::size_t N> bool among(const std::array<std::string_view, N>& words, const std::string& word) {
    for (auto w : words)
        if (w == word) return true;
    return false;
}

std::string lowered(const icu::UnicodeString& text) {
    icu::UnicodeString copy(text);
    copy.toLower(icu::Locale::getRoot());
    std::string out;
    copy.toUTF8String(out);
    return out;
}

std::string utf8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

struct Compiled {
    std::vector<std::unique_ptr<icu::RegexPattern>> patterns;
    std::vector<Rule> rules;
};

const Compiled& compiled() {
    static const Compiled list = [] {
        Compiled c;
        for (const Row& row : table) {
            std::string rewritten = ascii(row.pattern);
            UErrorCode status = U_ZERO_ERROR;
            UParseError where{};
            std::unique_ptr<icu::RegexPattern> re(icu::RegexPattern::compile(
                icu::UnicodeString::fromUTF8(rewritten), UREGEX_DOTALL, where, status));
            if (U_FAILURE(status) || !re) {
                // A rule that does not compile is a fault of this list, never of the input.
                std::fprintf(stderr, "redaction rule does not compile: %s (%s)\n", row.pattern,
                             u_errorName(status));
                std::abort();
            }
            const int number = static_cast<int>(c.rules.size()) + 1;
            c.rules.push_back(Rule{re.get(), icu::UnicodeString(row.with), row.fn, startsFor(number)});
            c.patterns.push_back(std::move(re));
        }
        return c;
    }();
    return list;
}

// Matchers hold per-run state, so each thread keeps its own, made once per rule.
icu::RegexMatcher* matcherFor(const Rule& rule) {
    thread_local std::vector<std::pair<const icu::RegexPattern*, std::unique_ptr<icu::RegexMatcher>>> matchers;
    for (auto& [pattern, matcher] : matchers)
        if (pattern == rule.re) return matcher.get();
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexMatcher> matcher(rule.re->matcher(status));
    if (U_FAILURE(status) || !matcher) return nullptr;
    matcher->setTimeLimit(timeLimit, status);
    matchers.emplace_back(rule.re, std::move(matcher));
    return matchers.back().second.get();
}

icu::UnicodeString flatSpaces(const icu::UnicodeString& text) {
    icu::UnicodeString out;
    for (int32_t i = 0; i < text.length();) {
        UChar32 c = text.char32At(i);
        i += U16_LENGTH(c);
        out.append(u_hasBinaryProperty(c, UCHAR_WHITE_SPACE) ? UChar32(' ') : c);
    }
    return out;
}

bool has(const icu::UnicodeString& text, const char16_t* literal) {
    return text.indexOf(icu::UnicodeString(literal)) >= 0;
}

bool isAsciiText(const icu::UnicodeString& text) {
    for (int32_t i = 0; i < text.length(); ++i)
        if (text.charAt(i) >= 0x80) return false;
    return true;
}

// ASCII case-insensitive search; only used on ASCII text, where it agrees with the engine's (?i).
bool hasFolded(const icu::UnicodeString& text, std::initializer_list<const char16_t*> words) {
    if (!isAsciiText(text)) return true;
    icu::UnicodeString folded(text);
    folded.toLower(icu::Locale::getRoot());
    for (const char16_t* word : words)
        if (folded.indexOf(icu::UnicodeString(word)) >= 0) return true;
    return false;
}

bool longRun(const icu::UnicodeString& text) {
    int32_t run = 0;
    for (int32_t i = 0; i < text.length(); ++i) {
        char16_t c = text.charAt(i);
        bool in = c < 0x80 && (std::isalnum(static_cast<unsigned char>(c)) || c == '+' || c == '/' || c == '_' ||
                               c == '=' || c == '-');
        run = in ? run + 1 : 0;
        if (run >= 32) return true;
    }
    return false;
}

bool commandPrompt(const icu::UnicodeString& text) {
    for (int32_t i = 0; i < text.length(); ++i) {
        char16_t c = text.charAt(i);
        if (c == ' ' || c == '\t' || c == '\n' || c == '\f' || c == '\r' || c == 0xFEFF) continue;
        return c == '$' || c == '%' || c == '#' || c == '>' || c == '+';
    }
    return false;
}

// Whether rule `index` (from 0) can match at all: each test is a text every match must contain,
// so skipping a rule that fails it changes nothing. It spares the engine most of its work on
// ordinary lines. Case-insensitive rules are only tested on ASCII text.
bool mayMatch(std::size_t index, const icu::UnicodeString& t) {
    switch (index + 1) {
    case 1: return commandPrompt(t);
    case 2: return has(t, u"\"") && has(t, u":");
    case 3: return has(t, u"://");
    case 4: return has(t, u"@") && has(t, u":");
    case 5: return has(t, u"@") && has(t, u".");
    case 6: return has(t, u"\\\\");
    case 7: return has(t, u":");
    case 8: return has(t, u".");
    case 9: return hasFolded(t, {u"bearer"});
    case 10: return has(t, u"eyJ");
    case 11: return has(t, u"k-");
    case 12: return has(t, u"k_");
    case 13: return has(t, u"github_pat_");
    case 14: return has(t, u"gh");
    case 15: return has(t, u"xox");
    case 16: return has(t, u"IA");
    case 17:
        return (has(t, u":") || has(t, u"=")) &&
               hasFolded(t, {u"key", u"token", u"secret", u"passw", u"passphrase", u"credential", u"cookie", u"auth"});
    case 18: return has(t, u"=");
    case 19: return has(t, u":") && hasFolded(t, {u"command", u"cmd", u"exec", u"spawn", u"shell"});
    case 20: return has(t, u": command not found");
    case 21: return hasFolded(t, {u"spawn"});
    case 22: return hasFolded(t, {u"repo", u"project", u"workspace", u"worktree", u"branch", u"org", u"owner"});
    case 23: return has(t, u"/");
    case 24: return has(t, u":\\");
    case 25: return has(t, u"/");
    case 26: case 29: return has(t, u"\"");
    case 27: case 30: return has(t, u"'");
    case 28: case 31: return has(t, u"`");
    case 32: return longRun(t);
    default: return true;
    }
}

// A template for the match the matcher holds: $n is group n, and a group that took no part gives
// nothing. The templates hold no other escapes.
icu::UnicodeString expand(const icu::UnicodeString& with, icu::RegexMatcher& m, UErrorCode& status) {
    icu::UnicodeString out;
    for (int32_t i = 0; i < with.length(); ++i) {
        const char16_t c = with.charAt(i);
        const char16_t next = i + 1 < with.length() ? with.charAt(i + 1) : u'\0';
        if (c == u'$' && next >= u'0' && next <= u'9') {
            out.append(m.group(next - u'0', status));
            ++i;
        } else {
            out.append(c);
        }
    }
    return out;
}

std::optional<icu::UnicodeString> runAll(const icu::UnicodeString& text) {
    icu::UnicodeString current = text;
    const auto& list = rules();
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (!mayMatch(i, current)) continue;
        const Rule& rule = list[i];
        auto next = replace(rule, current);
        if (!next) return std::nullopt;
        current = std::move(*next);
    }
    return current;
}

} // namespace

const std::vector<Rule>& rules() { return compiled().rules; }

std::string ascii(std::string_view pattern) {
    static constexpr std::string_view wordChars = "A-Za-z0-9_";
    static constexpr std::string_view boundary =
        "(?-i:(?<![A-Za-z0-9_])(?=[A-Za-z0-9_])|(?<=[A-Za-z0-9_])(?![A-Za-z0-9_]))";
    std::string out;
    out.reserve(pattern.size() * 2);
    bool inClass = false;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        char c = pattern[i];
        if (c == '\\') {
            if (i + 1 >= pattern.size()) break; // a lone backslash ends the pattern
            char e = pattern[++i];
            switch (e) {
            case 'w': out.append(inClass ? "" : "[").append(wordChars).append(inClass ? "" : "]"); break;
            case 'd': out.append(inClass ? "0-9" : "[0-9]"); break;
            case 's': out.append(inClass ? " \\t\\n\\f\\r" : "[ \\t\\n\\f\\r]"); break;
            case 'S': out += "[^ \\t\\n\\f\\r]"; break;
            case 'b': out += boundary; break;
            default:
                out += '\\';
                out += e;
            }
            continue;
        }
        if (c == '[' && !inClass) inClass = true;
        else if (c == ']' && inClass) inClass = false;
        out += c;
    }
    return out;
}

std::optional<icu::UnicodeString> replace(const Rule& rule, const icu::UnicodeString& in) {
    icu::RegexMatcher* m = matcherFor(rule);
    if (!m) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString out;
    Groups groups;
    int32_t last = 0;
    auto take = [&]() -> bool {
        const int32_t start = m->start(status);
        const int32_t end = m->end(status);
        if (U_FAILURE(status)) return false;
        out.append(in, last, start - last);
        if (rule.fn) {
            groups.clear();
            for (int32_t g = 0; g <= m->groupCount(); ++g) groups.push_back(m->group(g, status));
            out.append(rule.fn(groups));
        } else {
            out.append(expand(rule.with, *m, status));
        }
        last = end;
        return U_SUCCESS(status);
    };
    m->reset(in);
    if (!rule.starts) {
        for (;;) {
            const bool found = m->find(status);
            if (U_FAILURE(status)) return std::nullopt; // out of time: fail closed
            if (!found) break;
            if (!take()) return std::nullopt;
        }
    } else {
        for (int32_t from = 0; from <= in.length();) {
            Try next = rule.starts(in, from);
            if (next.at < 0) break;
            // Scanners read code units; the engine reads whole characters, so a try that lands
            // between the two halves of one starts at its first half.
            if (next.at > from && U16_IS_TRAIL(in.charAt(next.at)) && U16_IS_LEAD(in.charAt(next.at - 1))) --next.at;
            const bool found = m->lookingAt(next.at, status);
            if (U_FAILURE(status)) return std::nullopt;
            if (!found) {
                from = std::max(next.resume, next.at + 1);
                continue;
            }
            if (!take()) return std::nullopt;
            const int32_t end = m->end(status);
            from = end > next.at ? end : next.at + 1;
        }
    }
    out.append(in, last, in.length() - last);
    return out;
}

std::optional<icu::UnicodeString> replaceEverywhere(const Rule& rule, const icu::UnicodeString& in) {
    icu::RegexMatcher* m = matcherFor(rule);
    if (!m) return std::nullopt;
    m->reset(in);
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString out;
    if (!rule.fn) {
        // The engine's own template expansion, so that it checks the one above. (Its replaceAll
        // would swallow a time-out and return what it had so far.)
        while (m->find(status) && U_SUCCESS(status)) {
            m->appendReplacement(out, rule.with, status);
            if (U_FAILURE(status)) return std::nullopt;
        }
        if (U_FAILURE(status)) return std::nullopt;
        m->appendTail(out);
        return out;
    }
    int32_t last = 0;
    Groups groups;
    while (m->find(status) && U_SUCCESS(status)) {
        const int32_t start = m->start(status);
        const int32_t end = m->end(status);
        groups.clear();
        for (int32_t g = 0; g <= m->groupCount(); ++g) groups.push_back(m->group(g, status));
        if (U_FAILURE(status)) return std::nullopt;
        out.append(in, last, start - last);
        out.append(rule.fn(groups));
        last = end;
    }
    if (U_FAILURE(status)) return std::nullopt;
    out.append(in, last, in.length() - last);
    return out;
}

std::optional<icu::UnicodeString> redactClean(const icu::UnicodeString& text) {
    auto first = runAll(text);
    if (!first) return std::nullopt;
    icu::UnicodeString copy = flatSpaces(*first);
    if (copy == *first) return first;
    auto second = runAll(copy);
    if (!second) return std::nullopt;
    if (*second == copy) return first;
    return second;
}

std::string redactClean(std::string_view text) {
    auto out = redactClean(icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size()))));
    return out ? utf8(*out) : std::string("<line>");
}

icu::UnicodeString jsonValue(const Groups& g) {
    const icu::UnicodeString& key = g.at(1);
    const icu::UnicodeString& separator = g.at(2);
    const icu::UnicodeString& value = g.at(3);
    bool vocabulary = among(kindKeys, lowered(key)) && !value.isEmpty() && value.countChar32() <= 40;
    for (int32_t i = 0; vocabulary && i < value.length(); ++i) {
        char16_t c = value.charAt(i);
        vocabulary = (c < 0x80 && (std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == ':' ||
                                   c == '.' || c == '-'));
    }
    if (vocabulary) return g.at(0);
    icu::UnicodeString out(u'"');
    out.append(key).append(u'"').append(separator).append(icu::UnicodeString(u"\"<text>\""));
    return out;
}

bool isIPv6(std::string_view text) {
    auto percent = text.find('%');
    if (percent != std::string_view::npos) {
        if (percent + 1 >= text.size()) return false;
        text = text.substr(0, percent);
    }
    if (text.find(':') == std::string_view::npos) return false;
    std::string address(text);
    if (address.find('\0') != std::string::npos) return false;
    in6_addr parsed{};
    return inet_pton(AF_INET6, address.c_str(), &parsed) == 1;
}

icu::UnicodeString ipv6(const Groups& g) {
    const icu::UnicodeString& lead = g.at(1);
    const icu::UnicodeString& candidate = g.at(2);
    const std::string text = utf8(candidate);
    std::string tail;
    if (!isIPv6(text)) {
        std::size_t keep = text.size();
        while (keep > 0 && (text[keep - 1] == '.' || text[keep - 1] == ':')) --keep;
        if (keep == text.size() || keep == 0 || !isIPv6(std::string_view(text).substr(0, keep))) return g.at(0);
        tail = text.substr(keep);
    }
    if (text.find_first_not_of(':') == std::string::npos) return g.at(0);
    icu::UnicodeString out(lead);
    out.append(icu::UnicodeString(u"<ip>")).append(icu::UnicodeString::fromUTF8(tail));
    return out;
}

icu::UnicodeString projectName(const Groups& g) {
    const icu::UnicodeString& value = g.at(3);
    if (value.startsWith(icu::UnicodeString(u"<")) || among(notNames, lowered(value))) return g.at(0);
    icu::UnicodeString out(g.at(1));
    out.append(g.at(2)).append(icu::UnicodeString(u"<name>"));
    return out;
}

} // namespace orvan::CrashRedact
