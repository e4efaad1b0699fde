#pragma once
// The command the bridge hands over for a sign-in, and the words of running it in a terminal.

#include "accounts/CompanionAccount.h"
#include "foundation/Json.h"
#include "platform/Terminal.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvan {

struct LoginCommand {
    std::vector<std::string> argv;
    std::map<std::string, std::string> env;

    bool operator==(const LoginCommand&) const = default;
    // A login in a folder of its own needs the environment that names the folder; without it the
    // command would sign in the default login instead.
    bool fits(const CompanionAccount& account) const;
    // `argv` is required, a list of text; `env` optional, an object of text.
    static std::optional<LoginCommand> decode(const Json& j);
};

namespace TerminalWindow {
inline constexpr const char* notOpened = "Terminal could not be opened.";
inline constexpr const char* notAllowed =
    "macOS did not let the companion use Terminal. Allow it in System Settings, Privacy & Security, Automation, then "
    "try again.";
inline constexpr const char* failed = "Terminal did not open the sign-in.";
// Nothing when the terminal opened.
std::optional<std::string> sentence(const TerminalRun& run);
} // namespace TerminalWindow

} // namespace orvan
