#include "QrRead.h"
#include "ui/HalfBlocks.h"
#include "ui/QrModules.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

// What the text view prints must scan back to the text: grid, half blocks, and a camera's reading.
TEST(QrModules, HalfBlocksScanBackToTheText) {
    for (std::string text : {std::string("https://join.orvan.example/i/59a64d21#v1.EceF6D9TsNv-0nsgfAq1FLBlH_tLLpMFxxsJ41K85lm"),
                             std::string("4821"), std::string("caf\u00e9 \u2013 \u201cquoted\u201d"), std::string(600, 'z')}) {
        auto modules = ui::qrModules(text);
        ASSERT_TRUE(modules) << text;
        EXPECT_EQ(modules->columns, modules->rows);
        std::string printed = "<picture: code>\n";
        for (const auto& line : ui::halfBlocks(*modules, ui::quietModules, false)) printed += "  " + line + "\n";
        EXPECT_EQ(test::decodeGrid(test::gridAfter(printed, "<picture: code>")), text);
    }
    EXPECT_FALSE(ui::qrModules(std::string(8000, 'z')));
    EXPECT_FALSE(ui::qrModules(std::string("a\0b", 3)));
}

} // namespace
} // namespace orvan
