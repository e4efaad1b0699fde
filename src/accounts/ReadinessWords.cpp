#include "accounts/ReadinessWords.h"

#include "foundation/Text.h"

#include <algorithm>
#include <array>
#include <unicode/locid.h>
#include <unicode/unistr.h>

namespace orvan::ReadinessWords {

namespace {
std::string lowered(const std::string& text) {
    std::string out;
    icu::UnicodeString::fromUTF8(text).toLower(icu::Locale::getRoot()).toUTF8String(out);
    return out;
}

std::string firstUpper(const std::string& text) {
    if (text.empty()) return text;
    std::string first = Text::prefixCharacters(text, 1);
    std::string upper;
    icu::UnicodeString::fromUTF8(first).toUpper(icu::Locale::getRoot()).toUTF8String(upper);
    return upper + text.substr(first.size());
}

constexpr std::array<std::string_view, 8> knownLabels = {
    "ready", "needs sign-in", "no key yet", "no aws credentials yet",
    "profile not found", "not installed", "limited", "not checked yet"};
} // namespace

std::string label(std::string_view status, std::string_view kind, const std::optional<std::string>& limitedUntil) {
    if (status == "ready") return "Ready";
    if (status == "needs_login") return "Needs sign-in";
    if (status == "missing_key") return kind == "bedrock" ? "No AWS credentials yet" : "No key yet";
    if (status == "missing_profile") return "Profile not found";
    if (status == "not_installed") return "Not installed";
    if (status == "limited") return limitedUntil ? "Limited until " + *limitedUntil : std::string("Limited");
    if (status.empty()) return "Not checked yet";
    std::string spaced(status);
    std::replace(spaced.begin(), spaced.end(), '_', ' ');
    std::string shown = firstUpper(Text::trimmed(spaced));
    std::string lower = lowered(shown);
    if (std::find(knownLabels.begin(), knownLabels.end(), lower) != knownLabels.end()) return "Unknown status";
    return shown;
}

} // namespace orvan::ReadinessWords

namespace orvan::ReadinessWords {

std::string ReadinessPlace::phrase() const {
    switch (kind) {
    case Kind::thisMac: return "this Mac";
    case Kind::unknown: return "this computer";
    case Kind::computer: {
        std::string trimmed = Text::trimmed(name);
        return trimmed.empty() ? std::string("this computer") : trimmed;
    }
    }
    return "this computer";
}

std::optional<std::string> detail(std::string_view status, std::string_view provider, std::string_view,
                                  const ReadinessPlace& place) {
    const std::string where = place.phrase();
    if (status == "not_installed") {
        if (provider == "claude") return "Needs Node.js (npx) on " + where + ".";
        std::string spaced(provider);
        std::replace(spaced.begin(), spaced.end(), '_', ' ');
        std::string name = firstUpper(Text::trimmed(spaced));
        if (name.empty()) return "Needs its command on " + where + ".";
        return "Needs the " + name + " command on " + where + ".";
    }
    if (status == "needs_login") return "Sign in on " + where + ".";
    if (status == "missing_key") return "Add it in Accounts on " + where + ".";
    if (status == "missing_profile") return "That AWS profile is not on " + where + ".";
    return std::nullopt;
}

} // namespace orvan::ReadinessWords

namespace orvan::ReadinessFreshness {

Freshness freshness(const std::optional<std::string>& checked, TimePoint now) {
    if (!checked || checked->empty()) return Freshness::unknown;
    // Something like a time: a date, a "T", and digits around it.
    if (checked->size() < 20 || (*checked)[4] != '-' || (*checked)[10] != 'T') return Freshness::unknown;
    auto when = AccountWords::date(*checked);
    if (!when) return Freshness::unknown;
    const double age = std::chrono::duration<double>(now - *when).count();
    if (age < 0) return Freshness::unknown;
    if (age <= freshSeconds) return Freshness::fresh;
    if (age <= retainedSeconds) return Freshness::stale;
    return Freshness::unknown;
}

} // namespace orvan::ReadinessFreshness
