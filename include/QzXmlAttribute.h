#ifndef QZXMLATTRIBUTE_H
#define QZXMLATTRIBUTE_H

#include "QzXmlExport.h"

#include "QzCString.h"
#include "QzXmlName.h"
#include "QzXmlNamespace.h"

/// One attribute: a name and its (unescaped) value.
class QZXML_API QzXmlAttribute {
public:
    /// Empty name and value.
    QzXmlAttribute() = default;
    /// Attribute name with value.
    QzXmlAttribute(const QzXmlName& name, const QzCString& value);
    /// Attribute localName in ns with value.
    QzXmlAttribute(const QzCString& localName, const QzCString& value, const QzXmlNamespace& ns);

    /// The name.
    const QzXmlName& getName() const noexcept { return name_; }
    /// Modifiable access to the name (the reader resolves prefixes in place).
    QzXmlName& getName() noexcept { return name_; }
    /// The value.
    const QzCString& getValue() const noexcept { return value_; }
    /// Replaces the value.
    void setValue(const QzCString& value) { value_ = value; }

private:
    // The reader fills names and values straight from the document, without temporaries.
    friend class QzXmlReader;

    QzXmlName name_;
    QzCString value_;
};

#endif
