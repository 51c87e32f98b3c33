#ifndef QZXML_TOOL_EVENTPRINTER_H
#define QZXML_TOOL_EVENTPRINTER_H

#include "QzXmlContentHandler.h"

/// Prints one line per event on standard output, as "qzxml events" shows them: the prolog,
/// each start tag with its attributes, each end tag and each run of text; names with a
/// namespace as "{uri}local", texts quoted with control bytes escaped.
class EventPrinter : public QzXmlContentHandler {
public:
    void prolog(const QzXmlProlog& prolog) override;
    void startElement(const QzXmlName& name, const QzXmlAttributeSet& attributes) override;
    void endElement(const QzXmlName& name) override;
    void characters(const QzCString& text) override;
};

#endif
