#include "accounts/AccountWords.h"

#include "accounts/AccountHome.h"
#include "accounts/AccountProvider.h"
#include "accounts/ReadinessWords.h"
#include "foundation/Text.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <tuple>
#include <unicode/calendar.h>
#include <unicode/dtptngen.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

namespace orvan::AccountWords {

namespace {

constexpr double sixDays = 518'400;

double icuMillis(TimePoint when) {
    return static_cast<double>(std::chrono::duration_cast<std::chrono::milliseconds>(when.time_since_epoch()).count());
}

icu::TimeZone* zone(const std::string& id) {
    return id.empty() ? icu::TimeZone::createDefault() : icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(id));
}

// Pattern generators and formatters are slow to make and a list repeats the same three forms, so
// each (locale, zone, template) is made once per thread.
icu::SimpleDateFormat* formatter(const Place& place, const char* skeleton) {
    using Key = std::tuple<std::string, std::string, std::string>;
    thread_local std::map<Key, std::unique_ptr<icu::SimpleDateFormat>> made;
    Key key{place.locale, place.timeZone, skeleton};
    auto found = made.find(key);
    if (found != made.end()) return found->second.get();
    UErrorCode error = U_ZERO_ERROR;
    icu::Locale locale(place.locale.c_str());
    std::unique_ptr<icu::DateTimePatternGenerator> generator(icu::DateTimePatternGenerator::createInstance(locale, error));
    if (U_FAILURE(error)) return nullptr;
    icu::UnicodeString pattern = generator->getBestPattern(icu::UnicodeString(skeleton, -1, US_INV), error);
    if (U_FAILURE(error)) return nullptr;
    auto format = std::make_unique<icu::SimpleDateFormat>(pattern, locale, error);
    if (U_FAILURE(error)) return nullptr;
    format->adoptTimeZone(zone(place.timeZone));
    return made.emplace(key, std::move(format)).first->second.get();
}

// Calendars are slow to make; one per (locale, zone) serves every question on this thread.
icu::Calendar* calendarFor(const Place& place) {
    thread_local std::map<std::pair<std::string, std::string>, std::unique_ptr<icu::Calendar>> calendars;
    auto& calendar = calendars[{place.locale, place.timeZone}];
    if (!calendar) {
        UErrorCode error = U_ZERO_ERROR;
        calendar.reset(icu::Calendar::createInstance(zone(place.timeZone), icu::Locale(place.locale.c_str()), error));
        if (U_FAILURE(error)) calendar.reset();
    }
    return calendar.get();
}

bool sameCalendarDay(TimePoint a, TimePoint b, const Place& place) {
    icu::Calendar* calendar = calendarFor(place);
    if (!calendar) return false;
    UErrorCode error = U_ZERO_ERROR;
    calendar->setTime(icuMillis(a), error);
    int32_t yearA = calendar->get(UCAL_EXTENDED_YEAR, error), dayA = calendar->get(UCAL_DAY_OF_YEAR, error);
    calendar->setTime(icuMillis(b), error);
    int32_t yearB = calendar->get(UCAL_EXTENDED_YEAR, error), dayB = calendar->get(UCAL_DAY_OF_YEAR, error);
    return U_SUCCESS(error) && yearA == yearB && dayA == dayB;
}

// The start of the user's calendar day that holds `when`, moved by `days`.
std::optional<TimePoint> dayStart(TimePoint when, int days, const Place& place) {
    icu::Calendar* calendar = calendarFor(place);
    if (!calendar) return std::nullopt;
    UErrorCode error = U_ZERO_ERROR;
    calendar->setTime(icuMillis(when), error);
    calendar->set(UCAL_HOUR_OF_DAY, 0);
    calendar->set(UCAL_MINUTE, 0);
    calendar->set(UCAL_SECOND, 0);
    calendar->set(UCAL_MILLISECOND, 0);
    if (days) calendar->add(UCAL_DATE, days, error);
    UDate start = calendar->getTime(error);
    if (U_FAILURE(error)) return std::nullopt;
    return TimePoint(std::chrono::duration_cast<TimePoint::duration>(std::chrono::milliseconds(static_cast<long long>(start))));
}

std::string localeId(std::string value) {
    for (char cut : {'.', '@'})
        if (auto at = value.find(cut); at != std::string::npos) value.resize(at);
    if (value.empty() || value == "C" || value == "POSIX") return "en_US";
    return value;
}

std::string threadWords(int threads) {
    if (threads == 1) return " A running thread uses it; once it is removed, that thread cannot resume on it.";
    if (threads < 2) return "";
    // Appended piece by piece: GCC 12 warns falsely on a literal + std::to_string(...) chain.
    std::string words = " ";
    words += std::to_string(threads);
    words += " running threads use it; once it is removed, they cannot resume on it.";
    return words;
}

} // namespace

std::string formatted(TimePoint when, const Place& place, const char* skeleton) {
    // Every frame words the same few reset and check times again; ICU is asked once for each.
    using Key = std::tuple<long long, std::string, std::string, std::string>;
    thread_local std::map<Key, std::string> said;
    const auto millis = std::chrono::duration_cast<std::chrono::milliseconds>(when.time_since_epoch()).count();
    Key key{millis, place.locale, place.timeZone, skeleton};
    if (auto found = said.find(key); found != said.end()) return found->second;
    icu::SimpleDateFormat* format = formatter(place, skeleton);
    if (!format) return "";
    icu::UnicodeString out;
    format->format(icuMillis(when), out);
    std::string text;
    out.toUTF8String(text);
    if (said.size() >= 256) said.clear();
    said.emplace(std::move(key), text);
    return text;
}

bool sameDay(TimePoint a, TimePoint b, const Place& place) { return orvan::AccountWords::sameCalendarDay(a, b, place); }

std::optional<TimePoint> calendarDay(const std::string& text, const Place& place) {
    int year = 0, month = 0, day = 0;
    char tail = 0;
    if (text.size() != 10 || text[4] != '-' || text[7] != '-' ||
        std::sscanf(text.c_str(), "%4d-%2d-%2d%c", &year, &month, &day, &tail) != 3)
        return std::nullopt;
    for (std::size_t i : {0u, 1u, 2u, 3u, 5u, 6u, 8u, 9u})
        if (text[i] < '0' || text[i] > '9') return std::nullopt;
    UErrorCode error = U_ZERO_ERROR;
    std::unique_ptr<icu::Calendar> calendar(icu::Calendar::createInstance(zone(place.timeZone), icu::Locale("en_US_POSIX"), error));
    if (U_FAILURE(error)) return std::nullopt;
    calendar->setLenient(false);
    calendar->clear();
    calendar->set(year, month - 1, day, 12, 0, 0);
    UDate noon = calendar->getTime(error);
    if (U_FAILURE(error)) return std::nullopt;
    return TimePoint(std::chrono::duration_cast<TimePoint::duration>(std::chrono::milliseconds(static_cast<long long>(noon))));
}

std::optional<std::string> readinessDetail(const std::string& status, const std::string& provider,
                                           const std::string& kind) {
    return ReadinessWords::detail(status, provider, kind, ReadinessWords::ReadinessPlace{});
}

Place placeFrom(const Environment& environment) {
    Place place;
    for (const char* name : {"LC_ALL", "LC_TIME", "LANG"}) {
        auto found = environment.find(name);
        if (found != environment.end() && !found->second.empty()) {
            place.locale = localeId(found->second);
            break;
        }
    }
    return place;
}

std::string kind(const std::string& kind) {
    if (kind == "apikey") return "API key";
    if (kind == "token") return "Sign-in token";
    if (kind == "bedrock") return "Amazon Bedrock";
    return "Sign-in";
}

std::string kindLine(const CompanionAccount& account) {
    std::string word = kind(account.kind);
    if (account.isBedrock() && account.bedrock) {
        std::string region = Text::trimmed(account.bedrock->region);
        if (!region.empty()) return word + " · " + region;
    }
    return word;
}

std::string bedrockModel(const CompanionAccount& account) {
    if (!account.isBedrock()) return "";
    std::string model = account.bedrock ? Text::trimmed(account.bedrock->model) : std::string();
    return model.empty() ? std::string("Model: Claude Code's default") : "Model: " + model;
}

std::string position(const std::string& id, const std::vector<std::string>& chain) {
    auto found = std::find(chain.begin(), chain.end(), id);
    if (found == chain.end()) return "Not in fallback";
    return "Fallback " + std::to_string(found - chain.begin() + 1);
}

std::string detail(const CompanionAccount& account, const std::vector<std::string>& chain) {
    return AccountProviders::name(account.provider) + " · " + kindLine(account) + " · " + position(account.id, chain);
}

std::string keyButton(const CompanionAccount& account) {
    bool missing = account.status == "missing_key";
    if (account.isBedrock() && account.bedrock && account.bedrock->auth == "keys")
        return missing ? "Add access keys…" : "Replace access keys…";
    return missing ? "Add key…" : "Replace key…";
}

std::string time(TimePoint when, TimePoint now, const Place& place) {
    const char* skeleton = "MMMdjmm";
    double ahead = std::chrono::duration<double>(when - now).count();
    if (sameDay(when, now, place)) skeleton = "jmm";
    else if (ahead > 0 && ahead < sixDays) skeleton = "EEEjmm";
    icu::SimpleDateFormat* format = formatter(place, skeleton);
    if (!format) return RFC3339::string(when);
    icu::UnicodeString out;
    format->format(icuMillis(when), out);
    std::string text;
    out.toUTF8String(text);
    return text;
}

std::string status(const std::string& status, const std::string& until, const std::string& kind, TimePoint now,
                   const Place& place) {
    std::optional<std::string> limitedUntil;
    if (status == "limited")
        if (auto when = date(until)) limitedUntil = time(*when, now, place);
    std::string label = ReadinessWords::label(status, kind, limitedUntil);
    // No text of 60 bytes or fewer holds more than 60 characters, so most labels skip the count.
    if (label.size() > statusLabelLimit && Text::characterCount(label) > statusLabelLimit) return Text::prefixCharacters(label, statusLabelLimit) + "…";
    return label;
}

std::optional<TimePoint> statusChangesAt(const std::string& status, const std::string& until, TimePoint now,
                                         const Place& place) {
    if (status != "limited") return std::nullopt;
    auto when = date(until);
    if (!when) return std::nullopt;
    std::optional<TimePoint> first;
    auto consider = [&](std::optional<TimePoint> moment) {
        if (moment && *moment > now && (!first || *moment < *first)) first = moment;
    };
    // Six days ahead starts the weekday form; its day starts the time alone; the next day ends it.
    consider(*when - std::chrono::seconds(static_cast<long long>(sixDays)) + std::chrono::seconds(1));
    consider(dayStart(*when, 0, place));
    consider(dayStart(*when, 1, place));
    return first;
}

std::string removal(const CompanionAccount& account, const std::string& accountsFolder, const std::string& userHome) {
    std::string sentence;
    if (account.isToken()) {
        sentence = "Forgets this account. Its token is deleted from the Keychain.";
    } else if (account.isBedrock()) {
        sentence = account.bedrockKeyed() ? "Forgets this account. Its AWS credentials are deleted from the Keychain."
                                          : "Forgets this account. The AWS profile stays in this Mac's AWS settings.";
    } else if (account.kind == "apikey") {
        sentence = "Forgets this account. Its API key is deleted from the Keychain.";
    } else {
        sentence = AccountHome::made(account, accountsFolder)
                       ? std::string("Forgets this account. Its sign-in folder is deleted.")
                       : "Forgets this account. The login in " + AccountHome::line(account, userHome) +
                             " stays on this Mac.";
        if (account.portable) sentence += " Its token for other computers is deleted too.";
    }
    return sentence + threadWords(account.threads);
}

} // namespace orvan::AccountWords
