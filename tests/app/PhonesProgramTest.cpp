// The real program, headless, against the simulator it launches as its own bridge on 8787: an
// invite shown as a QR code that scans back to the bridge's link and that a phone then joins by,
// a link invite, and promoting, demoting, extending and removing phones with their questions.
#include "DrivenProgram.h"
#include "phones/QrRead.h"
#include "ui/HalfBlocks.h"
#include "ui/PngPixels.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;
using nlohmann::json;

class PhonesProgram : public DrivenProgram {
protected:
    // The computers' opening checks hold a connection for seconds each; with them the invite
    // sheet's scope read can wait out its time twice on a loaded machine.
    void adjust(QProcessEnvironment& env) override { env.insert("ORVAN_SIM_HOSTS", "badrow"); }
    bool pressOn(const std::string& row, const std::string& title) {
        return pressIn([this, row] { return rowOf(row); }, title);
    }
    json invites() { return read("/local/invites")["invites"]; }
};

TEST_F(PhonesProgram, QrInviteScansBackAndItsPhoneJoinsThenRolesChangeWithTheirQuestions) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(settles([&] { return saw("== Phones ==") && saw("Theo\u2019s iPad"); })) << tail();
    // The phone follows quickly, but not before the test has read the code.
    ASSERT_TRUE(ask("/_sim/invites", json{{"joinAfter", 6}}));

    ASSERT_TRUE(press("\"Invite someone\u2026\"")) << tail();
    ASSERT_TRUE(settles([&] { return saw("Invite someone") && saw("Show QR"); })) << tail();
    ASSERT_TRUE(type("type Name Bo\u2019s Pixel", "> Typed into Name.")) << tail();
    ASSERT_TRUE(press("\"Show QR\"")) << tail();
    ASSERT_TRUE(settles([&] { return saw("The code works once, for 10 minutes."); })) << tail();

    // The code drawn in the terminal is the code the bridge drew, and reads as its link.
    const std::string printed = decodeGrid(gridAfter(frame(), "<picture: Invite code")).value_or("unread");
    ASSERT_EQ(invites().size(), 1u);
    const std::string id = invites()[0]["id"];
    auto png = ask("/local/invite.png?id=" + id);
    ASSERT_TRUE(png && png->status == 200);
    auto pixels = ui::readPngDarkness(png->body);
    ASSERT_TRUE(pixels);
    auto modules = ui::modulesOf(*pixels);
    ASSERT_TRUE(modules);
    Grid drawn(static_cast<std::size_t>(modules->rows));
    for (int y = 0; y < modules->rows; ++y)
        for (int x = 0; x < modules->columns; ++x) drawn[static_cast<std::size_t>(y)].push_back(modules->at(x, y));
    EXPECT_EQ(printed, decodeGrid(drawn));
    EXPECT_TRUE(printed.starts_with("https://join.orvan.example/i/" + id + "#v1.")) << printed;

    // The phone takes the code up by itself; the picture gives way to who joined.
    ASSERT_TRUE(settles([&] { return saw("Bo\u2019s Pixel joined this Mac."); })) << tail();
    EXPECT_EQ(frame().find("<picture: Invite code"), std::string::npos);
    ASSERT_TRUE(press("Done")) << tail();
    ASSERT_TRUE(settles([&] { return rowOf("Bo\u2019s Pixel").find("Member") != std::string::npos; })) << tail();

    // Promoted here, after the question: an owner, and no notice about it.
    ASSERT_TRUE(pressOn("Bo\u2019s Pixel", "Make owner")) << tail();
    ASSERT_TRUE(settles([&] { return saw("Make \u201cBo\u2019s Pixel\u201d an owner?"); })) << tail();
    ASSERT_TRUE(press("\"Make owner\"")) << tail();
    ASSERT_TRUE(settles([&] { return rowOf("Bo\u2019s Pixel").find("Owner") != std::string::npos; })) << tail();
    runFor(3s);
    EXPECT_FALSE(saw("became an owner of this Mac"));

    // With two owners either may step down; then the one left is the last and can't.
    ASSERT_TRUE(pressOn("Mara\u2019s iPhone", "Make member")) << tail();
    ASSERT_TRUE(settles([&] { return saw("Make \u201cMara\u2019s iPhone\u201d a member?"); })) << tail();
    ASSERT_TRUE(press("\"Make member\"")) << tail();
    ASSERT_TRUE(settles([&] { return rowOf("Mara\u2019s iPhone").find("Member") != std::string::npos; })) << tail();
    EXPECT_NE(lineWith("Bo\u2019s Pixel").find("[Make member] (disabled)"), std::string::npos) << frame();
    ASSERT_TRUE(type("press \"Make member\"", "> ")) << tail();
    EXPECT_EQ(read("/companion/status")["phones"][0]["role"], "member");

    // A guest's end moves a week on from its own end.
    ASSERT_NE(rowOf("Theo\u2019s iPad").find("Guest, ends in 5 days"), std::string::npos) << frame();
    ASSERT_TRUE(press("\"7 more days\"")) << tail();
    ASSERT_TRUE(settles([&] { return rowOf("Theo\u2019s iPad").find("Guest, ends in 12 days") != std::string::npos; }))
        << tail();

    // Removing asks first, in the guest's words.
    ASSERT_TRUE(pressOn("Theo\u2019s iPad", "Remove")) << tail();
    ASSERT_TRUE(settles([&] { return saw("Their access ends now. A new invite can bring them back."); })) << tail();
    ASSERT_TRUE(press("Remove")) << tail();
    ASSERT_TRUE(settles([&] { return frame().find("Theo\u2019s iPad") == std::string::npos; })) << tail();

    // An owner made elsewhere is announced until dismissed.
    ASSERT_TRUE(ask("/_sim/phone", json{{"name", "Eve"}, {"role", "owner"}}));
    ASSERT_TRUE(settles([&] { return saw("Eve became an owner of this Mac at"); })) << tail();
    EXPECT_NE(lineWith("Eve became an owner").find(". Not expected? Remove it above."), std::string::npos);
    ASSERT_TRUE(press("Dismiss")) << tail();
    ASSERT_TRUE(settles([&] { return frame().find("Eve became an owner") == std::string::npos; })) << tail();

    ASSERT_TRUE(type("quit", "> Quitting;")) << tail();
    EXPECT_TRUE(finished());
}

TEST_F(PhonesProgram, LinkInviteIsHandedOverAndABadLinkIsNeverShown) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(settles([&] { return saw("== Phones =="); })) << tail();
    ASSERT_TRUE(press("\"Invite someone\u2026\"")) << tail();
    ASSERT_TRUE(settles([&] { return saw("Share a link"); })) << tail();
    // A guest: nothing can be made until something is picked.
    ASSERT_TRUE(type("choose Role Guest", "> Chose Guest")) << tail();
    // Right after the start the other sections' long first reads can hold every connection to the
    // bridge; the owner's way out of a read that timed out meanwhile is to try again.
    for (int attempt = 0; attempt < 4 && !saw("Move the build to Ninja"); ++attempt) {
        const std::size_t mark = output_.size();
        ASSERT_TRUE(settles([&] { return saw("Move the build to Ninja") || saw("so a guest cannot be invited yet.", mark); }))
            << tail();
        if (!saw("Move the build to Ninja")) {
            ASSERT_TRUE(press("\"Try again\"")) << tail();
        }
    }
    ASSERT_TRUE(settles([&] { return saw("Payments API") && saw("Move the build to Ninja"); })) << tail();
    EXPECT_NE(lineWith("Share a link").find("[Share a link] (disabled)"), std::string::npos) << frame();
    ASSERT_TRUE(type("toggle \"Orvan site\"", "> ")) << tail();
    ASSERT_TRUE(settles([&] { return lineWith("Share a link").find("(disabled)") == std::string::npos; })) << tail();

    // The bridge hands out a downgraded link: the invite exists, but its link is never shown.
    ASSERT_TRUE(ask("/_sim/invites", json{{"link", "http://join.orvan.example/i/x#v1.abc"}}));
    ASSERT_TRUE(press("\"Share a link\"")) << tail();
    ASSERT_TRUE(settles([&] { return saw("The invite was made, but its link could not be read."); })) << tail();
    ASSERT_TRUE(settles([&] { return saw("Not used yet") && saw("Guest, watches. Link, works until"); })) << tail();
    EXPECT_FALSE(saw("http://join.orvan.example"));

    ASSERT_TRUE(ask("/_sim/invites", json{{"link", nullptr}}));
    ASSERT_TRUE(press("\"Share a link\"")) << tail();
    ASSERT_TRUE(settles([&] { return saw("The link is ready."); })) << tail();
    EXPECT_TRUE(saw("Send this link. When they open it, this Mac asks you to approve them"));
    EXPECT_EQ(invites().size(), 2u);

    // Cancelling an unused one asks first, then it is gone from the bridge.
    const std::string first = invites()[0]["id"];
    ASSERT_TRUE(pressOn("No name", "Cancel")) << tail();
    ASSERT_TRUE(settles([&] { return saw("Cancel the invite for No name?"); })) << tail();
    ASSERT_TRUE(press("\"Cancel Invite\"")) << tail();
    ASSERT_TRUE(settles([&] { return invites().size() == 1u; })) << tail();
    EXPECT_NE(invites()[0]["id"], first);

    ASSERT_TRUE(type("quit", "> Quitting;")) << tail();
    EXPECT_TRUE(finished());
}

} // namespace
} // namespace orvan
