#ifndef QZXMLFEEDREADER_H
#define QZXMLFEEDREADER_H

#include "QzXmlExport.h"

#include <cstddef>
#include <cstdint>
#include <memory>

#include "QzCString.h"
#include "QzXmlAttributeSet.h"
#include "QzXmlName.h"
#include "QzXmlNodeView.h"
#include "QzXmlReader.h"
#include "QzXmlReaderOptions.h"

class QzXmlInputWindow;

/// A pull reader over input the caller hands over in pieces of any size as it arrives, off a
/// socket say: next() reads a node once the input holds it whole and otherwise answers
/// NeedInput, never blocking. It holds only the input not yet read and the node being read.
/// Strict or lenient as the options say, limits included: nodes, values, messages, lines and
/// columns are those QzXmlReader gives for the same document in memory (the same exceptions
/// as its streaming constructor). Errors throw QzXmlParseError; the reader is then done.
class QZXML_API QzXmlFeedReader {
public:
    /// What next() found.
    enum class Result {
        Node,       ///< a node was read: see the accessors
        NeedInput,  ///< the input fed so far ends inside the next node: feed more
        End         ///< the document has ended (after finish())
    };

    /// A reader that reads as options say (chunkSize is not used).
    explicit QzXmlFeedReader(const QzXmlReaderOptions& options = QzXmlReaderOptions());
    ~QzXmlFeedReader();
    QzXmlFeedReader(const QzXmlFeedReader&) = delete;
    QzXmlFeedReader& operator=(const QzXmlFeedReader&) = delete;

    /// Hands over the next length bytes of the document; they are copied.
    void feed(const char* data, std::size_t length);
    /// Says that the document has no more bytes.
    void finish();
    /// Reads the next node (the prolog first, the first time), or says why it cannot yet.
    Result next();

    /// Kind of the node read last.
    QzXmlReader::NodeType getNodeType() const noexcept { return reader_->getNodeType(); }
    /// Resolved name of the tag read last.
    const QzXmlName& getCurrentName() const { return reader_->getCurrentName(); }
    /// Attributes of the start tag read last.
    const QzXmlAttributeSet& getCurrentAttributes() const {
        return reader_->getCurrentAttributes();
    }
    /// Text of the content node read last.
    const QzCString& getValue() const { return reader_->getValue(); }
    /// The same as views, without a copy; valid until the next call to next().
    const QzXmlNodeView& getNodeView() const noexcept { return reader_->getNodeView(); }
    /// Number of open elements.
    std::int32_t getDepth() const noexcept { return reader_->getDepth(); }

private:
    QzXmlInputWindow* window_;  ///< owned by reader_
    std::unique_ptr<QzXmlReader> reader_;
    bool started_ = false;  ///< the prolog is read
};

#endif
