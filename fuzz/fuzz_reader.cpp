// The reader over arbitrary bytes: walked node by node, from a string and from a byte buffer
// (which must agree), and driven through the element operations by the input's first bytes.
// Only QzXmlParseError and the foundation's bounds error may come out; anything else escapes
// and aborts the run.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "FuzzCheck.h"
#include "QzBoundsErr.h"
#include "QzXmlParseError.h"
#include "QzXmlReader.h"

namespace {

struct Node {
    int type;
    QzXmlName name;
    QzCString value;
    std::int32_t depth;
    bool operator==(const Node& o) const {
        return type == o.type && name == o.name && value == o.value && depth == o.depth;
    }
};

struct Walk {
    std::vector<Node> nodes;
    QzCString error;
    std::uint64_t line = 0;
    std::uint64_t column = 0;
    bool operator==(const Walk& o) const {
        return nodes == o.nodes && error == o.error && line == o.line && column == o.column;
    }
};

// How the depth must move for each kind of node.
int depthStep(int type) {
    return type == QzXmlReader::StartTag ? 1 : type == QzXmlReader::EndTag ? -1 : 0;
}

template <class Source>
Walk walk(const Source& makeReader, std::size_t size) {
    Walk result;
    try {
        std::unique_ptr<QzXmlReader> reader = makeReader();
        std::int32_t depth = 0;
        while (!reader->eof()) {
            reader->readNextNode();
            const int type = reader->getNodeType();
            fuzzCheck(type >= QzXmlReader::StartTag && type <= QzXmlReader::Content,
                      "readNextNode yields a node");
            depth += depthStep(type);
            fuzzCheck(reader->getDepth() == depth, "depth follows the tags");
            result.nodes.push_back(
                {type, reader->getCurrentName(), reader->getValue(), reader->getDepth()});
            fuzzCheck(result.nodes.size() <= size, "every node consumes input");
        }
    } catch (const QzXmlParseError& e) {
        result.error = QzCString(e.why());
        result.line = e.getLine();
        result.column = e.getColumn();
        fuzzCheck(e.getLine() >= 1 && e.getColumn() >= 1, "positions count from 1");
    } catch (const QzBoundsErr& e) {
        result.error = QzCString("bounds: ") + QzCString(e.why());
    }
    return result;
}

// The names of the tags the walk met, as the element operations take them.
std::vector<QzXmlName> tagNames(const Walk& w) {
    std::vector<QzXmlName> names;
    for (const Node& n : w.nodes)
        if (n.type == QzXmlReader::StartTag || n.type == QzXmlReader::EmptyElement)
            names.push_back(n.name);
    if (names.empty()) names.emplace_back(QzCString("a"));
    return names;
}

void navigateStep(QzXmlReader& reader, std::uint8_t op, const QzXmlName& name) {
    switch (op % 8) {
        case 0:
            // An empty element just read counts as the next element without a read-ahead;
            // only a pending node is promised to the next readElementStart.
            if (reader.isElementNext(name) && reader.isNodePending()) {
                reader.readElementStart(name);
                fuzzCheck(reader.getCurrentName().getLocalName() == name.getLocalName(),
                          "the announced element is read");
            }
            break;
        case 1:
            reader.readElementStart();
            break;
        case 2:
            reader.readElementStart(name.getQualifiedName());
            break;
        case 3:
            reader.readElementValue();
            break;
        case 4:
            reader.readElementEnd();
            break;
        case 5:
            reader.readElementEnd(name.getQualifiedName());
            break;
        case 6: {
            const QzCString raw = reader.readElement(name);
            fuzzCheck(raw.empty() || raw.data()[raw.length() - 1] == '>',
                      "readElement returns whole elements");
            break;
        }
        default:
            reader.readNextNode();
            break;
    }
}

void navigate(const uint8_t* data, std::size_t size, const std::vector<QzXmlName>& names) {
    try {
        QzXmlReader reader(QzCString(reinterpret_cast<const char*>(data), size));
        const std::size_t steps = size < 64 ? size : 64;
        for (std::size_t i = 0; i + 1 < steps && !reader.eof(); i += 2) {
            navigateStep(reader, data[i], names[data[i + 1] % names.size()]);
        }
    } catch (const QzXmlParseError&) {
    } catch (const QzBoundsErr&) {
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const Walk fromString = walk(
        [&] {
            return std::make_unique<QzXmlReader>(
                QzCString(reinterpret_cast<const char*>(data), size));
        },
        size);
    std::vector<unsigned char> buffer(data, data + size);
    const Walk fromBuffer =
        walk([&] { return std::make_unique<QzXmlReader>(buffer.data(), buffer.size()); }, size);
    fuzzCheck(fromString == fromBuffer, "string and buffer readers agree");
    navigate(data, size, tagNames(fromString));
    return 0;
}
