#include <gtest/gtest.h>

#include <string>

#include "QzXmlParseError.h"
#include "QzXmlReader.h"
#include "QzXmlUtils.h"

namespace {

bool same(const char* a, const char* b) {
    return QzXmlUtils::compareXml(a, b);
}

}  // namespace

TEST(QzXmlCompare, ForgivenDifferences) {
    EXPECT_TRUE(same("<a x=\"1\" p:y='2' xmlns:p='u'/>", "<a xmlns:p='u' p:y=\"2\" x='1'/>"));
    EXPECT_FALSE(same("<a x='1'/>", "<a x='2'/>"));
    EXPECT_FALSE(same("<a x='1'/>", "<a z='1'/>"));
    // Text after an end tag is never compared; text after a start or empty tag always is.
    EXPECT_TRUE(same("<r><a>1</a>x</r>", "<r><a>1</a>y</r>"));
    EXPECT_FALSE(same("<r>x<a/></r>", "<r>y<a/></r>"));
    EXPECT_FALSE(same("<r><a/>x</r>", "<r><a/>y</r>"));
    EXPECT_FALSE(same("<r><a> x</a></r>", "<r><a>x</a></r>"));
    // White-space-only text is forgiven where the other side has a start or end tag ...
    EXPECT_TRUE(same("<r>\n  <a></a>\n</r>", "<r><a></a></r>"));
    EXPECT_TRUE(same("<r><a></a></r>", "<r>\t<a></a> </r>"));
    EXPECT_FALSE(same("<r>x<a></a></r>", "<r><a></a></r>"));
    // ... but not against an empty-element tag, which is settled first.
    EXPECT_FALSE(same("<r> <a/></r>", "<r><a/></r>"));
    // An empty-element tag matches a start tag closed at once, whatever its name.
    EXPECT_TRUE(same("<r><a/></r>", "<r><a></a></r>"));
    EXPECT_TRUE(same("<r><b></b></r>", "<r><a/></r>"));
    EXPECT_FALSE(same("<r><a/></r>", "<r><a> </a></r>"));
    EXPECT_FALSE(same("<r><a/></r>", "<r><a/>"));
    EXPECT_FALSE(same("<r><a/>", "<r><a/></r>"));
    EXPECT_FALSE(same("<r/>", "<r/><s/>"));
    EXPECT_FALSE(same("<r/>", "<s/>"));
}

TEST(QzXmlCompare, ParseErrorsPropagate) {
    EXPECT_THROW(same("<a x></a>", "<a></a>"), QzXmlParseError);
    try {
        same("<a></a>", "<a>\n<b / ></a>");
        ADD_FAILURE() << "no error";
    } catch (const QzXmlParseError& e) {
        EXPECT_EQ(std::string("Invalid '/' found in tag"), e.why());
        EXPECT_EQ(2u, e.getLine());
    }
}

TEST(QzXmlCompare, AttributeSets) {
    QzXmlAttributeSet a, b;
    EXPECT_TRUE(QzXmlUtils::compareAttributeSet(a, b));
    a.add(QzXmlName("x", QzXmlNamespace("p", "u")), "1");
    a.add(QzXmlName("y"), "2");
    b.add(QzXmlName("y"), "2");
    EXPECT_FALSE(QzXmlUtils::compareAttributeSet(a, b));
    b.add(QzXmlName("x", QzXmlNamespace("q", "u")), "1");  // prefixes do not count
    EXPECT_TRUE(QzXmlUtils::compareAttributeSet(a, b));
    b.add(QzXmlName("x", QzXmlNamespace("q", "u")), "1 ");
    EXPECT_FALSE(QzXmlUtils::compareAttributeSet(a, b));
}

TEST(QzXmlCompare, VerifyEmptyTagAndData) {
    QzXmlReader closed("<a></a>");
    closed.readNextNode();
    EXPECT_TRUE(QzXmlUtils::verifyEmptyTag(closed, closed));
    QzXmlReader blank("<a> </a>");
    blank.readNextNode();
    EXPECT_FALSE(QzXmlUtils::verifyEmptyTag(blank, blank));
    EXPECT_EQ(QzXmlReader::Content, blank.getNodeType());
    QzXmlReader empty("<a/>");
    empty.readNextNode();
    EXPECT_FALSE(QzXmlUtils::verifyEmptyTag(empty, empty));

    // Blank text is skipped by reading the next node; anything else leaves the reader be.
    QzXmlReader r("<a> \t\r\n<b/>x<c/></a>");
    r.readNextNode();
    EXPECT_FALSE(QzXmlUtils::verifyEmptyData(r, r));
    r.readNextNode();
    EXPECT_TRUE(QzXmlUtils::verifyEmptyData(r, r));
    EXPECT_EQ(QzXmlReader::EmptyElement, r.getNodeType());
    r.readNextNode();
    EXPECT_FALSE(QzXmlUtils::verifyEmptyData(r, r));
    EXPECT_EQ("x", r.getValue().std());
}
