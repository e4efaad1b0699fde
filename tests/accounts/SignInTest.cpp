#include "accounts/AccountForm.h"
#include "accounts/Accounts.h"
#include "accounts/BedrockFields.h"
#include "accounts/ShellCommand.h"
#include "fakes/FakeBridge.h"
#include "fakes/FakeClock.h"
#include "fakes/TempFolder.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/wait.h>

namespace orvan {
namespace {

using namespace std::chrono_literals;
using test::FakeBridge;
using test::FakeClock;
using test::Reply;
using Args = std::vector<std::string>;
using Env = std::map<std::string, std::string>;

// Runs the line as a terminal would, `sh -c LINE`, with the command replaced by a script that
// writes each argument it got, NUL-separated, and the one variable asked for.
Args runUnderShell(const std::string& line, const std::string& out) {
    std::string command = "/bin/sh -c " + ShellCommand::quote(line) + " >/dev/null 2>&1";
    const int status = std::system(command.c_str());
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << line;
    std::ifstream file(out, std::ios::binary);
    Args got;
    for (std::string part; std::getline(file, part, '\0');) got.push_back(part);
    return got;
}

TEST(ShellCommandTest, TheShellRunsExactlyTheArgumentsAndEnvironmentGivenOrNothing) {
    test::TempFolder temp;
    const std::string out = (temp.path() / "argv").string();
    const std::string recorder = (temp.path() / "record me").string();
    {
        std::ofstream script(recorder);
        script << "#!/bin/sh\nfor a in \"$@\" \"VAR=$ORVAN_T\" \"HOME_=$_H1\"; do printf '%s\\0' \"$a\"; done > \"$RECORD_TO\"\n";
    }
    std::filesystem::permissions(recorder, std::filesystem::perms::owner_all);
    const std::vector<Args> hostile = {
        {"plain"},
        {"it's", "two 'quotes'' here"},
        {"$(touch pwned)", "`id`", "$HOME", "a;b|c&d", "*", "~", "\\\\", "\"dq\"", ""},
        {"-notfirst", "--also=ok", "ünïcödé ✓", "A=B"},
    };
    for (const auto& args : hostile) {
        Args argv{recorder};
        argv.insert(argv.end(), args.begin(), args.end());
        Env env{{"RECORD_TO", out}, {"ORVAN_T", "x' y \"$(z)\""}, {"_H1", "~/a b"}};
        auto line = ShellCommand::line(argv, env);
        ASSERT_TRUE(line);
        Args want = args;
        want.push_back("VAR=x' y \"$(z)\"");
        want.push_back("HOME_=~/a b");
        EXPECT_EQ(runUnderShell(*line, out), want) << *line;
    }
    EXPECT_FALSE(std::filesystem::exists(temp.path() / "pwned"));
    EXPECT_FALSE(std::filesystem::exists("pwned"));

    // Refused outright: nothing a quote can make safe.
    const std::vector<std::pair<Args, Env>> refused = {
        {{}, {}}, {{""}, {}}, {{"-x"}, {}}, {{"--login"}, {}},
        {{"claude", "a\nb"}, {}}, {{"claude", "tab\there"}, {}}, {{"claude", "esc\x1b[2J"}, {}}, {{"claude", "c1\xc2\x9b"}, {}},
        {{"claude"}, {{"1A", "v"}}}, {{"claude"}, {{"A-B", "v"}}}, {{"claude"}, {{"", "v"}}}, {{"claude"}, {{"OK", "line\nbreak"}}},
    };
    for (const auto& [argv, env] : refused) EXPECT_FALSE(ShellCommand::line(argv, env)) << (argv.empty() ? "" : argv[0]);
    EXPECT_EQ(*ShellCommand::line({"claude", "login"}, {{"Z_DIR", "/z"}, {"A_DIR", "/a"}}),
              "A_DIR='/a' Z_DIR='/z' 'claude' 'login'");
    EXPECT_EQ(AppleScriptText::terminal("say \"hi\" \\ now"),
              "tell application \"Terminal\"\n\tdo script \"say \\\"hi\\\" \\\\ now\"\n\tactivate\nend tell");
}

TEST(BedrockFieldsTest, RegionsModelsAndSecrets) {
    struct Region {
        const char* text;
        const char* want; // null: refused
    };
    for (const auto& c : std::vector<Region>{{"US-EAST-1 ", "us-east-1"}, {"us-gov-west-1", "us-gov-west-1"},
                                             {"us-isob-east-1", "us-isob-east-1"}, {"eu-west-3", "eu-west-3"},
                                             {"useast1", nullptr}, {"us-east-123", nullptr}, {"", nullptr},
                                             {"us-east-1; rm", nullptr}}) {
        auto got = BedrockFields::region(c.text);
        if (c.want) EXPECT_EQ(got.value, std::optional<std::string>(c.want)) << c.text;
        else EXPECT_EQ(got.refusal, "A region looks like us-east-1.") << c.text;
    }
    const std::string longest(200, 'a');
    for (const auto& [text, ok] : std::vector<std::pair<std::string, bool>>{
             {"", true}, {" us.anthropic.claude-sonnet-4-5-20250929-v1:0 ", true}, {"arn:aws/x[1]", true},
             {longest, true}, {longest + "a", false}, {"a b", false}, {".lead", false}, {"ü", false}}) {
        auto got = BedrockFields::model(text);
        EXPECT_EQ(got.ok(), ok) << text;
        if (!ok) EXPECT_EQ(got.refusal, "A model ID is letters, digits and . _ : / - only, with no spaces.");
    }
    using T = BedrockFields::Texts;
    EXPECT_EQ(BedrockFields::secret(BedrockAuth::apikey, " k ", "", "", ""), (T{{"key", "k"}}));
    EXPECT_FALSE(BedrockFields::secret(BedrockAuth::apikey, "  ", "", "", ""));
    EXPECT_EQ(BedrockFields::secret(BedrockAuth::keys, "", "AKIA1", " s ", ""), (T{{"accessKeyId", "AKIA1"}, {"secretAccessKey", "s"}}));
    EXPECT_EQ(BedrockFields::secret(BedrockAuth::keys, "", "ASIA1", "s", "t")->count("sessionToken"), 1u);
    EXPECT_FALSE(BedrockFields::secret(BedrockAuth::keys, "", "AKIA1", "", ""));
    EXPECT_EQ(BedrockFields::secret(BedrockAuth::profile, "", "", "", ""), T{});
    EXPECT_FALSE(BedrockFields::listBody("", "us-east-1"));
    EXPECT_FALSE(BedrockFields::listBody("acc", "nowhere"));
    EXPECT_EQ(*BedrockFields::listBody("us-east-1", BedrockAuth::profile, "dev", {}),
              Json::parse(R"({"region":"us-east-1","auth":"profile","profile":"dev"})"));
    EXPECT_EQ(BedrockFields::settings("eu-west-3", "bad model").refusal, BedrockFields::badModel);
}

TEST(AccountFormTest, TheDraftIsCompleteOnlyWithWhatItsWayNeeds) {
    const std::vector<FoundLogin> found = {{"codex", "", true, true}, {"claude", "/home/o/.claude-2", false, false}};
    using Way = AccountForm::Way;
    struct Case {
        std::string name;
        std::function<void(AccountForm&)> fill;
        std::optional<AccountForm::Texts> fields; // absent: no draft
    };
    const std::vector<Case> cases = {
        {"no label", [](AccountForm& f) { f.way = Way::fresh; }, std::nullopt},
        {"41 characters", [](AccountForm& f) { f.way = Way::fresh; f.label = std::string(41, 'x'); }, std::nullopt},
        {"new login", [](AccountForm& f) { f.way = Way::fresh; f.label = " Work "; },
         AccountForm::Texts{{"provider", "claude"}, {"label", "Work"}, {"kind", "login"}, {"home", ""}}},
        {"found, first of its agent", [](AccountForm& f) { f.label = "Side"; },
         AccountForm::Texts{{"provider", "claude"}, {"label", "Side"}, {"kind", "login"}, {"home", "/home/o/.claude-2"}}},
        {"found default", [](AccountForm& f) { f.provider = AccountProvider::codex; f.label = "C"; f.foundID = "codex|default"; },
         AccountForm::Texts{{"provider", "codex"}, {"label", "C"}, {"kind", "login"}, {"home", "default"}}},
        {"found, none of its agent", [](AccountForm& f) { f.provider = AccountProvider::grok; f.label = "G"; }, std::nullopt},
        {"cursor can't sign in anew", [](AccountForm& f) { f.provider = AccountProvider::cursor; f.way = Way::fresh; f.label = "x"; }, std::nullopt},
        {"bedrock only for claude", [](AccountForm& f) { f.provider = AccountProvider::codex; f.way = Way::bedrock; f.label = "x"; f.region = "us-east-1"; f.key = "k"; }, std::nullopt},
        {"blank key", [](AccountForm& f) { f.way = Way::apikey; f.label = "K"; f.key = "  "; }, std::nullopt},
        {"key", [](AccountForm& f) { f.way = Way::apikey; f.label = "K"; f.key = " sk-1 "; },
         AccountForm::Texts{{"provider", "claude"}, {"label", "K"}, {"kind", "apikey"}, {"home", ""}}},
        {"bedrock, bad region", [](AccountForm& f) { f.way = Way::bedrock; f.label = "B"; f.region = "east"; f.key = "k"; }, std::nullopt},
        {"bedrock profile", [](AccountForm& f) { f.way = Way::bedrock; f.label = "B"; f.region = "us-east-1"; f.bedrockAuth = BedrockAuth::profile; f.profile = "dev"; },
         AccountForm::Texts{{"provider", "claude"}, {"label", "B"}, {"kind", "bedrock"}, {"region", "us-east-1"}, {"model", ""}, {"auth", "profile"}, {"profile", "dev"}}},
    };
    for (const auto& c : cases) {
        AccountForm form;
        c.fill(form);
        auto draft = form.draft(found, {"dev"});
        ASSERT_EQ(draft.has_value(), c.fields.has_value()) << c.name;
        if (draft) EXPECT_EQ(draft->fields, *c.fields) << c.name;
    }
    AccountForm keyed;
    keyed.way = Way::apikey;
    keyed.label = "K";
    keyed.key = "sk-1";
    EXPECT_EQ(keyed.draft(found, {})->key, "sk-1") << "the key goes apart from the fields";
    keyed.clearSecrets();
    EXPECT_EQ(keyed.key, "");

    AccountForm adopt = AccountForm::adopting(found[0]);
    EXPECT_EQ(adopt.provider, AccountProvider::codex);
    adopt.settle({});
    EXPECT_EQ(adopt.foundID, "") << "a login that went away is no longer picked";
    adopt.profile = "gone";
    adopt.settleProfile({"default", "dev"});
    EXPECT_EQ(adopt.profile, "default");
}

class ScriptedTerminal final : public Terminal {
public:
    Task<TerminalRun> run(std::string line) override {
        lines.push_back(line);
        co_return next;
    }
    TerminalRun next;
    std::vector<std::string> lines;
};

class SignInTest : public testing::Test {
protected:
    void SetUp() override {
        api_.on("GET", "/companion/accounts",
                Reply::json(200, R"({"accounts":[{"id":"a1","provider":"claude","kind":"login","home":"/h/a1","status":"needs_login"},
                    {"id":"d","provider":"codex","default":true}]})"));
    }
    void TearDown() override {
        model_.reset();
        settle();
    }
    void settle() { while (clock_.step()) {} }
    CompanionAccount account(const std::string& id) {
        for (const auto& a : model_->list)
            if (a.id == id) return a;
        return {};
    }
    FakeClock clock_;
    FakeBridge api_{clock_};
    ScriptedTerminal terminal_;
    std::unique_ptr<Accounts> model_ = std::make_unique<Accounts>(api_, clock_, AccountsSetup{{}, "/home/o", &terminal_});
};

TEST_F(SignInTest, EachWayASignInEndsIsOneSentenceOrAWait) {
    using O = TerminalRun::Outcome;
    struct Case {
        std::string name, id;
        Reply login;
        TerminalRun run;
        std::optional<std::string> note;
        bool waits;
        std::vector<std::string> lines; // what the terminal was given
    };
    const std::string command = R"({"argv":["claude","login"],"env":{"CLAUDE_CONFIG_DIR":"/h/a1"}})";
    const std::vector<std::string> claude = {"CLAUDE_CONFIG_DIR='/h/a1' 'claude' 'login'"};
    const char* unsafe = "The bridge's sign-in command could not be run safely, so nothing ran.";
    std::vector<Case> cases = {
        {"opened", "a1", Reply::json(200, command), {O::opened, ""}, std::nullopt, true, claude},
        {"no terminal", "a1", Reply::json(200, command), {O::notLaunched, ""}, "Terminal could not be opened.", false, claude},
        {"no display", "a1", Reply::json(200, command), {O::noDisplay, ""}, "Terminal could not be opened.", false, claude},
        {"failed", "a1", Reply::json(200, command), {O::failed, "oops"}, "Terminal did not open the sign-in.", false, claude},
        {"refused automation", "a1", Reply::json(200, command), {O::failed, "execution error (-1743)"},
         "macOS did not let the companion use Terminal. Allow it in System Settings, Privacy & Security, Automation, then try again.", false, claude},
        {"own folder without env", "a1", Reply::json(200, R"({"argv":["claude","login"]})"), {O::opened, ""}, unsafe, false, {}},
        {"default without env", "d", Reply::json(200, R"({"argv":["codex","login"]})"), {O::opened, ""}, std::nullopt, true, {"'codex' 'login'"}},
        {"unsafe argv", "d", Reply::json(200, R"({"argv":["-c","x"]})"), {O::opened, ""}, unsafe, false, {}},
        {"no command", "a1", Reply::json(200, R"({"argv":"claude"})"), {O::opened, ""}, "The bridge gave no sign-in command.", false, {}},
        {"bridge refuses", "a1", Reply::json(409, R"({"message":"Busy."})"), {O::opened, ""}, "Busy.", false, {}},
        {"no bridge", "a1", Reply::failure(), {O::opened, ""}, "The bridge did not answer.", false, {}},
    };
    for (auto& c : cases) {
        model_ = std::make_unique<Accounts>(api_, clock_, AccountsSetup{{}, "/home/o", &terminal_});
        test::start(model_->refreshAll(false));
        settle();
        terminal_.lines.clear();
        terminal_.next = c.run;
        api_.queue("POST", "/companion/accounts/" + c.id + "/login", std::move(c.login));
        auto done = test::start(model_->signIn(account(c.id)));
        settle();
        ASSERT_TRUE(done.done()) << c.name;
        auto note = model_->rowNote.find(c.id);
        EXPECT_EQ(note == model_->rowNote.end() ? std::nullopt : std::optional<std::string>(note->second), c.note) << c.name;
        EXPECT_EQ(model_->waiting.count(c.id) == 1, c.waits) << c.name;
        EXPECT_EQ(terminal_.lines, c.lines) << c.name;
        EXPECT_EQ(model_->signInLine.count(c.id) == 1, c.run.outcome == O::noDisplay && !c.lines.empty()) << c.name;
        EXPECT_FALSE(model_->busy);
    }
}

TEST_F(SignInTest, ATokenLeftWaitingStopsAtTheDeadline) {
    api_.on("POST", "/companion/accounts/a1/portable", Reply::json(200, R"({"state":"waiting"})"));
    api_.on("GET", "/companion/accounts/a1/portable", Reply::json(200, R"({"state":"waiting"})"));
    test::start(model_->refreshAll(false));
    settle();
    const TimePoint began = clock_.now();
    auto done = test::start(model_->makeToken(account("a1")));
    EXPECT_EQ(model_->making.count("a1"), 1u);
    auto again = test::start(model_->makeToken(account("a1")));
    settle();
    ASSERT_TRUE(done.done() && again.done());
    EXPECT_EQ(api_.count("/companion/accounts/a1/portable"), 1u + 160u) << "one start, then a poll every 2 s for 320 s";
    EXPECT_LE(clock_.now() - began, 330s);
    EXPECT_EQ(model_->rowNote["a1"], "No token was made. Try again.");
    EXPECT_EQ(model_->making.count("a1"), 0u);

    api_.queue("GET", "/companion/accounts/a1/portable", Reply::json(200, R"({"state":"failed","message":"  Browser closed. "})"));
    test::start(model_->makeToken(account("a1")));
    settle();
    EXPECT_EQ(model_->rowNote["a1"], "Browser closed.");
}

TEST_F(SignInTest, AutoResumeReadsSavesAndGoesBackOnFailure) {
    struct Case { Reply read; std::optional<bool> value; bool unsupported; std::string note; };
    const char* none = "This Mac's bridge keeps no usage-limit setting.";
    std::vector<Case> cases = {
        {Reply::json(200, R"({"autoResume":true})"), true, false, ""},
        {Reply::json(404, ""), std::nullopt, true, none},
        {Reply::json(503, R"({"message":"x"})"), std::nullopt, true, none},
        {Reply::json(200, R"({"autoResume":"yes"})"), std::nullopt, false, "The switch could not be read."},
        {Reply::json(500, R"({"message":"Broken."})"), std::nullopt, false, "Broken."},
        {Reply::failure(), std::nullopt, false, "The bridge did not answer."},
    };
    for (auto& c : cases) {
        model_ = std::make_unique<Accounts>(api_, clock_, AccountsSetup{{}, "/home/o", &terminal_});
        api_.queue("GET", "/companion/limits", std::move(c.read));
        test::start(model_->readAutoResume());
        settle();
        EXPECT_EQ(model_->autoResume, c.value) << c.note;
        EXPECT_EQ(model_->autoResumeUnsupported, c.unsupported) << c.note;
        EXPECT_EQ(model_->autoResumeNote, c.note);
    }
    model_->autoResume = false;
    api_.queue("POST", "/companion/limits", Reply::json(500, R"({"message":"Read-only."})").after(1s));
    test::start(model_->setAutoResume(true));
    EXPECT_EQ(model_->autoResume, std::optional<bool>(true)) << "shown at once";
    settle();
    EXPECT_EQ(model_->autoResume, std::optional<bool>(false));
    EXPECT_EQ(model_->autoResumeNote, "Not saved. Read-only.");
    api_.queue("POST", "/companion/limits", Reply::json(200, R"({"autoResume":true})"));
    test::start(model_->setAutoResume(true));
    settle();
    EXPECT_EQ(model_->autoResume, std::optional<bool>(true));
    EXPECT_EQ(model_->autoResumeNote, "");
    EXPECT_EQ(Json::parse(*api_.requestsTo("/companion/limits").back().body), Json::parse(R"({"autoResume":true})"));
}

} // namespace
} // namespace orvan
