#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <string>

#include <time.h>

#include "QzInternalErr.h"
#include "QzLocaleSnapshot.h"
#include "QzMessage.h"
#include "QzXmlDuration.h"
#include "QzZone.h"
#include "qzfoundationmsg.h"

namespace {

QzDateTime utc(unsigned year, unsigned month, unsigned day, unsigned hour = 0, unsigned minute = 0,
               unsigned second = 0, unsigned millisecond = 0) {
    return QzDateTime(year, month, day, hour, minute, second, millisecond, QzZone::utc());
}

// The ISO 8601 text of start + duration, empty for the invalid date-time.
std::string plus(const QzDateTime& start, const char* duration) {
    static const QzLocaleSnapshot cLocale("C");
    return (QzXmlDuration(duration) + start)
        .asString(QzDateTime::iso8601, cLocale, QzZone::utc())
        .std();
}

std::string canonical(const std::string& text) {
    return QzXmlDuration(QzCString(text)).asString().std();
}

}  // namespace

TEST(QzXmlDuration, ParsesTheAcceptedShapesAndRejectsTheRest) {
    const struct {
        std::string text;
        const char* canonical;  // empty: invalid
    } cases[] = {
        {"", "P0Y0M0D"},
        {"P0D", "P0Y0M0D"},
        {"-P1Y", "-P1Y0M0D"},
        {"--P", "-P0Y0M0D"},
        {"P1Y2M3DT4H5M6.7S", "P1Y2M3DT4H5M6.7S"},
        {"PT90M", "P0Y0M0DT0H90M0S"},
        {"PT1D2H", "P0Y0M1DT2H0M0S"},  // date designators after T still count as dates
        {"P2Y1Y", "P1Y0M0D"},          // a repeated designator overwrites
        {"P1Y2", "P1Y0M0D"},           // trailing digits are ignored
        {"P1y", "P0Y0M0D"},            // designators are upper-case only
        {"P1T2H", "P0Y0M0DT12H0M0S"},  // P and T keep the digits collected so far
        {"5P1Y", "P51Y0M0D"},
        {"P 1Y", "P1Y0M0D"},
        {"P+1Y", "P1Y0M0D"},
        {"P\t1Y", "P1Y0M0D"},
        {"PT.5S", "P0Y0M0DT0H0M0.5S"},
        {"PT0.1234567S", "P0Y0M0DT0H0M0.123457S"},
        {"PT1234567S", "P0Y0M0DT0H0M1.23457e+06S"},
        {"P" + std::string(1000, '9') + "Y", "P18446744073709551615Y0M0D"},
        {"P-1Y", ""},
        {"T1H", ""},
        {"1Y", ""},
        {"PT0S", ""},
        {"PT0H", ""},
        {"PT", ""},
        {"P1DT", ""},
        {"P1H", ""},
        {"PT1H1D", ""},
        {"P1M1Y", ""},
        {"P1.5Y", ""},
        {"P1 Y", ""},
        {"PY", ""},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.canonical, canonical(c.text)) << c.text.substr(0, 20);
        EXPECT_EQ(*c.canonical != '\0', QzXmlDuration(QzCString(c.text)).isValid()) << c.text;
    }

    QzXmlDuration d(QzCString("P1Y2M3DT4H5M6.5S"));
    EXPECT_EQ(QzXmlDuration(1, 2, 3, 4, 5, 6.5), d);
    d.extract("PT1M");
    EXPECT_EQ(QzXmlDuration(0, 0, 0, 0, 1), d);
    d.clear();
    EXPECT_FALSE(d.isValid());
    EXPECT_EQ(QzCString(), d.asString());
    EXPECT_EQ(QzCString("P0Y0M0D"), QzXmlDuration().asString());
}

TEST(QzXmlDuration, ComparesBySecondsEqualsByMembers) {
    const auto compare = [](const char* a, const char* b) {
        return QzXmlDuration(QzCString(a)).compareTo(QzXmlDuration(QzCString(b)));
    };
    EXPECT_EQ(0, compare("P1D", "PT24H"));
    EXPECT_EQ(0, compare("P1M", "P30D"));  // 30.42 days, cut to whole days
    EXPECT_EQ(-1, compare("P1M", "P31D"));
    EXPECT_EQ(1, compare("P31D", "P1M"));
    EXPECT_EQ(0, compare("P1Y2M", "P425D"));
    EXPECT_EQ(1, compare("PT1.5S", "PT1S"));
    EXPECT_EQ(0, compare("-P1D", "P1D"));  // the sign is ignored
    EXPECT_EQ(0, compare("P-1Y", ""));     // and so is the validity

    const QzXmlDuration day(QzCString("P1D")), hours(QzCString("PT24H"));
    EXPECT_TRUE(day.isEqual(hours));
    EXPECT_FALSE(day == hours);
    EXPECT_TRUE(day != hours);
    EXPECT_TRUE(QzXmlDuration(QzCString("P1D")) == QzXmlDuration(0, 0, 1));
    EXPECT_TRUE(QzXmlDuration(QzCString("-P1D")) != day);
    EXPECT_TRUE(QzXmlDuration(QzCString("P-1Y")) != QzXmlDuration());
}

TEST(QzXmlDuration, OrdersPartiallyByTheFourReferenceDateTimes) {
    const auto less = [](const char* a, const char* b) {
        return QzXmlDuration(QzCString(a)) < QzXmlDuration(QzCString(b));
    };
    EXPECT_FALSE(less("P1M", "P30D"));
    EXPECT_FALSE(less("P30D", "P1M"));
    EXPECT_FALSE(less("P1Y", "P366D"));  // equal from 1903-03-01
    EXPECT_FALSE(less("P366D", "P1Y"));
    EXPECT_TRUE(less("P1Y", "P367D"));
    EXPECT_TRUE(less("P364D", "P1Y"));
    EXPECT_FALSE(less("P1D", "PT24H"));
    EXPECT_TRUE(less("-P1D", "P1D"));
    EXPECT_FALSE(less("P1D", "-P1D"));
}

TEST(QzXmlDuration, MaxDaysInMonthNormalisesTheMonth) {
    const QzXmlDuration d;
    EXPECT_EQ(29, d.maxDaysInMonth(2000, 2));
    EXPECT_EQ(29, d.maxDaysInMonth(1904, 2));
    EXPECT_EQ(28, d.maxDaysInMonth(1900, 2));
    EXPECT_EQ(29, d.maxDaysInMonth(-4, 2));
    EXPECT_EQ(31, d.maxDaysInMonth(2001, 0));
    EXPECT_EQ(31, d.maxDaysInMonth(2001, 13));
    EXPECT_EQ(30, d.maxDaysInMonth(2001, -1));
    EXPECT_EQ(29, d.maxDaysInMonth(1999, 14));
    EXPECT_EQ(30, d.maxDaysInMonth(LONG_MIN, LONG_MIN));
    EXPECT_EQ(31, d.maxDaysInMonth(LONG_MAX, LONG_MAX));
}

TEST(QzXmlDuration, AddsFieldByFieldWithMonthEndClampAndWalk) {
    EXPECT_EQ("2001-02-28T00:00:00Z", plus(utc(2001, 1, 31), "P1M"));
    EXPECT_EQ("2000-02-29T00:00:00Z", plus(utc(2000, 1, 31), "P1M"));
    EXPECT_EQ("2001-03-01T00:00:00Z", plus(utc(2001, 1, 31), "P1M1D"));
    EXPECT_EQ("2001-02-28T00:00:00Z", plus(utc(2001, 3, 31), "-P1M"));
    EXPECT_EQ("2001-02-28T00:00:00Z", plus(utc(2001, 3, 1), "-P1D"));
    EXPECT_EQ("2000-02-29T00:00:00Z", plus(utc(2000, 3, 1), "-P1D"));
    EXPECT_EQ("2000-12-01T00:00:00Z", plus(utc(2001, 1, 1), "-P1M"));
    EXPECT_EQ("2001-01-01T00:00:00Z", plus(utc(2000, 12, 31, 23, 59, 59), "PT1S"));
    EXPECT_EQ("2000-12-31T23:59:59Z", plus(utc(2001, 1, 1), "-PT1S"));
    EXPECT_EQ("2001-03-04T04:05:06Z", plus(utc(2000, 1, 1), "P1Y2M3DT4H5M6S"));
    EXPECT_EQ("2000-01-02T02:00:00Z", plus(utc(2000, 1, 1), "PT25H60M"));
    EXPECT_EQ("2399-12-31T00:00:00Z", plus(utc(2000, 1, 1), "P146096D"));
    EXPECT_EQ("2400-01-01T00:00:00Z", plus(utc(2000, 1, 1), "P146097D"));
    EXPECT_EQ("2400-01-02T00:00:00Z", plus(utc(2000, 1, 1), "P146098D"));
    EXPECT_EQ("2800-03-01T00:00:00Z", plus(utc(2000, 3, 1), "P292194D"));
    EXPECT_EQ("1600-01-01T00:00:00Z", plus(utc(2000, 1, 1), "-P146097D"));
    EXPECT_EQ("1599-12-31T00:00:00Z", plus(utc(2000, 1, 1), "-P146098D"));
    EXPECT_EQ("", plus(utc(9999, 12, 31), "P1D"));
    EXPECT_EQ("", plus(utc(2000, 1, 1), "P4611686018427387904D"));  // ends, past year 9999
    EXPECT_EQ("", plus(utc(2000, 1, 1), "PT1e300S"));

    // Milliseconds are not carried: past 999 or below 0 the date-time is invalid.
    EXPECT_EQ("2000-01-01T00:00:00,500Z", plus(utc(2000, 1, 1, 0, 0, 1), "-PT0.5S"));
    EXPECT_EQ("", plus(utc(2000, 1, 1, 0, 0, 0, 900), "PT0.5S"));
    EXPECT_EQ("", plus(utc(2000, 1, 1), "-PT0.5S"));

    try {
        QzXmlDuration(QzCString("P1D")) + QzDateTime();
        FAIL() << "no exception";
    } catch (const QzInternalErr& e) {
        EXPECT_STREQ(QzMessage(&QZFOUNDATIONMSG_INVALID_DATETIME_OP).str(), e.why());
    }
}

TEST(QzXmlDuration, ReadsTheStartSecondOnTheLocalClock) {
    const char* old = std::getenv("TZ");
    const std::string saved = old ? old : "";
    setenv("TZ", "XYZ-00:00:30", 1);  // 30 seconds east of UTC
    tzset();
    const std::string moved = plus(utc(2001, 1, 1), "P0D");
    old ? setenv("TZ", saved.c_str(), 1) : unsetenv("TZ");
    tzset();
    EXPECT_EQ("2001-01-01T00:00:30Z", moved);
}
