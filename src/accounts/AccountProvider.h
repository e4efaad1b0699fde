#pragma once
// The agents whose accounts the bridge keeps. A provider the program doesn't know stays a plain
// string on its row; the functions that take a string tell such a provider as well as they can.

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace orvan {

enum class AccountProvider { claude, codex, grok, cursor, gemini };

namespace AccountProviders {
inline constexpr std::array<AccountProvider, 5> all = {AccountProvider::claude, AccountProvider::codex,
                                                        AccountProvider::grok, AccountProvider::cursor,
                                                        AccountProvider::gemini};

// Lower-cases first, so "Claude" is claude.
std::optional<AccountProvider> parse(std::string_view text);
std::string raw(AccountProvider provider);
std::string name(AccountProvider provider);
std::string mark(AccountProvider provider);
std::string symbol(AccountProvider provider);
std::string defaultHome(AccountProvider provider);
bool takesNewLogin(AccountProvider provider);

// A known provider's name; an unknown one with its first character upper-cased; "Agent" for none.
std::string name(std::string_view provider);
// "mark-bedrock" for any Bedrock row; the case's mark otherwise; none for an unknown provider.
std::optional<std::string> mark(std::string_view provider, std::string_view kind);
} // namespace AccountProviders

} // namespace orvan
