#include <gtest/gtest.h>

#include <string>

#include "QzXmlParseError.h"
#include "QzXmlUtils.h"

namespace {

// "message | line:column path | line:column path", or "equal".
std::string compared(const char* a, const char* b, const QzXmlCompareOptions& options = {}) {
    const QzXmlComparison c = QzXmlUtils::compareDocuments(a, b, options);
    if (c.equal) {
        EXPECT_TRUE(c.message.empty());
        return "equal";
    }
    auto place = [](const QzXmlComparison::Place& p) {
        return std::to_string(p.line) + ":" + std::to_string(p.column) + " " + p.path.std();
    };
    return c.message.std() + " | " + place(c.first) + " | " + place(c.second);
}

QzXmlCompareOptions withWhitespace() {
    QzXmlCompareOptions options;
    options.ignoreWhitespaceText = false;
    return options;
}

}  // namespace

TEST(QzXmlCompareDocuments, EqualWhereOnlySpellingDiffers) {
    // Prefixes, where namespaces are declared, attribute order and quotes, empty-element
    // tags, CDATA, references and the encoding do not count.
    EXPECT_EQ(compared("<a xmlns='urn:a' x='1' y='2'><b>t&amp;u</b><c/></a>",
                       "<p:a xmlns:p='urn:a' y=\"2\" x=\"1\"><p:b><![CDATA[t&u]]></p:b>"
                       "<p:c></p:c></p:a>"),
              "equal");
    EXPECT_EQ(
        compared("<?xml version='1.0' encoding='ISO-8859-1'?><a>caf\xe9</a>", "<a>caf\xc3\xa9</a>"),
        "equal");
    EXPECT_EQ(compared("<a>\n  <b/>\n</a>", "<a><b/></a>"), "equal");
    EXPECT_EQ(compared("<a><!--x--><?p d?><b/></a>", "<a><b/></a>"), "equal");
}

TEST(QzXmlCompareDocuments, NamesTheFirstDifferenceAndItsPlaceInBoth) {
    EXPECT_EQ(compared("<a>\n  <b>1</b>\n  <b>2</b>\n</a>", "<a><b>1</b><b>3</b></a>"),
              "text \"2\" against text \"3\" | 3:6 /a[1]/b[2] | 1:15 /a[1]/b[2]");
    EXPECT_EQ(compared("<a><b id='7' k='x'/></a>", "<a>\n<b k='x' id='8'/></a>"),
              "attribute id=\"7\" against attribute id=\"8\" | 1:4 /a[1]/b[1] | 2:1 /a[1]/b[1]");
    EXPECT_EQ(compared("<a><b id='7'/></a>", "<a><b/></a>"),
              "attribute id=\"7\" against no attribute id | 1:4 /a[1]/b[1] | 1:4 /a[1]/b[1]");
    EXPECT_EQ(compared("<a><b/></a>", "<a><b xmlns:q='urn:q' q:id='7'/></a>"),
              "no attribute {urn:q}id against attribute {urn:q}id=\"7\" | 1:4 /a[1]/b[1] | "
              "1:4 /a[1]/b[1]");
    EXPECT_EQ(compared("<a><b/><c/></a>", "<a><b/><d/></a>"),
              "element c against element d | 1:8 /a[1]/c[1] | 1:8 /a[1]/d[1]");
    EXPECT_EQ(compared("<a xmlns:p='urn:1'><p:b/></a>", "<a xmlns:p='urn:2'><p:b/></a>"),
              "element {urn:1}b against element {urn:2}b | 1:20 /a[1]/p:b[1] | 1:20 /a[1]/p:b[1]");
    // A missing node, and an extra one.
    EXPECT_EQ(compared("<a><b/><c/></a>", "<a><b/></a>"),
              "element c against end of element a | 1:8 /a[1]/c[1] | 1:8 /a[1]");
    EXPECT_EQ(compared("<a>x</a>", "<a>x<e/></a>"),
              "end of element a against element e | 1:5 /a[1] | 1:5 /a[1]/e[1]");
    EXPECT_EQ(compared("<a><b>t</b></a>", "<a><b/></a>"),
              "text \"t\" against end of element b | 1:7 /a[1]/b[1] | 1:4 /a[1]/b[1]");
    // Undeclared prefixes still tell names apart.
    EXPECT_EQ(compared("<p:a/>", "<q:a/>"),
              "element p:a against element q:a | 1:1 /p:a[1] | 1:1 /q:a[1]");
}

TEST(QzXmlCompareDocuments, WhitespaceCommentsAndInstructionsAsAsked) {
    EXPECT_EQ(compared("<a> <b/></a>", "<a><b/></a>", withWhitespace()),
              "text \" \" against element b | 1:4 /a[1] | 1:4 /a[1]/b[1]");
    // Whitespace inside text that holds more is never ignored.
    EXPECT_EQ(compared("<a> x</a>", "<a>x</a>"),
              "text \" x\" against text \"x\" | 1:4 /a[1] | 1:4 /a[1]");

    QzXmlCompareOptions comments;
    comments.compareComments = true;
    EXPECT_EQ(compared("<a>x<!--c-->y</a>", "<a>xy</a>"), "equal");
    EXPECT_EQ(compared("<a>x<!--c-->y</a>", "<a>xy</a>", comments),
              "text \"x\" against text \"xy\" | 1:4 /a[1] | 1:4 /a[1]");
    EXPECT_EQ(compared("<!--c--><a>x<!--d-->y</a>", "<!--c--><a>x<!--e-->y</a>", comments),
              "comment \"d\" against comment \"e\" | 1:13 /a[1] | 1:13 /a[1]");
    EXPECT_EQ(compared("<!--c--><a/>", "<a/>", comments),
              "comment \"c\" against element a | 1:1 / | 1:1 /a[1]");

    QzXmlCompareOptions instructions;
    instructions.compareProcessingInstructions = true;
    EXPECT_EQ(compared("<a><?t  d ?></a>", "<a><?t d ?><!--c--></a>", instructions), "equal");
    EXPECT_EQ(compared("<a><?t d?></a>", "<a><?u d?></a>", instructions),
              "processing instruction t \"d\" against processing instruction u \"d\" | 1:4 /a[1] | "
              "1:4 /a[1]");
}

TEST(QzXmlCompareDocuments, LongTextsAreCutAndControlBytesEscaped) {
    const std::string longText(100, 'x');
    const std::string a = "<a>" + longText + "</a>", b = "<a>\t\"\x01</a>";
    EXPECT_EQ(compared(a.c_str(), b.c_str()),
              "text \"" + std::string(60, 'x') +
                  "\"... against text \"\\t\\\"\\x01\" | 1:4 /a[1] | 1:4 /a[1]");
}

TEST(QzXmlCompareDocuments, MalformedOrUnmatchedInputThrows) {
    // A difference before the error is the answer; an error before any difference throws.
    EXPECT_FALSE(QzXmlUtils::compareDocuments("<a><b></a>", "<a/>").equal);
    EXPECT_THROW(QzXmlUtils::compareDocuments("<a><b></a>", "<a><b></a>"), QzXmlParseError);
    EXPECT_THROW(QzXmlUtils::compareDocuments("<a/>", "<a></b>"), QzXmlParseError);
    EXPECT_THROW(QzXmlUtils::compareDocuments("<a/>", "<a x='1></a>"), QzXmlParseError);
    try {
        QzXmlUtils::compareDocuments("<a/>", "<a>\n</b>");
        FAIL() << "no error";
    } catch (const QzXmlParseError& e) {
        EXPECT_EQ(std::string(e.why()), "Unmatched start tag for b");
        EXPECT_EQ(e.getLine(), 2u);
    }
}
