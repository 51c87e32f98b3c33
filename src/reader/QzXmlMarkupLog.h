#ifndef QZXMLMARKUPLOG_H
#define QZXMLMARKUPLOG_H

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

/// The comments and processing instructions that a reader skipped, in document order, for
/// the callers that compare them.
class QzXmlMarkupLog {
public:
    /// textOffset for markup that came before a node rather than inside a text.
    static constexpr std::size_t BeforeNode = std::numeric_limits<std::size_t>::max();

    struct Entry {
        std::string markup;      ///< the whole markup, "<!--...-->" or "<?...?>"
        std::size_t offset;      ///< where its "<" stands in the reader's UTF-8 text
        std::size_t textOffset;  ///< where it fell in the text that surrounds it, or BeforeNode
    };
    std::vector<Entry> entries;
};

#endif
