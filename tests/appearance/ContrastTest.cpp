// Whether text is readable on each palette side: the contrast of ink and dim on the ground and on
// cards, against the usual 4.5:1 for body text. The figures are printed for people; the palettes
// are a design decision, so a low figure is reported rather than failed.

#include "appearance/Colour.h"
#include "appearance/InkSet.h"
#include "appearance/ThemeCatalog.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>

using namespace orvan;

namespace {

TEST(Contrast, MeasuresAsTheGuidelinesDo) {
    const struct {
        Rgb a, b;
        double ratio;
    } known[] = {
        {0x000000, 0xffffff, 21.0}, {0xffffff, 0x000000, 21.0}, {0x777777, 0x777777, 1.0},
        {0x767676, 0xffffff, 4.54}, {0x777777, 0xffffff, 4.48}, {0xff0000, 0xffffff, 4.00},
        {0x0000ff, 0xffffff, 8.59}, {0x008000, 0xffffff, 5.14},
    };
    for (const auto& k : known)
        EXPECT_NEAR(Colour::contrast({k.a}, {k.b}), k.ratio, 0.01) << Colour{k.a}.hex() << " on " << Colour{k.b}.hex();
    EXPECT_EQ(Colour{0x0a0b0c}.hex(), "#0a0b0c");
}

TEST(Contrast, InkAndDimOnGroundAndCardForEverySide) {
    std::string low;
    int measured = 0;
    std::printf("%-12s %-5s %7s %9s %7s %9s\n", "palette", "side", "ink/bg", "ink/card", "dim/bg", "dim/card");
    for (const auto& palette : ThemeCatalog::all()) {
        for (bool dark : {false, true}) {
            const InkSet ink = InkSet::from(palette.side(dark), dark);
            const struct {
                const char* name;
                Colour text, ground;
            } pairs[] = {{"ink/bg", ink.ink, ink.bg}, {"ink/card", ink.ink, ink.card},
                         {"dim/bg", ink.dim, ink.bg}, {"dim/card", ink.dim, ink.card}};
            std::printf("%-12s %-5s", palette.id.c_str(), dark ? "dark" : "light");
            for (const auto& p : pairs) {
                const double ratio = Colour::contrast(p.text, p.ground);
                ASSERT_TRUE(ratio >= 1.0 && ratio <= 21.0);
                ++measured;
                std::printf(" %8.2f", ratio);
                if (ratio < 4.5)
                    low += palette.id + " " + (dark ? "dark " : "light ") + p.name + " " + std::to_string(ratio) + "\n";
            }
            std::printf("\n");
        }
    }
    std::printf("below 4.5:1: %s\n", low.empty() ? "none" : ("\n" + low).c_str());
    ::testing::Test::RecordProperty("below_4_5", low.empty() ? "none" : low);
    EXPECT_EQ(measured, 9 * 2 * 4);
}

} // namespace
