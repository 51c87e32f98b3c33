#ifndef QZXMLNAME_H
#define QZXMLNAME_H

/// @file
/// QzXmlName and its comparison operators.

#include "QzXmlExport.h"

#include "QzCString.h"
#include "QzXmlNamespace.h"

/// A local name in a namespace. Names are equal and ordered by local name and URI only;
/// the prefix is how the name was written and takes no part in comparisons.
class QZXML_API QzXmlName {
public:
    /// Everything empty.
    QzXmlName() = default;
    /// localName in the empty namespace. Explicit so that a raw qualified name is never
    /// taken for a name without resolving its prefix.
    explicit QzXmlName(const QzCString& localName) : localName_(localName) {}
    /// localName in ns.
    QzXmlName(const QzCString& localName, const QzXmlNamespace& ns)
        : localName_(localName), namespace_(ns) {}

    /// The local name (the part after any colon).
    const QzCString& getLocalName() const noexcept { return localName_; }
    /// Replaces the local name.
    void setLocalName(const QzCString& localName) { localName_ = localName; }
    /// The namespace (prefix and URI).
    const QzXmlNamespace& getNamespace() const noexcept { return namespace_; }
    /// Modifiable access to the namespace.
    QzXmlNamespace& getNamespace() noexcept { return namespace_; }
    /// Replaces the namespace.
    void setNamespace(const QzXmlNamespace& ns) { namespace_ = ns; }
    /// The namespace's prefix.
    const QzCString& getPrefix() const noexcept { return namespace_.getPrefix(); }
    /// The namespace's URI.
    const QzCString& getURI() const noexcept { return namespace_.getURI(); }

    /// The name as written: "prefix:local", or the local name when the prefix is empty.
    QzCString getQualifiedName() const;
    /// A key for the expanded name: "URI::local", or the local name when the URI is empty.
    QzCString getUniqueName() const;
    /// The same as getQualifiedName().
    QzCString asString() const { return getQualifiedName(); }
    /// -1, 0 or +1: local names first, then URIs, each byte-wise unsigned; prefix ignored.
    int compareTo(const QzXmlName& other) const;

private:
    // The reader fills names and values straight from the document, without temporaries.
    friend class QzXmlReader;

    QzCString localName_;
    QzXmlNamespace namespace_;
};

/// Equal local names and equal URIs; prefixes are ignored.
QZXML_API bool operator==(const QzXmlName& a, const QzXmlName& b);
/// The negation of ==.
QZXML_API bool operator!=(const QzXmlName& a, const QzXmlName& b);
/// a.compareTo(b) < 0.
QZXML_API bool operator<(const QzXmlName& a, const QzXmlName& b);

#endif
