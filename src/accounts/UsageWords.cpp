#include "accounts/UsageWords.h"

#include "foundation/Text.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <regex>
#include <unicode/locid.h>
#include <unicode/unistr.h>

namespace orvan::UsageWords {

namespace {

constexpr double hour = 3600;
constexpr double sixAndAHalfDays = 561'600;

double seconds(TimePoint from, TimePoint to) { return std::chrono::duration<double>(to - from).count(); }

// "%.1f" with a trailing ".0" taken off.
std::string oneDecimal(double value) {
    char buffer[64];
    std::snprintf(buffer, sizeof buffer, "%.1f", value);
    std::string text = buffer;
    if (text.size() > 2 && text.compare(text.size() - 2, 2, ".0") == 0) text.resize(text.size() - 2);
    return text;
}

// ICU puts a narrow no-break space before AM and PM; a plain one reads the same and wraps alike.
std::string plainSpaces(std::string text) {
    const std::string narrow = "\u202F";
    for (auto at = text.find(narrow); at != std::string::npos; at = text.find(narrow, at)) text.replace(at, narrow.size(), " ");
    return text;
}

std::string grouped(long long whole) {
    std::string digits = std::to_string(whole);
    std::string out;
    int count = 0;
    for (auto it = digits.rbegin(); it != digits.rend(); ++it) {
        if (count && count % 3 == 0) out.insert(out.begin(), ',');
        out.insert(out.begin(), *it);
        ++count;
    }
    return out;
}

std::string join(const std::vector<std::string>& parts) {
    std::string out;
    for (const auto& p : parts) out += (out.empty() ? "" : " · ") + p;
    return out;
}

std::vector<std::string> countParts(const UsageCounts& c) {
    std::vector<std::string> parts{turns(c.turns)};
    if (c.tokens > 0) parts.push_back(tokenWords(c.tokens));
    if (c.costUSD && *c.costUSD > 0) parts.push_back(cost(c.costUSD));
    return parts;
}

bool nothingCounted(const UsageCounts& c) { return c.turns == 0 && c.tokens == 0 && !(c.costUSD && *c.costUSD > 0); }

} // namespace

Level level(double p) { return p >= 100 ? Level::full : p >= 80 ? Level::high : Level::room; }

double fraction(double p) {
    if (!std::isfinite(p)) return 0;
    return std::clamp(p / 100, 0.0, 1.0);
}

std::string percent(double value) {
    if (!std::isfinite(value)) return "—";
    double rounded = std::round(value);
    if (rounded == 0 && value > 0) return "<1%";
    return std::to_string(static_cast<long long>(std::max(rounded, 0.0))) + "%";
}

std::optional<PlanMeter> fullest(const std::vector<PlanMeter>& meters) {
    const PlanMeter* best = nullptr;
    for (const auto& m : meters)
        if (!best || m.usedPercent > best->usedPercent) best = &m;
    if (!best) return std::nullopt;
    return *best;
}

std::string plan(const std::string& text) {
    std::string t = Text::trimmed(text);
    if (t.empty()) return t;
    std::string first = Text::prefixCharacters(t, 1), upper;
    icu::UnicodeString::fromUTF8(first).toUpper(icu::Locale::getRoot()).toUTF8String(upper);
    return upper + t.substr(first.size());
}

std::string window(const std::string& name) {
    static const std::regex shape("^([0-9]+)-(hour|day|minute)$");
    std::smatch match;
    if (!std::regex_match(name, match, shape)) return name;
    const std::string unit = match[2].str();
    return match[1].str() + (unit == "hour" ? "h" : unit == "day" ? "d" : "m");
}

std::string tokens(std::int64_t n) {
    if (n < 0) n = 0;
    const double v = static_cast<double>(n);
    if (n <= 999) return std::to_string(n);
    if (n < 9'950) return oneDecimal(v / 1e3) + "K";
    if (n <= 999'499) return std::to_string(std::llround(v / 1e3)) + "K";
    if (n < 9'950'000) return oneDecimal(v / 1e6) + "M";
    if (n <= 999'499'999) return std::to_string(std::llround(v / 1e6)) + "M";
    return oneDecimal(v / 1e9) + "B";
}

std::string tokenWords(std::int64_t n) { return n == 1 ? "1 token" : tokens(n) + " tokens"; }

std::string turns(int n) { return n == 1 ? "1 turn" : std::to_string(n) + " turns"; }

std::string cost(std::optional<double> value) {
    if (!value || !std::isfinite(*value) || *value <= 0) return "$0.00";
    if (*value < 0.01) return "<$0.01";
    if (*value < 1000) {
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, "$%.2f", *value);
        return buffer;
    }
    return "$" + grouped(std::llround(*value));
}

std::string duration(std::int64_t ms) {
    if (ms < 0) ms = 0;
    if (ms < 60'000) return std::to_string(ms / 1000) + " s";
    if (ms < 3'600'000) return std::to_string(ms / 60'000) + " min";
    const std::int64_t h = ms / 3'600'000, m = (ms % 3'600'000) / 60'000;
    if (ms < 36'000'000 && m > 0) return std::to_string(h) + " h " + std::to_string(m) + " min";
    return std::to_string(h) + " h";
}

std::optional<std::string> resets(std::optional<TimePoint> date, TimePoint now, const AccountWords::Place& place) {
    if (!date) return std::nullopt;
    const double ahead = seconds(now, *date);
    if (ahead <= 0) return std::string("has reset");
    if (ahead < hour) return "resets in " + std::to_string(static_cast<long long>(std::ceil(ahead / 60))) + " min";
    const char* skeleton = AccountWords::sameDay(*date, now, place) ? "jmm" : ahead < sixAndAHalfDays ? "EEEjmm" : "MMMd";
    return "resets " + plainSpaces(AccountWords::formatted(*date, place, skeleton));
}

std::optional<std::string> checked(const std::optional<std::string>& text, TimePoint now,
                                   const AccountWords::Place& place) {
    if (!text) return std::nullopt;
    auto when = AccountWords::date(*text);
    if (!when) return std::nullopt;
    const double age = seconds(*when, now);
    if (age < 60) return std::string("Checked just now");
    if (age < hour) return "Checked " + std::to_string(static_cast<long long>(age / 60)) + " min ago";
    if (age < 86'400) return "Checked " + std::to_string(static_cast<long long>(age / hour)) + " h ago";
    return "Checked " + plainSpaces(AccountWords::formatted(*when, place, "MMMd"));
}

std::string meterLine(const PlanMeter& meter, TimePoint now, const AccountWords::Place& place) {
    std::vector<std::string> parts{percent(meter.usedPercent)};
    std::optional<TimePoint> at = meter.resetsAt ? AccountWords::date(*meter.resetsAt) : std::nullopt;
    if (auto words = resets(at, now, place)) parts.push_back(*words);
    return join(parts);
}

std::string inOut(const UsageTally& t) { return tokens(t.inputTokens) + " in · " + tokens(t.outputTokens) + " out"; }

std::string tally(const UsageTally& t) { return "AWS, last " + t.name + ": " + inOut(t); }

std::string counts(const UsageCounts& c) {
    if (nothingCounted(c)) return "No direct threads";
    return join(countParts(c));
}

std::optional<std::string> week(const UsageCounts& c) {
    if (nothingCounted(c)) return std::nullopt;
    return "This week: " + join(countParts(c));
}

std::string day(const std::string& text, TimePoint now, const AccountWords::Place& place) {
    auto noon = AccountWords::calendarDay(text, place);
    if (!noon) return text;
    if (AccountWords::sameDay(*noon, now, place)) return "Today";
    if (AccountWords::sameDay(*noon + std::chrono::hours(24), now, place)) return "Yesterday";
    return plainSpaces(AccountWords::formatted(*noon, place, "EEEMMMd"));
}

std::string limit(const UsageLimitHit& hit, TimePoint now, const AccountWords::Place& place) {
    auto at = AccountWords::date(hit.at);
    std::vector<std::string> parts;
    if (at) parts.push_back(plainSpaces(AccountWords::formatted(*at, place, "jmm")));
    std::optional<TimePoint> reset = hit.resetsAt ? AccountWords::date(*hit.resetsAt) : std::nullopt;
    if (reset && *reset <= now) {
        parts.push_back("reset " + plainSpaces(AccountWords::formatted(*reset, place, AccountWords::sameDay(*reset, now, place) ? "jmm" : "MMMdjmm")));
    } else if (auto words = resets(reset, now, place)) {
        parts.push_back(*words);
    }
    if (parts.empty()) return hit.at;
    return join(parts);
}

} // namespace orvan::UsageWords
