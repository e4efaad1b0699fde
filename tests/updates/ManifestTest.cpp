#include "fakes/TempFolder.h"
#include "updates/UpdateCheck.h"
#include "updates/UpdateManifest.h"
#include "updates/UpdatePlan.h"
#include "updates/UpdateStore.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace orvan {
namespace {

const std::string digest(64, 'a');

std::string manifest(const std::string& fields) {
    return R"({"version":"1.3","url":"https://dl.example.org/linux-x86_64/orvan-companion-1.3.tgz","size":1000,"sha256":")" +
           digest + "\"" + (fields.empty() ? "" : "," + fields) + "}";
}

TEST(UpdateManifestTest, EveryRuleRefusesWithTheOneSentence) {
    struct Case {
        const char* what;
        std::string json;
    } refused[] = {
        {"not JSON", "nope"},
        {"not an object", "[]"},
        {"no version", R"({"url":"https://a.org/x.tgz","size":1,"sha256":")" + digest + "\"}"},
        {"version with a suffix", manifest(R"("version":"1.3-beta")")},
        {"size 0", manifest(R"("size":0)")},
        {"size over 1 GiB", manifest(R"("size":1073741825)")},
        {"size as text", manifest(R"("size":"1000")")},
        {"size with a fraction", manifest(R"("size":10.5)")},
        {"http", manifest(R"("url":"http://dl.example.org/a.tgz")")},
        {"a user in the URL", manifest(R"("url":"https://me@dl.example.org/a.tgz")")},
        {"a password in the URL", manifest(R"("url":"https://me:pw@dl.example.org/a.tgz")")},
        {"no host", manifest(R"("url":"https:///a.tgz")")},
        {"wrong extension", manifest(R"("url":"https://dl.example.org/a.zip")")},
        {"63-character digest", manifest(R"("sha256":")" + std::string(63, 'a') + "\"")},
        {"digest with a non-hex letter", manifest(R"("sha256":")" + std::string(63, 'a') + "g\"")},
        {"minimum that is no version", manifest(R"("minimumMacOS":"fourteen")")},
        {"notes of another type", manifest(R"("notes":3)")},
        {"build as a boolean", manifest(R"("build":true)")},
    };
    for (const auto& c : refused) {
        auto parsed = UpdateManifest::parse(c.json);
        ASSERT_TRUE(std::holds_alternative<UpdateNotice>(parsed)) << c.what;
        EXPECT_EQ(std::get<UpdateNotice>(parsed).text, UpdateManifest::unreadable) << c.what;
    }
}

TEST(UpdateManifestTest, AcceptedFieldsAreNormalised) {
    struct Case {
        std::string fields;
        std::function<void(const UpdateManifest&)> check;
    } accepted[] = {
        {R"("sha256":")" + std::string(64, 'A') + "\"", [](const UpdateManifest& m) { EXPECT_EQ(m.sha256, std::string(64, 'a')); }},
        {R"("url":"https://dl.example.org/A.TGZ")", [](const UpdateManifest& m) { EXPECT_EQ(m.url, "https://dl.example.org/A.TGZ"); }},
        {R"("build":412)", [](const UpdateManifest& m) { EXPECT_EQ(m.build, "412"); }},
        {R"("build":"412")", [](const UpdateManifest& m) { EXPECT_EQ(m.build, "412"); }},
        {R"("minimumMacOS":"")", [](const UpdateManifest& m) { EXPECT_EQ(m.minimumMacOS, ""); }},
        {R"("version":" 1.4 ","size":1073741824)", [](const UpdateManifest& m) {
             EXPECT_EQ(m.version, "1.4");
             EXPECT_EQ(m.size, 1073741824);
         }},
    };
    for (const auto& c : accepted) {
        auto parsed = UpdateManifest::parse(manifest(c.fields));
        ASSERT_TRUE(std::holds_alternative<UpdateManifest>(parsed)) << c.fields;
        c.check(std::get<UpdateManifest>(parsed));
    }
}

TEST(UpdateManifestTest, AddressIsTheFeedUnderAnHttpsBase) {
    EXPECT_EQ(UpdateManifest::address(" https://dl.example.org/linux-x86_64// \n"),
              "https://dl.example.org/linux-x86_64/companion/latest.json");
    for (const char* bad : {"http://dl.example.org", "https://", "dl.example.org", ""})
        EXPECT_FALSE(UpdateManifest::address(bad)) << bad;
}

TEST(UpdatePlanTest, DecideInOrder) {
    UpdateManifest m;
    m.version = "1.3";
    UpdateManifest needs = m;
    needs.minimumMacOS = "2.40";
    using K = UpdatePlan::Kind;
    struct Case {
        const char* what;
        std::string current;
        UpdateManifest latest;
        std::optional<std::string> dismissed;
        bool manual;
        UpdatePlan plan;
    } cases[] = {
        {"newer", "1.2", m, std::nullopt, false, {K::prompt, "1.3", ""}},
        {"same", "1.3", m, std::nullopt, true, {K::current, "", ""}},
        {"same with a trailing zero", "1.3.0", m, std::nullopt, true, {K::current, "", ""}},
        {"downgrade", "1.10", m, std::nullopt, true, {K::current, "", ""}},
        {"turned down as v1.3", "1.2", m, "v1.3", false, {K::quiet, "1.3", ""}},
        {"turned down, manual asks again", "1.2", m, "v1.3", true, {K::prompt, "1.3", ""}},
        {"an older refusal", "1.2", m, "1.2.9", false, {K::prompt, "1.3", ""}},
        {"too new for the system, before any refusal", "1.2", needs, "1.3", false, {K::unsupported, "1.3", "2.40"}},
    };
    for (const auto& c : cases)
        EXPECT_EQ(UpdatePlan::decide(c.current, c.latest, "2.36.0", c.dismissed, c.manual), c.plan) << c.what;
    EXPECT_EQ(UpdatePlan::dismissedVersion(std::optional<std::string>(" V2 ")), "2");
    EXPECT_FALSE(UpdatePlan::dismissedVersion(std::optional<std::string>("  ")));
}

TEST(UpdateStoreTest, KeptPrivatelyAndReadBackOrNothing) {
    test::TempFolder temp;
    Environment env{{"HOME", temp.path().string()}, {"XDG_DATA_HOME", (temp.path() / "data").string()}};
    EXPECT_FALSE(UpdateStore::dismissed(env));
    UpdateStore::dismiss(env, "1.3");
    EXPECT_EQ(UpdateStore::dismissed(env), "1.3");
    struct stat info {};
    ASSERT_EQ(::stat(UpdateStore::file(env).c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    EXPECT_EQ(UpdateStore::file(env), temp.path() / "data/Orvan/update.json");
}

TEST(UpdateCheckTest, TeamsRequirementsAndDownloads) {
    for (auto [team, valid] : std::vector<std::pair<std::optional<std::string>, bool>>{
             {"AB12CD34EF", true}, {"AB12cD34EF", false}, {"AB12CD34EF1", false}, {std::nullopt, false}, {"AB12CD34E-", false}}) {
        EXPECT_EQ(UpdateCheck::validTeam(team), valid) << team.value_or("none");
        EXPECT_EQ(UpdateCheck::requirement(team).has_value(), valid);
    }
    EXPECT_NE(UpdateCheck::requirement(std::string("AB12CD34EF"))->find("\"AB12CD34EF\""), std::string::npos);
    EXPECT_EQ(UpdateCheck::team("Identifier=x\nTeamIdentifier= AB12CD34EF \n"), "AB12CD34EF");
    EXPECT_FALSE(UpdateCheck::team("TeamIdentifier=not set\n"));
    EXPECT_TRUE(UpdateCheck::notarized(0, "x\n  source=Notarized Developer ID \n"));
    EXPECT_FALSE(UpdateCheck::notarized(3, "source=Notarized Developer ID"));

    UpdateManifest release;
    release.version = "1.3";
    release.size = 10;
    release.sha256 = std::string(64, 'b');
    EXPECT_FALSE(UpdateCheck::download(10, std::string(64, 'B'), release));
    EXPECT_EQ(UpdateCheck::download(11, std::string(64, 'b'), release), UpdateCheck::mismatch);
    EXPECT_EQ(UpdateCheck::download(10, std::nullopt, release), UpdateCheck::mismatch);
    EXPECT_TRUE(UpdateCheck::identity("id", "1.3", release, "id"));
    EXPECT_FALSE(UpdateCheck::identity("id", "1.2", release, "id"));
    EXPECT_FALSE(UpdateCheck::identity(std::nullopt, "1.3", release, "id"));
}

} // namespace
} // namespace orvan
