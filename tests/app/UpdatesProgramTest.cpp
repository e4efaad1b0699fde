// The real program, headless: the Updates section, its check on its own, and Check now. A development build names no release server, so both end in the sentence
// for a server that can't be reached.
#include "DrivenProgram.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;

class UpdatesProgram : public DrivenProgram {};

TEST_F(UpdatesProgram, ChecksOnItsOwnAndWhenAsked) {
    const char* unreachable = "This Mac could not reach the update server.";
    ASSERT_TRUE(start());
    ASSERT_TRUE(waitUntil([&] { return saw("== Updates ==") && saw("[Check now]"); }, 30s)) << tail();
    // The check on its own (its eight seconds are tested in virtual time).
    ASSERT_TRUE(waitUntil([&] { return saw(unreachable); }, 20s)) << tail();
    const std::size_t mark = output_.size();
    ASSERT_TRUE(type("press Check now", "> Pressed Check now.")) << output_.substr(mark);
    // With no server to ask the check ends at once, so the frame reads as before: shown again, it
    // holds the sentence and the button, free for the next check.
    const std::size_t pressed = output_.size();
    ASSERT_TRUE(type("show", ") [Check now]")) << output_.substr(pressed);
    EXPECT_TRUE(saw(unreachable, pressed)) << output_.substr(pressed);
}

} // namespace
} // namespace orvan
