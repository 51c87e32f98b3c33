#ifndef QZDATETIME_H
#define QZDATETIME_H

/// @file
/// QzDateTime and its comparison operators.

#include "QzXmlExport.h"

#include <cstdint>

#include "QzCString.h"

class QzDate;
class QzLocale;
class QzZone;

/// An instant with millisecond resolution, from 0000-01-01T00:00:00Z up to
/// 9999-12-31T23:59:59.999Z in the proleptic Gregorian calendar, or the invalid value.
/// Calendar fields are read and written as the wall clock of a given zone (which, within a
/// day of those ends, may read year 10000, or year -1 wrapped to an unsigned value).
class QZXML_API QzDateTime {
public:
    /// Predefined textual forms.
    enum Format {
        /// "Sat Feb  3 04:05:06 2001", as C's asctime without the newline; written only.
        ctime = 0,
        /// Written as YYYY-MM-DDThh:mm:ss, ",mmm" unless the milliseconds are 0, then "Z" in
        /// QzZone::utc() or +hh:mm/-hh:mm in another zone, such as "2001-02-03T04:05:06,789Z".
        /// Read as YYYY-MM-DD, optionally Thh:mm:ss with a fraction after "." or "," (cut to
        /// milliseconds) and an optional "Z" or +hh:mm/-hh:mm.
        iso8601 = 1
    };

    /// The invalid value.
    QzDateTime() noexcept : ms_(Invalid) {}
    /// The instant at which zone's wall clock shows date at hour:minute:second.millisecond;
    /// the invalid value when any field is out of range.
    QzDateTime(const QzDate& date, unsigned hour, unsigned minute, unsigned second,
               unsigned millisecond, const QzZone& zone);
    /// As above with the date given as year (0..9999), month (1..12) and day.
    QzDateTime(unsigned year, unsigned month, unsigned day, unsigned hour, unsigned minute,
               unsigned second, unsigned millisecond, const QzZone& zone);
    /// Parses iso8601 text (zone's wall time when it has no designator; locale unused);
    /// malformed text, fields out of range and every ctime text give the invalid value.
    QzDateTime(const QzCString& text, Format format, const QzLocale& locale, const QzZone& zone);

    /// False for the invalid value only.
    bool isValid() const noexcept { return ms_ != Invalid; }

    /// Text in a predefined form with the fields of zone's wall clock, always in the "C"
    /// locale (locale unused); empty for the invalid value.
    QzCString asString(Format format, const QzLocale& locale, const QzZone& zone) const;
    /// Text of a strftime pattern (in locale, with the fields of zone's wall clock);
    /// empty for the invalid value or a null pattern.
    QzCString asString(const char* pattern, const QzLocale& locale, const QzZone& zone) const;

    /// Year of zone's wall clock; 0 for the invalid value (as for all field accessors).
    unsigned year(const QzZone& zone) const;
    /// Month (1..12) of zone's wall clock.
    unsigned month(const QzZone& zone) const;
    /// Day of the month (1..31) of zone's wall clock.
    unsigned dayOfMonth(const QzZone& zone) const;
    /// Second (0..59) of zone's wall clock.
    unsigned second(const QzZone& zone) const;
    /// Year in UTC.
    unsigned yearGMT() const;
    /// Month (1..12) in UTC.
    unsigned monthGMT() const;
    /// Day of the month (1..31) in UTC.
    unsigned dayOfMonthGMT() const;
    /// Hour (0..23) in UTC.
    unsigned doHourGMT() const;
    /// Minute (0..59) in UTC.
    unsigned doMinuteGMT() const;
    /// Millisecond of the second (0..999), the same in every zone.
    unsigned milliSecond() const noexcept;

    // Instant order; the invalid value equals itself and sorts before every valid value.
    friend bool operator==(const QzDateTime& a, const QzDateTime& b) noexcept;
    friend bool operator!=(const QzDateTime& a, const QzDateTime& b) noexcept;
    friend bool operator<(const QzDateTime& a, const QzDateTime& b) noexcept;
    friend bool operator<=(const QzDateTime& a, const QzDateTime& b) noexcept;
    friend bool operator>(const QzDateTime& a, const QzDateTime& b) noexcept;
    friend bool operator>=(const QzDateTime& a, const QzDateTime& b) noexcept;

private:
    static constexpr std::int64_t Invalid = INT64_MIN;

    QzCString iso8601Text(const QzZone& zone) const;

    // Milliseconds since 1970-01-01T00:00:00Z, or Invalid.
    std::int64_t ms_;
};

/// Same instant (or both invalid).
inline bool operator==(const QzDateTime& a, const QzDateTime& b) noexcept {
    return a.ms_ == b.ms_;
}
/// Different instants.
inline bool operator!=(const QzDateTime& a, const QzDateTime& b) noexcept {
    return a.ms_ != b.ms_;
}
/// a is earlier than b.
inline bool operator<(const QzDateTime& a, const QzDateTime& b) noexcept {
    return a.ms_ < b.ms_;
}
/// a is not later than b.
inline bool operator<=(const QzDateTime& a, const QzDateTime& b) noexcept {
    return a.ms_ <= b.ms_;
}
/// a is later than b.
inline bool operator>(const QzDateTime& a, const QzDateTime& b) noexcept {
    return a.ms_ > b.ms_;
}
/// a is not earlier than b.
inline bool operator>=(const QzDateTime& a, const QzDateTime& b) noexcept {
    return a.ms_ >= b.ms_;
}

#endif
