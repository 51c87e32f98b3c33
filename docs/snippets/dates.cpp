// ISO 8601 dates and date-times, always written in UTC.
#include <QzXmlUtils.h>

#include <iostream>

int main() {
    const QzDateTime placed =
        QzXmlUtils::convertISODateStringToDateTime("2026-03-01T18:30:00,25+02:00");
    std::cout << QzXmlUtils::convertDateTimeToISOString(placed, QzXmlUtils::ISO8601Format) << '\n'
              << QzXmlUtils::convertDateTimeToISOString(placed, "%d.%m.%Y %H:%M") << '\n'
              << QzXmlUtils::convertDateTimeToISOString(
                     QzXmlUtils::convertISODateStringToDateTime("2026-03-01"),
                     QzXmlUtils::ISO8601Format)
              << '\n';

    const QzDate day = QzXmlUtils::convertISODateStringToDate("2026-03-01T23:30:00-02:00");
    std::cout << day.year() << '-' << day.month() << '-' << day.dayOfMonth() << '\n'
              << QzXmlUtils::convertDateToISOString(QzDate(1, 3, 2026)) << '\n'
              << QzXmlUtils::convertISODateStringToDateTime("2026-02-30").isValid() << '\n';
}
