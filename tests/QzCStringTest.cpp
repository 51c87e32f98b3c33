#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "QzBoundsErr.h"
#include "QzCString.h"

TEST(QzCString, HoldsAnyByteAndChecksBounds) {
    const QzCString s("a\0b", 3);
    EXPECT_EQ(3u, s.length());
    EXPECT_EQ('\0', s[1]);
    EXPECT_EQ(std::string("a\0b", 3), s.std());
    try {
        (void)s[3];
        FAIL() << "no bounds error";
    } catch (const QzBoundsErr& e) {
        EXPECT_STREQ("Index 3 is out of bounds for a length of 3", e.why());
    }
    QzCString empty;
    EXPECT_THROW(empty[0], QzBoundsErr);
    EXPECT_THROW(s.substr(4), QzBoundsErr);
    EXPECT_EQ(QzCString(), s.substr(3));

    QzCString r(64);
    EXPECT_TRUE(r.empty());
    EXPECT_GE(r.capacity(), 64u);
    r.append("xy", 2).append('-', 3).append(s);
    r += "!";
    r += '?';
    EXPECT_EQ(QzCString("xy---a\0b!?", 10), r);
    r.resize(12);
    EXPECT_EQ(QzCString("xy---a\0b!?\0\0", 12), r);
    r.resize(2);
    EXPECT_EQ(QzCString("xy"), r);
    EXPECT_EQ(QzCString("xyab"), r + "ab");
    std::ostringstream out;
    out << s;
    EXPECT_EQ(std::string("a\0b", 3), out.str());
}

TEST(QzCString, CompareExactAndIgnoreCase) {
    // Exact compare is unsigned: 0xE9 sorts after 'z'.
    EXPECT_GT(QzCString("\xE9").compareTo("z"), 0);
    EXPECT_LT(QzCString("Z").compareTo("a"), 0);
    EXPECT_EQ(-1, QzCString("ab").compareTo("abc"));
    EXPECT_EQ(1, QzCString("abc").compareTo("ab"));
    EXPECT_EQ(0, QzCString().compareTo(QzCString()));
    EXPECT_TRUE(QzCString("Z") < QzCString("a"));

    const auto ic = QzCString::ignoreCase;
    EXPECT_EQ(0, QzCString("HeLLo").compareTo("hello", ic));
    EXPECT_EQ('a' - 'b', QzCString("A").compareTo("b", ic));
    EXPECT_EQ(-1, QzCString("AB").compareTo("abc", ic));
    EXPECT_EQ(1, QzCString("ABC").compareTo("ab", ic));
    // '[' (0x5B) against 'A': tolower maps 'A' to 'a' (0x61), so '[' sorts first.
    EXPECT_EQ('[' - 'a', QzCString("[").compareTo("A", ic));

    // The strict variant never folds a letter against a non-letter.
    EXPECT_EQ('[' - 'A', qzCStrCompareIgnoreCaseStrict("[", 1, "A", 1));
    EXPECT_EQ(0, qzCStrCompareIgnoreCaseStrict("aBc", 3, "AbC", 3));
    EXPECT_EQ(-1, qzCStrCompareIgnoreCaseStrict("ab", 2, "ABc", 3));
    EXPECT_EQ(1, qzCStrCompareIgnoreCaseStrict("abc", 3, "AB", 2));
    // Signed bytes: 0xE9 is negative, so it sorts before ASCII.
    EXPECT_LT(qzCStrCompareIgnoreCaseStrict("\xE9", 1, "a", 1), 0);
}

TEST(QzCString, FindAndReadWholeStream) {
    const char text[] = "key=value;x";
    EXPECT_EQ(3u, qzCStrFindFirstOf(text, 11, "=;", 2, 0));
    EXPECT_EQ(9u, qzCStrFindFirstOf(text, 11, "=;", 2, 4));
    EXPECT_EQ(QzCString::npos, qzCStrFindFirstOf(text, 11, "=;", 2, 11));
    EXPECT_EQ(QzCString::npos, qzCStrFindFirstOf(text, 11, "", 0, 0));
    EXPECT_EQ(QzCString::npos, qzCStrFindFirstOf(text, 0, "k", 1, 0));
    EXPECT_EQ(QzCString::npos, qzCStrFindFirstOf(text, 11, "#", 1, 0));
    // Bytes above 0x7F are members too.
    EXPECT_EQ(1u, qzCStrFindFirstOf("a\xFF", 2, "\xFF", 1, 0));

    const QzCString s(text);
    EXPECT_EQ(3u, s.findFirstOf("=;"));
    EXPECT_EQ(10u, s.find('x'));
    EXPECT_EQ(QzCString::npos, s.find('#'));

    std::istringstream in(std::string("skip\0rest\xFF", 10));
    char first[4];
    in.read(first, 4);
    QzCString rest("old");
    rest.readFile(in);
    EXPECT_EQ(QzCString("\0rest\xFF", 6), rest);
}
