// The validator matrix: one signed bundle, spoiled one way per row.
#include "ReleaseKit.h"
#include "fakes/TempFolder.h"
#include "platform/linux/BuildIdentity.h"
#include "updates/UpdateCheck.h"
#include "updates/UpdateSignature.h"

#include <gtest/gtest.h>

#include <fstream>

namespace orvan {
namespace {

TEST(UpdateSignatureTest, ValidatorMatrix) {
    test::ReleaseKey ours, theirs;
    UpdateSignature pinned(ours.raw());
    const auto team = pinned.runningTeam();
    ASSERT_TRUE(UpdateCheck::validTeam(team));
    using Spoil = std::function<void(const std::filesystem::path&)>;
    struct Case {
        const char* what;
        Spoil spoil;
        std::optional<std::string> expected;
        bool development = false;
        const test::ReleaseKey* named = nullptr; // the key the listing names, ours when none
        const test::ReleaseKey* signer = nullptr;
        std::optional<std::string> listedTeam = std::nullopt;
    } cases[] = {
        {"valid", [](auto&) {}, std::nullopt},
        {"a development copy has no team", [](auto&) {}, UpdateCheck::unsignedCopy, true},
        {"one byte flipped",
         [](const std::filesystem::path& b) {
             std::fstream f(b / "share/doc/notes.txt", std::ios::in | std::ios::out | std::ios::binary);
             f.seekp(0);
             f.put('V');
         },
         UpdateCheck::broken},
        {"an extra file", [](const std::filesystem::path& b) { Files::write(b / "bin/extra", "x"); }, UpdateCheck::broken},
        {"a missing file", [](const std::filesystem::path& b) { std::filesystem::remove(b / "share/doc/notes.txt"); },
         UpdateCheck::broken},
        {"a mode changed", [](const std::filesystem::path& b) { ::chmod((b / "Info.json").c_str(), 0666); }, UpdateCheck::broken},
        {"a link added", [](const std::filesystem::path& b) { std::filesystem::create_symlink("/etc/passwd", b / "bin/link"); },
         UpdateCheck::broken},
        {"no listing", [](const std::filesystem::path& b) { std::filesystem::remove(b / "Signature.json"); }, UpdateCheck::broken},
        {"listing not JSON", [](const std::filesystem::path& b) { Files::write(b / "Signature.json", "{"); }, UpdateCheck::broken},
        {"signed by another key", [](auto&) {}, UpdateCheck::otherSigner, false, &theirs},
        {"naming our team, signed by another key", [](auto&) {}, UpdateCheck::otherSigner, false, &theirs,
         nullptr, team},
        {"naming our key, signed by another", [](auto&) {}, UpdateCheck::broken, false, &ours, &theirs},
    };
    for (const auto& c : cases) {
        test::TempFolder temp;
        auto bundle = temp.path() / "orvan-companion";
        test::writeBundle(bundle, "1.3", "#!/bin/sh\n");
        test::signBundle(bundle, c.named ? *c.named : ours, c.signer, c.listedTeam);
        c.spoil(bundle);
        EXPECT_EQ(pinned.verify(bundle, c.development ? UpdateSignature().runningTeam() : team), c.expected) << c.what;
    }
}

TEST(UpdateSignatureTest, TheTeamIsTheOneThePrivacyIdentityReports) {
    test::ReleaseKey key;
    EXPECT_EQ(UpdateSignature(key.raw()).runningTeam(), BuildIdentity({}, "x", key.raw()).team());
    EXPECT_EQ(UpdateSignature::keyFromHex(test::hexOf(key.raw())), key.raw());
    EXPECT_FALSE(UpdateSignature::keyFromHex(""));
    EXPECT_FALSE(UpdateSignature(std::nullopt).runningTeam());
}

} // namespace
} // namespace orvan
