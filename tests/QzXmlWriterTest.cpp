#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "QzXmlStringWriter.h"
#include "QzXmlWriter.h"

namespace {

const std::string XsiUri = "http://www.w3.org/2001/XMLSchema-instance";

// Records every sink call, so that tests see how output is split.
class RecordingWriter : public QzXmlWriter {
public:
    void writeToSink(const QzCString& text) override { calls.push_back("S:" + text.std()); }
    void writeToSink(const char* bytes, unsigned long n) override {
        calls.push_back("N:" + std::string(bytes, n));
    }
    void writeToSink(char c) override { calls.push_back(std::string("C:") + c); }
    void flush() override {}

    std::vector<std::string> calls;
};

std::string repeated(const std::string& text, std::size_t times) {
    std::string out;
    for (std::size_t i = 0; i < times; ++i)
        out += text;
    return out;
}

std::string escapedText(const std::string& text) {
    QzXmlStringWriter w;
    w.write(text, true);
    return w.getString().std();
}

std::string escapedAttribute(const std::string& value) {
    QzXmlStringWriter w;
    w.writeAttribute("a", value, true);
    return w.getString().std();
}

QzXmlName named(const char* local, const char* prefix, const char* uri) {
    return QzXmlName(local, QzXmlNamespace(prefix, uri));
}

}  // namespace

TEST(QzXmlWriter, WritesTheWorkedExampleByteForByte) {
    QzXmlStringWriter w;
    const QzXmlName root = named("root", "a", "urn:x");
    w.writeElementStart(root, QzXmlAttributeSet(), false);
    w.writeNewLine();
    w.writeSimpleElement("item", "x<y & z", "", false);
    w.writeSimpleElement(QzXmlName("n"), "5", "xsd:int", true);
    w.writeElementEnd(root);
    EXPECT_EQ(
        "<a:root xmlns:a=\"urn:x\">\n<item>x&lt;y &amp; z</item>\n"
        "<n xsi:type=\"xsd:int\" xmlns:xsi=\"" +
            XsiUri + "\">5</n>\n</a:root>",
        w.getString().std());
}

TEST(QzXmlWriter, EscapesTextAndAttributesByDifferentRules) {
    EXPECT_EQ("a&#xD;\n\t&lt;b&gt;&amp;amp;&amp;#38;\"'", escapedText("a\r\n\t<b>&amp;&#38;\"'"));
    EXPECT_EQ(" a=\"&quot;&apos;&lt;&gt;\r\n\t\"", escapedAttribute("\"'<>\r\n\t"));
    // Predefined references stay; numeric ones and bare or cut-off ampersands are escaped.
    EXPECT_EQ(" a=\"a&amp;b&lt;&gt;&quot;&apos;\"",
              escapedAttribute("a&amp;b&lt;&gt;&quot;&apos;"));
    EXPECT_EQ(" a=\"a&amp;b a&amp;#38;b &amp;quot &amp;am\"",
              escapedAttribute("a&b a&#38;b &quot &am"));
    EXPECT_EQ(" a=\"x&amp;\"", escapedAttribute("x&"));

    QzXmlStringWriter raw;
    raw.write("<&>", false);
    raw.writeAttribute(QzXmlName("v", QzXmlNamespace("p", "urn:p")), "<\"&>", false);
    EXPECT_EQ("<&> p:v=\"<\"&>\"", raw.getString().std());

    // Past the fixed buffer the heap takes over; still one sink call per string.
    RecordingWriter w;
    w.write(std::string(300, '&'), true);
    w.writeAttribute("a", std::string(200, '"'), true);
    ASSERT_EQ(2u, w.calls.size());
    EXPECT_EQ("N:" + repeated("&amp;", 300), w.calls[0]);
    EXPECT_EQ("N: a=\"" + repeated("&quot;", 200) + "\"", w.calls[1]);
}

TEST(QzXmlWriter, IndentsOnlyTheFirstOutputAfterANewline) {
    RecordingWriter w;
    w.decrementIndent();
    EXPECT_EQ(0u, w.getIndent());
    w.incrementIndent();
    w.writeIndentChars();  // not at a line start: nothing
    w.write("a", false);
    w.writeNewLine();
    w.write("b", false);
    w.write("c", false);
    w.writeNewLine();
    w.writeAttribute("k", "v", true);
    w.decrementIndent();
    w.writeNewLine();
    w.writeElementStart(QzXmlName("e"), QzXmlAttributeSet(), true);
    const std::vector<std::string> expected = {"S:a",  "C:\n", "C: ", "C: ", "S:b",
                                               "S:c",  "C:\n", "C: ", "C: ", "N: k=\"v\"",
                                               "C:\n", "S:<e", "S:/>"};
    EXPECT_EQ(expected, w.calls);
}

TEST(QzXmlWriter, DeclaresEachNamespaceWhereFirstNeeded) {
    QzXmlStringWriter w;
    const QzXmlName outer = named("outer", "p", "urn:p");
    QzXmlAttributeSet attributes;
    attributes.add(QzXmlName("id"), "urn:pseudo");  // also counts as prefix id for urn:pseudo
    attributes.addNamespaceAttribute(QzXmlNamespace("q", "urn:q"));
    w.addNamespace(QzXmlNamespace("doc", "urn:doc"));  // document scope: never written
    w.writeElementStart(outer, attributes, false);
    w.writeElementStart(named("same", "p", "urn:p"), QzXmlAttributeSet(), true);
    w.writeElementStart(named("alias", "other", "urn:p"), QzXmlAttributeSet(), true);
    w.writeElementStart(named("declared", "q", "urn:q"), QzXmlAttributeSet(), true);
    w.writeElementStart(named("pseudo", "s", "urn:pseudo"), QzXmlAttributeSet(), true);
    w.writeElementStart(named("doc", "d", "urn:doc"), QzXmlAttributeSet(), true);
    w.writeElementStart(named("dflt", "", "urn:d"), QzXmlAttributeSet(), false);
    w.writeElementStart(named("inner", "", "urn:d"), QzXmlAttributeSet(), true);
    w.writeElementStart(named("other", "", "urn:e"), QzXmlAttributeSet(), true);
    // Bound only as the default namespace, so a prefix for it is declared again.
    w.writeElementStart(named("pre", "x", "urn:d"), QzXmlAttributeSet(), true);
    w.writeElementEnd(named("dflt", "", "urn:d"));
    w.writeElementStart(named("after", "", "urn:d"), QzXmlAttributeSet(), true);
    w.writeElementEnd(outer);
    w.writeElementStart(named("again", "p", "urn:p"), QzXmlAttributeSet(), true);
    EXPECT_EQ(
        "<p:outer id=\"urn:pseudo\" xmlns:p=\"urn:p\" xmlns:q=\"urn:q\">"
        "<p:same/><other:alias/><q:declared/><s:pseudo/><d:doc/>"
        "<dflt xmlns=\"urn:d\"><inner/><other xmlns=\"urn:e\"/>"
        "<x:pre xmlns:x=\"urn:d\"/></dflt><after xmlns=\"urn:d\"/></p:outer>"
        "<p:again xmlns:p=\"urn:p\"/>",
        w.getString().std());
}

// Elements without a namespace ask the scopes nothing, so their attributes' pseudo-
// declarations wait; the first prefixed name below them must still see every one, in order,
// and none of those closed before it.
TEST(QzXmlWriter, PseudoDeclarationsOfAncestorsWithoutNamespacesCount) {
    QzXmlStringWriter w;
    QzXmlAttributeSet outer, middle, closed;
    outer.add(QzXmlName("a"), "urn:x");
    middle.add(QzXmlName("b"), "urn:y");
    middle.add(QzXmlName("c"), "urn:x");  // urn:x has prefix a already: c is not added
    closed.add(QzXmlName("z"), "urn:z");
    w.writeElementStart(QzXmlName("r"), outer, false);
    w.writeElementStart(QzXmlName("m"), middle, false);
    w.writeElementStart(QzXmlName("gone"), closed, true);
    w.writeElementStart(named("x", "p", "urn:x"), QzXmlAttributeSet(), true);
    w.writeElementStart(named("y", "q", "urn:y"), QzXmlAttributeSet(), true);
    w.writeElementStart(named("z", "s", "urn:z"), QzXmlAttributeSet(), true);
    w.writeElementEnd(QzXmlName("m"));
    w.writeElementStart(named("y", "q", "urn:y"), QzXmlAttributeSet(), true);
    w.writeElementEnd(QzXmlName("r"));
    EXPECT_EQ(
        "<r a=\"urn:x\"><m b=\"urn:y\" c=\"urn:x\"><gone z=\"urn:z\"/><p:x/><q:y/>"
        "<s:z xmlns:s=\"urn:z\"/></m><q:y xmlns:q=\"urn:y\"/></r>",
        w.getString().std());
}

TEST(QzXmlWriter, WritesSimpleElementsAndDefaultDeclarationsItIsGiven) {
    QzXmlStringWriter w;
    w.writeSimpleElement("empty", "", "", false);
    w.writeSimpleElement("typed", "", "xsd:string", true);
    QzXmlAttributeSet withDefault;
    withDefault.setDefaultNamespaceAttribute("urn:d");
    w.writeElementStart(QzXmlName("r"), withDefault, false);
    w.writeSimpleElement(named("v", "xsi", XsiUri.c_str()), "&", "t", true);
    EXPECT_EQ("<empty/>\n<typed xsi:type=\"xsd:string\" xmlns:xsi=\"" + XsiUri + "\"/>\n" +
                  "<r xmlns=\"urn:d\"><xsi:v xsi:type=\"t\" xmlns:xsi=\"" + XsiUri +
                  "\">&amp;</xsi:v>\n",
              w.getString().std());
}

TEST(QzXmlStringWriter, GrowsByDoublingFromAtLeast4096Bytes) {
    QzXmlStringWriter w(0);
    w.writeToSink("", 0);
    w.writeToSink(nullptr, 5);
    w.writeToSink(QzCString());
    EXPECT_EQ(0u, w.getCapacity());
    w.writeToSink('x');
    EXPECT_EQ(4096u, w.getCapacity());
    w.writeToSink(std::string(10000, 'y').c_str(), 10000);
    EXPECT_EQ(2 * (4096u + 10000u), w.getCapacity());
    EXPECT_EQ(10001u, w.getLength());

    QzXmlStringWriter small(10);
    small.writeToSink(QzCString("0123456789", 10));
    EXPECT_EQ(10u, small.getCapacity());
    small.writeToSink(QzCString("\0z", 2));
    EXPECT_EQ(4096u, small.getCapacity());
    EXPECT_EQ(std::string("0123456789\0z", 12), small.getString().std());
    small.reset();
    EXPECT_EQ(0u, small.getLength());
    EXPECT_EQ(4096u, small.getCapacity());

    QzXmlStringWriter large(5000);
    large.writeToSink(std::string(5000, 'a').c_str(), 5000);
    large.writeToSink('b');
    EXPECT_EQ(10000u, large.getCapacity());
    EXPECT_EQ(std::string(5000, 'a') + "b", large.getString().std());
}

// Long strings are scanned in blocks: a byte to replace must be found at every position,
// in a block or in the rest after the last one, and bytes that only the other rules replace
// (quotes in text, a carriage return in a value) must not stop the scan.
TEST(QzXmlWriter, EscapesAtEveryPositionOfLongStrings) {
    auto reference = [](const std::string& text, bool attribute) {
        std::string out;
        for (char c : text) {
            switch (c) {
                case '&':
                    out += "&amp;";
                    break;
                case '<':
                    out += "&lt;";
                    break;
                case '>':
                    out += "&gt;";
                    break;
                case '\r':
                    out += attribute ? "\r" : "&#xD;";
                    break;
                case '"':
                    out += attribute ? "&quot;" : "\"";
                    break;
                case '\'':
                    out += attribute ? "&apos;" : "'";
                    break;
                default:
                    out += c;
            }
        }
        return out;
    };
    for (std::size_t length = 1; length <= 40; ++length) {
        for (std::size_t at = 0; at < length; ++at) {
            for (char special : std::string("&<>\r\"'")) {
                std::string text(length, 'x');
                text[at / 3] = '\r';
                text[at / 2] = '"';
                text[at] = special;
                ASSERT_EQ(reference(text, false), escapedText(text)) << length << " " << at;
                ASSERT_EQ(" a=\"" + reference(text, true) + "\"", escapedAttribute(text))
                    << length << " " << at;
            }
        }
    }
}

namespace {

// A string writer that is not exactly QzXmlStringWriter, so its output takes the virtual
// sink calls.
class DerivedStringWriter : public QzXmlStringWriter {
public:
    using QzXmlStringWriter::QzXmlStringWriter;
};

}  // namespace

// A plain QzXmlStringWriter fills its buffer directly; the bytes and every step of the
// buffer's growth must be those that the sink calls give.
TEST(QzXmlStringWriter, WritesDirectlyAsItsSinkCallsWould) {
    for (unsigned long initial : {0ul, 1ul, 40ul, 5000ul}) {
        QzXmlStringWriter direct(initial);
        DerivedStringWriter derived(initial);
        QzXmlAttributeSet attributes;
        attributes.add(QzXmlName("id"), "a<b");
        attributes.add(QzXmlName("v", QzXmlNamespace("p", "urn:p")), std::string(300, '"'));
        for (int round = 0; round < 60; ++round) {
            const std::string text(round * 37 % 700, round % 3 ? '&' : 'x');
            for (QzXmlStringWriter* w : {static_cast<QzXmlStringWriter*>(&direct),
                                         static_cast<QzXmlStringWriter*>(&derived)}) {
                w->writeElementStart(QzXmlName("e", QzXmlNamespace("q", "urn:q")), attributes,
                                     round % 5 == 0);
                w->write(text, true);
                w->write(text, false);
                w->writeAttribute("a", text, round % 2 == 0);
                w->writeNewLine();
                w->incrementIndent();
                if (round % 5 != 0)
                    w->writeElementEnd(QzXmlName("e", QzXmlNamespace("q", "urn:q")));
            }
            ASSERT_EQ(derived.getString().std(), direct.getString().std())
                << initial << " " << round;
            ASSERT_EQ(derived.getCapacity(), direct.getCapacity()) << initial << " " << round;
        }
    }
}

// A start tag goes into the buffer in one piece when its longest possible form fits. With
// every byte of its values replaced by the longest reference that form is exact, so some
// capacity puts the tag right at the buffer's end: there, too, bytes and growth must be the
// sink calls'.
TEST(QzXmlStringWriter, WritesAStartTagAtTheEdgeOfItsBufferAsItsSinkCallsWould) {
    const QzXmlName outer("o", QzXmlNamespace("q", "urn:q"));
    const QzXmlName inner("e", QzXmlNamespace("q", "urn:q"));
    QzXmlAttributeSet declaring;
    declaring.add(QzXmlName("x", QzXmlNamespace("p", "urn:p")), "");
    QzXmlAttributeSet attributes;
    attributes.add(QzXmlName("v", QzXmlNamespace("p", "urn:p")), std::string(7, '"'));
    attributes.add(QzXmlName("w"), "''");
    for (unsigned long initial = 0; initial < 160; ++initial) {
        QzXmlStringWriter direct(initial);
        DerivedStringWriter derived(initial);
        for (QzXmlStringWriter* w : {static_cast<QzXmlStringWriter*>(&direct),
                                     static_cast<QzXmlStringWriter*>(&derived)}) {
            w->writeElementStart(outer, declaring, false);
            w->writeElementStart(inner, attributes, true);
        }
        ASSERT_EQ(derived.getString().std(), direct.getString().std()) << initial;
        ASSERT_EQ(derived.getCapacity(), direct.getCapacity()) << initial;
    }
}

namespace {

// A writer that re-exports, under its own access, every operation of QzXmlWriter: none of
// them may share its name with a private member of the writer or of the string writer.
class ReexportingWriter : public QzXmlStringWriter {
public:
    using QzXmlStringWriter::flush;
    using QzXmlStringWriter::getCapacity;
    using QzXmlStringWriter::getLength;
    using QzXmlStringWriter::getString;
    using QzXmlStringWriter::reset;
    using QzXmlStringWriter::writeToSink;
    using QzXmlWriter::addNamespace;
    using QzXmlWriter::addNamespaceToScopeIfNecessary;
    using QzXmlWriter::decrementIndent;
    using QzXmlWriter::getCompleteAttributeSet;
    using QzXmlWriter::getIndent;
    using QzXmlWriter::incrementIndent;
    using QzXmlWriter::write;
    using QzXmlWriter::writeAttribute;
    using QzXmlWriter::writeElementEnd;
    using QzXmlWriter::writeElementStart;
    using QzXmlWriter::writeIndentChars;
    using QzXmlWriter::writeNewLine;
    using QzXmlWriter::writeSimpleElement;

    // An overload of its own beside the re-exported ones.
    void writeAttribute(const char* name, int value) {
        writeAttribute(name, std::to_string(value), false);
    }
};

}  // namespace

TEST(QzXmlWriter, DerivedWriterReexportsEveryOperation) {
    ReexportingWriter w;
    const QzXmlName item("item", QzXmlNamespace("p", "urn:p"));
    w.writeElementStart(item, QzXmlAttributeSet(), false);
    w.writeAttribute("n", 7);
    w.writeAttribute(QzXmlName("k"), "a\"b", true);
    w.writeAttribute(QzCString("raw"), "&amp;<", true);
    w.writeElementEnd(item);
    EXPECT_EQ(w.getString().std(),
              "<p:item xmlns:p=\"urn:p\"> n=\"7\" k=\"a&quot;b\" raw=\"&amp;&lt;\"</p:item>");
}
