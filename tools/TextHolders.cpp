#include "TextHolders.h"

#include <algorithm>

#include "QzXmlAttributeSet.h"

namespace {

bool preservesSpace(const QzXmlAttributeSet& attributes) {
    for (const QzXmlAttribute& attribute : attributes) {
        const QzXmlName& name = attribute.getName();
        if (name.getPrefix() == QzCString("xml") && name.getLocalName() == QzCString("space"))
            return attribute.getValue() == QzCString("preserve");
    }
    return false;
}

}  // namespace

void TextHolders::startElement(const QzXmlName& name, const QzXmlAttributeSet& attributes) {
    OpenElements::startElement(name, attributes);
    path_.push_back(verbatim.size());
    verbatim.push_back(preservesSpace(attributes));
}

void TextHolders::endElement(const QzXmlName& name) {
    OpenElements::endElement(name);
    path_.pop_back();
}

void TextHolders::characters(const QzCString& text) {
    const bool blank = std::all_of(text.data(), text.data() + text.length(), [](char c) {
        return c == ' ' || c == '\t' || c == '\n' || c == '\r';
    });
    if (!blank && !path_.empty()) verbatim[path_.back()] = true;
}
