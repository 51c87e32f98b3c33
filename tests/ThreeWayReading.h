#ifndef QZXML_TESTS_THREEWAYREADING_H
#define QZXML_TESTS_THREEWAYREADING_H

// One document read three ways (in memory, streamed in chunks, fed in pieces) into the same
// trace: a line per node (kind, name, attributes, value, depth), taken from the owned
// accessors or from the node view, and a last line that is "end" or the error with its line
// and column. Shared by the streaming tests and fuzzing.
#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "QzXmlFeedReader.h"
#include "QzXmlParseError.h"
#include "QzXmlReader.h"
#include "Qzxmsg.h"

namespace three_way {

// How a walk reads each node: through the owned accessors, or through the node view alone
// (the owned strings are then never filed).
enum class Access { Owned, Views };

inline std::string nameText(std::string_view prefix, std::string_view local, std::string_view uri) {
    std::string text = prefix.empty() ? std::string() : std::string(prefix) + ":";
    return text + std::string(local) + "{" + std::string(uri) + "}";
}

inline std::string nameText(const QzXmlName& name) {
    const auto view = [](const QzCString& s) { return std::string_view(s.data(), s.length()); };
    return nameText(view(name.getPrefix()), view(name.getLocalName()), view(name.getURI()));
}

template <class Reader>
std::string nodeLine(const Reader& reader, Access access) {
    std::string line = std::to_string(static_cast<int>(reader.getNodeType())) + " d" +
                       std::to_string(reader.getDepth());
    const QzXmlNodeView& view = reader.getNodeView();
    const bool views = access == Access::Views;
    switch (reader.getNodeType()) {
        case QzXmlReader::StartTag:
        case QzXmlReader::EmptyElement:
            line += " <" + (views ? nameText(view.prefix(), view.localName(), view.uri())
                                  : nameText(reader.getCurrentName()));
            if (views) {
                for (std::size_t i = 0; i < view.attributeCount(); ++i) {
                    const QzXmlAttributeView& a = view.attribute(i);
                    line += " " + nameText(a.prefix, a.localName, a.uri) + "=[" +
                            std::string(a.value) + "]";
                }
            } else {
                for (const QzXmlAttribute& a : reader.getCurrentAttributes())
                    line += " " + nameText(a.getName()) + "=[" + a.getValue().std() + "]";
            }
            break;
        case QzXmlReader::EndTag:
            line += " </" + (views ? nameText(view.prefix(), view.localName(), view.uri())
                                   : nameText(reader.getCurrentName()));
            break;
        default:
            line += " [" + (views ? std::string(view.text()) : reader.getValue().std()) + "]";
    }
    return line;
}

inline std::string errorLine(const QzXmlParseError& e) {
    return "error " + std::to_string(e.getLine()) + ":" + std::to_string(e.getColumn()) + " " +
           e.why();
}

// The lines body adds, then "end", or the error that stopped it.
template <class Body>
std::vector<std::string> traced(Body body) {
    std::vector<std::string> trace;
    try {
        body(trace);
        trace.push_back("end");
    } catch (const QzXmlParseError& e) {
        trace.push_back(errorLine(e));
    } catch (const Qzxmsg& e) {
        trace.push_back(std::string("exception ") + e.why());
    }
    return trace;
}

// Walks the reader make gives to the end or to its first error.
template <class Make>
std::vector<std::string> walk(Make make, Access access) {
    return traced([&make, access](std::vector<std::string>& trace) {
        const std::unique_ptr<QzXmlReader> reader = make();
        while (!reader->eof()) {
            reader->readNextNode();
            trace.push_back(nodeLine(*reader, access));
        }
    });
}

inline std::vector<std::string> inMemory(const std::string& document,
                                         const QzXmlReaderOptions& options,
                                         Access access = Access::Owned) {
    return walk([&] { return std::make_unique<QzXmlReader>(QzCString(document), options); },
                access);
}

inline std::vector<std::string> streamed(const std::string& document, QzXmlReaderOptions options,
                                         std::size_t chunk, Access access = Access::Owned) {
    options.chunkSize = chunk;
    std::istringstream input(document);
    return walk([&] { return std::make_unique<QzXmlReader>(input, options); }, access);
}

inline std::vector<std::string> fed(const std::string& document, const QzXmlReaderOptions& options,
                                    std::size_t piece, Access access = Access::Owned) {
    return traced([&](std::vector<std::string>& trace) {
        QzXmlFeedReader reader(options);
        for (std::size_t at = 0;;) {
            const QzXmlFeedReader::Result result = reader.next();
            if (result == QzXmlFeedReader::Result::End) return;
            if (result == QzXmlFeedReader::Result::Node) {
                trace.push_back(nodeLine(reader, access));
            } else if (at < document.size()) {
                const std::size_t n = std::min(piece, document.size() - at);
                reader.feed(document.data() + at, n);
                at += n;
            } else {
                reader.finish();
            }
        }
    });
}

// The first line where two traces part, or "" when they agree.
inline std::string firstDifference(const std::vector<std::string>& a,
                                   const std::vector<std::string>& b) {
    for (std::size_t i = 0; i < std::max(a.size(), b.size()); ++i) {
        const std::string x = i < a.size() ? a[i] : "(nothing)";
        const std::string y = i < b.size() ? b[i] : "(nothing)";
        if (x != y) return "line " + std::to_string(i) + ": " + x + "\n    vs " + y;
    }
    return "";
}

}  // namespace three_way

#endif
