// The computers' model in virtual time against a scripted bridge.
#include "computers/Hosts.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::FakeBridge;
using test::FakeClock;
using test::Reply;

CompanionHost host(std::string target, std::optional<std::string> docker = "ready", std::string version = "1.8.2") {
    CompanionHost h;
    h.target = target;
    h.name = target + " name";
    h.computerId = "c-" + target;
    h.os = "linux";
    h.docker = std::move(docker);
    if (!version.empty()) h.version = version;
    return h;
}

class HostsTest : public testing::Test {
protected:
    HostsTest() { api_.on("GET", "/companion/hosts", Reply::json(200, R"({"ssh":[],"hosts":[]})")); }
    void run(Task<void> task) {
        auto started = test::start(std::move(task));
        while (!started.done() && clock_.step()) {}
        ASSERT_TRUE(started.done());
    }
    Json bodyOf(const HttpRequest& request) const { return request.body ? *json::parse(*request.body) : Json(); }
    std::vector<std::string> actionsSent() const {
        std::vector<std::string> out;
        for (const auto& r : api_.requestsTo("/companion/hosts/sandbox")) out.push_back(bodyOf(r)["action"]);
        return out;
    }
    // A sandbox answer whose image is `image`.
    static Reply image(const std::string& image) {
        return Reply::json(200, R"({"sandbox":{"image":")" + image + R"(","progress":0.5}})");
    }

    FakeClock clock_;
    FakeBridge api_{clock_};
    std::unique_ptr<Hosts> model_ = std::make_unique<Hosts>(api_, clock_, Environment{{"ORVAN_DIR", "/nowhere"}});
};

TEST_F(HostsTest, OpeningReadsTheListThenChecksTheComputersWorthItOneAfterTheOther) {
    api_.on("GET", "/companion/hosts", Reply::json(200, R"({"bridge":"1.8.2","ssh":["ready","lab","pi"],"hosts":[
        {"target":"known","name":"K","computerId":"1","docker":"missing","version":"1.8.2"},
        {"target":"ready","name":"R","computerId":"2","docker":"ready","version":"1.8.2"},
        {"target":"fresh","name":"F","computerId":"3"},
        {"target":"noversion","name":"N","computerId":"4","docker":"stopped","version":""},
        {"target":"win","name":"W","computerId":"5","terminalOnly":true}]})"));
    std::vector<std::pair<std::string, double>> checks;
    api_.on("POST", "/companion/hosts/check", [&](const HttpRequest& r) {
        checks.emplace_back(bodyOf(r)["target"], clock_.elapsed());
        return Reply::json(200, "{}").after(2s);
    });
    run(model_->open());
    ASSERT_EQ(checks.size(), 3u);
    EXPECT_EQ(checks[0], (std::pair<std::string, double>{"ready", 0.0}));
    EXPECT_EQ(checks[1], (std::pair<std::string, double>{"fresh", 2.0}));
    EXPECT_EQ(checks[2], (std::pair<std::string, double>{"noversion", 4.0}));
    EXPECT_EQ(model_->sshHosts, (std::vector<std::string>{"lab", "pi"}));
    EXPECT_EQ(model_->bridge, "1.8.2");
    // Each successful check read the list again, after the opening read.
    EXPECT_EQ(api_.count("/companion/hosts"), 4u);

    // A list that fails or doesn't decode leaves the rows on screen.
    api_.on("GET", "/companion/hosts", Reply::json(200, R"({"ssh":[],"hosts":[{"target":"x","name":"X"}]})"));
    run(model_->refresh());
    api_.on("GET", "/companion/hosts", Reply::failure());
    run(model_->refresh());
    EXPECT_EQ(model_->hosts.size(), 5u);
    EXPECT_EQ(model_->note, "");
}

TEST_F(HostsTest, BuildImagePollsUntilTheImageSettlesAndGivesUpAfter800Reads) {
    api_.on("POST", "/companion/hosts/sandbox", [&](const HttpRequest& r) {
        const std::string action = bodyOf(r)["action"];
        const auto statusReads = api_.count("/companion/hosts/sandbox") - 1;
        return image(action == "status" && statusReads == 3 ? "ready" : "downloading");
    });
    run(model_->buildImage(host("lab")));
    EXPECT_EQ(actionsSent(), (std::vector<std::string>{"build", "status", "status", "status"}));
    EXPECT_EQ(clock_.elapsed(), 4.5);
    EXPECT_EQ(model_->sandbox.at("lab").image, "ready");
    EXPECT_TRUE(model_->working.empty());

    api_.clearRequests();
    api_.on("POST", "/companion/hosts/sandbox", image("downloading"));
    run(model_->buildImage(host("lab")));
    auto sent = actionsSent();
    EXPECT_EQ(std::count(sent.begin(), sent.end(), "status"), Hosts::buildPolls);
    EXPECT_EQ(model_->sandbox.at("lab").image, "downloading") << "the last state stays";
    EXPECT_TRUE(model_->working.empty());
}

TEST_F(HostsTest, BuildImageEndsWithTheModelAndOnAFailedRead) {
    api_.on("POST", "/companion/hosts/sandbox", image("building"));
    auto started = test::start(model_->buildImage(host("lab")));
    clock_.advance(3s);
    ASSERT_EQ(actionsSent().size(), 3u);
    EXPECT_EQ(model_->working, (std::set<std::string>{"lab"}));
    model_.reset();
    clock_.advance(60s);
    EXPECT_EQ(actionsSent().size(), 3u);
    EXPECT_EQ(clock_.sleepers(), 0u);

    model_ = std::make_unique<Hosts>(api_, clock_, Environment{{"ORVAN_DIR", "/nowhere"}});
    api_.queue("POST", "/companion/hosts/sandbox", image("building"));
    api_.on("POST", "/companion/hosts/sandbox", Reply::json(502, R"({"message":"lab did not answer over SSH."})"));
    run(model_->buildImage(host("lab")));
    EXPECT_EQ(model_->hostNote.at("lab"), "lab did not answer over SSH.");
    EXPECT_EQ(model_->sandbox.at("lab").image, "building");
    EXPECT_TRUE(model_->working.empty());
}

TEST_F(HostsTest, DockerInstallAsksForSudoOn401AndOtherwiseEndsWithACheck) {
    api_.queue("POST", "/companion/hosts/docker", Reply::json(401, R"({"message":"sudo needs a password there."})"));
    run(model_->installDocker(host("box", "missing"), ""));
    EXPECT_EQ(model_->sudoFor, host("box", "missing"));
    EXPECT_EQ(model_->hostNote.at("box"), "");
    EXPECT_EQ(api_.count("/companion/hosts/check"), 0u);
    EXPECT_EQ(bodyOf(api_.requestsTo("/companion/hosts/docker")[0]), (Json{{"target", "box"}}));

    api_.on("POST", "/companion/hosts/docker", Reply::json(200, R"({"steps":["Installed docker.io","Started it"]})"));
    api_.on("POST", "/companion/hosts/check", Reply::json(200, R"({"sandbox":{"image":"missing"}})"));
    model_->clearSudo();
    run(model_->installDocker(host("box", "missing"), "s3cret"));
    EXPECT_EQ(bodyOf(api_.requestsTo("/companion/hosts/docker")[1]), (Json{{"target", "box"}, {"password", "s3cret"}}));
    EXPECT_EQ(model_->hostNote.at("box"), "Installed docker.io. Started it");
    EXPECT_EQ(model_->sandbox.at("box").image, "missing");
    EXPECT_FALSE(model_->sudoFor);
    EXPECT_TRUE(model_->working.empty());

    // The check's note has the last word; a failure without a message has the fixed one.
    api_.on("POST", "/companion/hosts/docker", Reply::json(500, "oops"));
    api_.on("POST", "/companion/hosts/check", Reply::json(200, R"({"note":"Docker's engine did not start."})"));
    run(model_->installDocker(host("box", "stopped"), ""));
    EXPECT_EQ(model_->hostNote.at("box"), "Docker's engine did not start.");
    EXPECT_FALSE(model_->sandbox.count("box")) << "a check without sandbox forgets the last reading";
    api_.on("POST", "/companion/hosts/check", Reply::json(200, "{}"));
    run(model_->installDocker(host("box", "stopped"), ""));
    EXPECT_EQ(model_->hostNote.at("box"), "Docker did not install.");
}

TEST_F(HostsTest, FailuresEndInTheirSentences) {
    using Call = std::function<Task<void>(Hosts&)>;
    struct Case {
        const char* name;
        Call call;
        const char* path;
        Reply reply;
        std::function<std::string(Hosts&)> read;
        const char* sentence;
    };
    auto noteOf = [](Hosts& m) { return m.note; };
    auto boxNote = [](Hosts& m) { return m.hostNote.count("box") ? m.hostNote.at("box") : "(none)"; };
    const Call check = [](Hosts& m) { return m.check(host("box")); };
    const Call update = [](Hosts& m) { return m.updateBridge(host("box")); };
    const Call probe = [](Hosts& m) { return m.test(ComputerForm::startingAs("rosa")); };
    const std::vector<Case> cases{
        {"check, no answer", check, "/companion/hosts/check", Reply::failure(), boxNote, "Could not reach that computer."},
        {"check, 502 with message", check, "/companion/hosts/check", Reply::json(502, R"({"message":"box did not answer."})"),
         boxNote, "box did not answer."},
        {"check, 500 without", check, "/companion/hosts/check", Reply::json(500, "<html>"), boxNote,
         "Could not reach that computer."},
        {"update, steps then message", update, "/companion/hosts/update",
         Reply::json(500, R"({"steps":["Copied","Stopped"],"message":"It did not start."})"), boxNote,
         "Copied. Stopped. It did not start."},
        {"update, nothing said", update, "/companion/hosts/update", Reply::json(500, ""), boxNote,
         "The bridge there was not updated."},
        {"update, no answer", update, "/companion/hosts/update", Reply::failure(), boxNote,
         "The bridge did not answer. Check says what is there now."},
        {"sandbox, 200 without sandbox", [](Hosts& m) { return m.addTools(host("box")); }, "/companion/hosts/sandbox",
         Reply::json(200, "{}"), boxNote, "The bridge there did not answer."},
        {"test, no answer", probe, "/companion/hosts/test", Reply::failure("Connection refused"), noteOf,
         "Could not reach that computer. Connection refused"},
        {"test, refused with message", probe, "/companion/hosts/test",
         Reply::json(409, R"({"message":"The host key changed."})"), noteOf, "The host key changed."},
        {"add, no answer",
         [](Hosts& m) {
             auto form = ComputerForm::startingAs("rosa");
             form.address = " box ";
             return [](Hosts& m, ComputerForm f) -> Task<void> { co_await m.add(f); }(m, form);
         },
         "/companion/hosts/add", Reply::failure("timed out"), noteOf, "Could not add  box . timed out"},
        {"add, 200 without host",
         [](Hosts& m) { return [](Hosts& m) -> Task<void> { co_await m.add(ComputerForm::startingAs("r")); }(m); },
         "/companion/hosts/add", Reply::json(200, R"({"steps":["Copied"]})"), noteOf,
         "The computer was added, but the bridge did not say how to reach it."},
    };
    for (const auto& c : cases) {
        model_ = std::make_unique<Hosts>(api_, clock_, Environment{{"ORVAN_DIR", "/nowhere"}});
        api_.clearRequests();
            api_.on("POST", c.path, c.reply);
        run(c.call(*model_));
        EXPECT_EQ(c.read(*model_), c.sentence) << c.name;
        EXPECT_FALSE(model_->busy) << c.name;
        EXPECT_TRUE(model_->working.empty()) << c.name;
    }
}

TEST_F(HostsTest, AddGivesTheHostAndTheStepsAndRemoveSaysNothing) {
    api_.on("POST", "/companion/hosts/add",
            Reply::json(200, R"({"steps":["Signed in","Copied"],"host":{"target":"box","name":"Box","computerId":"9"}})")
                .after(1s));
    auto form = ComputerForm::startingAs("rosa");
    form.address = "box";
    auto added = test::start(model_->add(form));
    EXPECT_EQ(model_->steps, (std::vector<std::string>{"Connecting to box…"}));
    EXPECT_TRUE(model_->busy);
    while (!added.done() && clock_.step()) {}
    ASSERT_TRUE(added.done());
    ASSERT_TRUE(added.value());
    EXPECT_EQ(added.value()->target, "box");
    EXPECT_EQ(model_->steps, (std::vector<std::string>{"Signed in", "Copied"}));

    api_.on("POST", "/companion/hosts/remove", Reply::json(500, R"({"message":"It stayed."})"));
    run(model_->remove(host("box")));
    EXPECT_EQ(model_->note, "");
    EXPECT_TRUE(model_->steps.empty());
    EXPECT_EQ(bodyOf(api_.requestsTo("/companion/hosts/remove")[0]), (Json{{"target", "box"}}));
}

} // namespace
} // namespace orvan
