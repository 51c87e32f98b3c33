// Adds XML Schema durations to dates: payment terms, month ends, leap years, negative
// durations, and why some durations cannot be ordered.
#include <QzXmlDuration.h>
#include <QzXmlUtils.h>

#include <iomanip>
#include <iostream>

namespace {

void add(const char* start, const char* duration) {
    const QzDateTime from = QzXmlUtils::convertISODateStringToDateTime(start);
    const QzXmlDuration by{QzCString(duration)};
    std::cout << std::left << std::setw(25) << start << " + " << std::setw(11) << duration << " = "
              << QzXmlUtils::convertDateTimeToISOString(by + from, "%Y-%m-%d %H:%M:%S") << '\n';
}

const char* order(const QzXmlDuration& a, const QzXmlDuration& b) {
    if (a < b) return "shorter than";
    if (b < a) return "longer than";
    return a == b ? "the same as" : "neither shorter nor longer than";
}

void compare(const char* a, const char* b) {
    std::cout << a << " is " << order(QzXmlDuration(QzCString(a)), QzXmlDuration(QzCString(b)))
              << ' ' << b << '\n';
}

}  // namespace

int main() {
    add("2026-11-23T09:30:00Z", "P30D");  // payment due in 30 days
    add("2026-01-31", "P1M");             // no 31 February: the month's last day
    add("2024-01-31", "P1M");             // a leap year
    add("2026-03-01", "-P1D");            // negative: the day before
    add("2026-12-31T23:59:59Z", "PT1S");  // carries into the next year
    add("2026-01-15", "P1Y2M10DT2H");
    add("2026-10-25T00:30:00+02:00", "PT90M");  // the result is always in UTC

    compare("P1M", "P30D");  // 28 to 31 days, depending on the month
    compare("P1M", "P32D");
    compare("P1Y", "P365D");
    compare("PT36H", "P1DT12H");
}
