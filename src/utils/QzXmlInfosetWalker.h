#ifndef QZXMLINFOSETWALKER_H
#define QZXMLINFOSETWALKER_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "QzCString.h"
#include "QzXmlCompareOptions.h"
#include "QzXmlComparison.h"
#include "QzXmlMarkupLog.h"
#include "QzXmlName.h"
#include "QzXmlReader.h"

/// Walks a document as the sequence of items a comparison looks at: element starts and ends,
/// texts, and (when the options ask for them) comments and processing instructions, each
/// with the place it starts at. Whitespace-only text is left out when the options say so.
/// Throws QzXmlParseError when the document is malformed or an end tag does not match.
class QzXmlInfosetWalker {
public:
    enum class Kind { StartElement, EndElement, Text, Comment, ProcessingInstruction, End };

    struct Item {
        Kind kind = Kind::End;
        QzXmlName name;  ///< an element's name
        /// An element's expanded name (see expandedName), or a processing instruction's target.
        QzCString key;
        /// A start's attributes as (expanded name, value), sorted, namespace declarations left
        /// out.
        std::vector<std::pair<QzCString, QzCString>> attributes;
        QzCString text;          ///< a text, a comment, or a processing instruction's data
        std::size_t offset = 0;  ///< where the item starts in the reader's UTF-8 text
    };

    QzXmlInfosetWalker(const QzCString& document, const QzXmlCompareOptions& options);

    /// "{uri}local", or the qualified name as written when the URI is empty (so that
    /// undeclared prefixes still tell names apart).
    static QzCString expandedName(const QzXmlName& name);

    /// Moves to the next item and returns it; at the end, an item of kind End every time.
    const Item& next();
    /// Line, column and element path of the item next() returned last.
    QzXmlComparison::Place place() const;

private:
    struct Frame {
        QzXmlName name;
        std::uint64_t index;  ///< position among the parent's children of that name, from 1
        std::map<std::string, std::uint64_t> children;  ///< children met so far, by name
    };

    void readNode();
    void queueElement(std::size_t offset);
    void queueText(std::size_t offset, std::size_t firstEntry);
    void queueMarkup(const QzXmlMarkupLog::Entry& entry);
    void queueTextPiece(std::size_t first, std::size_t last, std::size_t offset);
    bool wanted(const QzXmlMarkupLog::Entry& entry) const;
    void enter(const Item& item);

    QzXmlCompareOptions options_;
    QzXmlMarkupLog log_;  ///< filled by reader_, so constructed before it
    QzXmlReader reader_;
    std::deque<Item> queue_;
    Item current_;
    std::vector<Frame> open_;  ///< the root frame, then one per open element
    bool leaving_ = false;     ///< the current item ends the innermost open element
};

#endif
