#ifndef QZXML_TOOL_FORMATTER_H
#define QZXML_TOOL_FORMATTER_H

#include "QzXmlContentHandler.h"
#include "QzXmlStringWriter.h"

/// Writes the events it receives back as XML through a QzXmlStringWriter, two spaces of
/// indentation per level, as "qzxml format" shows them: text that is only whitespace is
/// dropped, other text stays on the line of its element. A start tag is held back until the
/// next event, so that an element with nothing inside comes out as "<e/>".
class Formatter : public QzXmlContentHandler {
public:
    void prolog(const QzXmlProlog& prolog) override;
    void startElement(const QzXmlName& name, const QzXmlAttributeSet& attributes) override;
    void endElement(const QzXmlName& name) override;
    void characters(const QzCString& text) override;
    /// The document written so far, ending with a line feed.
    QzCString finish();

private:
    void breakLine();
    void writeHeldStart(bool isEmpty);

    QzXmlStringWriter writer_;
    bool held_ = false;      ///< a start tag waits in heldName_ and heldAttributes_
    bool lineOpen_ = false;  ///< the end tag goes on the current line
    QzXmlName heldName_;
    QzXmlAttributeSet heldAttributes_;
};

#endif
