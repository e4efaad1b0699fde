#pragma once
// The one gate for free text that may leave this machine in a crash report. It keeps the shape of
// a message and puts short placeholders in angle brackets where a person or a machine could be
// recognised. It reads from the end of the text, distrusts invisible characters and white-space
// tricks, and would rather lose a line than pass one it cannot read.
//
// Everything here is a pure function; the rule list is compiled once and then only read, so any
// thread may call in.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/regex.h>
#include <unicode/unistr.h>

namespace orvan::CrashRedact {

inline constexpr std::size_t maxLine = 160;     // bytes of one redacted line
inline constexpr std::size_t maxRawLine = 512;  // bytes of a raw line that is still read
inline constexpr std::size_t maxRawInput = 4096; // bytes of raw text read in all

// What every caller uses: at most `max` bytes of valid UTF-8, whatever `input` holds.
std::string text(std::string_view input, std::size_t max);

// ---- The pieces below are public so that each can be checked on its own. ----

using Groups = std::vector<icu::UnicodeString>;
using RuleFunction = icu::UnicodeString (*)(const Groups& groups);

// Where the engine need try a rule, for rules whose every-position scan could cost time in
// proportion to the square of the line. `at` is the first position from `from` where a match can
// begin (-1: none can); if the match fails there, none can begin before `resume` either.
struct Try {
    int32_t at = -1;
    int32_t resume = 0;
};
using Starts = Try (*)(const icu::UnicodeString& text, int32_t from);
// The scanner for rule `number` (from 1), or nothing where the engine's own scan is cheap.
Starts startsFor(int number);

struct Rule {
    const icu::RegexPattern* re = nullptr;
    icu::UnicodeString with;     // replacement template; empty when `fn` is set
    RuleFunction fn = nullptr;
    Starts starts = nullptr;
};

// The 32 rules in the order they run, compiled on first use.
const std::vector<Rule>& rules();

// Makes a pattern blind to Unicode tables: word, digit and space classes and word boundaries
// become their ASCII forms, so an accented or wide letter cannot bend a rule.
std::string ascii(std::string_view pattern);

// One rule over a text: every match, left to right. Absent when the engine ran out of time;
// redaction then fails closed and the line is not read.
std::optional<icu::UnicodeString> replace(const Rule& rule, const icu::UnicodeString& in);
// The same with the engine trying every position, as the pattern alone would have it: what the
// scanners are held against.
std::optional<icu::UnicodeString> replaceEverywhere(const Rule& rule, const icu::UnicodeString& in);

// All rules, and once more over a copy with every white-space character made a plain space.
// Absent when any rule ran out of time.
std::optional<icu::UnicodeString> redactClean(const icu::UnicodeString& text);
// The same over UTF-8, for tests and tools; "<line>" stands for a run that ran out of time.
std::string redactClean(std::string_view text);

icu::UnicodeString jsonValue(const Groups& groups);
icu::UnicodeString ipv6(const Groups& groups);
icu::UnicodeString projectName(const Groups& groups);
bool isIPv6(std::string_view text);

// Scalars that show nothing on screen.
bool isInvisible(char32_t scalar);
bool unreadable(std::string_view line);
// Tabs become spaces; invisible scalars are dropped (or become spaces in `spaced` mode); other
// control characters are dropped.
std::string redactLine(std::string_view line, bool spaced);
bool invisibleBetweenText(std::string_view line);
std::string trimSpace(std::string_view text);
std::size_t spaceBytes(std::string_view text, bool atEnd);

} // namespace orvan::CrashRedact
