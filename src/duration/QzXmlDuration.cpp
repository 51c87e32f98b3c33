#include "QzXmlDuration.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>
#include <string>

#include <stdlib.h>

#include "QzInternalErr.h"
#include "QzLocaleSnapshot.h"
#include "QzMessage.h"
#include "QzZone.h"
#include "qzfoundationmsg.h"

namespace {

constexpr std::int64_t DaysIn400Years = 146097;

// Numbers are read the same way whatever locale the application has set.
locale_t cLocale() {
    static const QzLocaleSnapshot locale("C");
    return locale.posixLocale();
}

// Floor division and modulo for a positive divisor.
constexpr std::int64_t floorDiv(std::int64_t a, std::int64_t b) noexcept {
    return a / b - (a % b < 0 ? 1 : 0);
}
constexpr std::int64_t floorMod(std::int64_t a, std::int64_t b) noexcept {
    return a % b < 0 ? a % b + b : a % b;
}

struct Carried {
    std::int64_t value;
    std::int64_t carry;
};

// value floor-mod divisor, with the floor quotient carried to the next field.
Carried carryOver(std::int64_t value, std::int64_t divisor) noexcept {
    return {floorMod(value, divisor), floorDiv(value, divisor)};
}

// A month number brought into 1..12, the years beyond carried: the floor modulo of month - 1
// by 12, plus 1, written so that month - 1 cannot overflow.
Carried normaliseMonth(std::int64_t month) noexcept {
    const Carried c = carryOver(month, 12);
    return c.value == 0 ? Carried{12, c.carry - 1} : c;
}

// The components are unsigned 64-bit and the arithmetic signed 64-bit, so sums involving
// absurdly large components wrap around instead of overflowing.
std::int64_t wrappingSum(std::int64_t a, std::int64_t b, std::int64_t c = 0) noexcept {
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b) +
                                     static_cast<std::uint64_t>(c));
}

// Truncates toward zero; NaN gives 0, and values beyond the 64-bit range the nearest end,
// where a plain conversion would be undefined.
std::int64_t truncateToInt64(double x) noexcept {
    constexpr double Limit = 9223372036854775808.0;  // 2^63
    if (std::isnan(x)) return 0;
    if (x >= Limit) return std::numeric_limits<std::int64_t>::max();
    if (x < -Limit) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(x);
}

// The Gregorian rule, for any year in its 400-year cycle (0..399).
bool isLeapYear(std::int64_t yearOfCycle) noexcept {
    return yearOfCycle % 4 == 0 && (yearOfCycle % 100 != 0 || yearOfCycle == 0);
}

long daysInMonth(long year, long month) noexcept {
    static constexpr long Lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const Carried m = normaliseMonth(month);
    if (m.value != 2) return Lengths[m.value - 1];
    // Only the place in the 400-year cycle matters, and adding the places cannot overflow.
    const long yearOfCycle = floorMod(floorMod(year, 400) + floorMod(m.carry, 400), 400);
    return isLeapYear(yearOfCycle) ? 29 : 28;
}

struct CalendarDay {
    std::int64_t year;
    std::int64_t month;
    std::int64_t day;
};

// Moves a day count outside its month into the months before or after, month by month.
// Whole 400-year cycles, after which the calendar repeats, are passed at once, so that
// huge day counts end as quickly and exactly where the walk would end.
CalendarDay settleDay(CalendarDay date) noexcept {
    const std::int64_t cycles = date.day / DaysIn400Years;
    date.day -= cycles * DaysIn400Years;
    date.year = wrappingSum(date.year, cycles * 400);

    std::int64_t monthLength = daysInMonth(date.year, date.month);
    while (date.day <= 0 || date.day > monthLength) {
        std::int64_t step = 1;
        if (date.day > monthLength) {
            date.day -= monthLength;
        } else {
            date.day += daysInMonth(date.year, date.month - 1);
            step = -1;
        }
        const Carried month = normaliseMonth(date.month + step);
        date.month = month.value;
        date.year = wrappingSum(date.year, month.carry);
        monthLength = daysInMonth(date.year, date.month);
    }
    return date;
}

// Whole days count for 86400 seconds each; the product is taken in double, which gives what
// a 64-bit product would wherever that one does not overflow.
double totalSeconds(const QzXmlDuration& d) noexcept {
    const double days = (static_cast<double>(d.getMonths()) * QzXmlDuration::DaysInMonth +
                         static_cast<double>(d.getDays())) +
                        static_cast<double>(d.getYears() * QzXmlDuration::DaysInYear);
    return static_cast<double>(d.getMinutes() * QzXmlDuration::SecondsInMinute) + d.getSeconds() +
           static_cast<double>(d.getHours() * QzXmlDuration::SecondsInHour) +
           std::trunc(days) * QzXmlDuration::SecondsInDay;
}

QzXmlDuration::ParseState designatedState(char designator, bool inTimePart) noexcept {
    switch (designator) {
        case 'Y':
            return QzXmlDuration::Years;
        case 'M':
            return inTimePart ? QzXmlDuration::Minutes : QzXmlDuration::Months;
        case 'D':
            return QzXmlDuration::Days;
        case 'H':
            return QzXmlDuration::Hours;
        default:
            return QzXmlDuration::Seconds;
    }
}

template <unsigned Year, unsigned Month>
const QzDateTime& referenceDateTime() {
    static const QzDateTime first(Year, Month, 1, 0, 0, 0, 0, QzZone::utc());
    return first;
}

// XML Schema's four reference date-times, each built on first need.
constexpr const QzDateTime& (*ReferenceDateTimes[])() = {
    &referenceDateTime<1696, 9>,
    &referenceDateTime<1697, 2>,
    &referenceDateTime<1903, 3>,
    &referenceDateTime<1903, 7>,
};

}  // namespace

QzXmlDuration::QzXmlDuration() noexcept : QzXmlDuration(0, 0, 0) {}

QzXmlDuration::QzXmlDuration(unsigned long years, unsigned long months, unsigned long days,
                             unsigned long hours, unsigned long minutes, double seconds) noexcept
    : years_(years),
      months_(months),
      days_(days),
      hours_(hours),
      minutes_(minutes),
      seconds_(seconds),
      valid_(true),
      negative_(false) {}

QzXmlDuration::QzXmlDuration(const QzCString& text) : QzXmlDuration() {
    extract(text);
}

QzXmlDuration::~QzXmlDuration() = default;

void QzXmlDuration::clear() noexcept {
    *this = QzXmlDuration();
    valid_ = false;
}

bool QzXmlDuration::isEqual(const QzXmlDuration& other) const {
    return compareTo(other) == 0;
}

int QzXmlDuration::compareTo(const QzXmlDuration& other) const {
    const double mine = totalSeconds(*this);
    const double theirs = totalSeconds(other);
    if (theirs > mine) return -1;
    return mine > theirs ? 1 : 0;
}

// The scanner tolerates some shapes on purpose: "P", "T" and "-" leave the collected
// characters in place (so 5P1Y is 51 years), a designator may repeat (the last one wins), and
// characters after the last designator are ignored.
void QzXmlDuration::extract(const QzCString& text) {
    clear();
    valid_ = true;
    ParseState previous = Start;
    bool seenP = false;
    bool inTimePart = false;
    std::string digits;
    for (const char c : text.std()) {
        switch (c) {
            case '-':
                if (seenP) {
                    valid_ = false;
                    return;
                }
                negative_ = true;
                break;
            case 'P':
                seenP = true;
                break;
            case 'T':
                if (!seenP) {
                    valid_ = false;
                    return;
                }
                inTimePart = true;
                break;
            case 'Y':
            case 'M':
            case 'D':
            case 'H':
            case 'S': {
                const ParseState current = designatedState(c, inTimePart);
                verifyAndAssign(previous, current, seenP, inTimePart, digits.data());
                previous = current;
                digits.clear();
                break;
            }
            default:
                digits += c;
        }
    }
    if (inTimePart && !(timeTotal() > 0.0)) valid_ = false;
}

void QzXmlDuration::verifyAndAssign(ParseState previous, ParseState current, bool seenP,
                                    bool inTimePart, char* digits) {
    // Start names no component; the time components need the "T".
    const bool allowed =
        seenP && current != Start && previous <= current && (current < Hours || inTimePart);
    if (!allowed) {
        valid_ = false;
        return;
    }
    char* end = digits;
    if (current == Seconds) {
        seconds_ = strtod_l(digits, &end, cLocale());
    } else {
        *integerComponent(current) = strtoul_l(digits, &end, 10, cLocale());
    }
    const bool stoppedAtEndOrDigit = *end == '\0' || (*end >= '0' && *end <= '9');
    if (end == digits || !stoppedAtEndOrDigit) valid_ = false;
}

QzCString QzXmlDuration::asString() const {
    if (!valid_) return QzCString();
    std::ostringstream out;
    out.imbue(std::locale::classic());
    if (negative_) out << '-';
    out << 'P' << years_ << 'Y' << months_ << 'M' << days_ << 'D';
    if (timeTotal() > 0.0) out << 'T' << hours_ << 'H' << minutes_ << 'M' << seconds_ << 'S';
    return QzCString(out.str());
}

long QzXmlDuration::maxDaysInMonth(long year, long month) const {
    return daysInMonth(year, month);
}

// XML Schema's addition: months and years first, then seconds up to days with floor carries.
// The milliseconds are deliberately not carried into the seconds, so a sum past 999 or below
// 0 gives the invalid date-time.
QzDateTime QzXmlDuration::operator+(const QzDateTime& start) const {
    if (!start.isValid()) throw QzInternalErr(QzMessage(&QZFOUNDATIONMSG_INVALID_DATETIME_OP));

    const Carried month = normaliseMonth(wrappingSum(start.monthGMT(), signedComponent(months_)));
    const std::int64_t year = wrappingSum(start.yearGMT(), signedComponent(years_), month.carry);

    // The start's second is read on the local clock, every other field in UTC.
    const double seconds = start.second(QzZone::local()) + (negative_ ? -seconds_ : seconds_);
    const std::int64_t wholeSeconds = truncateToInt64(seconds);
    const std::int64_t millisecond =
        wrappingSum(start.milliSecond(), truncateToInt64((seconds - wholeSeconds) * 1000.0));
    const Carried second = carryOver(wholeSeconds, 60);
    const Carried minute =
        carryOver(wrappingSum(start.doMinuteGMT(), signedComponent(minutes_), second.carry), 60);
    const Carried hour =
        carryOver(wrappingSum(start.doHourGMT(), signedComponent(hours_), minute.carry), 24);

    // A start day beyond the end of the target month counts as that month's last day (a valid
    // start never has day 0, which would count as day 1).
    const std::int64_t firstDay =
        std::min<std::int64_t>(start.dayOfMonthGMT(), daysInMonth(year, month.value));
    const CalendarDay date =
        settleDay({year, month.value, wrappingSum(firstDay, signedComponent(days_), hour.carry)});

    return QzDateTime(static_cast<unsigned>(date.year), static_cast<unsigned>(date.month),
                      static_cast<unsigned>(date.day), static_cast<unsigned>(hour.value),
                      static_cast<unsigned>(minute.value), static_cast<unsigned>(second.value),
                      static_cast<unsigned>(millisecond), QzZone::utc());
}

std::int64_t QzXmlDuration::signedComponent(std::uint64_t component) const noexcept {
    return static_cast<std::int64_t>(negative_ ? 0 - component : component);
}

std::uint64_t* QzXmlDuration::integerComponent(ParseState state) noexcept {
    switch (state) {
        case Years:
            return &years_;
        case Months:
            return &months_;
        case Days:
            return &days_;
        case Hours:
            return &hours_;
        default:
            return &minutes_;
    }
}

double QzXmlDuration::timeTotal() const noexcept {
    return static_cast<double>(hours_ + minutes_) + seconds_;
}

bool operator==(const QzXmlDuration& a, const QzXmlDuration& b) noexcept {
    return a.isValid() == b.isValid() && a.isNegative() == b.isNegative() &&
           a.getYears() == b.getYears() && a.getMonths() == b.getMonths() &&
           a.getDays() == b.getDays() && a.getHours() == b.getHours() &&
           a.getMinutes() == b.getMinutes() && a.getSeconds() == b.getSeconds();
}

bool operator!=(const QzXmlDuration& a, const QzXmlDuration& b) noexcept {
    return !(a == b);
}

bool operator<(const QzXmlDuration& a, const QzXmlDuration& b) {
    for (const auto reference : ReferenceDateTimes) {
        const QzDateTime& start = reference();
        const QzDateTime bMoved = b + start;
        if (a + start >= bMoved) return false;
    }
    return true;
}
