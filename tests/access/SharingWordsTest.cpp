#include "screen/SharingWords.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using Names = std::optional<std::vector<std::string>>;
using Text = std::optional<std::string>;

CompanionScreen screen(Names watching, Text control, std::optional<bool> phoneFirst = std::nullopt) {
    CompanionScreen s;
    s.on = true;
    s.watching = std::move(watching);
    s.control = std::move(control);
    s.phoneFirst = phoneFirst;
    return s;
}

TEST(SharingWordsTest, EveryLineForEveryAudience) {
    const Names mara = std::vector<std::string>{"Mara’s iPhone"};
    const Names two = std::vector<std::string>{"Mara’s iPhone", "Theo’s iPad"};
    struct Case {
        const char* name;
        CompanionScreen screen;
        Text bar, first;
        std::string watching, menu;
    };
    const Case cases[] = {
        {"nobody", screen(std::nullopt, std::nullopt), std::nullopt, std::nullopt, "Nobody is watching.",
         "Your screen is shared"},
        {"empty list and empty controller", screen(std::vector<std::string>{}, "", true), std::nullopt, std::nullopt,
         "Nobody is watching.", "Your screen is shared"},
        {"one watcher", screen(mara, std::nullopt, true), "Your screen is shared with Mara’s iPhone.", std::nullopt,
         "Mara’s iPhone is watching.", "Your screen is shared"},
        {"two watchers, empty controller", screen(two, ""), "Your screen is shared with Mara’s iPhone, Theo’s iPad.",
         std::nullopt, "Mara’s iPhone, Theo’s iPad are watching.", "Your screen is shared"},
        {"controller", screen(two, "Theo’s iPad", false), "Theo’s iPad is controlling this Mac.", std::nullopt,
         "Theo’s iPad is controlling this Mac.", "Theo’s iPad is controlling this Mac"},
        {"controller with phone first", screen(mara, "Mara’s iPhone", true), "Mara’s iPhone is controlling this Mac.",
         "Phone first: this Mac's own mouse and keyboard give way to Mara’s iPhone.",
         "Mara’s iPhone is controlling this Mac. Phone first is on: your mouse and keyboard give way to it.",
         "Mara’s iPhone is controlling this Mac, with Phone first"},
        {"controller nobody lists as watching", screen(std::nullopt, "Mara’s iPhone"),
         "Mara’s iPhone is controlling this Mac.", std::nullopt, "Mara’s iPhone is controlling this Mac.",
         "Mara’s iPhone is controlling this Mac"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(SharingWords::bar(c.screen), c.bar) << c.name;
        EXPECT_EQ(SharingWords::first(c.screen), c.first) << c.name;
        EXPECT_EQ(SharingWords::watching(c.screen), c.watching) << c.name;
        EXPECT_EQ(SharingWords::menu(c.screen), c.menu) << c.name;
    }
}

} // namespace
} // namespace orvan
