#include "QzDate.h"

namespace {

bool isLeapYear(unsigned year) noexcept {
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// 0 for a month outside 1..12, so that no day fits in it.
unsigned daysInMonth(unsigned month, unsigned year) noexcept {
    static constexpr unsigned Days[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (month < 1 || month > 12) return 0;
    return month == 2 && isLeapYear(year) ? 29 : Days[month - 1];
}

}  // namespace

bool QzDate::isValid() const noexcept {
    return year_ <= 9999 && day_ >= 1 && day_ <= daysInMonth(month_, year_);
}
