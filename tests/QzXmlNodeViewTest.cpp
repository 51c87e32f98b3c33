// Node views: what they show, how long what they show lives, and the owned strings filed from
// them late. Every document of the tests and the W3C suite is also read through views in the
// streaming tests, against the owned accessors.
#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

#include "QzXmlBoundsError.h"
#include "QzXmlFeedReader.h"
#include "QzXmlParseError.h"
#include "QzXmlReader.h"
#include "QzXmlSAXParser.h"
#include "QzXmlViewHandler.h"

namespace {

std::string viewed(const QzXmlNodeView& v) {
    std::string out = std::string(v.qualifiedName()) + "{" + std::string(v.uri()) + "}";
    for (std::size_t i = 0; i < v.attributeCount(); ++i) {
        const QzXmlAttributeView& a = v.attribute(i);
        out += " " + std::string(a.prefix) + "|" + std::string(a.localName) + "{" +
               std::string(a.uri) + "}=" + std::string(a.value);
    }
    return out + " [" + std::string(v.text()) + "]";
}

std::string owned(const QzXmlReader& r) {
    std::string out =
        r.getCurrentName().asString().std() + "{" + r.getCurrentName().getURI().std() + "}";
    for (const QzXmlAttribute& a : r.getCurrentAttributes()) {
        out += " " + a.getName().getPrefix().std() + "|" + a.getName().getLocalName().std() + "{" +
               a.getName().getURI().std() + "}=" + a.getValue().std();
    }
    return out + " [" + r.getValue().std() + "]";
}

}  // namespace

// Names split at the first colon, attributes sorted and merged as the owned set has them,
// values expanded in the reader's scratch, the last tag and text shown until replaced.
TEST(QzXmlNodeView, ShowsWhatTheOwnedAccessorsReturn) {
    const std::string doc =
        "<p:r xmlns:p='urn:p' xmlns='urn:d'><a:b:c z='1' p:y='&lt;2' y='3' z='4'/>"
        "t&amp;u\r\nv<![CDATA[w]]></p:r>";
    QzXmlReader r{QzCString(doc)};
    const QzXmlNodeView& v = r.getNodeView();
    EXPECT_EQ(viewed(v), "{} []");
    r.readNextNode();
    EXPECT_EQ(viewed(v), "p:r{urn:p} xmlns|p{}=urn:p |xmlns{}=urn:d []");
    r.readNextNode();
    EXPECT_EQ(v.prefix(), "a");
    EXPECT_EQ(v.localName(), "b:c");
    EXPECT_EQ(viewed(v), "a:b:c{} |y{}=3 p|y{urn:p}=<2 |z{}=4 []");
    r.readNextNode();
    EXPECT_EQ(viewed(v), "a:b:c{} |y{}=3 p|y{urn:p}=<2 |z{}=4 [t&u\nvw]");
    r.readNextNode();
    EXPECT_EQ(viewed(v), "p:r{urn:p} |y{}=3 p|y{urn:p}=<2 |z{}=4 [t&u\nvw]");
    EXPECT_EQ(owned(r), viewed(v));
    try {
        v.attribute(3);
        FAIL() << "no error";
    } catch (const QzXmlBoundsError& e) {
        EXPECT_STREQ(e.why(), "Attribute index 3 is past the 3 attributes");
    }
}

// Owned strings asked for only after later reads are filed from what the view kept: the tag's
// own scope has closed and the next one too, and a streaming reader's window has moved on.
TEST(QzXmlNodeView, OwnedStringsFiledLate) {
    const std::string doc = "<r><s><a xmlns:p='urn:p' p:x='1&amp;' y='2'/>text</s></r>";
    for (const bool streamed : {false, true}) {
        QzXmlReaderOptions options;
        options.chunkSize = 1;
        std::istringstream input(doc);
        const std::unique_ptr<QzXmlReader> r = streamed
                                                   ? std::make_unique<QzXmlReader>(input, options)
                                                   : std::make_unique<QzXmlReader>(QzCString(doc));
        for (int i = 0; i < 6; ++i)
            r->readNextNode();
        EXPECT_EQ(r->getNodeType(), QzXmlReader::EndTag);
        EXPECT_EQ(viewed(r->getNodeView()), "r{} xmlns|p{}=urn:p p|x{urn:p}=1& |y{}=2 [text]");
        EXPECT_EQ(owned(*r), viewed(r->getNodeView()));
    }
}

// A reference taken to an owned string keeps showing each node as it is read, as before views.
TEST(QzXmlNodeView, HeldReferencesFollowTheReader) {
    QzXmlReader r{QzCString("<r a='1'><b c='2'>x</b><d/>y</r>")};
    const QzXmlName& name = r.getCurrentName();
    const QzXmlAttributeSet& attributes = r.getCurrentAttributes();
    const QzCString& value = r.getValue();
    for (int i = 0; i < 3; ++i)
        r.readNextNode();
    EXPECT_EQ(name.getLocalName().std(), "b");
    EXPECT_EQ(attributes.begin()->getValue().std(), "2");
    EXPECT_EQ(value.std(), "x");
    r.readNextNode();
    r.readNextNode();
    EXPECT_EQ(name.getLocalName().std(), "d");
    EXPECT_TRUE(attributes.empty());
}

// readElement leaves the element's own attributes current, in the view as in the owned set;
// addNamespace keeps the view whole.
TEST(QzXmlNodeView, ReadElementAndAddNamespace) {
    QzXmlReader r{QzCString("<r xmlns:p='urn:p'><e p:a='1'><f b='2'>t</f></e><g/></r>")};
    r.readElementStart(QzCString("r"));
    EXPECT_EQ(r.readElement(QzCString("e")).std(), "<e p:a='1'><f b='2'>t</f></e>");
    EXPECT_EQ(viewed(r.getNodeView()), "e{} p|a{urn:p}=1 [<f b='2'>t</f>]");
    EXPECT_EQ(owned(r), viewed(r.getNodeView()));
    for (int i = 0; i < 100; ++i)
        r.addNamespace(QzXmlNamespace(QzCString("q" + std::to_string(i)), QzCString("urn:q")));
    EXPECT_EQ(viewed(r.getNodeView()), "e{} p|a{urn:p}=1 [<f b='2'>t</f>]");
}

// Fed input may move the window: the node read last stays whole across feed().
TEST(QzXmlNodeView, FedNodeOutlivesTheNextFeed) {
    QzXmlFeedReader reader;
    const std::string start = "<r><a xmlns:p='urn:p' p:k='v'>some text";
    reader.feed(start.data(), start.size());
    while (reader.next() == QzXmlFeedReader::Result::Node) {
    }
    EXPECT_EQ(viewed(reader.getNodeView()), "a{} p|k{urn:p}=v xmlns|p{}=urn:p []");
    const std::string more(100000, 'x');
    reader.feed(more.data(), more.size());
    EXPECT_EQ(viewed(reader.getNodeView()), "a{} p|k{urn:p}=v xmlns|p{}=urn:p []");
    reader.feed("</a></r>", 8);
    reader.finish();
    EXPECT_EQ(reader.next(), QzXmlFeedReader::Result::Node);
    EXPECT_EQ(reader.getNodeView().text().size(), 9 + more.size());
}

namespace {

// Records view events as the content handler tests record owned ones.
class ViewRecorder : public QzXmlViewHandler {
public:
    void startElement(const QzXmlNodeView& element) override { events += " <" + viewed(element); }
    void endElement(const QzXmlNodeView& element) override {
        events += " /" + std::string(element.qualifiedName());
    }
    void characters(std::string_view text) override { events += " '" + std::string(text) + "'"; }
    std::string events;
};

std::string viewEvents(const std::string& doc) {
    ViewRecorder recorder;
    QzXmlSAXParser parser;
    parser.setViewHandler(&recorder);
    try {
        parser.parse(QzCString(doc));
    } catch (const QzXmlParseError& e) {
        recorder.events += std::string(" error ") + e.why();
    }
    return recorder.events;
}

}  // namespace

TEST(QzXmlNodeView, EventParserHandsViewsToAViewHandler) {
    EXPECT_EQ(viewEvents("<p:r xmlns:p='u'><e a='&amp;'/>t</p:r>"),
              " <p:r{u} xmlns|p{}=u [] <e{} |a{}=& [] /e 't' /p:r");
    EXPECT_EQ(viewEvents("<r><a></b></r>"), " <r{} [] <a{} [] error Unmatched start tag for b");
}
