#ifndef QZXMLCONTENTHANDLER_H
#define QZXMLCONTENTHANDLER_H

#include "QzXmlExport.h"

#include "QzCString.h"
#include "QzXmlAttributeSet.h"
#include "QzXmlName.h"
#include "QzXmlProlog.h"

/// Receives the events of QzXmlSAXParser. The references passed in are valid only during the
/// call; exceptions thrown here propagate out of parse unchanged.
class QZXML_API QzXmlContentHandler {
public:
    /// A start tag (or an empty-element tag, followed at once by endElement).
    virtual void startElement(const QzXmlName& name, const QzXmlAttributeSet& attributes) = 0;
    /// An end tag, or the end of an empty element.
    virtual void endElement(const QzXmlName& name) = 0;
    /// A run of character data, whitespace between tags included.
    virtual void characters(const QzCString& text) = 0;
    /// The XML declaration; called only when the document has one. Does nothing by default.
    virtual void prolog(const QzXmlProlog& prolog);
    virtual ~QzXmlContentHandler();
};

#endif
