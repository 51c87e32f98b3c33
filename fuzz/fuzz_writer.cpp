// The writer round trip: elements, namespaces, attributes and texts drawn from the input are
// written, read back with the reader and compared with what was written.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "FuzzCheck.h"
#include "QzXmlReader.h"
#include "QzXmlStringWriter.h"

namespace {

// A name made of letters and digits (the first a letter) spelled by the input.
QzCString nameFrom(FuzzedDataProvider& in) {
    static const char letters[] = "abcdefghijklmnopqrstuvwxyz";
    const std::string raw = in.ConsumeRandomLengthString(12);
    std::string name(1, letters[raw.empty() ? 0 : static_cast<unsigned char>(raw[0]) % 26]);
    for (std::size_t i = 1; i < raw.size(); ++i) {
        const unsigned char c = static_cast<unsigned char>(raw[i]) % 36;
        name += static_cast<char>(c < 26 ? 'a' + c : '0' + (c - 26));
    }
    return QzCString(name);
}

// Input bytes as a value. The reader hands back raw bytes, so any byte that is not markup
// survives; "&" is left out because the writer keeps entity references in values as written.
QzCString valueFrom(FuzzedDataProvider& in) {
    std::string value = in.ConsumeRandomLengthString(40);
    for (char& c : value)
        if (c == '&') c = '+';
    return QzCString(value);
}

// One element's name: unqualified, or in a namespace with a prefix of its own. The writer
// declares a URI only once under whatever prefix came first, and counts attribute values as
// URIs, so each URI belongs to one prefix and holds an "&", which values never do.
QzXmlName elementName(FuzzedDataProvider& in) {
    const QzCString local = nameFrom(in);
    if (!in.ConsumeBool()) return QzXmlName(local);
    const QzCString prefix = QzCString("p") + nameFrom(in);
    return QzXmlName(local, QzXmlNamespace(prefix, QzCString("urn&") + prefix));
}

struct Written {
    std::vector<int> types;  // node kinds in order, texts between tags merged
    std::vector<QzXmlName> names;
    std::vector<QzXmlAttributeSet> attributes;
    std::vector<QzCString> texts;
};

QzXmlAttributeSet attributesFrom(FuzzedDataProvider& in) {
    QzXmlAttributeSet set;
    const int count = in.ConsumeIntegralInRange(0, 4);
    // The writer takes an unqualified attribute for a declaration of a prefix of that name, so
    // attribute names ("a...") and prefixes ("p...") are kept apart.
    for (int i = 0; i < count; ++i)
        set.add(QzXmlName(QzCString("a") + nameFrom(in)), valueFrom(in));
    return set;
}

void addText(Written& w, const QzCString& text) {
    if (text.empty()) return;
    if (!w.types.empty() && w.types.back() == QzXmlReader::Content) {
        w.texts.back().append(text);
        return;
    }
    w.types.push_back(QzXmlReader::Content);
    w.texts.push_back(text);
}

void addTag(Written& w, int type, const QzXmlName& name, const QzXmlAttributeSet& attributes) {
    w.types.push_back(type);
    w.names.push_back(name);
    w.attributes.push_back(attributes);
}

// Writes a random tree of at most depth levels below one root element.
void writeElement(FuzzedDataProvider& in, QzXmlWriter& writer, Written& w, int depth) {
    const QzXmlName name = elementName(in);
    const QzXmlAttributeSet attributes = attributesFrom(in);
    const bool empty = in.ConsumeBool();
    writer.writeElementStart(name, attributes, empty);
    addTag(w, empty ? QzXmlReader::EmptyElement : QzXmlReader::StartTag, name, attributes);
    if (empty) return;
    while (in.remaining_bytes() > 0 && in.ConsumeBool()) {
        if (depth > 0 && in.ConsumeBool()) {
            writeElement(in, writer, w, depth - 1);
        } else {
            const QzCString text = valueFrom(in);
            writer.write(text, true);
            addText(w, text);
        }
    }
    writer.writeElementEnd(name);
    addTag(w, QzXmlReader::EndTag, name, attributes);
}

void checkAttributes(const QzXmlAttributeSet& written, const QzXmlAttributeSet& read) {
    for (const QzXmlAttribute& a : written) {
        const auto found = read.find(a.getName());
        fuzzCheck(found != read.end(), "every attribute comes back");
        fuzzCheck(found->getValue() == a.getValue(), "attribute values come back unchanged");
    }
}

void readBack(const QzCString& document, const Written& w) {
    QzXmlReader reader(document);
    std::size_t tag = 0;
    std::size_t text = 0;
    for (const int type : w.types) {
        reader.readNextNode();
        fuzzCheck(reader.getNodeType() == type, "node kinds come back in order");
        if (type == QzXmlReader::Content) {
            fuzzCheck(reader.getValue() == w.texts[text++], "texts come back unchanged");
            continue;
        }
        fuzzCheck(reader.getCurrentName() == w.names[tag], "names come back");
        if (type != QzXmlReader::EndTag)
            checkAttributes(w.attributes[tag], reader.getCurrentAttributes());
        ++tag;
    }
    fuzzCheck(reader.eof(), "nothing follows the root element");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    QzXmlStringWriter writer;
    Written written;
    writeElement(in, writer, written, 6);
    readBack(writer.getString(), written);
    return 0;
}
