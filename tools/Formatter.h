#ifndef QZXML_TOOL_FORMATTER_H
#define QZXML_TOOL_FORMATTER_H

#include <vector>

#include "QzXmlContentHandler.h"
#include "QzXmlWriter.h"

/// Writes the events it receives back as XML, as "qzxml format" shows them, without changing
/// what the document says: elements that hold only elements are indented, whitespace-only
/// text between their children replaced; the content of elements that hold text (or
/// xml:space="preserve") is written as it stands. Attribute values and text are escaped so
/// that they read back byte for byte. A start tag is held back until the next event, so
/// that an element with nothing inside comes out as "<e/>".
class Formatter : public QzXmlContentHandler {
public:
    /// verbatim has an entry per element in start order (see TextHolders); indent spaces a
    /// level; keepWhitespace writes every element as it stands, indenting nothing.
    Formatter(QzXmlWriter& out, std::vector<bool> verbatim, unsigned indent, bool keepWhitespace);

    void prolog(const QzXmlProlog& prolog) override;
    void startElement(const QzXmlName& name, const QzXmlAttributeSet& attributes) override;
    void endElement(const QzXmlName& name) override;
    void characters(const QzCString& text) override;
    /// Ends the output with a line feed.
    void finish();

private:
    void breakLine(std::size_t depth);
    void writeHeldStart(bool isEmpty);

    QzXmlWriter& out_;
    std::vector<bool> verbatim_;
    std::size_t elements_ = 0;  ///< elements started so far
    unsigned indent_;
    bool keepWhitespace_;
    bool started_ = false;    ///< something has been written
    std::vector<bool> open_;  ///< for each open element, whether it is written as it stands
    bool held_ = false;       ///< the innermost start tag waits in heldTag_, without its ">"
    QzCString heldTag_;
};

#endif
