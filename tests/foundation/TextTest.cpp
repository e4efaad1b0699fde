#include "foundation/Text.h"

#include <gtest/gtest.h>
#include <unicode/brkiter.h>

#include <memory>

#include <utility>
#include <vector>

namespace orvan {
namespace {

TEST(Trimming, RemovesUnicodeWhiteSpaceAndNewlinesAtBothEnds) {
    const std::pair<std::string, std::string> cases[] = {
        {"  key\n", "key"}, {"\t\r\nkey\r\n", "key"}, {"   ", ""}, {"", ""}, {"a b", "a b"},
        {"\xC2\xA0name\xE3\x80\x80", "name"},                       // no-break space, ideographic space
        {"\xE2\x80\xA8line\xE2\x80\xA9", "line"},                   // line and paragraph separators
        {"\xC2\x85x\xE2\x80\x8A", "x"},                             // next line, hair space
        {"\xE2\x80\x8Bx\xE2\x80\x8B", "\xE2\x80\x8Bx\xE2\x80\x8B"}, // zero-width space is not white
        {" \xFF ", "\xFF"}};                                        // ill-formed bytes stay
    for (const auto& [in, out] : cases) EXPECT_EQ(Text::trimmed(in), out) << in;
}

TEST(Characters, CountGraphemeClustersNotScalars) {
    const std::string family = "\xF0\x9F\x91\xA8\xE2\x80\x8D\xF0\x9F\x91\xA9\xE2\x80\x8D\xF0\x9F\x91\xA7"; // ZWJ sequence
    const std::string flag = "\xF0\x9F\x87\xAB\xF0\x9F\x87\xB7";
    const std::string accented = "e\xCC\x81"; // e + combining acute
    EXPECT_EQ(Text::characterCount(family), 1u);
    EXPECT_EQ(Text::characterCount(flag + accented + "x"), 3u);
    EXPECT_EQ(Text::scalarCount(family), 5u);
    EXPECT_EQ(Text::prefixCharacters(flag + accented + "x", 2), flag + accented);
    EXPECT_EQ(Text::prefixCharacters("abc", 0), "");
    EXPECT_EQ(Text::prefixCharacters("abc", 10), "abc");
    EXPECT_EQ(Text::characterCount(""), 0u);
}

// ASCII is counted without ICU; every pair of ASCII characters must still split as ICU's rules
// split it, and ASCII beside a combining mark must still go the slow way.
TEST(Characters, AsciiCountsAsIcuCountsIt) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> icu(icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    ASSERT_TRUE(U_SUCCESS(status));
    for (int a = 0; a < 128; ++a) {
        for (int b = 0; b < 128; ++b) {
            const std::string pair{static_cast<char>(a), static_cast<char>(b)};
            icu::UnicodeString u = icu::UnicodeString::fromUTF8(pair);
            icu->setText(u);
            std::size_t expected = 0;
            while (icu->next() != icu::BreakIterator::DONE) ++expected;
            ASSERT_EQ(Text::characterCount(pair), expected) << a << " " << b;
        }
    }
    EXPECT_EQ(Text::characterCount("e\xCC\x81\r\n"), 2u);
}

TEST(Prefixes, NeverSplitAScalar) {
    const std::string text = "a\xC3\xA9\xF0\x9F\x98\x80z"; // a é 😀 z: 1 + 2 + 4 + 1 bytes
    EXPECT_EQ(Text::scalarCount(text), 4u);
    EXPECT_EQ(Text::prefixScalars(text, 3), "a\xC3\xA9\xF0\x9F\x98\x80");
    EXPECT_EQ(Text::prefixScalars(text, 99), text);
    const std::pair<size_t, std::string> cases[] = {{0, ""}, {1, "a"}, {2, "a"}, {3, "a\xC3\xA9"}, {6, "a\xC3\xA9"},
                                                     {7, "a\xC3\xA9\xF0\x9F\x98\x80"}, {8, text}, {100, text}};
    for (const auto& [max, out] : cases) {
        std::string cut = Text::prefixBytes(text, max);
        EXPECT_EQ(cut, out) << max;
        EXPECT_TRUE(Text::isValidUtf8(cut)) << max;
    }
}

TEST(Utf8, ValidityAndRepair) {
    EXPECT_TRUE(Text::isValidUtf8("plain \xE2\x82\xAC"));
    EXPECT_FALSE(Text::isValidUtf8("\xC3\x28"));
    EXPECT_FALSE(Text::isValidUtf8("\xED\xA0\x80")); // a surrogate written as UTF-8
    EXPECT_FALSE(Text::isValidUtf8("\xF0\x9F\x98")); // cut short
    // Good runs on either side of a bad sequence keep their bytes, a cut-short one at the end too.
    for (const auto& [in, out] : std::vector<std::pair<std::string, std::string>>{
             {"a\xFF" "b", "a\xEF\xBF\xBD" "b"},
             {"\xE2\x82\xAC ok \xC3\x28 \xE2\x82\xAC", "\xE2\x82\xAC ok \xEF\xBF\xBD( \xE2\x82\xAC"},
             {"end \xF0\x9F\x98", "end \xEF\xBF\xBD"},
             {"", ""}})
        EXPECT_EQ(Text::toValidUtf8(in), out) << in;
    EXPECT_TRUE(Text::isValidUtf8(Text::toValidUtf8("\xF0\x9F\x98\xC3\x28\xED\xA0\x80")));
}

TEST(Utf16, RoundTripOutsideTheBasicPlane) {
    const std::string text = "x\xF0\x9F\x98\x80y";
    auto u = Text::toUtf16(text);
    EXPECT_EQ(u.size(), 4u);
    EXPECT_EQ(Text::fromUtf16(u), text);
}

} // namespace
} // namespace orvan
