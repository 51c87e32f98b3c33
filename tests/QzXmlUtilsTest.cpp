#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <stdexcept>
#include <string>

#include "QzDate.h"
#include "QzDateTime.h"
#include "QzXmlBadArgError.h"
#include "QzXmlName.h"
#include "QzXmlNamespace.h"
#include "QzXmlUtils.h"
#include "QzZone.h"

namespace {

// Sets the process's time zone for one test and restores it afterwards.
class LocalZone {
public:
    explicit LocalZone(const char* tz) {
        const char* old = std::getenv("TZ");
        hadOld_ = old != nullptr;
        if (hadOld_) old_ = old;
        setenv("TZ", tz, 1);
        tzset();
    }
    ~LocalZone() {
        if (hadOld_) {
            setenv("TZ", old_.c_str(), 1);
        } else {
            unsetenv("TZ");
        }
        tzset();
    }

private:
    bool hadOld_;
    std::string old_;
};

QzCString strip(const char* text, QzCString::stripType where) {
    return QzXmlUtils::stripWhiteSpaceAndNewlines(text, where);
}

QzCString iso(const QzDateTime& dt, const char* format = "%Y-%m-%dT%X") {
    return QzXmlUtils::convertDateTimeToISOString(dt, format);
}

}  // namespace

TEST(QzXmlUtils, Constants) {
    EXPECT_EQ(QzCString(" \n\t"), QzXmlUtils::WhiteSpace);
    EXPECT_EQ(QzCString("Z+-"), QzXmlUtils::TZD);
    EXPECT_EQ(QzXmlUtils::Hypen, QzXmlUtils::Hyphen);
    EXPECT_EQ(QzCString("%Y-%m-%dT%X"), QzXmlUtils::ISO8601Format);
    EXPECT_EQ(QzCString("%X"), QzXmlUtils::ISO8601Time);
    EXPECT_EQ(19u, QzXmlUtils::MinDateTimeLength);
    EXPECT_EQ(32, QzXmlUtils::BlankUtf8);
}

TEST(QzXmlUtils, StripsOnlySpaceTabAndLineFeed) {
    EXPECT_EQ(QzCString(), strip("\t\n  ", QzCString::both));
    EXPECT_EQ(QzCString(), strip(" \n ", QzCString::trailing));
    EXPECT_EQ(QzCString("a "), strip("  a ", QzCString::leading));
    EXPECT_EQ(QzCString("  a"), strip("  a \n", QzCString::trailing));
    EXPECT_EQ(QzCString("\ra"), strip("\ra\t", QzCString::both));
    EXPECT_EQ(QzCString(" a "), strip(" a ", static_cast<QzCString::stripType>(0)));
}

TEST(QzXmlUtils, SplitsQualifiedNamesAtTheFirstColon) {
    EXPECT_EQ(QzCString("a"), QzXmlUtils::getPrefix("a:b:c"));
    EXPECT_EQ(QzCString(), QzXmlUtils::getPrefix("abc"));
    QzCString prefix("old");
    QzCString local;
    QzXmlUtils::getPrefixAndLocalName("a:b:c", prefix, local);
    EXPECT_EQ(QzCString("a"), prefix);
    EXPECT_EQ(QzCString("b:c"), local);
    QzXmlUtils::getPrefixAndLocalName(":x", prefix, local);
    EXPECT_EQ(QzCString(), prefix);
    EXPECT_EQ(QzCString("x"), local);
    prefix = "kept";
    QzXmlUtils::getPrefixAndLocalName("x", prefix, local);
    EXPECT_EQ(QzCString("kept"), prefix);
    EXPECT_EQ(QzCString("x"), local);
    QzXmlUtils::getPrefixAndLocalName("", prefix, local);
    EXPECT_EQ(QzCString("kept"), prefix);
    EXPECT_EQ(QzCString(), local);
}

TEST(QzXmlUtils, ChangeNameRenamesTheOuterElement) {
    const QzXmlName plain("new");
    const QzXmlName spaced("new", QzXmlNamespace("p", "urn:u"));
    // Texts it cannot split come back unchanged.
    for (const char* same : {"", "text<a>", "<a/>", "<a>", "<a<b>"}) {
        EXPECT_EQ(QzCString(same), QzXmlUtils::changeName(spaced, same)) << same;
    }
    EXPECT_EQ(QzCString("<new>text</>\n"), QzXmlUtils::changeName(plain, "<old>text</old>"));
    EXPECT_EQ(QzCString("<new a=\"1\">x<b/></>\n"),
              QzXmlUtils::changeName(plain, "<old a=\"1\">x<b/></old>"));
    // A declaration is added, with the double blank before existing attributes.
    EXPECT_EQ(QzCString("<p:new xmlns:p=\"urn:u\" >t</>\n"),
              QzXmlUtils::changeName(spaced, "<old>t</old>"));
    EXPECT_EQ(QzCString("<p:new xmlns:p=\"urn:u\"  a=\"1\">t</>\n"),
              QzXmlUtils::changeName(spaced, "<old a=\"1\">t</old>"));
    // Any prefix already bound to the URI will do; single quotes are not recognised.
    EXPECT_EQ(QzCString("<p:new xmlns:q=\"urn:u\">t</>\n"),
              QzXmlUtils::changeName(spaced, "<old xmlns:q=\"urn:u\">t</old>"));
    EXPECT_EQ(QzCString("<p:new xmlns:p=\"urn:u\"  xmlns:q='urn:u'>t</>\n"),
              QzXmlUtils::changeName(spaced, "<old xmlns:q='urn:u'>t</old>"));
    // A default-namespace declaration does not count: its prefix is not "xmlns".
    EXPECT_EQ(QzCString("<p:new xmlns:p=\"urn:u\"  xmlns=\"urn:u\">t</>\n"),
              QzXmlUtils::changeName(spaced, "<old xmlns=\"urn:u\">t</old>"));
}

TEST(QzXmlUtils, ConvertCharsetReportsFailuresAsBadArgument) {
    EXPECT_EQ(QzCString("caf\xC3\xA9"),
              QzXmlUtils::convertCharset("caf\xE9", "ISO-8859-1", "UTF-8"));
    EXPECT_EQ(QzCString("\0<\0a\0>", 6), QzXmlUtils::convertCharset("<a>", "UTF-8", "UTF-16BE"));
    EXPECT_EQ(QzCString("\xC1\x81", 2), QzXmlUtils::convertCharset("Aa", "UTF-8", "ibm-037"));
    try {
        QzXmlUtils::convertCharset("x", "bogus", "UTF-8");
        FAIL() << "an unknown charset was accepted";
    } catch (const std::invalid_argument& e) {
        EXPECT_STREQ(
            "Character set conversion failed: Cannot open converter for 'bogus': "
            "U_FILE_ACCESS_ERROR",
            e.what());
        EXPECT_STREQ(e.what(), dynamic_cast<const QzXmlBadArgError&>(e).why());
    }
    EXPECT_THROW(QzXmlUtils::convertCharset("\xFF", "UTF-8", "UTF-16LE"), QzXmlBadArgError);
    EXPECT_THROW(QzXmlUtils::convertCharset("\xE2\x82\xAC", "UTF-8", "US-ASCII"), QzXmlBadArgError);
}

TEST(QzXmlUtils, DateTimesAreWrittenAndReadInUtc) {
    const QzDateTime dt =
        QzXmlUtils::convertISODateStringToDateTime("2001-02-03T04:05:06,25+01:00");
    ASSERT_TRUE(dt.isValid());
    EXPECT_EQ(QzCString("2001-02-03T03:05:06.250Z"), iso(dt));
    EXPECT_EQ(QzCString("2001-02-03T03:05:06Z"),
              iso(QzXmlUtils::convertISODateStringToDateTime("2001-02-03T03:05:06")));
    EXPECT_EQ(QzCString("2001-02-03T00:00:00Z"),
              iso(QzXmlUtils::convertISODateStringToDateTime("2001-02-03")));
    // Other patterns go to strftime in UTC, commas and all; a trailing blank is another pattern.
    EXPECT_EQ(QzCString("2001,03:05:06"), iso(dt, "%Y,%X"));
    EXPECT_EQ(QzCString("2001-02-03T03:05:06 "), iso(dt, "%Y-%m-%dT%X "));
    EXPECT_FALSE(QzXmlUtils::convertISODateStringToDateTime("").isValid());
    EXPECT_FALSE(QzXmlUtils::convertISODateStringToDateTime("2001-02-30").isValid());
}

TEST(QzXmlUtils, DatesUseLocalMidnightWrittenInUtc) {
    const QzDate date(3, 2, 2001);
    {
        const LocalZone zone("UTC0");
        EXPECT_EQ(QzCString("2001-02-03"), QzXmlUtils::convertDateToISOString(date));
    }
    {
        const LocalZone zone("CET-1");  // one hour east of UTC
        EXPECT_EQ(QzCString("2001-02-02"), QzXmlUtils::convertDateToISOString(date));
    }
    {
        const LocalZone zone("EST5");
        EXPECT_EQ(QzCString("2001-02-03"), QzXmlUtils::convertDateToISOString(date));
    }
    // The day read back is the UTC day, not the one written.
    const QzDate utcDay = QzXmlUtils::convertISODateStringToDate("2001-03-01T00:30:00+01:00");
    EXPECT_EQ(28u, utcDay.dayOfMonth());
    EXPECT_EQ(2u, utcDay.month());
    EXPECT_EQ(2001u, utcDay.year());
    EXPECT_FALSE(QzXmlUtils::convertISODateStringToDate("junk").isValid());
}
