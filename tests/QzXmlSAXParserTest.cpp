#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "QzXmlContentHandler.h"
#include "QzXmlParseError.h"
#include "QzXmlSAXParser.h"

namespace {

// Records every event as one token: "<name{uri} attr=value", "/name", "'text'".
class Recorder : public QzXmlContentHandler {
public:
    void startElement(const QzXmlName& name, const QzXmlAttributeSet& attributes) override {
        if (name.getLocalName() == QzCString(throwOn)) throw std::runtime_error("handler");
        events += " <" + name.asString().std();
        if (!name.getURI().empty()) events += "{" + name.getURI().std() + "}";
        for (const QzXmlAttribute& a : attributes)
            events += " " + a.getName().asString().std() + "=" + a.getValue().std();
    }
    void endElement(const QzXmlName& name) override { events += " /" + name.asString().std(); }
    void characters(const QzCString& text) override { events += " '" + text.std() + "'"; }
    void prolog(const QzXmlProlog& prolog) override { prologs.push_back(prolog); }

    std::string events;
    std::vector<QzXmlProlog> prologs;
    const char* throwOn = "";
};

std::string events(const std::string& doc, bool expand = true) {
    Recorder recorder;
    QzXmlSAXParser parser;
    parser.setContentHandler(&recorder);
    parser.setExpandReferences(expand);
    parser.parse(QzCString(doc), "ignored");
    return recorder.events;
}

}  // namespace

TEST(QzXmlSAXParser, EventSequences) {
    EXPECT_EQ(" <a x=1 <b /b 't' /a", events("<a x=\"1\"><b/>t</a>"));
    EXPECT_EQ(" <r 'xy' /r", events("<r>x<!--c-->y<?p d?></r>"));
    EXPECT_EQ(" <r '\n ' <p:e{u} xmlns:p=u /p:e '\n' /r",
              events("<r>\n <p:e xmlns:p='u'/>\n</r>  "));
    EXPECT_EQ(" <a", events("<a>\n"));  // elements left open are not an error
    EXPECT_EQ(" <a v=1&amp;2 '&' /a", events("<a v='1&amp;2'>&amp;</a>", false));
}

TEST(QzXmlSAXParser, Prolog) {
    Recorder none;
    QzXmlSAXParser parser;
    EXPECT_EQ(nullptr, parser.getContentHandler());
    parser.setContentHandler(&none);
    parser.parse("<a/>");
    EXPECT_TRUE(none.prologs.empty());

    Recorder r;
    parser.setContentHandler(&r);
    parser.parse("<?xml version=\"1.0\" standalone=\"no\"?><a/>");
    parser.parse("<?xml version='1.1' encoding='ISO-8859-1' standalone='yes'?><a>\xE9</a>");
    ASSERT_EQ(2u, r.prologs.size());
    EXPECT_EQ("1.0", r.prologs[0].getVersion().std());
    EXPECT_FALSE(r.prologs[0].hasEncoding());
    EXPECT_TRUE(r.prologs[0].hasStandalone());
    EXPECT_FALSE(r.prologs[0].isStandalone());
    EXPECT_EQ("ISO-8859-1", r.prologs[1].getEncoding().std());
    EXPECT_TRUE(r.prologs[1].hasEncoding() && r.prologs[1].isStandalone());
    EXPECT_EQ(" <a /a <a '\xC3\xA9' /a", r.events);
}

TEST(QzXmlSAXParser, UnmatchedEndTag) {
    QzXmlSAXParser parser;
    Recorder r;
    parser.setContentHandler(&r);
    // The message names the end tag; events before it have been delivered.
    try {
        parser.parse("<a>\n<b></a>");
        ADD_FAILURE() << "no error";
    } catch (const QzXmlParseError& e) {
        EXPECT_EQ(std::string("Unmatched start tag for a"), e.why());
        EXPECT_EQ(2u, e.getLine());
        EXPECT_EQ(8u, e.getColumn());
    }
    EXPECT_EQ(" <a '\n' <b", r.events);
    // An end tag with nothing open, also without a handler.
    parser.setContentHandler(nullptr);
    try {
        parser.parse("<a></a></b>");
        ADD_FAILURE() << "no error";
    } catch (const QzXmlParseError& e) {
        EXPECT_EQ(std::string("Unmatched start tag for b"), e.why());
        EXPECT_EQ(12u, e.getColumn());
    }
    EXPECT_NO_THROW(parser.parse("<a><b/>x</a>"));
    // Names match by URI and local name: the same bytes split otherwise, or another URI, do
    // not match; another prefix for the same URI does.
    EXPECT_THROW(parser.parse("<r xmlns:p='ab' xmlns:q='a'><p:c></q:bc></r>"), QzXmlParseError);
    EXPECT_THROW(parser.parse("<p:a xmlns:p='u'></a>"), QzXmlParseError);
    EXPECT_NO_THROW(parser.parse("<p:a xmlns:p='u'><q:b xmlns:q='u'></p:b></p:a>"));
    // Deep nesting pops back to nothing open.
    std::string deep;
    for (int i = 0; i < 20000; ++i)
        deep += "<e" + std::to_string(i % 7) + ">";
    for (int i = 19999; i >= 0; --i)
        deep += "</e" + std::to_string(i % 7) + ">";
    EXPECT_NO_THROW(parser.parse(QzCString(deep)));
    EXPECT_THROW(parser.parse(QzCString(deep + "</e0>")), QzXmlParseError);
}

TEST(QzXmlSAXParser, HandlerExceptionAndReuse) {
    QzXmlSAXParser parser;
    Recorder r;
    r.throwOn = "b";
    parser.setContentHandler(&r);
    EXPECT_THROW(parser.parse("<a><b/></a>"), std::runtime_error);
    EXPECT_THROW(parser.parse("<a x></a>"), QzXmlParseError);
    r.throwOn = "";
    r.events.clear();
    parser.parse("<c/>");
    EXPECT_EQ(" <c /c", r.events);
}

namespace {

// Parses a document of its own, on the same thread, whenever an element named "nest" starts.
class NestingRecorder : public Recorder {
public:
    void startElement(const QzXmlName& name, const QzXmlAttributeSet& attributes) override {
        Recorder::startElement(name, attributes);
        if (name.getLocalName() != QzCString("nest")) return;
        Recorder inner;
        QzXmlSAXParser parser;
        parser.setContentHandler(&inner);
        // Elements left open are no error, and stay on no one's list.
        parser.parse("<x:deep xmlns:x='urn:x'><y><z/>");
        events += " [" + inner.events + " ]";
    }
};

}  // namespace

// The open elements' names are kept in storage that passes from parse to parse in a thread:
// a parse inside a handler's callback must neither see the outer parse's names nor overwrite
// them.
TEST(QzXmlSAXParser, ParsesWithinItsOwnCallbacks) {
    NestingRecorder r;
    QzXmlSAXParser parser;
    parser.setContentHandler(&r);
    parser.parse("<a xmlns='urn:a'><nest><b/></nest><nest/></a>");
    const std::string inner = " [ <x:deep{urn:x} xmlns:x=urn:x <y <z /z ]";
    EXPECT_EQ(" <a{urn:a} xmlns=urn:a <nest{urn:a}" + inner + " <b{urn:a} /b /nest <nest{urn:a}" +
                  inner + " /nest /a",
              r.events);
    EXPECT_THROW(parser.parse("<a><nest></a>"), QzXmlParseError);
}

TEST(QzXmlSAXParser, Utf16IsRewrittenInPlace) {
    const std::u16string text = u"<?xml version='1.0'?><a>\u00E9</a>";
    std::string bytes;
    for (char16_t u : text) {
        bytes += static_cast<char>(u >> 8);
        bytes += static_cast<char>(u & 0xFF);
    }
    QzCString doc(bytes);
    Recorder r;
    QzXmlSAXParser parser;
    parser.setContentHandler(&r);
    parser.parse(doc);
    EXPECT_EQ(" <a '\xC3\xA9' /a", r.events);
    EXPECT_EQ(std::string("<\0?\0", 4), doc.std().substr(0, 4));
}

// A stream is parsed a chunk at a time into the same events, errors included.
TEST(QzXmlSAXParser, ParsesAStream) {
    const std::vector<std::string> documents = {"<a x=\"1\"><b/>t</a>", "<r>x<!--c-->y<?p d?></r>",
                                                "<r>\n <p:e xmlns:p='u'/>\n</r>  ", "<a>\n",
                                                "<a></b>"};
    for (const std::string& doc : documents) {
        std::string inMemory;
        try {
            inMemory = events(doc);
        } catch (const QzXmlParseError& e) {
            inMemory = std::string("error ") + e.why();
        }
        for (const std::size_t chunk : {1, 3, 4096}) {
            Recorder recorder;
            QzXmlSAXParser parser;
            parser.setContentHandler(&recorder);
            QzXmlReaderOptions options;
            options.chunkSize = chunk;
            parser.setReaderOptions(options);
            std::istringstream input(doc);
            try {
                parser.parse(input);
            } catch (const QzXmlParseError& e) {
                recorder.events = std::string("error ") + e.why();
            }
            EXPECT_EQ(recorder.events, inMemory) << doc << " by " << chunk;
        }
    }
}
