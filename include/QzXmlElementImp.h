#ifndef QZXMLELEMENTIMP_H
#define QZXMLELEMENTIMP_H

#include "QzXmlExport.h"

#include "QzCString.h"
#include "QzXmlAttribute.h"
#include "QzXmlAttributeSet.h"
#include "QzXmlName.h"
#include "QzXmlNamespace.h"

/// An element: its name and its attribute set, namespace declarations included. The
/// operations are virtual so that applications may derive from it.
class QZXML_API QzXmlElementImp {
public:
    using iterator = QzXmlAttributeSet::iterator;              ///< a position in the attributes
    using const_iterator = QzXmlAttributeSet::const_iterator;  ///< the same, read-only

    /// Empty name, no attributes.
    QzXmlElementImp() = default;
    /// The element name, no attributes.
    explicit QzXmlElementImp(const QzXmlName& name) : name_(name) {}
    /// A copy of name and attributes.
    QzXmlElementImp(const QzXmlElementImp&) = default;
    /// Copies name and attributes.
    QzXmlElementImp& operator=(const QzXmlElementImp&) = default;
    virtual ~QzXmlElementImp();

    /// Replaces local name, prefix and URI.
    virtual void setName(const QzXmlName& name);
    /// The name.
    virtual const QzXmlName& getName() const;
    /// Modifiable access to the name.
    virtual QzXmlName& getName();

    /// Adds the declaration of ns (QzXmlAttributeSet::addNamespaceAttribute).
    virtual void addNamespaceAttribute(const QzXmlNamespace& ns);
    /// First attribute whose local name is prefix (QzXmlAttributeSet::findNamespaceAttribute).
    virtual const_iterator findNamespaceAttribute(const QzCString& prefix) const;
    /// First attribute whose local name is prefix (QzXmlAttributeSet::findNamespaceAttribute).
    virtual iterator findNamespaceAttribute(const QzCString& prefix);
    /// The same with ns's prefix; ns's URI is ignored.
    virtual const_iterator findNamespaceAttribute(const QzXmlNamespace& ns) const;
    /// The same with ns's prefix; ns's URI is ignored.
    virtual iterator findNamespaceAttribute(const QzXmlNamespace& ns);
    /// Removes the declaration of ns's prefix (QzXmlAttributeSet::removeNamespaceAttribute).
    virtual void removeNamespaceAttribute(const QzXmlNamespace& ns);
    /// Removes the declaration of prefix (QzXmlAttributeSet::removeNamespaceAttribute).
    virtual void removeNamespaceAttribute(const QzCString& prefix);
    /// Sets the default-namespace declaration to ns's URI.
    virtual void setDefaultNamespaceAttribute(const QzXmlNamespace& ns);
    /// Sets the default-namespace declaration to uri.
    virtual void setDefaultNamespaceAttribute(const QzCString& uri);
    /// Sets the default-namespace declaration to the empty URI; it stays in the set, where it
    /// undeclares the default namespace.
    virtual void unsetDefaultNamespaceAttribute();
    /// The default-namespace declaration's value, or the empty string.
    virtual const QzCString& getDefaultNamespaceAttribute() const;

    /// First attribute in set order.
    virtual iterator attributesBegin();
    /// First attribute in set order.
    virtual const_iterator attributesBegin() const;
    /// Past the last attribute.
    virtual iterator attributesEnd();
    /// Past the last attribute.
    virtual const_iterator attributesEnd() const;
    /// Number of attributes.
    virtual QzSize_T attributeCount() const;
    /// Removes every attribute.
    virtual void clearAttributes();
    /// Adds the attribute, or gives an attribute of equal name the value.
    virtual void addAttribute(const QzXmlName& name, const QzCString& value);
    /// Adds the attribute, or gives an attribute of equal name its value.
    virtual void addAttribute(const QzXmlAttribute& attribute);
    /// Erases the attribute of equal name, if any.
    virtual void removeAttribute(const QzXmlName& name);
    /// Erases every attribute whose name equals attribute's name, whatever its value.
    virtual void removeAttribute(const QzXmlAttribute& attribute);
    /// Erases the attribute at position and returns the next position; attributesEnd() is
    /// returned unchanged.
    virtual iterator removeAttribute(iterator position);
    /// The attribute of equal name (local name and URI), or attributesEnd().
    virtual const_iterator findAttribute(const QzXmlName& name) const;
    /// The attribute of equal name (local name and URI), or attributesEnd().
    virtual iterator findAttribute(const QzXmlName& name);
    /// The attribute named as attribute is; the value is not compared.
    virtual const_iterator findAttribute(const QzXmlAttribute& attribute) const;
    /// The attribute named as attribute is; the value is not compared.
    virtual iterator findAttribute(const QzXmlAttribute& attribute);
    /// True when an attribute of equal name exists.
    virtual bool hasAttribute(const QzXmlName& name) const;
    /// True when an attribute named as attribute is exists; the value is not compared.
    virtual bool hasAttribute(const QzXmlAttribute& attribute) const;
    /// The attribute set.
    virtual const QzXmlAttributeSet& getAttributes() const;
    /// Modifiable access to the attribute set.
    virtual QzXmlAttributeSet& getAttributes();

    /// The namespace of the element's name.
    const QzXmlNamespace& getNamespace() const noexcept { return name_.getNamespace(); }
    /// Modifiable access to the namespace of the element's name.
    QzXmlNamespace& getNamespace() noexcept { return name_.getNamespace(); }

private:
    QzXmlName name_;
    QzXmlAttributeSet attributes_;
};

#endif
