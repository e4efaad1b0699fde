#include "foundation/Text.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

struct TrimCase {
    std::string in;
    std::string out;
};

class Trimming : public testing::TestWithParam<TrimCase> {};

TEST_P(Trimming, RemovesUnicodeWhiteSpaceAndNewlinesAtBothEnds) {
    EXPECT_EQ(Text::trimmed(GetParam().in), GetParam().out);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, Trimming,
    testing::Values(TrimCase{"  key\n", "key"}, TrimCase{"\t\r\nkey\r\n", "key"}, TrimCase{"   ", ""},
                    TrimCase{"", ""}, TrimCase{"a b", "a b"},
                    TrimCase{"\xC2\xA0name\xE3\x80\x80", "name"},          // no-break space, ideographic space
                    TrimCase{"\xE2\x80\xA8line\xE2\x80\xA9", "line"},      // line and paragraph separators
                    TrimCase{"\xC2\x85x\xE2\x80\x8A", "x"},                // next line, hair space
                    TrimCase{"\xE2\x80\x8Bx\xE2\x80\x8B", "\xE2\x80\x8Bx\xE2\x80\x8B"}, // zero-width space is not white
                    TrimCase{" \xFF ", "\xFF"}));                          // ill-formed bytes stay

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

TEST(Scalars, CutOnScalarBoundaries) {
    const std::string text = "a\xC3\xA9\xF0\x9F\x98\x80z"; // a é 😀 z
    EXPECT_EQ(Text::scalarCount(text), 4u);
    EXPECT_EQ(Text::prefixScalars(text, 3), "a\xC3\xA9\xF0\x9F\x98\x80");
    EXPECT_EQ(Text::prefixScalars(text, 99), text);
}

struct ByteCase {
    size_t max;
    std::string out;
};

class BytePrefixes : public testing::TestWithParam<ByteCase> {};

TEST_P(BytePrefixes, NeverSplitAScalar) {
    const std::string text = "a\xC3\xA9\xF0\x9F\x98\x80z"; // 1 + 2 + 4 + 1 bytes
    std::string cut = Text::prefixBytes(text, GetParam().max);
    EXPECT_EQ(cut, GetParam().out);
    EXPECT_TRUE(Text::isValidUtf8(cut));
}

INSTANTIATE_TEST_SUITE_P(Cases, BytePrefixes,
                         testing::Values(ByteCase{0, ""}, ByteCase{1, "a"}, ByteCase{2, "a"},
                                         ByteCase{3, "a\xC3\xA9"}, ByteCase{6, "a\xC3\xA9"},
                                         ByteCase{7, "a\xC3\xA9\xF0\x9F\x98\x80"},
                                         ByteCase{8, "a\xC3\xA9\xF0\x9F\x98\x80z"},
                                         ByteCase{100, "a\xC3\xA9\xF0\x9F\x98\x80z"}));

TEST(Utf8, ValidityAndRepair) {
    EXPECT_TRUE(Text::isValidUtf8("plain \xE2\x82\xAC"));
    EXPECT_FALSE(Text::isValidUtf8("\xC3\x28"));
    EXPECT_FALSE(Text::isValidUtf8("\xED\xA0\x80")); // a surrogate written as UTF-8
    EXPECT_FALSE(Text::isValidUtf8("\xF0\x9F\x98")); // cut short
    EXPECT_EQ(Text::toValidUtf8("a\xFF" "b"), "a\xEF\xBF\xBD" "b");
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
