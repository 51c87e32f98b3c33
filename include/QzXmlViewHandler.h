#ifndef QZXMLVIEWHANDLER_H
#define QZXMLVIEWHANDLER_H

#include "QzXmlExport.h"

#include <string_view>

#include "QzXmlNodeView.h"

/// Receives the events of QzXmlSAXParser as views, without a copy of any name, attribute or
/// text: what a handler that only looks at most of them wants. A view and its strings are
/// valid only during the call; exceptions thrown here propagate out of parse unchanged.
class QZXML_API QzXmlViewHandler {
public:
    /// A start tag (or an empty-element tag, followed at once by endElement): its name and
    /// attributes.
    virtual void startElement(const QzXmlNodeView& element) = 0;
    /// An end tag, or the end of an empty element: its name.
    virtual void endElement(const QzXmlNodeView& element) = 0;
    /// A run of character data, whitespace between tags included.
    virtual void characters(std::string_view text) = 0;
    virtual ~QzXmlViewHandler();
};

#endif
