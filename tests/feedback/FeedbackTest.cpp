// A report's limits, words, body and the meaning of the bridge's answers.
#include "feedback/Feedback.h"
#include "feedback/FeedbackWords.h"
#include "foundation/Text.h"

#include <QByteArray>
#include <QString>
#include <gtest/gtest.h>

namespace orvan {
namespace {

std::vector<FeedbackImage> pictures(std::vector<std::size_t> sizes) {
    std::vector<FeedbackImage> out;
    for (std::size_t i = 0; i < sizes.size(); ++i) out.push_back({"id" + std::to_string(i), std::string(sizes[i], 'x')});
    return out;
}

TEST(FeedbackTest, ProblemNamesTheFirstFaultOfADraft) {
    const std::string tenThousand(10'000, 'a');
    // One user-perceived character made of two scalars, so scalars would count twice as many.
    std::string accents;
    for (int i = 0; i < 10'000; ++i) accents += "e\xCC\x81";
    const std::size_t third = Feedback::imageBudget;
    const struct {
        std::string text;
        std::vector<std::size_t> images;
        std::optional<std::string> fault;
    } cases[] = {
        {"", {}, "Write what happened first."},
        {" \r\n\t \r", {}, "Write what happened first."},
        {tenThousand, {}, std::nullopt},
        {"  " + tenThousand + "\r\n", {}, std::nullopt},
        {tenThousand + "b", {}, "Keep it under 10,000 characters."},
        {accents, {}, std::nullopt},
        {accents + "e", {}, "Keep it under 10,000 characters."},
        {tenThousand + "b", {1, 1, 1, 1}, "Keep it under 10,000 characters."},
        {"hi", {1, 1, 1}, std::nullopt},
        {"hi", {1, 1, 1, 1}, "Attach at most 3 pictures."},
        {"hi", {third, third, third}, std::nullopt},
        {"hi", {Feedback::maxImageBytes, 1}, "The pictures are too big together."},
        {"hi", {Feedback::maxImageBytes}, std::nullopt},
    };
    for (const auto& c : cases)
        EXPECT_EQ(Feedback::problem(c.text, pictures(c.images), "en_US"), c.fault) << c.text.size() << " bytes";
    EXPECT_EQ(Feedback::problem(tenThousand + "b", {}, "de_DE"), "Keep it under 10.000 characters.");
}

TEST(FeedbackTest, CleanDeviceAndOutcomeTables) {
    EXPECT_EQ(Feedback::clean("  a\r\nb\rc\n\r\n  "), "a\nb\nc");
    for (auto [model, device] : std::vector<std::pair<std::string, std::string>>{
             {"Mac14,2", "Mac14,2"}, {"MacBookPro18,3", "MacBookPro18,3"}, {"Macmini", "Mac"}, {"", "Mac"},
             {"Mac14,2 ", "Mac"}, {"ThinkPad X1 Carbon Gen 9", "Mac"}, {"14,2", "Mac"}, {"Mac14,", "Mac"}})
        EXPECT_EQ(Feedback::device(model), device) << model;

    using O = Feedback::Outcome;
    const struct {
        int status;
        std::string body;
        O outcome;
    } answers[] = {
        {200, "", O::sent()},
        {204, "", O::sent()},
        {299, "{}", O::sent()},
        {401, R"({"message":"no"})", O::failed(FeedbackWords::paired)},
        {503, R"({"error":"no_relay","message":"x"})", O::relayOff()},
        {503, R"({"error":"feedback_off"})", O::relayOff()},
        {503, R"({"error":"busy","message":"  The relay is busy.\n"})", O::failed("The relay is busy.")},
        {500, "not json", O::failed(FeedbackWords::notSent)},
        {500, R"({"message":"   "})", O::failed(FeedbackWords::notSent)},
        {400, R"({"message":3,"error":"no_relay"})", O::failed(FeedbackWords::notSent)},
    };
    for (const auto& a : answers) EXPECT_EQ(Feedback::outcome(a.status, a.body), a.outcome) << a.status << " " << a.body;
}

TEST(FeedbackTest, DiagnosticsNumberTheComputersAndStayWithinTheirLength) {
    EXPECT_EQ(Feedback::diagnostics("Orvan Companion 1.4 (88)", "0.9.1", "Linux 6.1.0", "Mac14,2",
                                    {std::string("0.9.0"), std::nullopt, std::string("")}),
              "Orvan Companion 1.4 (88)\nBridge 0.9.1\nLinux 6.1.0 · Mac14,2\nComputer 1: 0.9.0\n"
              "Computer 2: version not known\nComputer 3: version not known");
    EXPECT_EQ(Feedback::diagnostics("Orvan Companion 1.4", std::nullopt, "Linux 6.1.0", "", {}),
              "Orvan Companion 1.4\nLinux 6.1.0");
    std::vector<std::optional<std::string>> many(2000, std::string("é"));
    const std::string cut = Feedback::diagnostics("A", std::nullopt, "", "", many);
    EXPECT_EQ(Text::scalarCount(cut), Feedback::maxDiagnostics);
}

TEST(FeedbackTest, PreviewShowsExactlyWhatGoes) {
    const auto two = pictures({150'000, 250'000});
    const struct {
        FeedbackKind kind;
        std::string text;
        std::optional<std::string> diagnostics;
        std::vector<FeedbackImage> images;
        std::string preview;
    } cases[] = {
        {FeedbackKind::bug, "", std::nullopt, {},
         "Kind: Bug\nFrom: Mac\n\n(nothing written yet)\n\nDiagnostics: not included"},
        {FeedbackKind::feature, "More themes\nplease", std::string("Orvan Companion 1.4\nLinux 6.1"), two,
         "Kind: Feature request\nFrom: Mac\n\nMore themes\nplease\n\nDiagnostics:\nOrvan Companion 1.4\nLinux 6.1\n\n"
         "Pictures: 2, 400 KB together"},
        {FeedbackKind::other, "Hi", std::nullopt, pictures({2'400'000}),
         "Kind: Other\nFrom: Mac\n\nHi\n\nDiagnostics: not included\n\nPictures: 1, 2.4 MB together"},
    };
    for (const auto& c : cases) EXPECT_EQ(Feedback::preview(c.kind, "Mac", c.text, c.diagnostics, c.images), c.preview);
}

TEST(FeedbackTest, FooterSaysHowItGoes) {
    using W = Feedback::Went;
    const struct {
        W went;
        bool allows, canMail;
        const char* footer;
    } cases[] = {
        {W::notYet, true, false, FeedbackWords::footerRelay},
        {W::notYet, false, true, FeedbackWords::footerMail},
        {W::notYet, false, false, FeedbackWords::footerClipboard},
        {W::relay, false, false, FeedbackWords::footerRelay},
        {W::mail, true, true, FeedbackWords::footerMail},
        {W::clipboard, true, true, FeedbackWords::footerClipboard},
    };
    for (const auto& c : cases) EXPECT_EQ(Feedback::footer(c.went, c.allows, c.canMail), c.footer);
    EXPECT_EQ(std::string(FeedbackWords::footerClipboard), "Exactly this, by the clipboard, with the pictures attached.");
}

TEST(FeedbackTest, BodyAndMailSubject) {
    const Json body = Feedback::body(FeedbackKind::feature, "a\r\nb", "", "Mac", {{"u1", std::string("\xFF\xD8\x00\x01", 4)}});
    EXPECT_EQ(body, Json::parse(R"({"kind":"feature","text":"a\nb","diagnostics":"","device":"Mac",
                                     "images":[{"type":"image/jpeg","data":"/9gAAQ=="}]})"));
    EXPECT_EQ(Feedback::mailSubject(FeedbackKind::bug, ""), "Orvan feedback (Bug)");
    EXPECT_EQ(Feedback::mailSubject(FeedbackKind::other, "  Window froze\nafter sleep"), "Orvan feedback (Other): Window froze");
    const std::string longLine = "The accounts list goes blank whenever the bridge restarts after the lid closes twice";
    EXPECT_EQ(Feedback::mailSubject(FeedbackKind::bug, longLine),
              "Orvan feedback (Bug): The accounts list goes blank whenever the bridge restarts…");
}

} // namespace
} // namespace orvan
