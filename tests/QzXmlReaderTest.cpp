#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <sstream>
#include <string>

#include "QzBoundsErr.h"
#include "QzXmlCharInfo.h"
#include "QzXmlParseError.h"
#include "QzXmlReader.h"

namespace {

// "message @line:column" of the parse error that f raises.
template <typename F>
std::string errorOf(F&& f) {
    try {
        f();
    } catch (const QzXmlParseError& e) {
        return std::string(e.why()) + " @" + std::to_string(e.getLine()) + ":" +
               std::to_string(e.getColumn());
    }
    return "no error";
}

void walk(QzXmlReader& reader) {
    while (!reader.eof())
        reader.readNextNode();
}

// The parse error that stops a walk through doc.
std::string failAt(const std::string& doc) {
    return errorOf([&] {
        QzXmlReader reader{QzCString(doc)};
        walk(reader);
    });
}

// One token per node: "<a" start, "<a/" empty element, "/a" end, "'text'" content.
std::string trace(QzXmlReader& reader) {
    std::string out;
    while (!reader.eof()) {
        reader.readNextNode();
        const std::string name = reader.getCurrentName().asString().std();
        const QzXmlReader::NodeType type = reader.getNodeType();
        out += type == QzXmlReader::Content ? " '" + reader.getValue().std() + "'"
               : type == QzXmlReader::EndTag
                   ? " /" + name
                   : " <" + name + (type == QzXmlReader::StartTag ? "" : "/");
    }
    return out.empty() ? out : out.substr(1);
}

std::string trace(const std::string& doc) {
    QzXmlReader reader{QzCString(doc)};
    return trace(reader);
}

// The text of the first content node of doc.
std::string text(const std::string& doc) {
    QzXmlReader reader{QzCString(doc)};
    reader.readNextNode();
    reader.readNextNode();
    return reader.getValue().std();
}

std::string utf16(const std::u16string& units, bool bigEndian) {
    std::string out;
    for (char16_t u : units) {
        const char hi = static_cast<char>(u >> 8), lo = static_cast<char>(u & 0xFF);
        out += bigEndian ? hi : lo;
        out += bigEndian ? lo : hi;
    }
    return out;
}

// "name{uri}=value" for each attribute, in the set's order.
std::string attributes(const QzXmlAttributeSet& set) {
    std::string out;
    for (const QzXmlAttribute& a : set) {
        out += (out.empty() ? "" : " ") + a.getName().asString().std() + "{" +
               a.getName().getURI().std() + "}=" + a.getValue().std();
    }
    return out;
}

}  // namespace

TEST(QzXmlReader, CharacterClassTable) {
    unsigned counts[4] = {};
    for (std::uint32_t c = 0; c <= 0xFFFF; ++c)
        ++counts[qzXmlCharClass(c)];
    EXPECT_EQ(2079u, counts[0]);
    EXPECT_EQ(28335u, counts[1]);
    EXPECT_EQ(606u, counts[2]);
    EXPECT_EQ(34516u, counts[3]);
    struct Row {
        std::uint32_t first, last;
        unsigned cls;
    };
    const Row rows[] = {
        {0x00, 0x08, 0},     {0x09, 0x0A, 1},     {0x0B, 0x0C, 0},     {0x0D, 0x0D, 1},
        {0x0E, 0x1F, 0},     {0x20, 0x2C, 1},     {0x2D, 0x2E, 2},     {0x30, 0x39, 2},
        {0x3A, 0x3A, 3},     {0x41, 0x5A, 3},     {0x5F, 0x5F, 3},     {0x61, 0x7A, 3},
        {0xB7, 0xB7, 2},     {0xC0, 0xD6, 3},     {0xD7, 0xD7, 1},     {0x132, 0x133, 1},
        {0x2D0, 0x2D1, 2},   {0x300, 0x345, 2},   {0x387, 0x387, 2},   {0x3005, 0x3005, 2},
        {0x3007, 0x3007, 3}, {0x3021, 0x3029, 3}, {0x4E00, 0x9FA5, 3}, {0xAC00, 0xD7A3, 3},
        {0xD800, 0xDFFF, 0}, {0xE000, 0xFFFD, 1}, {0xFFFE, 0xFFFF, 0}};
    for (const Row& row : rows) {
        for (std::uint32_t c = row.first; c <= row.last; ++c)
            ASSERT_EQ(row.cls, qzXmlCharClass(c)) << std::hex << c;
    }
    EXPECT_EQ(0u, qzXmlCharClass(0x10000));
}

// Found by fuzzing: declarations alternating between two spellings of one encoding had the
// rest of the text decoded again at each, doubling its non-ASCII bytes every time.
TEST(QzXmlReader, DecodesTheTextOnceHoweverManyDeclarationsFollow) {
    std::string doc = "<?xml version='1.0' encoding='ISO-8859-1'?><r>";
    for (int i = 0; i < 8; ++i)
        doc += "<?xml version='1' encoding='iso-8859-1'?><?xml version='1' encoding='ISO-8859-1'?>";
    QzXmlReader reader{QzCString(doc + "caf\xE9</r>")};
    reader.readElementStart("r");
    EXPECT_EQ("caf\xC3\xA9", reader.readElementValue().std());
    EXPECT_EQ("ISO-8859-1", reader.getEncodingName().std());
}

TEST(QzXmlReader, DetectsAndDecodesEncodings) {
    QzXmlReader plain("  <a/>");
    EXPECT_EQ("UTF-8", plain.getEncodingName().std());
    EXPECT_TRUE(plain.getDeclaredVersion().empty());
    EXPECT_FALSE(plain.isEncodingDeclared() || plain.isStandaloneDeclared());
    EXPECT_EQ(QzXmlReader::NoNode, plain.getNodeType());
    QzXmlReader decl("<?xml version='1.0' encoding=\"UTF-8\" standalone='no'?><a/>");
    EXPECT_EQ("1.0 no", decl.getDeclaredVersion().std() + " " + decl.getDeclaredStandalone().std());
    EXPECT_TRUE(decl.isEncodingDeclared() && decl.isStandaloneDeclared());

    EXPECT_EQ("\xC3\xA9", text("\xEF\xBB\xBF<a>\xC3\xA9</a>"));
    EXPECT_EQ("\xC3\xA9", text("<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><a>\xE9</a>"));
    // A lower-case name differs from the detected one: recorded, the bytes kept as they are.
    QzXmlReader lower("<?xml version=\"1.0\" encoding=\"utf-8\"?><a/>");
    EXPECT_EQ("utf-8", lower.getEncodingName().std());

    // A surrogate pair becomes one four-byte sequence, a lone high surrogate three bytes.
    const std::u16string units =
        u"<a x='1'>\u00E9\U0001F600\xD800"
        u"A</a>";
    QzXmlReader le{QzCString("\xFF\xFE" + utf16(units, false))};
    EXPECT_EQ("UTF-16LE", le.getEncodingName().std());
    EXPECT_EQ(
        "<a '\xC3\xA9\xF0\x9F\x98\x80\xED\xA0\x80"
        "A' /a",
        trace(le));
    QzXmlReader be{QzCString(utf16(u"<?xml version=\"1.0\"?>\n<a>\u20AC</a>", true))};
    EXPECT_EQ("UTF-16BE", be.getEncodingName().std());
    EXPECT_EQ("<a '\xE2\x82\xAC' /a", trace(be));

    // FF FE 00 00 is UTF-32LE, which the character-set converter decodes.
    std::string utf32("\xFF\xFE\0\0", 4);
    for (char c : std::string("<a>b</a>"))
        utf32 += std::string(1, c) + std::string(3, '\0');
    QzXmlReader wide{QzCString(utf32)};
    EXPECT_EQ("UTF-32LE", wide.getEncodingName().std());
    EXPECT_EQ("<a 'b' /a", trace(wide));
    // 00 00 00 3C is big-endian UCS-4 without a mark; 4C 6F A7 94 is EBCDIC, a name the
    // converter does not know.
    std::string ucs4;
    for (char c : std::string("<a>b</a>"))
        ucs4 += std::string(3, '\0') + std::string(1, c);
    EXPECT_EQ("<a 'b' /a", trace(ucs4));
    EXPECT_EQ(0u, failAt("\x4C\x6F\xA7\x94\x93\x40")
                      .rfind("Couldn't transcode from input encoding 'EBCDIC': ", 0));

    // Declaring the detected name keeps the text; "UTF-16" is another name, so the decoded
    // text is converted once more, as big-endian UTF-16, and no longer reads.
    const std::u16string tail = u"?><a/>";
    EXPECT_EQ("<a/",
              trace("\xFF\xFE" + utf16(u"<?xml version='1' encoding='UTF-16LE'" + tail, false)));
    EXPECT_EQ("Premature EOF @1:10",
              failAt("\xFF\xFE" + utf16(u"<?xml version='1' encoding='UTF-16'" + tail, false)));

    const std::string bogus = failAt("<?xml version=\"1.0\" encoding=\"no-such-set\"?><a/>");
    EXPECT_EQ(0u, bogus.rfind("Couldn't transcode from input encoding 'no-such-set': ", 0))
        << bogus;
}

TEST(QzXmlReader, ByteBufferIsReadInPlace) {
    std::string doc = utf16(u"<?xml version=\"1.0\"?><a>z</a>", true);
    QzXmlReader reader(reinterpret_cast<unsigned char*>(&doc[0]), doc.size());
    EXPECT_EQ("<a 'z' /a", trace(reader));
    EXPECT_EQ(std::string("<\0?\0", 4), doc.substr(0, 4));  // swapped where it lies
    std::istringstream stream("<a>s</a>");
    QzXmlReader fromStream(stream);
    EXPECT_EQ("<a 's' /a", trace(fromStream));
}

TEST(QzXmlReader, PrologQuirks) {
    QzXmlReader yes("<?xml version='1' standalone='yikes'?><a/>");
    EXPECT_EQ("yes", yes.getDeclaredStandalone().std());  // only the first letter counts
    QzXmlReader no("<?xml version='1' standalone=\"nah\"?><a/>");
    EXPECT_EQ("no", no.getDeclaredStandalone().std());
    // Every declaration is processed, its version appended to the one before.
    QzXmlReader twice("<?xml version=\"1.0\"?><?xml version='1.1'?><a/>");
    EXPECT_EQ("1.01.1", twice.getDeclaredVersion().std());
    EXPECT_EQ("<r 'x&e;y' /r", trace("<?xml-stylesheet href='s'?><?p a?"
                                     "?><!---->\n"
                                     "<!DOCTYPE r [<!ENTITY e \"a>b\"> <!ELEMENT r ANY>]>\n"
                                     "<!-- c --><r>x&e;y</r>"));
}

TEST(QzXmlReader, SyntaxErrors) {
    const std::pair<const char*, const char*> cases[] = {
        // Too few bytes for a look-ahead: reported where the cursor stands.
        {"", "Premature EOF @1:1"},
        {"<a>", "Premature EOF @1:1"},
        {"<?xml vers", "Premature EOF @1:7"},
        {"<?xml version='1' enc", "Premature EOF @1:20"},
        {"abcd<a/>", "First non-ws character in document wasn't '<' @1:2"},
        // A declaration without "version" ends after seven bytes; the rest then fails.
        {"<?xml foo=\"1\"?><a/>", "First non-ws character in document wasn't '<' @1:15"},
        {"<!ELEMENT a ANY><a/>", "Unknown prolog tag @1:10"},
        {"<![CDATA[x]]><a/>", "Illegal starting character for name: [ @1:4"},
        {"<!-x--><a/>", "Syntax error on comment @1:5"},
        {"<!-- a ---><a/>", "Invalid -- inside comment @1:11"},
        {"<?xml version='1.0'?>\n<!-- only -->", "Premature EOF @2:14"},
        // Only LF ends a line; CR is one more column, and columns count bytes.
        {"<a>\r\n<b>\r\n<c>\r<d / ></d></c></b></a>", "Invalid '/' found in tag @3:10"},
        {"\xEF\xBB\xBF<\xC3\xA9></\xC3\xA9 x>", "Unexpected character / @1:14"},
        {"<e a \"1\"/>", "Invalid character in attribute definition @1:7"},
        {"<e a=1/>", "invalid character in attribute definition @1:7"},
        {"<e a=\"1<2\"/>", "Syntax error: unterminated attribute value @1:9"},
        {"<e a='1'", "Premature EOF @1:9"},
        {"<r><1a/></r>", "Illegal starting character for name: 1 @1:6"},
        {"<r><-/></r>", "Illegal starting character for name: - @1:6"},
        {"<\xC3\x97/>", "Illegal starting character for name: \xC3\x97 @1:4"},
        // Past the table: class 0; the message's four-byte form always leads with F0.
        {"<r><\xF0\x9F\x98\x80/></r>",
         "Illegal starting character for name: \xF0\x9F\x98\x80 @1:9"},
        {"<r><\xE4\xB8", "Premature EOF inside character @1:5"},
        {"<r><abc", "Premature EOF @1:8"},
        {"<a>&#xff;</a>", "invalid character in hexadecimal character reference. @1:10"},
        {"<a>&#X41;</a>", "invalid character in decimal character reference. @1:10"},
        {"<a><![CDATX[x]]></a>", "'<![' wasn't followed by 'CDATA' @1:12"},
        {"<a><![CDATA x]]></a>", "'<![CDATA' wasn't followed by '[' @1:13"},
        {"<a>t<!x></a>", "Invalid character sequence <!x @1:8"},
        {"<a><!D></a>", "Invalid character sequence <!D @1:7"},
        // Content hands a comment over on its first "-", the prolog after it.
        {"<a><!----></a>", "Invalid -- inside comment @1:10"},
        {"<a>text", "Premature EOF @1:8"},
        {"<a>xx\r", "Premature EOF @1:7"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(c.second, failAt(c.first)) << c.first;
}

TEST(QzXmlReader, TagsAndNamespaces) {
    QzXmlReader r("<a:b xmlns:a=\"u1\" c:d=\"v\" xmlns:c=\"u2\"/>");
    r.readNextNode();
    EXPECT_EQ(QzXmlReader::EmptyElement, r.getNodeType());
    EXPECT_EQ("u1", r.getCurrentName().getURI().std());
    EXPECT_EQ("xmlns:a{}=u1 xmlns:c{}=u2 c:d{u2}=v", attributes(r.getCurrentAttributes()));
    EXPECT_EQ("", r.getXmlName("a:x").getURI().std());  // out of scope again

    // Unprefixed attributes have no namespace, the default one applies to elements only.
    QzXmlReader d("<e xmlns=\"u\" x='1'><p:f/></e>");
    d.readNextNode();
    EXPECT_EQ("u x{}=1 xmlns{}=u",
              d.getCurrentName().getURI().std() + " " + attributes(d.getCurrentAttributes()));
    d.readNextNode();
    EXPECT_EQ("p:f{}",
              d.getCurrentName().asString().std() + "{" + d.getCurrentName().getURI().std() + "}");
    d.readNextNode();
    EXPECT_EQ("u", d.getCurrentName().getURI().std());  // resolved before the scope closes

    // The set keeps the order of the provisional names (prefix text as URI): p before q even
    // though their URIs sort the other way; a repeated raw name keeps the last value.
    QzXmlReader o("<e q:x='3' x=\"2\" p:x=\"1\" x='4' xmlns:p='zz' xmlns:q='aa' y='a&amp;b'/>");
    o.readNextNode();
    EXPECT_EQ("xmlns:p{}=zz xmlns:q{}=aa x{}=4 p:x{zz}=1 q:x{aa}=3 y{}=a&b",
              attributes(o.getCurrentAttributes()));
    QzXmlReader raw("<e a='x\"y' b=\"1&amp;2\r\n\"/>");
    raw.setExpandReferences(false);
    raw.readNextNode();
    EXPECT_EQ("a{}=x\"y b{}=1&amp;2\r\n", attributes(raw.getCurrentAttributes()));

    QzXmlReader neg("</e>");
    neg.readNextNode();
    EXPECT_EQ(-1, neg.getDepth());
    EXPECT_EQ("<e/", trace("<e a = \"1\"b='2' />"));
    EXPECT_EQ("<r <_a/ <b/ <c\xC3\x97\xE4\xB8\x80/ /r",
              trace("<r><_a/><:b/><c\xC3\x97\xE4\xB8\x80/></r>"));
}

// Names and attributes are filed into the slots of the tag before: every change of length,
// prefix, namespace and count between neighbouring tags must still come out exact.
TEST(QzXmlReader, TagsReuseTheSlotsOfTheTagBefore) {
    QzXmlReader r(
        QzCString("<r xmlns:p='u1' xmlns:q='u2'><a k='1' p:k='22'/><a k='3' p:k='44'/>"
                  "<b q:k='long value' k=''/><b/><c xmlns='d' k='x'/><p:d p:k='5' q:k='6' k='7'/>"
                  "<e k='a&amp;b' j='1'/><f k='abc' k='d' z=\"'\"/></r>"));
    std::string out;
    while (!r.eof()) {
        r.readNextNode();
        if (r.getNodeType() != QzXmlReader::EmptyElement) continue;
        out += r.getCurrentName().asString().std() + "{" + r.getCurrentName().getURI().std() +
               "}[" + attributes(r.getCurrentAttributes()) + "] ";
    }
    EXPECT_EQ(
        "a{}[k{}=1 p:k{u1}=22] a{}[k{}=3 p:k{u1}=44] b{}[k{}= q:k{u2}=long value] b{}[] "
        "c{d}[k{}=x xmlns{}=d] p:d{u1}[k{}=7 p:k{u1}=5 q:k{u2}=6] e{}[j{}=1 k{}=a&b] "
        "f{}[k{}=d z{}='] ",
        out);

    // A tag that fails leaves no attributes behind.
    QzXmlReader bad(QzCString("<r><a k='1'/><b k='2' /x></r>"));
    bad.readNextNode();
    bad.readNextNode();
    EXPECT_EQ(1u, bad.getCurrentAttributes().size());
    EXPECT_THROW(bad.readNextNode(), QzXmlParseError);
    EXPECT_TRUE(bad.getCurrentAttributes().empty());
}

TEST(QzXmlReader, TagsOneAfterAnotherFileAsOneByOneAddsWould) {
    // Tags of one to nine attributes, and now and then of 33 to 92, one after another in a
    // document: names that collide in their local part, their prefix or both (first
    // spelling, last value), and values whose lengths grow and shrink past what the slots
    // held before.
    const std::string locals[] = {"a", "b", "ab", "\xC3\xA9"};
    const std::string prefixes[] = {"", "p:", "q:"};
    std::mt19937 random(5);
    std::string document = "<r xmlns:p='u' xmlns:q='v'>";
    std::string expected;
    for (int tag = 0; tag < 2000; ++tag) {
        document += "<e";
        QzXmlAttributeSet set;
        const bool huge = random() % 10 == 0;
        for (unsigned i = 0, n = huge ? 33 + random() % 60 : 1 + random() % 9; i < n; ++i) {
            const std::string prefix = prefixes[random() % 3];
            const std::string local = locals[random() % 4] + (huge ? locals[random() % 4] : "");
            const std::string value(random() % 40, static_cast<char>('a' + i % 26));
            document += " " + prefix + local + "='" + value + "'";
            const std::string p = prefix.empty() ? "" : prefix.substr(0, 1);
            const std::string uri = p.empty() ? "" : p == "p" ? "u" : "v";
            set.add(QzXmlName(QzCString(local), QzXmlNamespace(QzCString(p), QzCString(uri))),
                    QzCString(value));
        }
        document += "/>";
        expected += attributes(set) + "\n";
    }
    QzXmlReader reader{QzCString(document + "</r>")};
    std::string got;
    for (reader.readNextNode(), reader.readNextNode();
         reader.getNodeType() == QzXmlReader::EmptyElement; reader.readNextNode())
        got += attributes(reader.getCurrentAttributes()) + "\n";
    EXPECT_EQ(expected, got);
}

TEST(QzXmlReader, TextAndReferences) {
    EXPECT_EQ("a<bAB\xC3\xA9\xC3\xA9\xE2\x82\xAC&nbsp;'\"",
              text("<a>a&lt;b&#65;&#x42;&#xe9;&#xE9;&#x20AC;&nbsp;&apos;&quot;</a>"));
    EXPECT_EQ("\xF0\x9F\x98\x80", text("<a>&#128512;</a>"));
    EXPECT_EQ("\xF0\x80\x80\x80", text("<a>&#x100000;</a>"));  // bits above 17 dropped
    EXPECT_EQ(std::string(1, '\0'), text("<a>&#x;</a>"));
    EXPECT_EQ("l1\nl2\nl3\r\n", text("<a>l1\r\nl2\rl3<![CDATA[\r\n]]></a>"));
    EXPECT_EQ("xyz", text("<a>x<!-- c -->y<?p d?>z</a>"));
    EXPECT_EQ("a]]b]>", text("<a><![CDATA[a]]b]]]>></a>"));
    EXPECT_EQ("xy", text("<a>x<!-c-->y</a>"));

    // An empty reference name is a bounds error of the byte string, not a parse error.
    const std::pair<const char*, const char*> bounds[] = {
        {"<a>&;</a>", "Index 0 is out of bounds for a length of 0"},
        {"<a>&#;</a>", "Index 1 is out of bounds for a length of 1"}};
    for (const auto& b : bounds) {
        try {
            text(b.first);
            ADD_FAILURE() << b.first;
        } catch (const QzBoundsErr& e) {
            EXPECT_EQ(std::string(b.second), e.why());
        }
    }
}

TEST(QzXmlReader, Eof) {
    QzXmlReader r("<a/> \n x");
    r.readNextNode();
    EXPECT_TRUE(r.eof());  // one unread byte left counts as the end
    QzXmlReader more("<a/>xy");
    more.readNextNode();
    EXPECT_FALSE(more.eof());
    EXPECT_EQ("Premature EOF @1:7", errorOf([&] { more.readNextNode(); }));
    // A comment after the root element is skipped, and then the input is exhausted.
    EXPECT_EQ("Premature EOF @1:15", failAt("<a/><!-- c -->"));
}

TEST(QzXmlReader, Navigation) {
    QzXmlReader r("<r xmlns:p='u'> <a/> <p:b k='v'>t&amp;u</p:b><c/></r>");
    r.readElementStart("r");
    r.readElementStart("a");
    EXPECT_EQ("", r.readElementValue().std());
    r.readElementEnd("a");  // completes the empty element without reading
    EXPECT_EQ(QzXmlReader::EndTag, r.getNodeType());
    // A wanted name with an empty URI stands for its prefix's URI; prefixes are not compared.
    EXPECT_FALSE(r.isElementNext(QzXmlName("b")));
    EXPECT_TRUE(r.isNodePending());
    EXPECT_TRUE(r.isElementNext(QzXmlName("b", QzXmlNamespace("p", ""))));
    EXPECT_TRUE(r.isElementNext(QzXmlName("b", QzXmlNamespace("other", "u"))));
    EXPECT_EQ("k{}=v", attributes(r.readElementStart("p:b")));
    const QzCString& value = r.readElementValue();
    EXPECT_EQ("t&u", value.std());
    r.readElementEnd("p:b");
    EXPECT_EQ("", value.std());  // the end tag's read starts a new content node
    // An empty element just started counts as the next element, without a read.
    r.readElementStart("c");
    EXPECT_TRUE(r.isElementNext(QzXmlName("c")));
    EXPECT_FALSE(r.isNodePending());
    r.readElementEnd();
    EXPECT_EQ("Couldn't find start tag @1:54", errorOf([&] { r.readElementStart(); }));

    QzXmlReader m("<r>\n<b>1</b></r>");
    m.readElementStart("r");
    EXPECT_EQ("Expected a, found b @2:4", errorOf([&] { m.readElementStart("a"); }));
    QzXmlReader n("<r>\n<b/></r>");
    n.readElementStart("r");
    EXPECT_EQ("Couldn't find end tag @2:5", errorOf([&] { n.readElementEnd(); }));
    QzXmlReader e("<r><p:a xmlns:p='u'></p:a></r>");
    e.readElementStart("r");
    e.readElementStart("p:a");
    EXPECT_EQ("Expected q:a, found p:a @1:27",
              errorOf([&] { e.readElementEnd(QzXmlName("a", QzXmlNamespace("q", "w"))); }));
    // Wanted names are resolved with the scopes in force when matched: an empty element's
    // own declarations are out of scope by then, so only its URI finds it.
    QzXmlReader own("<r xmlns='u'/>");
    EXPECT_EQ("Expected r, found r @1:15", errorOf([&] { own.readElementStart("r"); }));
    QzXmlReader byUri("<r xmlns='u'/>");
    byUri.readElementStart(QzXmlName("r", QzXmlNamespace("", "u")));
    EXPECT_EQ("Expected r, found r @1:15", errorOf([&] { byUri.readElementEnd("r"); }));
}

TEST(QzXmlReader, ReadElement) {
    QzXmlReader r(
        "<r>\n <a><a/><a>x &amp; y</a></a>\n <b x=\"1&amp;2\" y='2'>t</b><c/><d/><e/></r>");
    r.readElementStart("r");
    // Raw text from the entry position, indentation included; value is the inner text.
    EXPECT_EQ("\n <a><a/><a>x &amp; y</a></a>", r.readElement("a").std());
    EXPECT_EQ("<a/><a>x &amp; y</a>", r.getValue().std());
    // A start tag read ahead is rebuilt: values as stored, a blank after each attribute.
    EXPECT_TRUE(r.isElementNext(QzXmlName("b")));
    EXPECT_EQ("<b x=\"1&2\" y=\"2\" >t</b>", r.readElement(QzXmlReader::NullName).std());
    EXPECT_EQ("x{}=1&2 y{}=2", attributes(r.getCurrentAttributes()));
    // An empty element gives nothing, or its rebuilt tag when it was read ahead.
    EXPECT_EQ("", r.readElement("c").std());
    EXPECT_FALSE(r.isElementNext(QzXmlName("d")));  // c, just started, is taken as next
    r.readElementEnd("c");
    EXPECT_TRUE(r.isElementNext(QzXmlName("d")));
    EXPECT_EQ("<d />", r.readElement("d").std());
    EXPECT_EQ("Expected x, found e @3:40", errorOf([&] { r.readElement("x"); }));
    // No element next: empty, and the end tag stays pending for readElementEnd.
    EXPECT_EQ("", r.readElement().std());
    EXPECT_TRUE(r.isNodePending());
    r.readElementEnd("r");
    EXPECT_TRUE(r.eof());

    // A declaration inside the element replaces the buffer halfway; the copy spans both.
    QzXmlReader t("<r><a>x<?xml version='1' encoding='ISO-8859-1'?>\xE9</a><a>y</r>");
    t.readElementStart("r");
    EXPECT_EQ("<a>x<?xml version='1' encoding='ISO-8859-1'?>\xC3\xA9</a>",
              t.readElement("a").std());
    EXPECT_EQ("x<?xml version='1' encoding='ISO-8859-1'?>\xC3\xA9", t.getValue().std());
    EXPECT_EQ("Premature EOF @1:17", errorOf([&] { t.readElement("a"); }));
}

TEST(QzXmlReader, DeepNesting) {
    // A million open elements are walked without recursion.
    constexpr int kDeep = 1000000;
    std::string deep;
    deep.reserve(7 * kDeep);
    for (int i = 0; i < kDeep; ++i)
        deep += "<a>";
    for (int i = 0; i < kDeep; ++i)
        deep += "</a>";
    QzXmlReader d{QzCString(deep)};
    long nodes = 0;
    for (; !d.eof(); ++nodes)
        d.readNextNode();
    EXPECT_EQ(2L * kDeep, nodes);
    EXPECT_EQ(0, d.getDepth());

    // A declaration at every level must not make each lookup walk all the levels above.
    constexpr int kDeclared = 200000;
    std::string scoped;
    for (int i = 0; i < kDeclared; ++i)
        scoped += "<p:a xmlns:p='u" + std::to_string(i) + "'>";
    QzXmlReader s{QzCString(scoped + "<p:b/>")};
    for (int i = 0; i <= kDeclared; ++i)
        s.readNextNode();
    EXPECT_EQ("u199999", s.getCurrentName().getURI().std());
    EXPECT_EQ(kDeclared, s.getDepth());
}

TEST(QzXmlReader, HugeTags) {
    // Huge tags must be filed in n log n, also when every attribute needs its own prefix.
    constexpr int kWide = 100000;
    std::string wide = "<e", decls, uses;
    for (int i = 0; i < kWide; ++i) {
        const std::string n = std::to_string(i);
        wide += " a" + n + "='" + n + "'";
        decls += " xmlns:p" + n + "='u" + n + "'";
        uses += " p" + n + ":x='" + n + "'";
    }
    QzXmlReader w{QzCString(wide + "/>")};
    w.readNextNode();
    const QzXmlAttributeSet& many = w.getCurrentAttributes();
    ASSERT_EQ(static_cast<QzSize_T>(kWide), many.size());
    EXPECT_EQ("a0", many.begin()->getName().getLocalName().std());
    EXPECT_EQ("99999", many.find(QzXmlName("a99999"))->getValue().std());

    // Names alike in their first sixteen bytes, bytes above 0x7F and a repeated name.
    QzXmlReader alike(
        "<e abcdefghijklmnopZ='1' \xC3\xA9='2' b='3' abcdefghijklmnop='4' "
        "abcdefghijklmnopA='5' b='6'/>");
    alike.readNextNode();
    std::string order;
    for (const QzXmlAttribute& a : alike.getCurrentAttributes())
        order += a.getName().getLocalName().std() + "=" + a.getValue().std() + " ";
    EXPECT_EQ("abcdefghijklmnop=4 abcdefghijklmnopA=5 abcdefghijklmnopZ=1 b=6 \xC3\xA9=2 ", order);

    // Out of order, long enough for the radix sort: names that share eight, sixteen or more
    // leading bytes, end inside or just past a block, repeat (first spelling, last value) and
    // differ only in their prefixes; filed as one-by-one adds in document order would file
    // them, the prefix text standing for the URI.
    const std::string stems[] = {
        "n", "xmlnz", "abcdefgh", "abcdefghijklmnop", "abcdefghijklmnopq", "\xC3\xA9t\xC3\xA9"};
    const std::string prefixes[] = {"", "p:", "q:"};
    std::mt19937 random(11);
    std::string tag = "<e";
    QzXmlAttributeSet expected;
    for (int i = 0; i < 600; ++i) {
        const std::string prefix = prefixes[random() % 3];
        const std::string local = stems[random() % 6] + std::to_string(random() % 150);
        const std::string value = std::to_string(i);
        tag += " " + prefix + local + "='" + value + "'";
        const std::string p = prefix.empty() ? "" : prefix.substr(0, 1);
        expected.add(QzXmlName(QzCString(local), QzXmlNamespace(QzCString(p), QzCString(p))),
                     QzCString(value));
    }
    QzXmlReader shuffled{QzCString(tag + "/>")};
    shuffled.readNextNode();
    const QzXmlAttributeSet& got = shuffled.getCurrentAttributes();
    ASSERT_EQ(expected.size(), got.size());
    auto want = expected.begin();
    for (const QzXmlAttribute& a : got) {
        ASSERT_EQ(want->getName().asString().std() + "=" + want->getValue().std(),
                  a.getName().asString().std() + "=" + a.getValue().std());
        ++want;
    }

    QzXmlReader ns{QzCString("<p7:e" + uses + decls + "/>")};
    ns.readNextNode();
    EXPECT_EQ("u7", ns.getCurrentName().getURI().std());
    const QzXmlAttributeSet& scoped = ns.getCurrentAttributes();
    ASSERT_EQ(static_cast<QzSize_T>(2 * kWide), scoped.size());
    for (const QzXmlAttribute& a : scoped) {
        if (a.getName().getLocalName() == QzCString("x")) {
            ASSERT_EQ("u" + a.getValue().std(), a.getName().getURI().std());
        }
    }
}

TEST(QzXmlReader, TruncatedInputFailsCleanly) {
    const std::string doc =
        "\xEF\xBB\xBF<?xml version=\"1.0\" encoding='UTF-8' standalone=\"yes\"?>\r\n"
        "<!DOCTYPE r [<!ENTITY e 'x'>]><!-- c --><?pi d?>\n"
        "<r xmlns='u' xmlns:p=\"v\" p:a='1&amp;2' b=\"&#x20AC;\">t&lt;&#233;\xC3\xA9<![CDATA[]]]>"
        "<p:c/><\xE4\xB8\x80>y</\xE4\xB8\x80 ></r>  ";
    const std::string utf16doc =
        "\xFF\xFE" + utf16(u"<?xml version='1.0'?><r a='&#65;'>\u00E9\U0001F600</r>", false);
    std::string utf32doc("\xFF\xFE\0\0", 4);
    for (char c : std::string("<r a='1'>t</r>"))
        utf32doc += std::string(1, c) + std::string(3, '\0');
    const std::string latin1 = "<?xml version='1.0' encoding='ISO-8859-1'?><r a='\xE9'>\xE9</r>";
    for (const std::string& full : {doc, utf16doc, utf32doc, latin1}) {
        for (std::size_t n = 0; n <= full.size(); ++n) {
            // An exact-size copy, so that any read past the end is caught by the sanitizer.
            std::unique_ptr<unsigned char[]> bytes(new unsigned char[n]);
            std::memcpy(bytes.get(), full.data(), n);
            try {
                QzXmlReader reader(bytes.get(), n);
                walk(reader);
            } catch (const QzXmlParseError&) {
                EXPECT_LT(n, full.size());
            } catch (const QzBoundsErr&) {
            } catch (...) {
                ADD_FAILURE() << "unexpected exception at length " << n;
            }
        }
    }
}
