#pragma once
// Agents' sign-ins on the added computers, as the simulator plays them. Each agent has a way of
// its own: Claude shows a page and a code to enter there and finishes by itself a few seconds
// later; Codex shows a page and waits for the code that page gives to be pasted back; Gemini's
// sign-in fails; Grok's never finishes; Cursor can't sign in without a screen there. Not
// thread-safe: the server holds its lock.

#include "Reply.h"
#include "Rfc3339.h"

#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>

namespace orvan::sim {

struct SimSignIn {
    TimePoint started;
    // When a pasted code was taken.
    std::optional<TimePoint> codeTaken;
    bool canceled = false;
};

struct SignInState {
    // Claude's page waits this long for the owner, then checks for as long again.
    static constexpr double pageSeconds = 5.0;
    static constexpr double verifySeconds = 2.0;
    // Gemini gives up after this long.
    static constexpr double failSeconds = 3.0;
    static constexpr const char* claudeCode = "KQ7M-2XPD";
    // The one code Codex's page "shows".
    static constexpr const char* codexCode = "cdx-5521-orchid";

    // By target, then tool.
    std::map<std::pair<std::string, std::string>, SimSignIn> running;

    Reply tools(const nlohmann::json& body, TimePoint now);
    Reply start(const nlohmann::json& body, TimePoint now);
    Reply read(const nlohmann::json& body, TimePoint now);
    Reply code(const nlohmann::json& body, TimePoint now);
    Reply cancel(const nlohmann::json& body, TimePoint now);

private:
    nlohmann::json stateOf(const std::string& target, const std::string& tool, TimePoint now) const;
};

} // namespace orvan::sim
