#ifndef QZXMLDURATION_H
#define QZXMLDURATION_H

/// @file
/// QzXmlDuration and its comparison operators.

#include "QzXmlExport.h"

#include <cstdint>

#include "QzCString.h"
#include "QzDateTime.h"

/// An XML Schema duration, PnYnMnDTnHnMnS with an optional leading "-". The components are
/// kept as written, never normalised (90 minutes stay 90 minutes); the sign is a separate
/// flag. Parsing never throws: text that breaks a rule clears the validity flag.
class QZXML_API QzXmlDuration {
public:
    /// The parser's states, in the order in which components must appear.
    enum ParseState { Start, Years, Months, Days, Hours, Minutes, Seconds };

    static constexpr std::int32_t SecondsInDay = 86400;  ///< seconds in a day
    static constexpr std::int32_t SecondsInHour = 3600;  ///< seconds in an hour
    static constexpr std::int32_t SecondsInMinute = 60;  ///< seconds in a minute
    static constexpr std::int32_t DaysInYear = 365;      ///< days in a year, for compareTo
    static constexpr double DaysInMonth = 30.42;         ///< days in a month, for compareTo

    /// The valid zero duration.
    QzXmlDuration() noexcept;
    /// A valid, positive duration of the given components.
    QzXmlDuration(unsigned long years, unsigned long months, unsigned long days,
                  unsigned long hours = 0, unsigned long minutes = 0,
                  double seconds = 0.0) noexcept;
    /// The duration that text spells; see extract.
    explicit QzXmlDuration(const QzCString& text);
    /// A copy of all components and flags.
    QzXmlDuration(const QzXmlDuration&) = default;
    /// Copies all components and flags.
    QzXmlDuration& operator=(const QzXmlDuration&) = default;
    virtual ~QzXmlDuration();

    /// Zero components, and both flags false (so the duration is invalid).
    void clear() noexcept;
    /// True when compareTo(other) is 0, so P1D is equal to PT24H.
    virtual bool isEqual(const QzXmlDuration& other) const;
    /// -1, 0 or 1 as this duration's total seconds are less, equal or greater, counting a
    /// month as 30.42 days and ignoring the sign and the validity.
    virtual int compareTo(const QzXmlDuration& other) const;
    /// Parses text into this duration in one pass; the empty text is a valid zero.
    virtual void extract(const QzCString& text);
    /// The canonical text, such as P1Y0M0D or -P0Y0M0DT0H90M0S; empty when invalid.
    virtual QzCString asString() const;
    /// One parser step: checks that the component current may follow previous and stores
    /// the number in digits (a NUL-terminated string), clearing the validity on any error.
    void verifyAndAssign(ParseState previous, ParseState current, bool seenP, bool inTimePart,
                         char* digits);

    /// Days of month in year; months outside 1..12 count into the years around it.
    long maxDaysInMonth(long year, long month) const;
    /// start moved by this duration in UTC, months and years first; a day beyond the end
    /// of the target month is clamped to it. Throws QzInternalErr when start is invalid.
    QzDateTime operator+(const QzDateTime& start) const;

    /// The nY component.
    std::uint64_t getYears() const noexcept { return years_; }
    /// The nM component before the "T".
    std::uint64_t getMonths() const noexcept { return months_; }
    /// The nD component.
    std::uint64_t getDays() const noexcept { return days_; }
    /// The nH component.
    std::uint64_t getHours() const noexcept { return hours_; }
    /// The nM component after the "T".
    std::uint64_t getMinutes() const noexcept { return minutes_; }
    /// The nS component, which may have a fraction.
    double getSeconds() const noexcept { return seconds_; }
    /// False once the text read by extract broke a rule.
    bool isValid() const noexcept { return valid_; }
    /// True when a "-" stood before the "P".
    bool isNegative() const noexcept { return negative_; }

private:
    std::uint64_t* integerComponent(ParseState state) noexcept;
    // The component with the duration's sign, as a signed 64-bit number.
    std::int64_t signedComponent(std::uint64_t component) const noexcept;
    // Hours plus minutes plus seconds; a time part must not add up to zero.
    double timeTotal() const noexcept;

    std::uint64_t years_;
    std::uint64_t months_;
    std::uint64_t days_;
    std::uint64_t hours_;
    std::uint64_t minutes_;
    double seconds_;
    bool valid_;
    bool negative_;
};

/// Member-wise equality (so P1D differs from PT24H), seconds compared as doubles.
QZXML_API bool operator==(const QzXmlDuration& a, const QzXmlDuration& b) noexcept;
/// The negation of ==.
QZXML_API bool operator!=(const QzXmlDuration& a, const QzXmlDuration& b) noexcept;
/// XML Schema's partial order: a + t is earlier than b + t for each of the reference
/// date-times 1696-09-01, 1697-02-01, 1903-03-01 and 1903-07-01 (UTC). False both ways where
/// the order is indeterminate, as for P1M and P30D.
QZXML_API bool operator<(const QzXmlDuration& a, const QzXmlDuration& b);

#endif
