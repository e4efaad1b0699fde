// The scanners that tell the engine where to try a rule must never change what a rule does: each
// rule with a scanner is held against the engine trying every position, over text built from the
// pieces the rules care about, case-folding traps included.
#include "diagnostics/CrashRedact.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace orvan {
namespace {

std::string utf8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

std::vector<icu::UnicodeString> lines(std::size_t count, unsigned seed) {
    static const std::vector<std::string> pieces = {
        "a", "Z", "0", "9", "f", "_", ".", "-", "+", "@", ":", "/", "\\", "\"", "'", "`", " ", "\t", "=", "%",
        "~", "<", ">", "(", ",", "eyJ", "://", "key", "token", "Auth", "to\u212Aen", "pa\u00DFwd", "\u017Fecret",
        "\u212A", "\u00DF", "\u00E9", "\U0001F600", ": command not found", "::", "C:\\", "x@y", "..", "1.2",
        "\u2028", "\u0085", "aaaaaaaaaaaa", "-eyJx.y", ".b", "ab.cd-ef", "sk", "'a b'", "\"a b\"", "fe80",
        "{\"type\":\"", "\"k\": \"v\"", "10.0.0.1", ":8080", "Bearer x", "\u017Fpawn y", "bearer", "sk-abcdefgh",
        "(sk_live_abcdefgh", "github_pat_0123456789abcdefghij", "ghp_0123456789abcdef", "xoxb-1", "AKIA0123456789ABCDEF",
        "HOME=", "PATH", "cmd: x", "exec ", "spawn ", "repo ", "Project: ", "owner", "./a", "~/", "../b",
        "0123456789abcdefghijklmnopqrstuv", "\"0123456789012345678901234567890123456789\"", "'0123456789012345678901234567890123456789"};
    std::mt19937 rng(seed);
    std::vector<icu::UnicodeString> out;
    for (std::size_t n = 0; n < count; ++n) {
        std::string line;
        const auto parts = rng() % 30;
        for (unsigned k = 0; k < parts; ++k) line += pieces[rng() % pieces.size()];
        out.push_back(icu::UnicodeString::fromUTF8(line));
    }
    return out;
}

// Every rule, scanned or not, against the engine trying every position; a rule with a scanner
// must also be reached by the corpus often enough for the comparison to prove something.
TEST(CrashRedactStarts, EveryRuleMatchesTheEngineTryingEverywhere) {
    const auto& rules = CrashRedact::rules();
    const auto corpus = lines(6000, 11);
    int scanned = 0;
    for (std::size_t r = 0; r < rules.size(); ++r) {
        SCOPED_TRACE("rule " + std::to_string(r + 1));
        int changed = 0;
        for (const auto& line : corpus) {
            auto everywhere = CrashRedact::replaceEverywhere(rules[r], line);
            auto fast = CrashRedact::replace(rules[r], line);
            ASSERT_TRUE(everywhere && fast) << utf8(line);
            ASSERT_EQ(utf8(*fast), utf8(*everywhere)) << "line: " << utf8(line);
            changed += *fast != line;
        }
        if (!rules[r].starts) continue;
        ++scanned;
        EXPECT_GT(changed, 20);
        EXPECT_LT(changed, static_cast<int>(corpus.size()));
    }
    EXPECT_EQ(scanned, 30);
}

// Shapes a scanner must get right at its edges: a run cut by a folding letter, a key word spelt
// with one, a match at the very start, two quoted phrases sharing a space.
TEST(CrashRedactStarts, EdgesOfTheScanners) {
    struct Case { int rule; std::string in; std::string out; };
    for (const Case& c : std::vector<Case>{
             {3, "1abc://x y", "1<url> y"},
             {3, "+.://x 9a.b://y", "+.://x 9<url>"},
             {4, "..a.b@h:p", "..<url>"},
             {5, "a@b.c+d@e.f", "<email><email>"},
             {7, "::1 x", "<ip> x"},
             {7, "a:b:c", "a:b:c"},
             {10, "-eyJa-eyJb.c.d", "-<secret>"},
             {17, "a\u212Aey=1", "a\u212Aey=<hidden>"},
             {17, "\u00DFpa\u00DFwd: x", "\u00DFpa\u00DFwd: <hidden>"},
             {17, "keykeykey x=1 token=2", "keykeykey x=1 token=<hidden>"},
             {17, "x.y-token\"= z", "x.y-token\"= <hidden>"},
             {17, "x.y-token \"= z", "x.y-token \"= z"},
             {7, "\U0001F600::1", "\U0001F600<ip>"},
             {27, "\U0001F600'a b'", "\U0001F600'<text>'"},
             {20, "a+b@c: command not found:", "a+b@c: command not found:"},
             {20, "a+b@c: command not found", "<command>: command not found"},
             {24, "xC:\\a C:\\b", "xC:\\a <path>"},
             {25, "a.b/c d-e", "<path> d-e"},
             {26, "\"a\" b\" c", "\"a\"<text>\" c"},
             {27, "'a b' 'c d'", "'<text>' 'c d'"},
             {27, "x'a b'y 'c d'", "x'a b'y '<text>'"},
             {28, "`a b` `c`", "`<text>` `c`"},
         }) {
        SCOPED_TRACE(c.in);
        const auto& rule = CrashRedact::rules().at(static_cast<std::size_t>(c.rule - 1));
        auto in = icu::UnicodeString::fromUTF8(c.in);
        auto fast = CrashRedact::replace(rule, in);
        auto everywhere = CrashRedact::replaceEverywhere(rule, in);
        ASSERT_TRUE(fast && everywhere);
        EXPECT_EQ(utf8(*everywhere), c.out);
        EXPECT_EQ(utf8(*fast), c.out);
    }
}

} // namespace
} // namespace orvan
