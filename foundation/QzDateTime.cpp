#include "QzDateTime.h"

#include <cstdio>
#include <string>

#include <time.h>

#include "QzDate.h"
#include "QzLocale.h"
#include "QzLocaleSnapshot.h"
#include "QzZone.h"

namespace {

constexpr std::int64_t MsPerSecond = 1000;
constexpr std::int64_t SecondsPerDay = 86400;
constexpr std::int64_t MsPerDay = SecondsPerDay * MsPerSecond;

constexpr std::int64_t floorDiv(std::int64_t a, std::int64_t b) noexcept {
    return a / b - (a % b < 0 ? 1 : 0);
}

// Days since 1970-01-01 of a proleptic Gregorian date (H. Hinnant's days_from_civil).
constexpr std::int64_t daysFromCivil(std::int64_t year, unsigned month, unsigned day) noexcept {
    year -= month <= 2 ? 1 : 0;
    const std::int64_t era = floorDiv(year, 400);
    const auto yearOfEra = static_cast<unsigned>(year - era * 400);
    const unsigned dayOfYear = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
    const unsigned dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * 146097 + dayOfEra - 719468;
}

// Valid instants are those of years 0..9999 in UTC, so that the UTC fields always fit.
bool inRange(std::int64_t ms) noexcept {
    constexpr std::int64_t First = daysFromCivil(0, 1, 1) * MsPerDay;
    constexpr std::int64_t End = daysFromCivil(10000, 1, 1) * MsPerDay;
    return ms >= First && ms < End;
}

struct WallClock {
    std::int64_t days;  // since 1970-01-01
    std::int64_t year;
    unsigned month, day, hour, minute, second, millisecond;
};

// Breaks a count of milliseconds since 1970-01-01T00:00:00 into calendar fields
// (H. Hinnant's civil_from_days for the date).
WallClock wallClock(std::int64_t ms) noexcept {
    WallClock c{};
    c.days = floorDiv(ms, MsPerDay);
    const auto msOfDay = static_cast<unsigned>(ms - c.days * MsPerDay);
    c.hour = msOfDay / 3600000;
    c.minute = msOfDay / 60000 % 60;
    c.second = msOfDay / 1000 % 60;
    c.millisecond = msOfDay % 1000;

    const std::int64_t shifted = c.days + 719468;  // days since 0000-03-01
    const std::int64_t era = floorDiv(shifted, 146097);
    const auto dayOfEra = static_cast<unsigned>(shifted - era * 146097);
    const unsigned yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const unsigned monthFromMarch = (5 * dayOfYear + 2) / 153;
    c.day = dayOfYear - (153 * monthFromMarch + 2) / 5 + 1;
    c.month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    c.year = era * 400 + yearOfEra + (c.month <= 2 ? 1 : 0);
    return c;
}

std::int64_t utcSeconds(std::int64_t ms) noexcept {
    return floorDiv(ms, MsPerSecond);
}

WallClock wallClockIn(std::int64_t ms, const QzZone& zone) {
    return wallClock(ms + zone.offsetAt(utcSeconds(ms)).seconds * MsPerSecond);
}

// A reader of fixed-width ISO 8601 fields.
class Cursor {
public:
    explicit Cursor(const QzCString& text) : pos_(text.data()), end_(pos_ + text.length()) {}

    bool atEnd() const noexcept { return pos_ == end_; }
    // Consumes c when it is next.
    bool skip(char c) noexcept {
        if (atEnd() || *pos_ != c) return false;
        ++pos_;
        return true;
    }
    // Consumes exactly count digits.
    bool digits(unsigned count, unsigned& value) noexcept {
        value = 0;
        for (unsigned i = 0; i < count; ++i) {
            if (!isDigit()) return false;
            value = value * 10 + static_cast<unsigned>(*pos_++ - '0');
        }
        return true;
    }
    // Consumes one or more digits of a fraction of a second, truncated to milliseconds.
    bool fraction(unsigned& millisecond) noexcept {
        if (!isDigit()) return false;
        millisecond = 0;
        for (unsigned scale = 100; isDigit(); ++pos_, scale /= 10) {
            millisecond += static_cast<unsigned>(*pos_ - '0') * scale;
        }
        return true;
    }

private:
    bool isDigit() const noexcept { return !atEnd() && *pos_ >= '0' && *pos_ <= '9'; }

    const char* pos_;
    const char* end_;
};

struct Iso8601Fields {
    unsigned year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, millisecond = 0;
    bool hasDesignator = false;
    long offsetSeconds = 0;  // east of UTC, from the designator
};

// Reads the designator after the time: "Z", "+hh:mm" or "-hh:mm", or nothing.
bool parseDesignator(Cursor& in, Iso8601Fields& f) {
    if (in.skip('Z')) {
        f.hasDesignator = true;
        return true;
    }
    const bool east = in.skip('+');
    if (!east && !in.skip('-')) return true;
    unsigned hours = 0, minutes = 0;
    if (!(in.digits(2, hours) && in.skip(':') && in.digits(2, minutes)) || hours > 23 ||
        minutes > 59) {
        return false;
    }
    f.hasDesignator = true;
    f.offsetSeconds = static_cast<long>(hours * 3600 + minutes * 60) * (east ? 1 : -1);
    return true;
}

// The shape of the text only; the ranges of the fields are checked by the constructor.
bool parseIso8601(const QzCString& text, Iso8601Fields& f) {
    Cursor in(text);
    if (!(in.digits(4, f.year) && in.skip('-') && in.digits(2, f.month) && in.skip('-') &&
          in.digits(2, f.day))) {
        return false;
    }
    if (in.atEnd()) return true;
    if (!(in.skip('T') && in.digits(2, f.hour) && in.skip(':') && in.digits(2, f.minute) &&
          in.skip(':') && in.digits(2, f.second))) {
        return false;
    }
    if ((in.skip('.') || in.skip(',')) && !in.fraction(f.millisecond)) return false;
    return parseDesignator(in, f) && in.atEnd();
}

tm toTm(const WallClock& c, const QzZone::Offset& offset) {
    tm t{};
    t.tm_year = static_cast<int>(c.year - 1900);
    t.tm_mon = static_cast<int>(c.month) - 1;
    t.tm_mday = static_cast<int>(c.day);
    t.tm_hour = static_cast<int>(c.hour);
    t.tm_min = static_cast<int>(c.minute);
    t.tm_sec = static_cast<int>(c.second);
    t.tm_wday = static_cast<int>(c.days + 4 - floorDiv(c.days + 4, 7) * 7);  // 1970-01-01: Thu
    t.tm_yday = static_cast<int>(c.days - daysFromCivil(c.year, 1, 1));
    t.tm_isdst = offset.dst ? 1 : 0;
    t.tm_gmtoff = offset.seconds;
    t.tm_zone = offset.abbreviation;
    return t;
}

// strftime returns 0 both for empty output and for a buffer that is too small; a leading
// byte makes every complete output non-empty, and it is stripped again.
QzCString formatTm(const char* pattern, const tm& t, locale_t locale) {
    constexpr std::size_t MaxLength = std::size_t(1) << 24;
    const std::string marked = std::string(1, '#') + pattern;
    std::string buffer(64 + 2 * marked.size(), '\0');
    for (;;) {
        const std::size_t n = strftime_l(buffer.data(), buffer.size(), marked.c_str(), &t, locale);
        if (n > 0) return QzCString(buffer.data() + 1, n - 1);
        if (buffer.size() >= MaxLength) return QzCString();
        buffer.resize(buffer.size() * 2);
    }
}

const QzLocale& cLocale() {
    static const QzLocaleSnapshot locale("C");
    return locale;
}

}  // namespace

QzDateTime::QzDateTime(const QzDate& date, unsigned hour, unsigned minute, unsigned second,
                       unsigned millisecond, const QzZone& zone)
    : QzDateTime(date.year(), date.month(), date.dayOfMonth(), hour, minute, second, millisecond,
                 zone) {}

QzDateTime::QzDateTime(unsigned year, unsigned month, unsigned day, unsigned hour, unsigned minute,
                       unsigned second, unsigned millisecond, const QzZone& zone)
    : ms_(Invalid) {
    if (!QzDate(day, month, year).isValid() || hour > 23 || minute > 59 || second > 59 ||
        millisecond > 999) {
        return;
    }
    const std::int64_t wallSeconds =
        daysFromCivil(year, month, day) * SecondsPerDay + hour * 3600 + minute * 60 + second;
    const std::int64_t ms = zone.toUtc(wallSeconds) * MsPerSecond + millisecond;
    if (inRange(ms)) ms_ = ms;
}

QzDateTime::QzDateTime(const QzCString& text, Format format, const QzLocale&, const QzZone& zone)
    : ms_(Invalid) {
    Iso8601Fields f;
    if (format != iso8601 || !parseIso8601(text, f)) return;
    // With a designator the fields are UTC moved by the given offset.
    const QzDateTime wall(f.year, f.month, f.day, f.hour, f.minute, f.second, f.millisecond,
                          f.hasDesignator ? QzZone::utc() : zone);
    if (!wall.isValid()) return;
    const std::int64_t ms = wall.ms_ - f.offsetSeconds * MsPerSecond;
    if (inRange(ms)) ms_ = ms;
}

QzCString QzDateTime::asString(Format format, const QzLocale&, const QzZone& zone) const {
    if (!isValid()) return QzCString();
    switch (format) {
        case ctime:
            return asString("%a %b %e %H:%M:%S %Y", cLocale(), zone);
        case iso8601:
            return iso8601Text(zone);
    }
    return QzCString();
}

QzCString QzDateTime::asString(const char* pattern, const QzLocale& locale,
                               const QzZone& zone) const {
    if (!isValid() || pattern == nullptr) return QzCString();
    const QzZone::Offset offset = zone.offsetAt(utcSeconds(ms_));
    const WallClock c = wallClock(ms_ + offset.seconds * MsPerSecond);
    return formatTm(pattern, toTm(c, offset), locale.posixLocale());
}

QzCString QzDateTime::iso8601Text(const QzZone& zone) const {
    // A historic offset with seconds (local mean time) cannot be written as +hh:mm, so the
    // fields are written in the offset cut to whole minutes: the text still names this instant.
    long offset = zone.isUtc() ? 0 : zone.offsetAt(utcSeconds(ms_)).seconds;
    offset -= offset % 60;
    const WallClock c = wallClock(ms_ + offset * MsPerSecond);
    char text[96];
    int n =
        std::snprintf(text, sizeof text, "%04lld-%02u-%02uT%02u:%02u:%02u",
                      static_cast<long long>(c.year), c.month, c.day, c.hour, c.minute, c.second);
    if (c.millisecond != 0) {
        n += std::snprintf(text + n, sizeof text - n, ",%03u", c.millisecond);
    }
    if (zone.isUtc()) {
        std::snprintf(text + n, sizeof text - n, "Z");
    } else {
        const long magnitude = offset < 0 ? -offset : offset;
        std::snprintf(text + n, sizeof text - n, "%c%02ld:%02ld", offset < 0 ? '-' : '+',
                      magnitude / 3600, magnitude / 60 % 60);
    }
    return QzCString(text);
}

unsigned QzDateTime::year(const QzZone& zone) const {
    return isValid() ? static_cast<unsigned>(wallClockIn(ms_, zone).year) : 0;
}

unsigned QzDateTime::month(const QzZone& zone) const {
    return isValid() ? wallClockIn(ms_, zone).month : 0;
}

unsigned QzDateTime::dayOfMonth(const QzZone& zone) const {
    return isValid() ? wallClockIn(ms_, zone).day : 0;
}

unsigned QzDateTime::second(const QzZone& zone) const {
    return isValid() ? wallClockIn(ms_, zone).second : 0;
}

unsigned QzDateTime::yearGMT() const {
    return year(QzZone::utc());
}

unsigned QzDateTime::monthGMT() const {
    return month(QzZone::utc());
}

unsigned QzDateTime::dayOfMonthGMT() const {
    return dayOfMonth(QzZone::utc());
}

unsigned QzDateTime::doHourGMT() const {
    return isValid() ? wallClock(ms_).hour : 0;
}

unsigned QzDateTime::doMinuteGMT() const {
    return isValid() ? wallClock(ms_).minute : 0;
}

unsigned QzDateTime::milliSecond() const noexcept {
    return isValid() ? wallClock(ms_).millisecond : 0;
}
