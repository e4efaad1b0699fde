// The real program, headless, against the simulator: a phone that followed a link invite waits in
// a block of its own with its code; an approval sent with a code the bridge has since replaced is
// refused with the sentence that says so, and one with the new code lets the phone in. The first
// owner's setup code prints as a QR code in its own block, goes when the owner takes it, and is
// cancelled when the program quits while it shows.
#include "DrivenProgram.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <gtest/gtest.h>
#include <regex>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using namespace test;
using nlohmann::json;

class JoinsProgram : public DrivenProgram {
protected:
    void adjust(QProcessEnvironment& env) override { env.insert("ORVAN_SIM_HOSTS", "badrow"); }
    // A phone follows a new link invite; the request it leaves, as the bridge lists it.
    json follow(const std::string& name) {
        std::string id;
        settles([&] {
            auto made = ask("/local/invite", json{{"role", "member"}, {"kind", "link"}});
            if (made && made->status == 200) id = json::parse(made->body, nullptr, false).value("id", "");
            return !id.empty();
        });
        auto asked = ask("/_sim/follow", json{{"id", id}, {"name", name}});
        const std::string request = asked ? json::parse(asked->body, nullptr, false).value("id", "") : "";
        for (const auto& join : read("/local/joins").value("joins", json::array()))
            if (join.value("id", "") == request) return join;
        return json::object();
    }
    // A Mac with no owner yet, whose setup the owner then opens.
    bool openOwnerSetup() {
        return settles([&] {
                   auto seeded = ask("/_sim/seed", json{{"seed", "empty"}});
                   return seeded && seeded->status == 204;
               }) &&
               settles([&] { return inFrame("[Set up this Mac's owner\u2026]"); }) &&
               type("press \"Set up this Mac's owner\u2026\"", "> Pressed") && settles([&] { return inFrame("Works until"); });
    }
    std::string code() const {
        std::smatch m;
        std::string f = frame();
        return std::regex_search(f, m, std::regex("Code (\\d{4})\n")) ? std::string(m[1]) : std::string();
    }
    bool approvable() const {
        std::string line = lineWith("[Approve]");
        return !line.empty() && line.find("(disabled)") == std::string::npos;
    }
};

TEST_F(JoinsProgram, AStaleCodeIsRefusedAndTheCodeShownNowLetsThePhoneIn) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(settles([&] { return saw("== Phones =="); })) << tail();
    ASSERT_TRUE(follow("Ann\u2019s phone").contains("code"));

    ASSERT_TRUE(settles([&] { return inFrame("== Join request ==") && approvable(); })) << frame();
    EXPECT_TRUE(inFrame("Ann\u2019s phone is waiting to join.")) << frame();
    EXPECT_TRUE(inFrame("Approve only if Ann\u2019s phone reads you this code.")) << frame();
    const std::string first = code();
    ASSERT_FALSE(first.empty()) << frame();

    // The phone asks again with a new code just before the owner's click lands; the poll may
    // have shown it first, and then the click is refused in the window and tried again.
    bool refused = false;
    for (int attempt = 0; attempt < 3 && !refused; ++attempt) {
        ASSERT_TRUE(settles([&] { return approvable(); })) << frame();
        const std::string shown = code();
        const std::string next = shown == "0042" ? "0043" : "0042";
        ASSERT_TRUE(ask("/_sim/join-code", json{{"code", next}}));
        if (!type("press Approve", "> ")) continue;
        refused = settles([&] {
            return inFrame("That request changed since it was shown: the code below is the one to check now.");
        });
    }
    ASSERT_TRUE(refused) << frame();
    const json waiting = read("/local/joins").value("joins", json::array());
    ASSERT_EQ(waiting.size(), 1u);
    const std::string now = waiting[0].value("code", "");
    ASSERT_TRUE(settles([&] { return code() == now && approvable(); })) << frame();
    ASSERT_TRUE(type("press Approve", "> Pressed")) << tail();
    ASSERT_TRUE(settles([&] { return !inFrame("== Join request ==") && inFrame("Ann\u2019s phone"); })) << frame();
    EXPECT_TRUE(read("/local/joins")["joins"].empty());
}

TEST_F(JoinsProgram, TheOwnersCodePrintsAsAQrCodeAndClosesTwoSecondsAfterItWasTaken) {
    ASSERT_TRUE(start());
    ASSERT_TRUE(settles([&] { return saw("== Phones =="); })) << tail();
    EXPECT_FALSE(inFrame("Set up this Mac's owner\u2026")) << "the seeded Mac has an owner";
    ASSERT_TRUE(openOwnerSetup()) << tail();
    EXPECT_TRUE(inFrame("== Set up this Mac's owner ==")) << frame();
    EXPECT_TRUE(inFrame("<picture: Setup code")) << frame();
    EXPECT_NE(frame().find("\u2580"), std::string::npos) << "the code prints as half blocks";

    ASSERT_TRUE(ask("/_sim/owner-setup", json{{"take", true}}));
    ASSERT_TRUE(settles([&] { return inFrame("Owner added."); })) << frame();
    EXPECT_FALSE(inFrame("<picture: Setup code"));
    const auto added = std::chrono::steady_clock::now();
    ASSERT_TRUE(settles([&] { return !inFrame("== Set up this Mac's owner =="); })) << frame();
    EXPECT_GE(std::chrono::steady_clock::now() - added, 1500ms) << "Owner added. stays about 2 seconds";
    ASSERT_TRUE(settles([&] { return !inFrame("[Set up this Mac's owner\u2026]"); })) << frame();
}

TEST_F(JoinsProgram, QuittingWhileTheCodeShowsCancelsIt) {
    // A bridge the program adopts outlives it, so what the quit did can be read afterwards.
    StartedSim bridge(8787, home_.environment());
    ASSERT_TRUE(waitUntil([] { return healthzAnswers(8787); })) << "the simulator did not come up";
    ASSERT_TRUE(start());
    ASSERT_TRUE(settles([&] { return saw("== Phones =="); })) << tail();
    ASSERT_TRUE(openOwnerSetup()) << tail();
    ASSERT_EQ(read("/local/owner-setup")["live"], true);
    program_.terminate();
    ASSERT_TRUE(finished());
    EXPECT_EQ(read("/local/owner-setup")["live"], false) << errors_;
}

// A notification server on a bus of the test's own: it records what is posted and closed.
struct NotificationServer final : QDBusVirtualObject {
    struct Posted {
        uint id;
        std::string title, body;
    };
    std::vector<Posted> posted;
    std::vector<uint> closed;
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const QList<QVariant> args = message.arguments();
        if (message.member() == QLatin1String("Notify") && args.size() == 8) {
            const uint id = static_cast<uint>(posted.size() + 1);
            posted.push_back({id, args[3].toString().toStdString(), args[4].toString().toStdString()});
            connection.send(message.createReply(QVariant::fromValue(id)));
            return true;
        }
        if (message.member() == QLatin1String("CloseNotification") && args.size() == 1) {
            closed.push_back(args[0].toUInt());
            connection.send(message.createReply());
            return true;
        }
        return false;
    }
};

class JoinNotices : public JoinsProgram {
protected:
    void adjust(QProcessEnvironment& env) override {
        JoinsProgram::adjust(env);
        daemon_.start("dbus-daemon", {"--session", "--nofork", "--print-address=1"});
        if (!daemon_.waitForStarted(5000) || !waitUntil([&] { return daemon_.canReadLine(); }, 5s)) return;
        address_ = QString::fromUtf8(daemon_.readLine()).trimmed();
        env.insert("DBUS_SESSION_BUS_ADDRESS", address_);
    }
    void TearDown() override {
        JoinsProgram::TearDown();
        QDBusConnection::disconnectFromBus(QStringLiteral("notices"));
        daemon_.terminate();
        daemon_.waitForFinished(5000);
    }
    bool serve() {
        if (address_.isEmpty()) return false;
        bus_ = QDBusConnection::connectToBus(address_, QStringLiteral("notices"));
        return bus_.isConnected() && bus_.registerService(QStringLiteral("org.freedesktop.Notifications")) &&
               bus_.registerVirtualObject(QStringLiteral("/org/freedesktop/Notifications"), &server_);
    }

    QProcess daemon_;
    QString address_;
    QDBusConnection bus_{QStringLiteral("none")};
    NotificationServer server_;
};

TEST_F(JoinNotices, OneNoticePerRequestNeverWithItsCodeClosedWhenTheRequestEnds) {
    ASSERT_TRUE(serve()) << "no private session bus";
    ASSERT_TRUE(start());
    ASSERT_TRUE(settles([&] { return saw("== Phones =="); })) << tail();
    const json ann = follow("Ann’s phone");
    ASSERT_TRUE(ann.contains("code")) << ann.dump();
    ASSERT_TRUE(settles([&] { return server_.posted.size() == 1; })) << frame();
    EXPECT_EQ(server_.posted[0].title, "Ann’s phone wants to join…");

    // A new code for the same request brings the window forward again, but posts nothing more.
    ASSERT_TRUE(ask("/_sim/join-code", json{{"code", "0042"}}));
    const json bo = follow("Bo");
    ASSERT_TRUE(settles([&] { return server_.posted.size() >= 2; })) << frame();
    runFor(3s);
    ASSERT_EQ(server_.posted.size(), 2u);
    EXPECT_EQ(server_.posted[1].title, "Bo wants to join…");
    for (const auto& notice : server_.posted)
        for (const std::string& code : {ann["code"].get<std::string>(), std::string("0042"), bo["code"].get<std::string>()}) {
            EXPECT_EQ(notice.title.find(code), std::string::npos);
            EXPECT_EQ(notice.body.find(code), std::string::npos);
        }

    ASSERT_TRUE(ask("/local/joins/" + bo["id"].get<std::string>() + "/deny", json{{"code", bo["code"]}, {"fp", bo["fp"]}}));
    ASSERT_TRUE(settles([&] { return server_.closed.size() == 1; })) << frame();
    EXPECT_EQ(server_.closed[0], server_.posted[1].id);
    ASSERT_TRUE(ask("/local/joins/" + ann["id"].get<std::string>() + "/approve", json{{"code", "0042"}, {"fp", ann["fp"]}}));
    ASSERT_TRUE(settles([&] { return server_.closed.size() == 2; })) << frame();
    EXPECT_EQ(server_.closed[1], server_.posted[0].id);
}

} // namespace
} // namespace orvan
