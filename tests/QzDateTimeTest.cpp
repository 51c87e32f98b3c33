#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <optional>
#include <string>

#include <time.h>

#include "QzDate.h"
#include "QzDateTime.h"
#include "QzLocaleSnapshot.h"
#include "QzZone.h"
#include "Qzxmsg.h"

namespace {

const QzLocale& cLocale() {
    static const QzLocaleSnapshot locale("C");
    return locale;
}

QzDateTime parse(const char* text, const QzZone& zone = QzZone::utc()) {
    return QzDateTime(QzCString(text), QzDateTime::iso8601, cLocale(), zone);
}

std::string iso(const QzDateTime& t, const QzZone& zone = QzZone::utc()) {
    return t.asString(QzDateTime::iso8601, cLocale(), zone).std();
}

std::string format(const QzDateTime& t, const char* pattern, const QzZone& zone = QzZone::utc()) {
    return t.asString(pattern, cLocale(), zone).std();
}

// Sets TZ for one test and puts the old value back, even when the test fails.
class ScopedTz {
public:
    explicit ScopedTz(const char* tz) {
        if (const char* old = std::getenv("TZ")) old_ = old;
        set(tz);
    }
    ~ScopedTz() {
        old_ ? setenv("TZ", old_->c_str(), 1) : unsetenv("TZ");
        tzset();
    }
    void set(const char* tz) {
        setenv("TZ", tz, 1);
        tzset();
    }

private:
    std::optional<std::string> old_;
};

}  // namespace

TEST(QzDate, KeepsFieldsAndChecksCalendar) {
    const QzDate bad(30, 2, 2001);
    EXPECT_EQ(30u, bad.dayOfMonth());
    EXPECT_EQ(2u, bad.month());
    EXPECT_EQ(2001u, bad.year());
    EXPECT_FALSE(bad.isValid());
    for (const QzDate& d :
         {QzDate(29, 2, 2000), QzDate(29, 2, 2004), QzDate(31, 12, 9999), QzDate(1, 1, 0)}) {
        EXPECT_TRUE(d.isValid()) << d.year();
    }
    for (const QzDate& d : {QzDate(29, 2, 1900), QzDate(31, 4, 2001), QzDate(1, 1, 10000),
                            QzDate(0, 1, 2001), QzDate(1, 0, 2001), QzDate(1, 13, 2001)}) {
        EXPECT_FALSE(d.isValid()) << d.dayOfMonth() << "." << d.month() << "." << d.year();
    }
    EXPECT_TRUE(QzDate(3, 2, 2001) == QzDate(3, 2, 2001));
    EXPECT_TRUE(QzDate(3, 2, 2001) != QzDate(2, 3, 2001));
}

TEST(QzDateTime, Iso8601RoundTripsExactText) {
    const QzDateTime t = parse("2001-02-03T04:05:06Z");
    ASSERT_TRUE(t.isValid());
    EXPECT_EQ(2001u, t.yearGMT());
    EXPECT_EQ(2u, t.monthGMT());
    EXPECT_EQ(3u, t.dayOfMonthGMT());
    EXPECT_EQ(4u, t.doHourGMT());
    EXPECT_EQ(5u, t.doMinuteGMT());
    EXPECT_EQ(6u, t.second(QzZone::utc()));
    EXPECT_EQ(0u, t.milliSecond());
    EXPECT_EQ("2001-02-03T04:05:06Z", iso(t));
    EXPECT_EQ(t, QzDateTime(2001, 2, 3, 4, 5, 6, 0, QzZone::utc()));
    EXPECT_EQ(t, parse("2001-02-03T04:05:06"));  // no designator: the given zone

    EXPECT_EQ(250u, parse("2001-02-03T04:05:06,250Z").milliSecond());
    EXPECT_EQ(250u, parse("2001-02-03T04:05:06.25Z").milliSecond());
    EXPECT_EQ(500u, parse("2001-02-03T04:05:06.5").milliSecond());
    EXPECT_EQ(50u, parse("2001-02-03T04:05:06.05").milliSecond());
    EXPECT_EQ("2001-02-03T04:05:06,123Z", iso(parse("2001-02-03T04:05:06.1239Z")));
    EXPECT_EQ("2001-02-03T04:05:06,999Z", iso(parse("2001-02-03T04:05:06.99999999999Z")));
    EXPECT_EQ("2001-02-03T04:05:06,007Z", iso(QzDateTime(2001, 2, 3, 4, 5, 6, 7, QzZone::utc())));
    EXPECT_EQ("2001-02-03T00:00:00Z", iso(parse("2001-02-03")));
}

TEST(QzDateTime, OffsetsMoveToUtc) {
    EXPECT_EQ("2000-12-31T23:30:00Z", iso(parse("2001-01-01T00:30:00+01:00")));
    EXPECT_EQ("2001-02-28T23:00:00Z", iso(parse("2001-03-01T00:00:00+01:00")));
    EXPECT_EQ("2000-02-29T23:00:00Z", iso(parse("2000-03-01T00:00:00+01:00")));
    EXPECT_EQ("2001-02-04T03:30:00,500Z", iso(parse("2001-02-03T22:00:00.5-05:30")));
    EXPECT_EQ("2002-01-01T00:59:00Z", iso(parse("2001-12-31T23:59:00-01:00")));
    EXPECT_EQ(parse("2001-02-03T04:05:06Z"), parse("2001-02-03T04:05:06-00:00"));
    // A designator overrides the zone given to the parser.
    EXPECT_EQ(parse("2001-02-03T04:05:06Z"), parse("2001-02-03T04:05:06Z", QzZone::local()));
}

TEST(QzDateTime, RejectsMalformedOrOutOfRangeText) {
    EXPECT_FALSE(parse("").isValid());
    const char* const badDates[] = {"2001-13-01",  "2001-00-01",  "2001-02-30",  "2001-02-29",
                                    "1900-02-29",  "2001-02-03Z", "2001-2-03",   "2001-02-3",
                                    "20010-02-03", " 2001-02-03", "2001-02-03 ", "2001-02-03T"};
    for (const char* text : badDates) {
        EXPECT_FALSE(parse(text).isValid()) << text;
    }
    const char* const badDateTimes[] = {
        "2001-02-03T24:00:00",       "2001-02-03T04:60:00",       "2001-02-03T04:05:60",
        "2001-02-03+01:00",          "2001-02-03T04:05",          "2001-02-03t04:05:06",
        "2001-02-03T04:05:06z",      "2001-02-03T04:05:06.",      "2001-02-03T04:05:06.Z",
        "2001-02-03T04:05:06.5x",    "2001-02-03T04:05:06Zx",     "2001-02-03T04:05:06+01",
        "2001-02-03T04:05:06+0100",  "2001-02-03T04:05:06+24:00", "2001-02-03T04:05:06+01:60",
        "0000-01-01T00:30:00+01:00", "9999-12-31T23:30:00-01:00"};
    for (const char* text : badDateTimes) {
        EXPECT_FALSE(parse(text).isValid()) << text;
    }
    EXPECT_FALSE(
        QzDateTime(QzCString("2001-02-03\0", 11), QzDateTime::iso8601, cLocale(), QzZone::utc())
            .isValid());
    EXPECT_FALSE(QzDateTime(QzCString("Sat Feb  3 04:05:06 2001"), QzDateTime::ctime, cLocale(),
                            QzZone::utc())
                     .isValid());
    EXPECT_EQ("0000-01-01T00:00:00Z", iso(parse("0000-01-01T00:00:00Z")));
    EXPECT_EQ("9999-12-31T23:59:59,999Z", iso(parse("9999-12-31T23:59:59.999Z")));
}

TEST(QzDateTime, FieldConstructorsCheckRanges) {
    const QzZone& utc = QzZone::utc();
    EXPECT_TRUE(QzDateTime(2000, 2, 29, 0, 0, 0, 0, utc).isValid());
    EXPECT_FALSE(QzDateTime(1900, 2, 29, 0, 0, 0, 0, utc).isValid());
    const QzDateTime old(1696, 9, 1, 0, 0, 0, 0, utc);
    EXPECT_EQ("1696-09-01T00:00:00Z", iso(old));
    EXPECT_EQ(1696u, old.year(utc));
    EXPECT_EQ(9u, old.month(utc));
    EXPECT_EQ(1u, old.dayOfMonth(utc));
    EXPECT_EQ("1903-07-01T12:00:00Z", iso(QzDateTime(QzDate(1, 7, 1903), 12, 0, 0, 0, utc)));
    const unsigned huge = static_cast<unsigned>(-500);
    for (const QzDateTime& t :
         {QzDateTime(2001, 2, 3, 4, 5, 6, 1400, utc), QzDateTime(2001, 2, 3, 4, 5, 6, huge, utc),
          QzDateTime(2001, 2, 3, 4, 5, huge, 0, utc), QzDateTime(2001, 2, 3, 4, 5, 60, 0, utc),
          QzDateTime(2001, 2, 3, 4, 60, 0, 0, utc), QzDateTime(2001, 2, 3, 24, 0, 0, 0, utc),
          QzDateTime(2001, 2, huge, 0, 0, 0, 0, utc), QzDateTime(2001, 13, 1, 0, 0, 0, 0, utc),
          QzDateTime(2001, 0, 1, 0, 0, 0, 0, utc), QzDateTime(10000, 1, 1, 0, 0, 0, 0, utc),
          QzDateTime(UINT_MAX, 1, 1, 0, 0, 0, 0, utc),
          QzDateTime(QzDate(30, 2, 2001), 0, 0, 0, 0, utc)}) {
        EXPECT_FALSE(t.isValid());
    }
}

TEST(QzDateTime, InvalidValueReadsAsZeroAndSortsFirst) {
    const QzDateTime invalid;
    EXPECT_FALSE(invalid.isValid());
    const QzZone& utc = QzZone::utc();
    EXPECT_EQ(0u, invalid.year(utc) + invalid.month(utc) + invalid.dayOfMonth(utc) +
                      invalid.second(QzZone::local()) + invalid.yearGMT() + invalid.monthGMT() +
                      invalid.dayOfMonthGMT() + invalid.doHourGMT() + invalid.doMinuteGMT() +
                      invalid.milliSecond());
    EXPECT_EQ("", iso(invalid));
    EXPECT_EQ("", format(invalid, "%Y"));
    EXPECT_EQ("", invalid.asString(QzDateTime::ctime, cLocale(), utc).std());

    const QzDateTime early = parse("1696-09-01");
    const QzDateTime later = parse("1696-09-01T00:00:00.001Z");
    EXPECT_TRUE(invalid == QzDateTime() && invalid != early);
    EXPECT_TRUE(invalid < early && early < later && !(later < early));
    EXPECT_TRUE(early <= early && early <= later && !(later <= early));
    EXPECT_TRUE(later > early && !(early > early));
    EXPECT_TRUE(later >= early && early >= early && !(early >= later) && early >= invalid);
}

TEST(QzDateTime, FormatsPatternsAndCtime) {
    const QzDateTime t = parse("2001-02-03T04:05:06.789Z");
    EXPECT_EQ("2001", format(t, "%Y"));
    EXPECT_EQ("04:05:06", format(t, "%X"));
    EXPECT_EQ("2001-02-03T04:05:06", format(t, "%Y-%m-%dT%X"));
    EXPECT_EQ("Sat 034 +0000 UTC %", format(t, "%a %j %z %Z %%"));
    EXPECT_EQ("", format(t, ""));
    EXPECT_EQ("", t.asString(static_cast<const char*>(nullptr), cLocale(), QzZone::utc()).std());
    const std::string padding(500, 'x');
    EXPECT_EQ(padding + "2001", format(t, (padding + "%Y").c_str()));
    EXPECT_EQ("Sat Feb  3 04:05:06 2001",
              t.asString(QzDateTime::ctime, cLocale(), QzZone::utc()).std());
    EXPECT_EQ("Wed Jul  1 00:00:00 1903",
              parse("1903-07-01").asString(QzDateTime::ctime, cLocale(), QzZone::utc()).std());
    EXPECT_EQ("Fri Dec 31 365", format(parse("9999-12-31"), "%a %b %d %j"));
}

TEST(QzDateTime, LocalZoneFollowsTz) {
    const QzZone& local = QzZone::local();
    ScopedTz tz("UTC-1");  // POSIX sign: one hour east of UTC
    const QzDateTime t(2001, 1, 1, 0, 30, 0, 0, local);
    EXPECT_EQ("2000-12-31T23:30:00Z", iso(t));
    EXPECT_EQ("2001-01-01T00:30:00+01:00", iso(t, local));
    EXPECT_EQ(t, parse("2001-01-01T00:30:00+01:00"));
    EXPECT_EQ(2001u, t.year(local));
    EXPECT_EQ(2000u, t.yearGMT());
    EXPECT_EQ("00:30:00", format(t, "%X", local));
    EXPECT_EQ("2001-02-02T23:00:00Z", iso(parse("2001-02-03", local)));
    EXPECT_EQ("2001-02-03T04:05:06,100+01:00", iso(parse("2001-02-03T04:05:06.1", local), local));

    tz.set("UTC0");  // local() with offset 0 is still not utc()
    EXPECT_EQ("2000-12-31T23:30:00+00:00", iso(t, local));
    tz.set("EST5");
    EXPECT_EQ("2000-12-31T18:30:00-05:00", iso(t, local));
    EXPECT_EQ("-0500 EST", format(t, "%z %Z", local));
    // An offset with seconds is written cut to minutes, still naming the same instant.
    tz.set("LMT-0:19:32");
    EXPECT_EQ(32u, t.second(local));
    EXPECT_EQ("2000-12-31T23:49:00+00:19", iso(t, local));
    EXPECT_EQ(t, parse("2000-12-31T23:49:00+00:19"));
}

TEST(QzLocaleSnapshot, LoadsKnownNamesOnly) {
    EXPECT_NE(locale_t(0), cLocale().posixLocale());
    try {
        QzLocaleSnapshot bad("xx_NOWHERE.nope");
        FAIL() << "no error for an unknown locale";
    } catch (const Qzxmsg& e) {
        EXPECT_STREQ("Unknown locale 'xx_NOWHERE.nope'", e.why());
    }
    EXPECT_THROW(QzLocaleSnapshot(nullptr), Qzxmsg);
}
