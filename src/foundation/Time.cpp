#include "foundation/Time.h"

#include <cstdint>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

namespace orvan {

namespace {

using namespace std::chrono;

struct Cursor {
    std::string_view s;
    size_t i = 0;

    bool atEnd() const { return i == s.size(); }
    bool take(char c) {
        if (i < s.size() && s[i] == c) {
            ++i;
            return true;
        }
        return false;
    }
    bool takeAnyOf(std::string_view set, char& got) {
        if (i < s.size() && set.find(s[i]) != std::string_view::npos) {
            got = s[i++];
            return true;
        }
        return false;
    }
    bool digits(int count, int& out) {
        int v = 0;
        for (int k = 0; k < count; ++k) {
            if (i >= s.size() || s[i] < '0' || s[i] > '9') return false;
            v = v * 10 + (s[i++] - '0');
        }
        out = v;
        return true;
    }
};

bool leap(int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; }

int daysIn(int y, int m) {
    static const int days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return (m == 2 && leap(y)) ? 29 : days[m - 1];
}

// The internet date-time form, with or without a fractional part as asked.
std::optional<TimePoint> internetDateTime(std::string_view text, bool fractional) {
    Cursor c{text};
    int y, mo, d, h, mi, sec;
    if (!c.digits(4, y) || !c.take('-') || !c.digits(2, mo) || !c.take('-') || !c.digits(2, d)) return std::nullopt;
    if (!c.take('T')) return std::nullopt;
    if (!c.digits(2, h) || !c.take(':') || !c.digits(2, mi) || !c.take(':') || !c.digits(2, sec)) return std::nullopt;
    if (mo < 1 || mo > 12 || d < 1 || d > daysIn(y, mo) || h > 23 || mi > 59 || sec > 59) return std::nullopt;

    nanoseconds fraction{0};
    if (fractional) {
        if (!c.take('.')) return std::nullopt;
        // Kept to the millisecond, as the bridge's readers have always done; further digits are read
        // and dropped.
        int64_t scale = 100'000'000;
        size_t start = c.i;
        while (c.i < text.size() && text[c.i] >= '0' && text[c.i] <= '9') {
            if (scale >= 1'000'000) fraction += nanoseconds((text[c.i] - '0') * scale);
            scale /= 10;
            ++c.i;
        }
        if (c.i == start) return std::nullopt;
    }

    seconds offset{0};
    char sign = 0;
    if (c.take('Z')) {
    } else if (c.takeAnyOf("+-", sign)) {
        int oh, om;
        if (!c.digits(2, oh)) return std::nullopt;
        c.take(':');
        if (!c.digits(2, om) || oh > 23 || om > 59) return std::nullopt;
        offset = hours(oh) + minutes(om);
        if (sign == '-') offset = -offset;
    } else {
        return std::nullopt;
    }
    if (!c.atEnd()) return std::nullopt;

    sys_days day = year{y} / month{static_cast<unsigned>(mo)} / std::chrono::day{static_cast<unsigned>(d)};
    sys_seconds at = sys_seconds(day) + hours(h) + minutes(mi) + seconds(sec) - offset;
    // A point in time is kept in nanoseconds, which reach about 292 years either side of 1970; a
    // date beyond that can't be held, so it reads as no date at all.
    constexpr auto reach = duration_cast<seconds>(system_clock::duration::max()) - seconds(1);
    if (at.time_since_epoch() > reach || at.time_since_epoch() < -reach) return std::nullopt;
    return time_point_cast<system_clock::duration>(at) + duration_cast<system_clock::duration>(fraction);
}

// Removes every "." followed by one or more decimal digits (any script's), as a pattern "\.\d+" would.
std::string withoutFractions(std::string_view text) {
    std::string out;
    size_t i = 0;
    while (i < text.size()) {
        if (text[i] == '.') {
            int32_t j = static_cast<int32_t>(i + 1);
            int32_t end = j;
            while (end < static_cast<int32_t>(text.size())) {
                int32_t at = end;
                UChar32 ch;
                U8_NEXT(reinterpret_cast<const uint8_t*>(text.data()), at, static_cast<int32_t>(text.size()), ch);
                if (ch < 0 || u_charType(ch) != U_DECIMAL_DIGIT_NUMBER) break;
                end = at;
            }
            if (end > j) {
                i = static_cast<size_t>(end);
                continue;
            }
        }
        out += text[i++];
    }
    return out;
}

} // namespace

std::optional<TimePoint> AccountWords::date(std::string_view text) {
    if (text.empty()) return std::nullopt;
    if (auto t = internetDateTime(text, false)) return t;
    if (auto t = internetDateTime(text, true)) return t;
    return internetDateTime(withoutFractions(text), false);
}

std::string RFC3339::string(TimePoint when) {
    auto secs = floor<seconds>(when);
    auto day = floor<days>(secs);
    year_month_day ymd{day};
    hh_mm_ss<seconds> tod{secs - day};
    char buf[32];
    std::snprintf(buf, sizeof buf, "%04d-%02u-%02uT%02ld:%02ld:%02lldZ", static_cast<int>(ymd.year()),
                  static_cast<unsigned>(ymd.month()), static_cast<unsigned>(ymd.day()),
                  static_cast<long>(tod.hours().count()), static_cast<long>(tod.minutes().count()),
                  static_cast<long long>(tod.seconds().count()));
    return buf;
}

} // namespace orvan
