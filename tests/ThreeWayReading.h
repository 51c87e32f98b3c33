#ifndef QZXML_TESTS_THREEWAYREADING_H
#define QZXML_TESTS_THREEWAYREADING_H

// One document read three ways (in memory, streamed in chunks, fed in pieces) into the same
// trace: a line per node (kind, name, attributes, value, depth) and a last line that is
// "end" or the error with its line and column. Shared by the streaming tests and fuzzing.
#include <algorithm>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "QzXmlFeedReader.h"
#include "QzXmlParseError.h"
#include "QzXmlReader.h"
#include "Qzxmsg.h"

namespace three_way {

template <class Reader>
std::string nodeLine(const Reader& reader) {
    std::string line = std::to_string(static_cast<int>(reader.getNodeType())) + " d" +
                       std::to_string(reader.getDepth());
    switch (reader.getNodeType()) {
        case QzXmlReader::StartTag:
        case QzXmlReader::EmptyElement:
            line += " <" + reader.getCurrentName().asString().std();
            for (const QzXmlAttribute& a : reader.getCurrentAttributes())
                line += " " + a.getName().asString().std() + "=[" + a.getValue().std() + "]";
            break;
        case QzXmlReader::EndTag:
            line += " </" + reader.getCurrentName().asString().std();
            break;
        default:
            line += " [" + reader.getValue().std() + "]";
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
std::vector<std::string> walk(Make make) {
    return traced([&make](std::vector<std::string>& trace) {
        const std::unique_ptr<QzXmlReader> reader = make();
        while (!reader->eof()) {
            reader->readNextNode();
            trace.push_back(nodeLine(*reader));
        }
    });
}

inline std::vector<std::string> inMemory(const std::string& document,
                                         const QzXmlReaderOptions& options) {
    return walk([&] { return std::make_unique<QzXmlReader>(QzCString(document), options); });
}

inline std::vector<std::string> streamed(const std::string& document, QzXmlReaderOptions options,
                                         std::size_t chunk) {
    options.chunkSize = chunk;
    std::istringstream input(document);
    return walk([&] { return std::make_unique<QzXmlReader>(input, options); });
}

inline std::vector<std::string> fed(const std::string& document, const QzXmlReaderOptions& options,
                                    std::size_t piece) {
    return traced([&](std::vector<std::string>& trace) {
        QzXmlFeedReader reader(options);
        for (std::size_t at = 0;;) {
            const QzXmlFeedReader::Result result = reader.next();
            if (result == QzXmlFeedReader::Result::End) return;
            if (result == QzXmlFeedReader::Result::Node) {
                trace.push_back(nodeLine(reader));
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
