// The Linux answers to the grant and identity questions.
#include "fakes/TempFolder.h"
#include "foundation/Files.h"
#include "foundation/UserDefaults.h"
#include "platform/linux/BuildIdentity.h"
#include "platform/linux/PortalPrivacyGrants.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using Session = PortalPrivacyGrants::Session;

TEST(PortalPrivacyGrantsTest, SessionsAndWhatAPortalOffers) {
    struct Case {
        Environment environment;
        Session want;
    };
    const Case sessions[] = {
        {{}, Session::x11},
        {{{"DISPLAY", ":0"}}, Session::x11},
        {{{"WAYLAND_DISPLAY", "wayland-0"}}, Session::wayland},
        {{{"XDG_SESSION_TYPE", "x11"}, {"WAYLAND_DISPLAY", "wayland-0"}}, Session::x11},
        {{{"XDG_SESSION_TYPE", "wayland"}}, Session::wayland},
    };
    for (const auto& c : sessions) EXPECT_EQ(PortalPrivacyGrants::session(c.environment), c.want);

    // No portal answer holds nothing back; otherwise a monitor to share, a pointer or keyboard to drive.
    EXPECT_TRUE(PortalPrivacyGrants::offers(AccessKind::screen, std::nullopt));
    EXPECT_TRUE(PortalPrivacyGrants::offers(AccessKind::input, std::nullopt));
    EXPECT_TRUE(PortalPrivacyGrants::offers(AccessKind::screen, 1u | 2u));
    EXPECT_FALSE(PortalPrivacyGrants::offers(AccessKind::screen, 2u));
    EXPECT_TRUE(PortalPrivacyGrants::offers(AccessKind::input, 2u));
    EXPECT_FALSE(PortalPrivacyGrants::offers(AccessKind::input, 4u));
    EXPECT_FALSE(PortalPrivacyGrants::offers(AccessKind::input, 0u));

    // X11 asks nobody, and there is no settings page to open.
    PortalPrivacyGrants x11(Environment{{"XDG_SESSION_TYPE", "x11"}});
    EXPECT_TRUE(x11.allows(AccessKind::screen) && x11.ask(AccessKind::input));
    std::string why;
    EXPECT_FALSE(x11.open(AccessKind::screen, why));
    EXPECT_NE(why.find("no settings page for Screen Recording"), std::string::npos) << why;
}

TEST(BuildIdentityTest, TeamFromTheReleaseKeyAndEarlierSettingsThatHoldSomething) {
    test::TempFolder temp;
    const Environment environment{{"HOME", temp.path().string()},
                                  {"XDG_CONFIG_HOME", (temp.path() / "config").string()}};
    BuildIdentity development(environment, "com.quillmere.orvan.companion");
    EXPECT_FALSE(development.team());
    EXPECT_FALSE(development.requirement());
    EXPECT_TRUE(development.earlier().empty());

    // An earlier name's settings count only when they hold something.
    Files::write(UserDefaults::fileOf("tulm.companion", environment), "{}");
    EXPECT_TRUE(development.earlier().empty());
    Files::write(UserDefaults::fileOf("tulm.companion", environment), R"({"loginSettled":true})");
    EXPECT_EQ(development.earlier(), std::vector<std::string>{"tulm.companion"});
    EXPECT_TRUE(BuildIdentity(environment, "tulm.companion").earlier().empty());

    BuildIdentity release(environment, "com.quillmere.orvan.companion", std::string(32, '\x07'));
    ASSERT_TRUE(release.team());
    EXPECT_EQ(release.team()->size(), 10u);
    EXPECT_EQ(release.team()->find_first_not_of("0123456789ABCDEF"), std::string::npos);
    EXPECT_NE(*release.team(), *BuildIdentity(environment, "x", std::string(32, '\x08')).team());
    EXPECT_NE(release.requirement()->find("com.quillmere.orvan.companion"), std::string::npos);
}

} // namespace
} // namespace orvan
