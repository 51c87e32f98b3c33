#include "OpenElements.h"

void OpenElements::startElement(const QzXmlName& name, const QzXmlAttributeSet&) {
    open.push_back(name.getQualifiedName().std());
}

void OpenElements::endElement(const QzXmlName&) {
    open.pop_back();
}

void OpenElements::characters(const QzCString&) {}
