#ifndef QZDATE_H
#define QZDATE_H

/// @file
/// QzDate and its comparison operators.

#include "QzXmlExport.h"

/// A calendar date in the proleptic Gregorian calendar. The fields are kept exactly as
/// given, so an impossible date can be built and tested with isValid().
class QZXML_API QzDate {
public:
    /// The date day/month/year; nothing is checked or normalised.
    QzDate(unsigned day, unsigned month, unsigned year) noexcept
        : day_(day), month_(month), year_(year) {}

    /// Day of the month as given (1..31 when valid).
    unsigned dayOfMonth() const noexcept { return day_; }
    /// Month as given (1..12 when valid).
    unsigned month() const noexcept { return month_; }
    /// Year as given (0..9999 when valid).
    unsigned year() const noexcept { return year_; }

    /// True for a real date: year 0..9999, month 1..12, day within that month.
    bool isValid() const noexcept;

private:
    unsigned day_;
    unsigned month_;
    unsigned year_;
};

/// Field-wise equality (invalid dates included).
inline bool operator==(const QzDate& a, const QzDate& b) noexcept {
    return a.dayOfMonth() == b.dayOfMonth() && a.month() == b.month() && a.year() == b.year();
}
/// The negation of ==.
inline bool operator!=(const QzDate& a, const QzDate& b) noexcept {
    return !(a == b);
}

#endif
