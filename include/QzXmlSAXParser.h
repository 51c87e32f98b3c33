#ifndef QZXMLSAXPARSER_H
#define QZXMLSAXPARSER_H

#include "QzXmlExport.h"

#include <iosfwd>

#include "QzCString.h"
#include "QzXmlReaderOptions.h"

class QzXmlContentHandler;
class QzXmlViewHandler;
class QzXmlReader;

/// Event parser: reads a whole document with a QzXmlReader and reports its declaration,
/// tags and text to a QzXmlContentHandler, or as views to a QzXmlViewHandler, in document
/// order.
class QZXML_API QzXmlSAXParser {
public:
    /// No handler; references in attribute values are expanded.
    QzXmlSAXParser() = default;

    /// Sets the handler (not owned; null reports nothing).
    void setContentHandler(QzXmlContentHandler* handler) noexcept { contentHandler_ = handler; }
    /// The handler set last, or null.
    QzXmlContentHandler* getContentHandler() const noexcept { return contentHandler_; }
    /// Sets a handler that gets the same events as views, without copies (not owned; null
    /// reports nothing). Both handlers may be set: the content handler hears each event first.
    void setViewHandler(QzXmlViewHandler* handler) noexcept { viewHandler_ = handler; }
    /// The view handler set last, or null.
    QzXmlViewHandler* getViewHandler() const noexcept { return viewHandler_; }
    /// Whether references in attribute values are expanded (true by default).
    bool getExpandReferences() const noexcept { return expandReferences_; }
    /// When false, an "&" in an attribute value is passed on literally.
    void setExpandReferences(bool expand) noexcept { expandReferences_ = expand; }

    /// How documents are read: strict or lenient, and the limits (lenient, none, by default).
    void setReaderOptions(const QzXmlReaderOptions& options) { readerOptions_ = options; }
    /// The options set last.
    const QzXmlReaderOptions& getReaderOptions() const noexcept { return readerOptions_; }

    /// Parses the document text and calls the handler. UTF-8 is read in place; UTF-16 input
    /// is byte-swapped inside document itself. Throws QzXmlParseError on malformed input,
    /// "Unmatched start tag for " when an end tag does not close the open element. The second
    /// argument is accepted and ignored.
    void parse(const QzCString& document, const QzCString& second = QzCString());
    /// Parses the stream a chunk at a time (the reader options' chunkSize), in memory bounded
    /// by the largest node, and calls the handler; errors as for a document in memory.
    void parse(std::istream& input);

private:
    void report(QzXmlReader& reader);

    QzXmlContentHandler* contentHandler_ = nullptr;
    QzXmlViewHandler* viewHandler_ = nullptr;
    bool expandReferences_ = true;
    QzXmlReaderOptions readerOptions_;
};

#endif
