// XML Schema durations: parsing, the canonical form, three comparisons, adding to a date.
#include <QzXmlDuration.h>
#include <QzXmlUtils.h>

#include <iostream>

void show(const char* text) {
    const QzXmlDuration d{QzCString(text)};
    std::cout << '"' << text << "\" " << (d.isValid() ? d.asString() : "invalid") << '\n';
}

int main() {
    for (const char* text : {"P1Y2M3DT4H5M6.5S", "-PT90M", "", "P1H", "PT", "P1.5Y"})
        show(text);

    const QzXmlDuration day("P1D"), hours("PT24H"), month("P1M"), days("P30D");
    std::cout << std::boolalpha << "P1D isEqual PT24H: " << day.isEqual(hours)
              << ", P1D == PT24H: " << (day == hours) << '\n'
              << "P1M compareTo P30D: " << month.compareTo(days)
              << ", P1M < P30D: " << (month < days) << ", P30D < P1M: " << (days < month) << '\n';

    const QzDateTime start = QzXmlUtils::convertISODateStringToDateTime("2001-01-31T12:00:00Z");
    std::cout << QzXmlUtils::convertDateTimeToISOString(month + start, QzXmlUtils::ISO8601Format)
              << '\n';
}
