#include "appearance/Swatch.h"
#include "appearance/ThemeCatalog.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeProcesses.h"
#include "phones/InviteSheet.h"
#include "phones/InviteSheetView.h"
#include "phones/InviteWords.h"
#include "phones/PhoneInvite.h"
#include "phones/PhonesViewState.h"
#include "ui/TextRenderer.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::Reply;

// A real, readable PNG: the sheet only takes pictures it can draw.
std::string codePng() { return *Swatch::png(ThemeCatalog::all().front()); }

const char* kLink = "https://join.orvan.example/i/i%201#v1.secret";

class InviteSheetTest : public testing::Test {
protected:
    void SetUp() override {
        api_.on("GET", "/healthz", Reply::json(200, "ok"));
        api_.on("GET", "/companion/status", Reply::json(200, R"({"phones":[{"id":"old","role":"owner"}]})"));
        api_.on("GET", PhoneInvite::live, Reply::json(200, R"({"invites":[{"id":"i 1","kind":"qr"}]})"));
        bridge_.start();
        settle();
        ASSERT_TRUE(bridge_.ready);
        sheet_ = std::make_unique<InviteSheet>(bridge_, Calendar{"en_US", "UTC"});
    }
    // Answers without a delay arrive at once; this wakes whatever is due now.
    void settle() { clock_.advance(0ms); }
    template <class T> void run(Task<T> task) {
        auto started = test::start(std::move(task));
        for (int i = 0; i < 50 && !started.done(); ++i) clock_.advance(10ms);
        ASSERT_TRUE(started.done());
    }

    test::FakeClock clock_;
    test::FakeBridge api_{clock_};
    test::FakeProcesses processes_;
    Bridge bridge_{api_, clock_, processes_, BridgeSetup{}};
    std::unique_ptr<InviteSheet> sheet_;
};

TEST_F(InviteSheetTest, MakeWalksItsStepsToAPictureALinkOrASentence) {
    auto made = [](const std::string& kind) {
        return Reply::json(200, R"({"id":"i 1","link":")" + std::string(kLink) + R"(","kind":")" + kind + R"("})");
    };
    const char* older = "This Mac's bridge is older and cannot make this invite. Update Orvan Companion.";
    const char* unread = "The invite was made, but its code could not be read.";
    const auto png = Reply::json(200, codePng());
    struct Case {
        const char* name;
        InviteKind kind;
        Reply make;
        std::optional<Reply> picture;      // for the made invite's id
        std::optional<Reply> olderPicture; // without an id
        const char* note;
        bool handedOver;
        bool listed; // the unused invites were read after the make
    } cases[] = {
        {"transport", InviteKind::qr, Reply::failure(), {}, {}, "The bridge did not make an invite.", false, false},
        {"429 with words", InviteKind::link, Reply::json(429, R"({"message":"Slow down."})"), {}, {}, "Slow down.", false, false},
        {"503 bare", InviteKind::qr, Reply::json(503, ""), {}, {}, "The bridge did not make an invite.", false, false},
        {"older, member QR", InviteKind::qr, Reply::empty(204), {}, png, "", true, false},
        {"older, no picture", InviteKind::qr, Reply::empty(204), {}, Reply::json(404, ""), older, false, false},
        {"older, link", InviteKind::link, Reply::json(200, "{}"), {}, png, older, false, false},
        {"QR", InviteKind::qr, made("qr"), png, {}, "", true, true},
        {"QR not a PNG", InviteKind::qr, made("qr"), Reply::json(200, "GIF89a"), {}, unread, false, true},
        {"QR broken PNG", InviteKind::qr, made("qr"), Reply::json(200, codePng().substr(0, 40)), {}, unread, false, true},
        {"QR picture lost", InviteKind::qr, made("qr"), Reply::failure(), {}, unread, false, true},
        {"link", InviteKind::link, made("link"), {}, {}, "", true, true},
        {"link downgraded", InviteKind::link, Reply::json(200, R"({"id":"i 1","link":"http://join.orvan.example/i#v1.s"})"), {},
         {}, "The invite was made, but its link could not be read.", false, true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        sheet_ = std::make_unique<InviteSheet>(bridge_, Calendar{"en_US", "UTC"});
        ASSERT_EQ(sheet_->draft.role, InviteRole::member);
        api_.queue("POST", PhoneInvite::make, c.make);
        if (c.picture) api_.queue("GET", PhoneInvite::png("i 1"), *c.picture);
        if (c.olderPicture) api_.queue("GET", PhoneInvite::code, *c.olderPicture);
        api_.clearRequests();
        run(sheet_->make(c.kind));
        EXPECT_EQ(sheet_->note, c.note);
        EXPECT_EQ(sheet_->made.has_value(), c.handedOver);
        EXPECT_FALSE(sheet_->busy);
        EXPECT_EQ(api_.count(PhoneInvite::live) > 0, c.listed);
        if (c.handedOver) {
            EXPECT_EQ(sheet_->before, std::set<std::string>{"old"});
            EXPECT_EQ(sheet_->madeKind, c.kind);
            if (c.kind == InviteKind::qr) EXPECT_TRUE(sheet_->code);
            else EXPECT_EQ(sheet_->link(), kLink);
        }
        if (c.picture) {
            auto asked = api_.requestsTo(PhoneInvite::code);
            ASSERT_FALSE(asked.empty());
            EXPECT_EQ(asked.front().path, "/local/invite.png?id=i%201");
        }
    }
}

TEST_F(InviteSheetTest, TheRequestCarriesTheDraftAndNothingGoesOutWhileItCannot) {
    sheet_->draft.role = InviteRole::guest;
    run(sheet_->make(InviteKind::link));
    EXPECT_EQ(api_.count(PhoneInvite::make), 0u) << "a guest with nothing picked is refused before asking";
    sheet_->draft.projects = {"p"};
    sheet_->draft.name = " Bo ";
    api_.queue("POST", PhoneInvite::make, Reply::json(503, ""));
    run(sheet_->make(InviteKind::link));
    auto sent = api_.requestsTo(PhoneInvite::make);
    ASSERT_EQ(sent.size(), 1u);
    auto body = json::parse(*sent[0].body);
    EXPECT_EQ((*body)["name"], "Bo");
    EXPECT_EQ((*body)["guest"]["projects"], Json::array({"p"}));
    EXPECT_EQ((*body)["guest"]["mode"], "watch");
}

TEST_F(InviteSheetTest, PollingReadsEveryFiveSecondsKeepsTheListOnBadAnswersAndEndsWithTheSheet) {
    sheet_->appeared();
    settle();
    ASSERT_EQ(sheet_->live.size(), 1u);
    api_.on("GET", PhoneInvite::live, Reply::json(200, "garbage"));
    clock_.advance(5s);
    settle();
    EXPECT_EQ(sheet_->live.size(), 1u);
    api_.on("GET", PhoneInvite::live, Reply::json(200, "{}"));
    clock_.advance(4s);
    settle();
    EXPECT_EQ(sheet_->live.size(), 1u) << "not before five seconds";
    clock_.advance(1s);
    settle();
    EXPECT_TRUE(sheet_->live.empty());
    const auto reads = api_.count(PhoneInvite::live);
    sheet_.reset();
    clock_.advance(30s);
    settle();
    EXPECT_EQ(api_.count(PhoneInvite::live), reads);
}

TEST_F(InviteSheetTest, CancelSaysWhyItFailedAndReadsTheListAgain) {
    LiveInvite invite;
    invite.id = "a/b";
    api_.queue("POST", PhoneInvite::cancel("a/b"), Reply::json(404, R"({"message":"Already used."})"));
    run(sheet_->cancel(invite));
    EXPECT_EQ(sheet_->note, "Already used.");
    EXPECT_FALSE(sheet_->liveBusy);
    api_.queue("POST", PhoneInvite::cancel("a/b"), Reply::failure());
    run(sheet_->cancel(invite));
    EXPECT_EQ(sheet_->note, "That invite was not cancelled.");
    EXPECT_EQ(api_.requestsTo(PhoneInvite::cancel("a/b")).back().body, "{}");
    EXPECT_EQ(api_.count(PhoneInvite::live), 2u);
}

TEST_F(InviteSheetTest, TheScopeIsReadForAGuestAndSaysWhenItCannotBe) {
    api_.queue("GET", PhoneInvite::scope, Reply::json(500, ""));
    sheet_->setRole(InviteRole::guest);
    settle();
    EXPECT_EQ(sheet_->scopeNote, "This Mac's projects and sessions could not be read, so a guest cannot be invited yet.");
    api_.queue("GET", PhoneInvite::scope, Reply::json(200, R"({"projects":[{"id":"p"}]})"));
    run(sheet_->loadScope());
    EXPECT_EQ(sheet_->scopeNote, "");
    ASSERT_TRUE(sheet_->scope);
    EXPECT_EQ(sheet_->scope->projects.size(), 1u);
    EXPECT_EQ(api_.requestsTo(PhoneInvite::scope).back().timeout, 15s);
}

struct KeptClipboard final : Clipboard {
    std::vector<std::pair<std::string, bool>> puts;
    bool works = true;
    bool putText(const std::string& text, bool concealed) override {
        if (works) puts.emplace_back(text, concealed);
        return works;
    }
};

struct KeptMail final : Mail {
    bool available = true;
    std::vector<MailDraft> composed;
    bool canMail() const override { return available; }
    bool compose(const MailDraft& draft) override {
        composed.push_back(draft);
        return true;
    }
};

TEST_F(InviteSheetTest, OnlyAGoodLinkIsCopiedConcealedOrMailed) {
    KeptClipboard clipboard;
    KeptMail mail;
    sheet_->made = MadeInvite{"i", "http://join.orvan.example/i#v1.s", "link", std::nullopt};
    sheet_->madeKind = InviteKind::link;
    sheet_->copy(clipboard);
    sheet_->share(&mail, &clipboard, "Studio");
    EXPECT_TRUE(clipboard.puts.empty());
    EXPECT_TRUE(mail.composed.empty());

    sheet_->made->link = std::string(" ") + kLink + "\n";
    sheet_->share(&mail, &clipboard, "Studio");
    ASSERT_EQ(mail.composed.size(), 1u);
    EXPECT_NE(mail.composed[0].body.find(kLink), std::string::npos);
    EXPECT_FALSE(sheet_->copied);
    mail.available = false;
    sheet_->share(&mail, &clipboard, "Studio");
    EXPECT_EQ(clipboard.puts, (std::vector<std::pair<std::string, bool>>{{kLink, true}}));
    EXPECT_TRUE(sheet_->copied);
    sheet_->another();
    EXPECT_FALSE(sheet_->copied || sheet_->made);
    EXPECT_EQ(sheet_->draft.role, InviteRole::member);

    clipboard.works = false;
    sheet_->made = MadeInvite{"i", kLink, "link", std::nullopt};
    sheet_->madeKind = InviteKind::link;
    sheet_->copy(clipboard);
    EXPECT_FALSE(sheet_->copied);
    EXPECT_EQ(sheet_->note, "The link could not be copied: there is no clipboard here.");
}

TEST_F(InviteSheetTest, RepliesOffOffersNoModeWhileOnItOffersOneAndWarnsOfReplying) {
    sheet_->draft.role = InviteRole::guest;
    sheet_->scope = ScopeList{{{"p", "Site", ""}}, {}};
    sheet_->draft.mode = GuestMode::reply;
    PhonesViewState state;
    auto drawn = [&](bool replies) {
        InviteSheetView::Context context;
        context.replies = replies;
        return ui::TextRenderer().render(InviteSheetView::build(*sheet_, bridge_, state, clock_.now(), context));
    };
    const std::string off = drawn(false);
    EXPECT_NE(off.find(InviteWords::watches), std::string::npos) << off;
    EXPECT_EQ(off.find("What they may do"), std::string::npos);
    EXPECT_NE(off.find("and new ones as they start"), std::string::npos);
    const std::string on = drawn(true);
    EXPECT_NE(on.find("What they may do: ( ) Watch  (\u2022) Can reply"), std::string::npos) << on;
    EXPECT_NE(on.find("<exclamationmark.triangle, warning>  A guest who can reply directs the agent"), std::string::npos) << on;
    EXPECT_NE(on.find("lets Can reply start new ones there"), std::string::npos);
    sheet_->setMode(GuestMode::watch);
    EXPECT_EQ(drawn(true).find("A guest who can reply"), std::string::npos);
}

} // namespace
} // namespace orvan
