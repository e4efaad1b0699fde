#pragma once
// The environment the program consults, read through one function that also honours
// the names the variables bore before the program was renamed.

#include <map>
#include <optional>
#include <string>

namespace orvan {

using Environment = std::map<std::string, std::string>;

namespace Carryover {

// A snapshot of this process's environment.
Environment processEnvironment();

// Current name to the name it bore before.
const std::map<std::string, std::string>& oldVariables();

// The value of `name`, else of its old name; an empty value counts as unset at both steps.
std::optional<std::string> env(const std::string& name, const Environment& environment);
std::optional<std::string> env(const std::string& name);

} // namespace Carryover
} // namespace orvan
