#include "accounts/AccountProvider.h"

#include "foundation/Text.h"

#include <unicode/locid.h>
#include <unicode/unistr.h>

namespace orvan::AccountProviders {

namespace {
struct Facts {
    AccountProvider provider;
    const char* raw;
    const char* name;
    const char* mark;
    const char* symbol;
    const char* defaultHome;
    bool takesNewLogin;
};

constexpr Facts table[] = {
    {AccountProvider::claude, "claude", "Claude", "mark-claude", "text.bubble", "~/.claude", true},
    {AccountProvider::codex, "codex", "Codex", "mark-codex", "chevron.left.forwardslash.chevron.right", "~/.codex",
     true},
    {AccountProvider::grok, "grok", "Grok", "mark-grok", "bolt.horizontal", "~/.grok", true},
    {AccountProvider::cursor, "cursor", "Cursor", "mark-cursor", "cursorarrow.rays", "Cursor's own sign-in", false},
    {AccountProvider::gemini, "gemini", "Gemini", "mark-gemini", "sparkles", "~/.gemini", true},
};

const Facts& facts(AccountProvider provider) { return table[static_cast<int>(provider)]; }
} // namespace

std::optional<AccountProvider> parse(std::string_view text) {
    std::string lower;
    lower.reserve(text.size());
    for (char c : text) lower.push_back(c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c);
    for (const auto& f : table)
        if (lower == f.raw) return f.provider;
    return std::nullopt;
}

std::string raw(AccountProvider p) { return facts(p).raw; }
std::string name(AccountProvider p) { return facts(p).name; }
std::string mark(AccountProvider p) { return facts(p).mark; }
std::string symbol(AccountProvider p) { return facts(p).symbol; }
std::string defaultHome(AccountProvider p) { return facts(p).defaultHome; }
bool takesNewLogin(AccountProvider p) { return facts(p).takesNewLogin; }

std::string name(std::string_view provider) {
    if (auto known = parse(provider)) return name(*known);
    if (provider.empty()) return "Agent";
    // The first user-perceived character, upper-cased as the locale-free rules say.
    std::string first = Text::prefixCharacters(provider, 1);
    std::string upper;
    icu::UnicodeString::fromUTF8(first).toUpper(icu::Locale::getRoot()).toUTF8String(upper);
    return upper + std::string(provider.substr(first.size()));
}

std::optional<std::string> mark(std::string_view provider, std::string_view kind) {
    if (kind == "bedrock") return std::string("mark-bedrock");
    if (auto known = parse(provider)) return mark(*known);
    return std::nullopt;
}

} // namespace orvan::AccountProviders
