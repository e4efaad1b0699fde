#pragma once
// The words and the checks of an agent's sign-in on another computer. What the computer hands
// back is not trusted: only an https page with a host and no credentials in it is ever opened,
// and only a short, printable code ever leaves for it.

#include "computers/HostSignInState.h"
#include "computers/HostSignInTool.h"
#include "foundation/Json.h"
#include "foundation/Time.h"

#include <optional>
#include <string>

namespace orvan::HostSignIn {

using namespace std::chrono_literals;

// Between two reads of a running sign-in, and how long one may run before the sheet gives up.
inline constexpr Duration poll = 2s;
inline constexpr Duration wait = 630s;
inline constexpr std::size_t codeBytes = 1000;

std::string title(const std::string& tool);
// The page as it is opened, or none.
std::optional<std::string> page(const std::string& text);
// The pasted code as it is sent, or none.
std::optional<std::string> cleanCode(const std::string& text);

std::string heading(const std::string& name);
std::string intro(const std::string& name);
// Under a tool's name; `running` is its running state, if any.
std::string line(const HostSignInTool& tool, const std::optional<HostSignInState>& running);
std::string steps(const HostSignInState& state);
std::string verifying(const std::string& tool);
std::string result(const HostSignInState& state, const std::string& tool, const std::string& computer);
std::string startHelp(const std::string& tool, const std::string& name);
// The body of the sign-in calls: the computer, the tool when one is named, and a code when one is sent.
Json body(const std::string& target, const std::string& tool, const std::optional<std::string>& code = std::nullopt);

} // namespace orvan::HostSignIn
