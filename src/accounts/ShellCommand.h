#pragma once
// The one line a terminal runs for a sign-in, built from the command the bridge handed over. The
// bridge is trusted to name the command, not to write shell: every word is quoted, and anything a
// quote can't make harmless is refused.

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace orvan::ShellCommand {

// An environment name a shell takes in `NAME=value`: an ASCII letter or "_", then letters, digits or "_".
bool isName(const std::string& name);
// Single quotes around the text, each "'" inside written as "'\''".
std::string quote(const std::string& text);
// `NAME='value' ... 'arg' 'arg'`, names sorted; absent for an empty command, a first argument
// that is empty or starts with "-", a control character anywhere, or a bad name.
std::optional<std::string> line(const std::vector<std::string>& argv, const std::map<std::string, std::string>& env);

} // namespace orvan::ShellCommand

namespace orvan::AppleScriptText {
std::string literal(const std::string& text);
std::string terminal(const std::string& runningLine);
} // namespace orvan::AppleScriptText
