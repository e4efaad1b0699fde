// The feedback window's model in virtual time: what goes to the bridge, what each answer leaves on
// screen, and the hand-made ways out by Mail and the clipboard.
#include "feedback/FeedbackView.h"
#include "feedback/FeedbackWords.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/TempFolder.h"
#include "platform/Clipboard.h"
#include "platform/Mail.h"
#include "platform/linux/LoadedImages.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace orvan {
namespace {

using test::Reply;
namespace fs = std::filesystem;

struct RecordingMail final : Mail {
    bool canMail() const override { return works; }
    bool compose(const MailDraft& draft) override {
        drafts.push_back(draft);
        for (const auto& file : draft.attachments) seen.push_back(fs::exists(file) ? fs::file_size(file) : 0);
        return works;
    }
    bool works = true;
    std::vector<MailDraft> drafts;
    std::vector<std::uintmax_t> seen;
};

struct RecordingClipboard final : Clipboard {
    bool putText(const std::string& text, bool) override {
        this->text = text;
        return true;
    }
    bool putTextAndImages(const std::string& text, const std::vector<fs::path>& files) override {
        this->text = text;
        this->files = files;
        return true;
    }
    std::optional<std::string> image() const override { return picture; }
    std::string text;
    std::vector<fs::path> files;
    std::optional<std::string> picture;
};

std::string png(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(QColor(30, 120, 200));
    QByteArray out;
    QBuffer buffer(&out);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return out.toStdString();
}

mode_t mode(const fs::path& path) {
    struct stat info {};
    ::stat(path.c_str(), &info);
    return info.st_mode & 0777;
}

class FeedbackViewTest : public testing::Test {
protected:
    FeedbackViewTest() {
        defaults_ = UserDefaults::at(temp_.path() / "defaults.json");
        Consent::answer(true, *defaults_);
        FeedbackSetup setup;
        setup.environment = {{"ORVAN_DIR", temp_.path().string()}};
        setup.defaults = defaults_;
        setup.appVersion = "1.4";
        setup.appLine = "Orvan Companion 1.4 (88)";
        setup.system = "Linux 6.1.0";
        setup.model = "Mac14,2";
        setup.images = &images_;
        setup.clipboard = &clipboard_;
        setup.mail = &mail_;
        setup.temporary = temp_.path();
        view_ = std::make_unique<FeedbackView>(bridge_, std::move(setup));
        bridge_.on("GET", "/companion/hosts",
                   Reply::json(200, R"({"bridge":"0.9.2","hosts":[{"name":"build-box","version":"0.9.1"},{"name":"nas"}]})"));
    }

    void openAndWrite(const std::string& text) {
        view_->open();
        clock_.advance(std::chrono::seconds(1));
        view_->setText(text);
    }

    test::TempFolder temp_;
    std::shared_ptr<UserDefaults> defaults_;
    test::FakeClock clock_;
    test::FakeBridge bridge_{clock_};
    LoadedImages images_{ORVAN_IMAGES_MODULE};
    RecordingMail mail_;
    RecordingClipboard clipboard_;
    std::unique_ptr<FeedbackView> view_;
};

TEST_F(FeedbackViewTest, SendPostsExactlyWhatThePreviewShows) {
    bridge_.on("POST", Feedback::path, Reply::empty(200));
    openAndWrite("  The list went blank\r\nafter a restart ");
    auto added = test::start(view_->add({png(800, 600), png(40, 40)}));
    ASSERT_TRUE(added.done());
    ASSERT_EQ(view_->images.size(), 2u);
    EXPECT_EQ(view_->diagnostics, "Orvan Companion 1.4 (88)\nBridge 0.9.2\nLinux 6.1.0 · Mac14,2\nComputer 1: 0.9.1\n"
                                  "Computer 2: version not known");
    EXPECT_EQ(view_->diagnostics.find("build-box"), std::string::npos);
    const std::string preview = view_->preview();
    view_->go();
    ASSERT_EQ(bridge_.count(Feedback::path), 1u);
    const HttpRequest sent = bridge_.requestsTo(Feedback::path)[0];
    EXPECT_EQ(sent.timeout, std::chrono::seconds(120));
    const Json body = Json::parse(*sent.body);
    EXPECT_EQ(body["kind"], "bug");
    EXPECT_EQ(body["text"], "The list went blank\nafter a restart");
    EXPECT_EQ(body["device"], "Mac14,2");
    EXPECT_EQ(body["diagnostics"], view_->diagnostics);
    ASSERT_EQ(body["images"].size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(body["images"][i]["type"], "image/jpeg");
        EXPECT_EQ(QByteArray::fromBase64(QByteArray::fromStdString(body["images"][i]["data"])).toStdString(),
                  view_->images[i].data);
    }
    EXPECT_NE(preview.find("The list went blank\nafter a restart\n\nDiagnostics:\n" + view_->diagnostics), std::string::npos);
    EXPECT_EQ(view_->phase, FeedbackView::Phase::sent);
    EXPECT_EQ(view_->status(), FeedbackWords::sent);
    // Turning diagnostics off sends them empty on the next report.
    view_->open();
    view_->setText("again");
    view_->setIncludeDiagnostics(false);
    view_->go();
    EXPECT_EQ(Json::parse(*bridge_.requestsTo(Feedback::path).back().body)["diagnostics"], "");
}

TEST_F(FeedbackViewTest, EachAnswerLeavesItsSentenceAndTheDraft) {
    const struct {
        Reply reply;
        std::string words;
    } cases[] = {
        {Reply::json(401, R"({"message":"unpaired"})"), FeedbackWords::paired},
        {Reply::json(503, R"({"error":"no_relay"})"), "Feedback is not set up on the relay yet."},
        {Reply::json(503, R"({"error":"maintenance","message":"Back soon."})"), "Back soon."},
        {Reply::failure(), FeedbackWords::unreachable},
    };
    openAndWrite("Hello");
    for (const auto& c : cases) {
        bridge_.queue("POST", Feedback::path, c.reply);
        view_->go();
        EXPECT_EQ(view_->phase, FeedbackView::Phase::failed) << c.words;
        EXPECT_EQ(view_->status(), c.words);
        EXPECT_EQ(view_->text, "Hello");
    }
    view_->setText("Hello there");
    EXPECT_EQ(view_->phase, FeedbackView::Phase::writing);
}

TEST_F(FeedbackViewTest, NothingGoesWithAFaultOrWithoutConsent) {
    openAndWrite(" \n ");
    view_->go();
    EXPECT_EQ(view_->note, "Write what happened first.");
    Consent::answer(false, *defaults_);
    EXPECT_FALSE(view_->allows());
    view_->setText("Hi");
    view_->go();
    EXPECT_EQ(bridge_.count(Feedback::path), 0u);
    // Sending itself reads the consent again, whatever the window believed.
    auto outcome = test::start(FeedbackSender(bridge_, defaults_, "1.4", {}).send(Json::object()));
    ASSERT_TRUE(outcome.done());
    EXPECT_EQ(outcome.value(), Feedback::Outcome::failed("Sharing is off, so the report was not sent."));
    EXPECT_EQ(bridge_.count(Feedback::path), 0u);
}

TEST_F(FeedbackViewTest, ClosingWhileSendingStopsAndSaysItMayHaveGone) {
    bridge_.on("POST", Feedback::path, Reply::empty(200).after(std::chrono::seconds(30)));
    openAndWrite("Slow");
    view_->go();
    EXPECT_EQ(view_->phase, FeedbackView::Phase::sending);
    view_->close();
    clock_.advance(std::chrono::seconds(31));
    EXPECT_EQ(view_->phase, FeedbackView::Phase::writing);
    EXPECT_EQ(view_->note, FeedbackWords::stopped);
    EXPECT_FALSE(view_->isOpen);
}

TEST_F(FeedbackViewTest, MailAndClipboardCarryThePreviewAndPrivatePictureFiles) {
    Consent::answer(false, *defaults_);
    openAndWrite("Crash on wake\nsecond line");
    test::start(view_->add({png(300, 200), png(20, 20)}));
    view_->fallBack(true);
    ASSERT_EQ(mail_.drafts.size(), 1u);
    const MailDraft& draft = mail_.drafts[0];
    EXPECT_EQ(draft.to, Feedback::mailAddress);
    EXPECT_EQ(draft.subject, "Orvan feedback (Bug): Crash on wake");
    EXPECT_EQ(draft.body, view_->preview());
    ASSERT_EQ(draft.attachments.size(), 2u);
    EXPECT_EQ(draft.attachments[0].filename(), "screenshot-1.jpg");
    EXPECT_EQ(mail_.seen, (std::vector<std::uintmax_t>{view_->images[0].data.size(), view_->images[1].data.size()}));
    const fs::path folder = draft.attachments[0].parent_path();
    EXPECT_EQ(folder.filename().string().rfind("orvan-feedback", 0), 0u);
    EXPECT_EQ(mode(folder), 0700u);
    EXPECT_EQ(mode(draft.attachments[0]), 0600u);
    EXPECT_EQ(view_->phase, FeedbackView::Phase::mailed);
    EXPECT_EQ(view_->footer(), FeedbackWords::footerMail);

    view_->open();
    view_->setText("Copy me");
    test::start(view_->add({png(30, 30)}));
    view_->fallBack(false);
    EXPECT_EQ(view_->phase, FeedbackView::Phase::copied);
    EXPECT_EQ(clipboard_.text, view_->preview());
    ASSERT_EQ(clipboard_.files.size(), 1u);
    EXPECT_TRUE(fs::exists(clipboard_.files[0]));
    view_->close();
    EXPECT_FALSE(fs::exists(clipboard_.files[0].parent_path()));
}

TEST_F(FeedbackViewTest, PicturesStopAtThreeAndRefusalsAreCounted) {
    openAndWrite("Pictures");
    test::start(view_->add({png(10, 10), "junk", png(12, 12), ""}));
    EXPECT_EQ(view_->images.size(), 2u);
    EXPECT_EQ(view_->note, "2 pictures could not be added.");
    test::start(view_->add({png(14, 14), png(16, 16)}));
    EXPECT_EQ(view_->images.size(), 3u);
    EXPECT_EQ(view_->note, "");
    view_->remove(view_->images[0].id);
    EXPECT_EQ(view_->images.size(), 2u);
    test::start(view_->paste());
    EXPECT_EQ(view_->note, FeedbackWords::noPicture);
    clipboard_.picture = png(50, 50);
    test::start(view_->paste());
    EXPECT_EQ(view_->images.size(), 3u);
    test::start(view_->addFile(temp_.path() / "missing.png"));
    EXPECT_EQ(view_->note, "One picture could not be added.");
}

} // namespace
} // namespace orvan
