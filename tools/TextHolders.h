#ifndef QZXML_TOOL_TEXTHOLDERS_H
#define QZXML_TOOL_TEXTHOLDERS_H

#include <cstddef>
#include <vector>

#include "OpenElements.h"

/// Finds, while checking a document, the elements whose content must be written as it
/// stands: those that hold text other than whitespace (mixed content) and those marked
/// xml:space="preserve". "qzxml format" indents only inside the others.
class TextHolders : public OpenElements {
public:
    void startElement(const QzXmlName& name, const QzXmlAttributeSet& attributes) override;
    void endElement(const QzXmlName& name) override;
    void characters(const QzCString& text) override;

    std::vector<bool> verbatim;  ///< one entry per element, in the order the elements start

private:
    std::vector<std::size_t> path_;  ///< indexes into verbatim of the open elements
};

#endif
