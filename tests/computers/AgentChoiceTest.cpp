// Which agents go to a computer, and which accounts may follow them: properties over every subset
// of the catalog, and the copy's answers as tables.
#include "computers/AccountCopy.h"
#include "computers/AgentChoice.h"
#include "computers/ReplaceAsk.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

// The five agents and Node.js, so a mask of six bits is one subset.
std::vector<std::string> names() {
    std::vector<std::string> all;
    for (const auto& agent : HostAgent::catalog()) all.push_back(agent.name);
    all.push_back("node");
    return all;
}

std::set<std::string> subset(unsigned mask) {
    std::set<std::string> out;
    const auto all = names();
    for (std::size_t i = 0; i < all.size(); ++i)
        if (mask & (1u << i)) out.insert(all[i]);
    return out;
}

TEST(AgentChoice, RequestPutsNodeFirstExactlyWhenNeededAndKeepsCatalogOrderOverEverySubset) {
    const std::set<std::string> needing{"claude", "codex", "gemini"};
    for (unsigned thereMask = 0; thereMask < 32; ++thereMask) {
        for (bool node : {false, true}) {
            HostAgentsThere there;
            there.node = node;
            for (const auto& name : subset(thereMask)) there.agents.push_back(name);
            for (unsigned chosenMask = 0; chosenMask < 64; ++chosenMask) {
                const auto chosen = subset(chosenMask);
                const auto request = AgentChoice::request(chosen, there);
                SCOPED_TRACE("there " + std::to_string(thereMask) + (node ? "+node" : "") + ", chosen " +
                             std::to_string(chosenMask));
                bool needs = false;
                for (const auto& name : chosen)
                    if (needing.count(name) && !subset(thereMask).count(name)) needs = true;
                EXPECT_EQ(AgentChoice::nodeComes(chosen, there), !node && needs);
                const bool nodeFirst = !node && (needs || chosen.count("node"));
                ASSERT_EQ(!request.empty() && request.front() == "node", nodeFirst);
                // The rest: chosen, not there, in catalog order, each once.
                std::vector<std::string> rest(request.begin() + (nodeFirst ? 1 : 0), request.end());
                std::vector<std::string> expected;
                for (const auto& agent : HostAgent::catalog())
                    if (chosen.count(agent.name) && !subset(thereMask).count(agent.name)) expected.push_back(agent.name);
                EXPECT_EQ(rest, expected);
            }
        }
    }
}

TEST(AgentChoice, LinesBodiesAndSystems) {
    HostAgentsThere there{"linux", {"gemini", "claude"}, false};
    EXPECT_EQ(AgentChoice::line(there), "Agents there: Claude Code, Gemini.");
    EXPECT_EQ(AgentChoice::line(HostAgentsThere{}), "No coding agents there yet.");
    EXPECT_EQ(AgentChoice::request({"codex"}, HostAgentsThere{"linux", {"claude"}, false}),
              (std::vector<std::string>{"node", "codex"}));
    EXPECT_EQ(AgentChoice::body("lab", {"node"}, ""), (Json{{"target", "lab"}, {"agents", {"node"}}}));
    EXPECT_EQ(AgentChoice::body("lab", {}, " pw ")["password"], " pw ");
    for (auto [os, installs] : std::vector<std::pair<std::optional<std::string>, bool>>{
             {"linux", true}, {"darwin", true}, {"freebsd", false}, {"windows", false}, {std::nullopt, false}})
        EXPECT_EQ(AgentChoice::installs(os), installs) << os.value_or("none");
    // Loose: one key of the wrong type loses only itself.
    EXPECT_EQ(decodeJson<HostAgentsThere>(R"({"os":7,"agents":["grok"],"node":"yes"})"),
              (HostAgentsThere{std::nullopt, {"grok"}, false}));
}

CompanionAccount account(std::string id, std::string provider, std::string kind, bool portable = false) {
    CompanionAccount a;
    a.id = std::move(id);
    a.provider = std::move(provider);
    a.label = a.id + " label";
    a.kind = std::move(kind);
    a.portable = portable;
    return a;
}

TEST(AccountCopy, OnlyWhatNeedsNoTokenGoesInListOrder) {
    const std::vector<CompanionAccount> list{account("c1", "claude", "login"), account("x", "codex", "login"),
                                             account("c2", "claude", "login", true), account("k", "claude", "apikey")};
    EXPECT_TRUE(AccountCopy::needsToken(list[0]));
    EXPECT_EQ(AccountCopy::request({"k", "c1", "c2", "x", "gone"}, list), (std::vector<std::string>{"x", "c2", "k"}));
    EXPECT_EQ(AccountCopy::body("lab", {"x"}, false), (Json{{"target", "lab"}, {"accounts", {"x"}}}));
    EXPECT_EQ(AccountCopy::body("lab", {"x"}, true)["replace"], true);

    const std::vector<CompanionAccount> shared{account("a", "codex", "login"), account("b", "codex", "login"),
                                               account("c", "cursor", "login"), account("d", "gemini", "apikey")};
    const auto notes = AccountCopy::sharedNotes({"a", "b", "c", "d"}, shared);
    ASSERT_EQ(notes.size(), 2u) << "one note per distinct text, none for a key";
    EXPECT_NE(notes[0].find("If Codex renews it"), std::string::npos);
    EXPECT_NE(notes[1].find("this becomes the other computer's Cursor sign-in."), std::string::npos);
}

TEST(ReplaceAsk, TheQuestionIsTheBridgesOrNamesTheFirstWaitingAccountsProvider) {
    const std::vector<CompanionAccount> list{account("w", "claude", "login", true), account("g", "grok", "token")};
    struct Case {
        const char* answer;
        std::optional<std::string> question;
        std::vector<std::string> ids;
    } cases[] = {
        {R"({"results":[{"id":"w","copied":true}]})", std::nullopt, {}},
        {R"({"results":[{"id":"g","copied":true},{"id":"w","code":"replaces_login","message":"  "}]})",
         "This replaces the Claude sign-in on Lab.", {"w"}},
        {R"({"results":[{"id":"w","code":"replaces_login","message":" Grok is signed in as ann. "},
                        {"id":"g","code":"replaces_login"}]})",
         "Grok is signed in as ann.", {"w", "g"}},
        {R"({"results":[{"id":"zz","code":"replaces_login"},{"copied":true},7]})", "This replaces the Cursor sign-in on Lab.",
         {"zz"}},
    };
    for (const auto& c : cases) {
        auto answer = decodeJson<AccountCopy::Answer>(c.answer);
        ASSERT_TRUE(answer) << c.answer;
        auto ask = ReplaceAsk::from("lab", "Lab", *answer, list);
        ASSERT_EQ(ask.has_value(), c.question.has_value()) << c.answer;
        if (!ask) continue;
        EXPECT_EQ(ask->question, *c.question);
        EXPECT_EQ(ask->ids, c.ids);
        EXPECT_EQ(ask->target, "lab");
    }
}

} // namespace
} // namespace orvan
