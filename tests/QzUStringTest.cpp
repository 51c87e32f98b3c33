#include <gtest/gtest.h>

#include <string>

#include "QzUFromUnicodeConverter.h"
#include "QzUInit.h"
#include "QzUString.h"
#include "QzUToUnicodeConverter.h"
#include "Qzxmsg.h"

namespace {

std::u16string units(const QzUString& s) {
    return std::u16string(s.data(), s.length());
}

QzCString encode(const std::u16string& s, const char* charset) {
    QzUFromUnicodeConverter encoder(charset);
    return QzUString::toBytes(reinterpret_cast<const unsigned short*>(s.data()), s.length(),
                              encoder);
}

}  // namespace

TEST(QzUString, DecodesAndEncodesThroughIcu) {
    const QzUInit guard;
    QzUToUnicodeConverter latin1("ISO-8859-1");
    const QzUString cafe(QzCString("caf\xE9"), latin1);
    EXPECT_EQ(u"caf\u00E9", units(cafe));
    EXPECT_EQ(4u, cafe.counter().length());

    // A code point outside the BMP takes two units, and the converter is reusable.
    QzUToUnicodeConverter utf8("UTF-8");
    EXPECT_EQ(u"\U0001F600x", units(QzUString(QzCString("\xF0\x9F\x98\x80x"), utf8)));
    EXPECT_EQ(u"", units(QzUString(QzCString(), utf8)));
    EXPECT_EQ(QzCString("\xF0\x9F\x98\x80"), encode(u"\U0001F600", "UTF-8"));
    EXPECT_EQ(QzCString("\xFF\xFE\0\0A\0\0\0", 8), encode(u"A", "UTF-32"));
    EXPECT_EQ(QzCString(), encode(u"", "UTF-16LE"));

    // Output far larger than the first estimate: 3 bytes per unit, then a long run.
    const std::u16string han(5000, u'\u4E2D');
    EXPECT_EQ(15000u, encode(han, "UTF-8").length());
}

TEST(QzUString, StopsOnIllegalInputAndUnknownNames) {
    QzUToUnicodeConverter utf8("UTF-8");
    try {
        QzUString(QzCString("ok\xC3"), utf8);
        FAIL() << "a truncated sequence was accepted";
    } catch (const Qzxmsg& e) {
        EXPECT_STREQ("Conversion failed: U_TRUNCATED_CHAR_FOUND", e.why());
    }
    EXPECT_THROW(QzUString(QzCString("\xFF"), utf8), Qzxmsg);
    EXPECT_THROW(encode(u"\u20AC", "US-ASCII"), Qzxmsg);
    try {
        QzUToUnicodeConverter bogus("no-such-charset");
        FAIL() << "a bogus name was opened";
    } catch (const Qzxmsg& e) {
        EXPECT_STREQ("Cannot open converter for 'no-such-charset': U_FILE_ACCESS_ERROR", e.why());
    }
    EXPECT_THROW(QzUFromUnicodeConverter(""), Qzxmsg);
}
