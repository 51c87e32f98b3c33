#ifndef QZXML_TOOL_OPENELEMENTS_H
#define QZXML_TOOL_OPENELEMENTS_H

#include <string>
#include <vector>

#include "QzXmlContentHandler.h"

/// Keeps the qualified names of the elements still open, so that "qzxml check" can flag a
/// document that ends inside an element (which the event parser itself accepts).
class OpenElements : public QzXmlContentHandler {
public:
    void startElement(const QzXmlName& name, const QzXmlAttributeSet& attributes) override;
    void endElement(const QzXmlName& name) override;
    void characters(const QzCString& text) override;

    std::vector<std::string> open;  ///< innermost last
};

#endif
