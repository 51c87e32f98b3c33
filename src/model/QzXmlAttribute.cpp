#include "QzXmlAttribute.h"

QzXmlAttribute::QzXmlAttribute(const QzXmlName& name, const QzCString& value)
    : name_(name), value_(value) {}

QzXmlAttribute::QzXmlAttribute(const QzCString& localName, const QzCString& value,
                               const QzXmlNamespace& ns)
    : name_(localName, ns), value_(value) {}
