#ifndef QZXMLATTRIBUTESET_H
#define QZXMLATTRIBUTESET_H

#include "QzXmlExport.h"

#include <vector>

#include "QzCString.h"
#include "QzXmlAttribute.h"
#include "QzXmlName.h"
#include "QzXmlNamespace.h"

/// The attributes of one element, namespace declarations included, without duplicate names
/// and in name order (QzXmlName::compareTo: local name, then URI; prefix and value ignored).
/// The declaration of prefix p is the attribute p in getXmlns(); the default-namespace
/// declaration is the attribute DefaultNamespaceAttributeTag in the empty namespace.
///
/// Iterators give modifiable attributes. A caller that renames attributes through them (the
/// reader does, resolving prefixes) keeps the old order: the set is not re-sorted, and name
/// lookups then search an order that may no longer match the names.
class QZXML_API QzXmlAttributeSet {
public:
    using iterator = std::vector<QzXmlAttribute>::iterator;  ///< walks the set in order
    /// Walks the set in order, read-only.
    using const_iterator = std::vector<QzXmlAttribute>::const_iterator;

    /// The shared empty string that failed lookups return by reference.
    static const QzCString EmptyString;
    /// "xmlns": local name of the default-namespace declaration.
    static const QzCString DefaultNamespaceAttributeTag;

    /// The empty set.
    QzXmlAttributeSet() = default;
    /// A deep copy.
    QzXmlAttributeSet(const QzXmlAttributeSet&) = default;
    /// Takes over other's attributes.
    QzXmlAttributeSet(QzXmlAttributeSet&&) noexcept = default;
    /// A deep copy; assigning a set to itself changes nothing.
    QzXmlAttributeSet& operator=(const QzXmlAttributeSet&) = default;
    /// Takes over other's attributes.
    QzXmlAttributeSet& operator=(QzXmlAttributeSet&&) noexcept = default;
    virtual ~QzXmlAttributeSet();

    /// Gives an attribute of equal name the value (keeping its stored name and prefix), or
    /// inserts a new attribute in order.
    void add(const QzXmlName& name, const QzCString& value);
    /// add(attribute's name, attribute's value).
    void add(const QzXmlAttribute& attribute);
    /// True when an attribute of equal name exists.
    bool contains(const QzXmlName& name) const;
    /// Position of the attribute of equal name, or end().
    iterator find(const QzXmlName& name);
    /// Position of the attribute of equal name, or end().
    const_iterator find(const QzXmlName& name) const;
    /// Erases every attribute of equal name; returns how many were erased.
    QzSize_T erase(const QzXmlName& name);

    /// Adds the declaration of ns: local name ns's prefix in getXmlns(), value ns's URI.
    void addNamespaceAttribute(const QzXmlNamespace& ns);
    /// First attribute in set order whose local name is prefix, whatever its namespace
    /// (so an ordinary attribute named prefix may be found); end() when none.
    iterator findNamespaceByPrefix(const QzCString& prefix);
    /// First attribute in set order whose local name is prefix, or end().
    const_iterator findNamespaceByPrefix(const QzCString& prefix) const;
    /// findNamespaceByPrefix(prefix).
    iterator findNamespaceAttribute(const QzCString& prefix);
    /// findNamespaceByPrefix(prefix).
    const_iterator findNamespaceAttribute(const QzCString& prefix) const;
    /// findNamespaceByPrefix with ns's prefix; ns's URI is ignored.
    iterator findNamespaceAttribute(const QzXmlNamespace& ns);
    /// findNamespaceByPrefix with ns's prefix; ns's URI is ignored.
    const_iterator findNamespaceAttribute(const QzXmlNamespace& ns) const;
    /// Erases the declaration of prefix, and with it an unqualified attribute named prefix
    /// (both names have local name prefix and an empty URI).
    void removeNamespaceAttribute(const QzCString& prefix);

    /// Sets the default-namespace declaration's value to uri, adding it if absent.
    void setDefaultNamespaceAttribute(const QzCString& uri);
    /// setDefaultNamespaceAttribute(ns's URI).
    void setDefaultNamespaceAttribute(const QzXmlNamespace& ns);
    /// The default-namespace declaration's value, or EmptyString when there is none.
    const QzCString& getDefaultNamespaceAttribute() const;
    /// Erases the default-namespace declaration if present.
    void removeDefaultNamespaceAttribute();

    /// -1, 0 or +1 comparing names position by position (values never compared); a set that
    /// runs out first is less.
    int compareTo(const QzXmlAttributeSet& other) const;

    /// First attribute in set order.
    iterator begin() noexcept { return attributes_.begin(); }
    /// First attribute in set order.
    const_iterator begin() const noexcept { return attributes_.begin(); }
    /// Past the last attribute.
    iterator end() noexcept { return attributes_.end(); }
    /// Past the last attribute.
    const_iterator end() const noexcept { return attributes_.end(); }
    /// Number of attributes.
    QzSize_T size() const noexcept { return attributes_.size(); }
    /// True when there is no attribute.
    bool empty() const noexcept { return attributes_.empty(); }
    /// Erases the attribute at position; returns the position of the next one.
    iterator erase(iterator position) { return attributes_.erase(position); }
    /// Erases every attribute.
    void clear() noexcept { attributes_.clear(); }

private:
    // The reader files a whole tag's attributes at once, sorted, instead of one add each.
    friend class QzXmlReader;

    std::vector<QzXmlAttribute> attributes_;
};

#endif
