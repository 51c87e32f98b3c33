// Documents written by the writer from random names, texts and values must read back equal.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "QzXmlReader.h"
#include "QzXmlStringWriter.h"

namespace {

// Every markup character, CR, LF, tab and non-ASCII; no ";", so no "&" can start one of the
// entity references that attribute escaping deliberately leaves alone.
const std::vector<std::string> kPieces = {"<", ">", "&", "\"", "'",   "\r", "\n", "\r\n", "\t",
                                          " ", "a", "Z", "0",  "]]>", "é",  "€",  "😀"};

struct Event {
    QzXmlReader::NodeType type;
    QzXmlName name;
    QzXmlAttributeSet attributes;
    QzCString text;
};

class RandomDocument {
public:
    explicit RandomDocument(unsigned seed) : random_(seed) {}

    // Writes one element tree and records the events a reader must give back.
    void writeElement(QzXmlWriter& writer, int depth) {
        const QzXmlName name(word("e"), someNamespace());
        QzXmlAttributeSet attributes;
        for (int i = pick(4); i > 0; --i) {
            // Attribute names never equal a prefix: the writer's declarations share their keys.
            attributes.add(QzXmlName(word("a"), someNamespace()), text());
        }
        const int children = depth < 4 ? pick(4) : 0;
        const QzCString content = pick(3) == 0 ? QzCString() : text();
        const bool empty = children == 0 && content.empty();
        writer.writeElementStart(name, attributes, empty);
        events.push_back({empty ? QzXmlReader::EmptyElement : QzXmlReader::StartTag, name,
                          attributes, QzCString()});
        if (empty) return;
        if (!content.empty()) {
            writer.write(content, true);
            events.push_back({QzXmlReader::Content, QzXmlName(), QzXmlAttributeSet(), content});
        }
        for (int i = 0; i < children; ++i)
            writeElement(writer, depth + 1);
        writer.writeElementEnd(name);
        events.push_back({QzXmlReader::EndTag, name, QzXmlAttributeSet(), QzCString()});
    }

    std::vector<Event> events;

private:
    int pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(random_); }

    QzCString word(const char* lead) {
        std::string w = lead;
        for (int i = pick(6); i > 0; --i)
            w += "abcxyz019"[pick(9)];
        return QzCString(w);
    }

    // No namespace, or one of three prefixes, each always bound to the same URI: the writer
    // declares a URI once whatever prefix asks for it, and never undeclares a default.
    QzXmlNamespace someNamespace() {
        const int n = pick(4);
        if (n == 0) return QzXmlNamespace();
        return QzXmlNamespace(QzCString("p" + std::to_string(n)),
                              QzCString("urn:test:" + std::to_string(n)));
    }

    QzCString text() {
        std::string t;
        for (int i = 1 + pick(8); i > 0; --i)
            t += kPieces[pick(kPieces.size())];
        return QzCString(t);
    }

    std::mt19937 random_;
};

// The attributes the writer was given, found by name with equal values; the reader's set
// holds the namespace declarations besides.
void expectAttributes(const QzXmlAttributeSet& written, const QzXmlAttributeSet& read) {
    std::size_t declarations = 0;
    for (const QzXmlAttribute& attribute : read) {
        if (attribute.getName().getPrefix() == QzCString("xmlns")) ++declarations;
    }
    EXPECT_EQ(written.size(), read.size() - declarations);
    for (const QzXmlAttribute& attribute : written) {
        const auto found = read.find(attribute.getName());
        ASSERT_NE(read.end(), found) << attribute.getName().getUniqueName();
        EXPECT_EQ(attribute.getValue(), found->getValue());
        EXPECT_EQ(attribute.getName().getURI(), found->getName().getURI());
    }
}

}  // namespace

TEST(QzXmlRoundTrip, RandomDocumentsReadBackEqual) {
    for (unsigned seed = 1; seed <= 300; ++seed) {
        RandomDocument document(seed);
        QzXmlStringWriter writer;
        document.writeElement(writer, 0);
        const QzCString xml = writer.getString();
        SCOPED_TRACE(xml.std());
        QzXmlReader reader(xml);
        for (const Event& expected : document.events) {
            reader.readNextNode();
            ASSERT_EQ(expected.type, reader.getNodeType());
            if (expected.type == QzXmlReader::Content) {
                EXPECT_EQ(expected.text, reader.getValue());
                continue;
            }
            EXPECT_EQ(expected.name.getLocalName(), reader.getCurrentName().getLocalName());
            EXPECT_EQ(expected.name.getURI(), reader.getCurrentName().getURI());
            if (expected.type != QzXmlReader::EndTag) {
                expectAttributes(expected.attributes, reader.getCurrentAttributes());
            }
        }
        EXPECT_TRUE(reader.eof());
    }
}
