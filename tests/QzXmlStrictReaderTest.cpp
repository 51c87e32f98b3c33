#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "QzXmlParseError.h"
#include "QzXmlReader.h"
#include "QzXmlSAXParser.h"
#include "StrictReading.h"

namespace {

// "line:column message" of the error that stops a strict walk through doc, or "ok".
std::string failAt(const std::string& doc, const QzXmlReaderOptions& options = strict()) {
    try {
        QzXmlReader reader(QzCString(doc), options);
        while (!reader.eof())
            reader.readNextNode();
    } catch (const QzXmlParseError& e) {
        return placed(e);
    }
    return "ok";
}

// One token per node: "<{uri}local a=v" start, "/" end, "'text'" content.
std::string trace(const std::string& doc) {
    QzXmlReader reader(QzCString(doc), strict());
    std::string out;
    while (!reader.eof()) {
        reader.readNextNode();
        const QzXmlName& name = reader.getCurrentName();
        switch (reader.getNodeType()) {
            case QzXmlReader::Content:
                out += " '" + reader.getValue().std() + "'";
                break;
            case QzXmlReader::EndTag:
                out += " /";
                break;
            default:
                out += " <{" + name.getURI().std() + "}" + name.getLocalName().std();
                for (const QzXmlAttribute& a : reader.getCurrentAttributes())
                    out += " {" + a.getName().getURI().std() + "}" +
                           a.getName().getLocalName().std() + "=" + a.getValue().std();
                if (reader.getNodeType() == QzXmlReader::EmptyElement) out += " /";
        }
    }
    return out.substr(1);
}

}  // namespace

TEST(QzXmlStrictReader, CharactersAndEncodings) {
    EXPECT_EQ(failAt("<a>\x01</a>"), "1:4 Character U+0001 is not allowed in XML");
    EXPECT_EQ(failAt("<a>\n x\xc3</a>"),
              "2:3 Invalid UTF-8: byte 0xC3 does not start a well-formed sequence");
    EXPECT_EQ(failAt("<a>\xc0\xaf</a>"),
              "1:4 Invalid UTF-8: byte 0xC0 does not start a well-formed sequence");
    EXPECT_EQ(failAt("<a>\xed\xa0\x80</a>"), "1:4 Character U+D800 is not allowed in XML");
    EXPECT_EQ(failAt("<a x='\xef\xbf\xbf'/>"), "1:7 Character U+FFFF is not allowed in XML");
    EXPECT_EQ(failAt("<a>&#1;</a>"),
              "1:4 The character reference &#1; names a character XML does not allow");
    EXPECT_EQ(failAt("<a>&#xD800;</a>"),
              "1:4 The character reference &#xD800; names a character XML does not allow");
    EXPECT_EQ(failAt("<a>&#x110000;</a>"),
              "1:4 The character reference &#x110000; names a character XML does not allow");
    EXPECT_EQ(trace("<a>&#x10FFFF;&#65;&#x4a;\x7f</a>"),
              "<{}a '\xf4\x8f\xbf\xbf"
              "AJ\x7f' /");
    // UTF-16 with an unpaired surrogate, and a declaration that contradicts the bytes.
    EXPECT_EQ(failAt(std::string("\xff\xfe<\0a\0>\0\x00\xd8<\0/\0a\0>\0", 18)),
              "1:4 Character U+D800 is not allowed in XML");
    EXPECT_EQ(failAt("<?xml version='1.0' encoding='UTF-16'?><a/>"),
              "1:31 The declared encoding 'UTF-16' does not match the document, whose bytes are in "
              "an 8-bit encoding");
    EXPECT_EQ(
        failAt("\xef\xbb\xbf<?xml version='1.0' encoding='ISO-8859-1'?><a/>"),
        "1:34 The declared encoding 'ISO-8859-1' contradicts the document's UTF-8 byte-order mark");
    EXPECT_EQ(trace("<?xml version='1.0' encoding='ISO-8859-1'?><a>caf\xe9</a>"),
              "<{}a 'caf\xc3\xa9' /");
    EXPECT_EQ(failAt("<?xml version='1.0' encoding='US-ASCII'?><a>caf\xc3\xa9</a>"),
              "1:48 The encoding is US-ASCII, but the document holds U+00E9");
}

// A fault at any offset of a long text or comment, after characters of one to four bytes,
// is reported where it stands, whichever vector steps the processor takes (CI runs the suite
// with AVX2's and again with QZXML_SIMD=sse2).
TEST(QzXmlStrictReader, FaultsAtEveryOffsetOfLongTexts) {
    const std::string mix = "ab\xc3\xa9 \xe2\x82\xac\xf0\x9f\x98\x80z";
    const struct {
        const char* bytes;
        const char* message;
    } faults[] = {
        {"\x01", "Character U+0001 is not allowed in XML"},
        {"\xc3(", "Invalid UTF-8: byte 0xC3 does not start a well-formed sequence"},
        {"\xe2\x82<", "Invalid UTF-8: byte 0xE2 does not start a well-formed sequence"},
        {"\xef\xbf\xbe", "Character U+FFFE is not allowed in XML"},
        {"\xf4\x90\x80\x80", "Invalid UTF-8: byte 0xF4 does not start a well-formed sequence"}};
    for (std::size_t length = 0; length < 80; ++length) {
        std::string before;
        while (before.size() < length)
            before += mix;
        before.resize(length);
        // Cut inside a character, the text would hold a fault before the one placed.
        while (!before.empty() && (before.back() & 0xC0) == 0x80)
            before.pop_back();
        if (!before.empty() && static_cast<unsigned char>(before.back()) >= 0xC0) before.pop_back();
        const std::string column = std::to_string(4 + before.size());
        for (const auto& fault : faults) {
            const std::string tail = std::string(fault.bytes) + std::string(40, 'x');
            ASSERT_EQ(failAt("<a>" + before + tail + "</a>"), "1:" + column + " " + fault.message)
                << length;
            ASSERT_EQ(failAt("<a><!--" + before + tail + "--></a>"),
                      "1:" + std::to_string(8 + before.size()) + " " + fault.message)
                << length;
        }
        ASSERT_EQ(failAt("<a>" + before + std::string(40, 'x') + "</a>"), "ok") << length;
    }
}

TEST(QzXmlStrictReader, XmlDeclaration) {
    EXPECT_EQ(failAt("<?xml version='2.0'?><a/>"),
              "1:16 The version must be '1.' followed by digits, found '2.0'");
    EXPECT_EQ(failAt("<?xml version=\"1.0'?><a/>"),
              "1:26 Premature EOF: a quoted version is not closed");
    EXPECT_EQ(failAt("<?xml encoding='UTF-8' version='1.0'?><a/>"),
              "1:7 Expected 'version', found 'e'");
    EXPECT_EQ(failAt("<?xml version='1.0' standalone='yes' encoding='UTF-8'?><a/>"),
              "1:38 Expected '?>', found 'e'");
    EXPECT_EQ(failAt("<?xml version='1.0'encoding='UTF-8'?><a/>"),
              "1:20 Expected whitespace or '?>', found 'e'");
    EXPECT_EQ(failAt("<?xml version='1.0' encoding='8BIT'?><a/>"),
              "1:31 Expected an encoding name (a letter, then letters, digits, '.', '_' or '-'), "
              "found '8BIT'");
    EXPECT_EQ(failAt("<?xml version='1.0' standalone='Yes'?><a/>"),
              "1:33 standalone must be 'yes' or 'no', found 'Yes'");
    EXPECT_EQ(failAt(" <?xml version='1.0'?><a/>"),
              "1:2 The XML declaration is allowed only at the start of the document");
    EXPECT_EQ(failAt("<a><?xml version='1.0'?></a>"),
              "1:4 The XML declaration is allowed only at the start of the document");
    EXPECT_EQ(failAt("<?xml version='1.1' standalone='no' ?><a/>"), "ok");
}

TEST(QzXmlStrictReader, CommentsInstructionsCdataAndText) {
    EXPECT_EQ(failAt("<a><!-- a -- b --></a>"), "1:11 '--' is not allowed inside a comment");
    EXPECT_EQ(failAt("<a><!-- a ---></a>"), "1:11 '--' is not allowed inside a comment");
    EXPECT_EQ(failAt("<a><!-- a </a>"), "1:4 The comment is not closed by '-->'");
    EXPECT_EQ(failAt("<a><?XmL x?></a>"),
              "1:4 Processing instruction targets 'xml' in any case are reserved");
    EXPECT_EQ(failAt("<a><?a:b x?></a>"),
              "1:6 A processing instruction target must not contain a colon");
    EXPECT_EQ(failAt("<a><?pi+x?></a>"),
              "1:8 Expected whitespace or '?>' after the target, found '+'");
    EXPECT_EQ(failAt("<![CDATA[x]]><a/>"), "1:1 Expected the root element, found '<'");
    EXPECT_EQ(failAt("<a>x]]>y</a>"), "1:5 ']]>' is not allowed in text");
    EXPECT_EQ(failAt("<a><!DOCTYPE a></a>"),
              "1:6 Expected '--' or '[CDATA[' after '<!', found 'D'");
    EXPECT_EQ(failAt("text<a/>"), "1:1 Expected the root element, found 't'");
    EXPECT_EQ(trace("<a>x<!--c-->y<![CDATA[<&]]]]>&amp;<?p d?>z</a>"), "<{}a 'xy<&]]&z' /");
    // Line ends: CR LF and CR become LF everywhere, CDATA included.
    EXPECT_EQ(trace("<a>1\r\n2\r3<![CDATA[\r\n]]></a>"), "<{}a '1\n2\n3\n' /");
}

TEST(QzXmlStrictReader, DocumentStructure) {
    EXPECT_EQ(failAt("<a/><!-- x --><?pi x?>\n "), "ok");
    EXPECT_EQ(failAt("<a/><b/>"),
              "1:5 Expected only comments, processing instructions and whitespace after the root "
              "element, found '<'");
    EXPECT_EQ(failAt("<a/>\ntext"),
              "2:1 Expected only comments, processing instructions and whitespace after the root "
              "element, found 't'");
    EXPECT_EQ(failAt("<a><b>"), "1:7 The document ends inside element <b>");
    EXPECT_EQ(failAt("<!-- only -->"), "1:14 The document has no root element");
    EXPECT_EQ(failAt("<a></b>"), "1:6 The end tag </b> does not match the start tag <a>");
    EXPECT_EQ(failAt("<a></a >"), "ok");
    EXPECT_EQ(failAt("<a></a x>"), "1:8 Expected '>' to end the end tag, found 'x'");
    EXPECT_EQ(failAt("<!DOCTYPE a [<!ENTITY e 'x]>'>]><a/>"), "ok");
    EXPECT_EQ(failAt("<!DOCTYPE a><!DOCTYPE a><a/>"),
              "1:13 Only one document type declaration is allowed");
    EXPECT_EQ(failAt("<!DOCTYPE a PUBLIC '{' 'u'><a/>"),
              "1:21 The character '{' is not allowed in a public identifier");
    QzXmlReaderOptions prohibit = strict();
    prohibit.doctype = QzXmlReaderOptions::Doctype::Prohibit;
    EXPECT_EQ(failAt("<!DOCTYPE a><a/>", prohibit),
              "1:1 A document type declaration is prohibited here");
    prohibit.strict = false;
    EXPECT_EQ(failAt("\n<!DOCTYPE a><a/>", prohibit),
              "2:1 A document type declaration is prohibited here");
}

TEST(QzXmlStrictReader, AttributesAndReferences) {
    EXPECT_EQ(failAt("<a x=\"1\"y=\"2\"/>"),
              "1:9 Expected whitespace before an attribute, found 'y'");
    EXPECT_EQ(failAt("<a x='1' x='2'/>"),
              "1:10 The attribute 'x' repeats the name of an attribute before it");
    EXPECT_EQ(failAt("<a x='<'/>"), "1:7 '<' is not allowed in an attribute value");
    EXPECT_EQ(failAt("<a x></a>"), "1:5 Expected '=' after the attribute name, found '>'");
    EXPECT_EQ(failAt("<a x=1/>"), "1:6 Expected a quoted attribute value, found '1'");
    EXPECT_EQ(failAt("<a>&foo;</a>"),
              "1:4 The entity 'foo' is not declared: without a document type declaration only lt, "
              "gt, amp, apos and quot are");
    EXPECT_EQ(failAt("<a>& b</a>"), "1:5 Expected a name, found ' '");
    EXPECT_EQ(failAt("<a>&amp</a>"), "1:8 Expected ';' to end the entity reference, found '<'");
    EXPECT_EQ(failAt("<a>&#x;</a>"), "1:7 Expected hexadecimal digits, found ';'");
    // Where declarations may lie unread, an undeclared entity is skipped: left as written.
    EXPECT_EQ(failAt("<!DOCTYPE a><a>&e;</a>"), "1:16 The entity 'e' is not declared");
    EXPECT_EQ(trace("<!DOCTYPE a SYSTEM 'a.dtd'><a x='&e;'>&e;</a>"), "<{}a {}x=&e; '&e;' /");
    // Not expanded when the caller says so, but checked all the same.
    QzXmlReader unexpanded(QzCString("<a x='&amp;&#65;	'/>"), strict());
    unexpanded.setExpandReferences(false);
    unexpanded.readNextNode();
    EXPECT_EQ(unexpanded.getCurrentAttributes().begin()->getValue().std(), "&amp;&#65; ");
    QzXmlReader badReference(QzCString("<a x='&#0;'/>"), strict());
    badReference.setExpandReferences(false);
    EXPECT_THROW(badReference.readNextNode(), QzXmlParseError);
    // Whitespace in values becomes spaces; references to whitespace stay what they name.
    EXPECT_EQ(trace("<a x='\t1\n\r\n2&#9;&#10;&#xD;&lt;'/>"), "<{}a {}x= 1  2\t\n\r< /");
}

TEST(QzXmlStrictReader, Namespaces) {
    EXPECT_EQ(failAt("<p:a/>"), "1:2 The namespace prefix 'p' of element 'p:a' is not declared");
    EXPECT_EQ(failAt("<a p:x='1'/>"),
              "1:4 The namespace prefix 'p' of attribute 'p:x' is not declared");
    EXPECT_EQ(failAt("<a:b:c xmlns:a='u'/>"),
              "1:2 The element name 'a:b:c' is not a qualified name: expected a prefix, one colon "
              "and a local name, each a name without colons");
    EXPECT_EQ(failAt("<a :x='1'/>").substr(0, 29), "1:4 The attribute name ':x' i");
    EXPECT_EQ(failAt("<a xmlns:p='u' p:1='1'/>").substr(0, 30), "1:16 The attribute name 'p:1' ");
    EXPECT_EQ(failAt("<xmlns:a/>"),
              "1:2 The prefix 'xmlns' is reserved for namespace declarations");
    EXPECT_EQ(failAt("<a xmlns:xmlns='u'/>"), "1:4 The prefix 'xmlns' cannot be declared");
    EXPECT_EQ(failAt("<a xmlns:p=''/>"),
              "1:4 A prefix cannot be undeclared: its namespace name must not be empty");
    EXPECT_EQ(failAt("<a xmlns:xml='u'/>").substr(0, 22), "1:4 The prefix 'xml' i");
    EXPECT_EQ(failAt("<a xmlns:p='http://www.w3.org/XML/1998/namespace'/>").substr(0, 22),
              "1:4 The prefix 'xml' i");
    EXPECT_EQ(failAt("<a xmlns='http://www.w3.org/2000/xmlns/'/>"),
              "1:4 The namespace http://www.w3.org/2000/xmlns/ cannot be bound");
    EXPECT_EQ(
        failAt("<a xmlns:p='u' xmlns:q='u' p:x='1' q:x='2'/>"),
        "1:36 The attribute 'q:x' repeats the namespace and local name of an attribute before it");
    EXPECT_EQ(failAt("<a></a:b>"), "1:6 The end tag </a:b> does not match the start tag <a>");
    // xml is bound without a declaration; xmlns="" undeclares the default namespace.
    EXPECT_EQ(trace("<a xml:lang='en' xmlns='u'><b xmlns=''/></a>"),
              "<{u}a {http://www.w3.org/XML/1998/namespace}lang=en {}xmlns=u <{}b {}xmlns= / /");
}

TEST(QzXmlStrictReader, LimitsInEitherMode) {
    QzXmlReaderOptions limits;
    limits.maxDepth = 2;
    EXPECT_EQ(failAt("<a><b><c/></b></a>", limits), "1:7 Element nesting exceeds maxDepth (2)");
    limits = QzXmlReaderOptions();
    limits.maxAttributes = 2;
    EXPECT_EQ(failAt("<a x='1' y='2' z='3'/>", limits),
              "1:16 The number of attributes exceeds maxAttributes (2)");
    limits = QzXmlReaderOptions();
    limits.maxNameLength = 3;
    EXPECT_EQ(failAt("<abc><abcd/></abc>", limits),
              "1:7 A name's length exceeds maxNameLength (3)");
    limits = QzXmlReaderOptions();
    limits.maxTextLength = 3;
    EXPECT_EQ(failAt("<a>abc</a>", limits), "ok");
    EXPECT_EQ(failAt("<a>ab&amp;c</a>", limits), "1:4 A text's length exceeds maxTextLength (3)");
    EXPECT_EQ(failAt("<a x='abcd'/>", limits), "1:4 A text's length exceeds maxTextLength (3)");
    limits = QzXmlReaderOptions();
    limits.maxDocumentLength = 5;
    EXPECT_EQ(failAt("<a>\n</a>", limits), "2:2 The document exceeds maxDocumentLength (5)");
    // A stream is read no further than the limit.
    std::istringstream longStream("<a>" + std::string(1 << 20, 'x') + "</a>");
    try {
        QzXmlReader reader(longStream, limits);
        FAIL() << "no error";
    } catch (const QzXmlParseError& e) {
        EXPECT_STREQ(e.why(), "The document exceeds maxDocumentLength (5)");
        EXPECT_EQ(longStream.tellg(), 6);
    }
    // The strict defaults, and 0 lifting one of them.
    std::string deep;
    for (int i = 0; i < 257; ++i)
        deep += "<a>";
    EXPECT_EQ(failAt(deep), "1:769 Element nesting exceeds maxDepth (256)");
    QzXmlReaderOptions unlimited = strict();
    unlimited.maxDepth = 0;
    EXPECT_EQ(failAt(deep, unlimited), "1:772 The document ends inside element <a>");
}

TEST(QzXmlStrictReader, EveryConstructorAndTheEventParserReadTheSame) {
    const std::string doc = "<a x='\t'>\r\n&amp;</a>";
    std::istringstream stream(doc);
    QzXmlReader fromStream(stream, strict());
    std::string bytes = doc;
    QzXmlReader fromBuffer(reinterpret_cast<unsigned char*>(bytes.data()), bytes.size(), strict());
    for (QzXmlReader* reader : {&fromStream, &fromBuffer}) {
        reader->readNextNode();
        EXPECT_EQ(reader->getCurrentAttributes().begin()->getValue().std(), " ");
        reader->readNextNode();
        EXPECT_EQ(reader->getValue().std(), "\n&");
    }
    // The caller's buffer is not rewritten when line ends are normalised.
    EXPECT_EQ(bytes, doc);
    QzXmlSAXParser parser;
    parser.setReaderOptions(strict());
    EXPECT_TRUE(parser.getReaderOptions().strict);
    EXPECT_THROW(parser.parse("<a><b></a>"), QzXmlParseError);
    EXPECT_NO_THROW(parser.parse("<a/><!-- after the root -->"));
}
