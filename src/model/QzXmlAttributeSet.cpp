#include "QzXmlAttributeSet.h"

#include <algorithm>

const QzCString QzXmlAttributeSet::EmptyString;
const QzCString QzXmlAttributeSet::DefaultNamespaceAttributeTag("xmlns");

namespace {

// The helpers below take the vector as const or non-const, so that one body serves both
// the const and the non-const operations.

template <typename Attributes>
auto lowerBound(Attributes& attributes, const QzXmlName& name) {
    return std::lower_bound(attributes.begin(), attributes.end(), name,
                            [](const QzXmlAttribute& attribute, const QzXmlName& key) {
                                return attribute.getName() < key;
                            });
}

template <typename Attributes>
auto findByName(Attributes& attributes, const QzXmlName& name) {
    const auto found = lowerBound(attributes, name);
    return found != attributes.end() && found->getName() == name ? found : attributes.end();
}

template <typename Attributes>
auto findByLocalName(Attributes& attributes, const QzCString& localName) {
    return std::find_if(attributes.begin(), attributes.end(), [&](const QzXmlAttribute& attribute) {
        return attribute.getName().getLocalName() == localName;
    });
}

QzXmlName defaultNamespaceName() {
    return QzXmlName(QzXmlAttributeSet::DefaultNamespaceAttributeTag,
                     QzXmlNamespace::getEmptyNamespace());
}

}  // namespace

QzXmlAttributeSet::~QzXmlAttributeSet() = default;

void QzXmlAttributeSet::add(const QzXmlName& name, const QzCString& value) {
    const auto position = lowerBound(attributes_, name);
    if (position != attributes_.end() && position->getName() == name) {
        position->setValue(value);
    } else {
        attributes_.insert(position, QzXmlAttribute(name, value));
    }
}

void QzXmlAttributeSet::add(const QzXmlAttribute& attribute) {
    add(attribute.getName(), attribute.getValue());
}

bool QzXmlAttributeSet::contains(const QzXmlName& name) const {
    return find(name) != end();
}

QzXmlAttributeSet::iterator QzXmlAttributeSet::find(const QzXmlName& name) {
    return findByName(attributes_, name);
}

QzXmlAttributeSet::const_iterator QzXmlAttributeSet::find(const QzXmlName& name) const {
    return findByName(attributes_, name);
}

QzSize_T QzXmlAttributeSet::erase(const QzXmlName& name) {
    const auto first = lowerBound(attributes_, name);
    const auto last = std::find_if(first, attributes_.end(), [&](const QzXmlAttribute& attribute) {
        return attribute.getName() != name;
    });
    const auto count = static_cast<QzSize_T>(last - first);
    attributes_.erase(first, last);
    return count;
}

void QzXmlAttributeSet::addNamespaceAttribute(const QzXmlNamespace& ns) {
    add(QzXmlName(ns.getPrefix(), QzXmlNamespace::getXmlns()), ns.getURI());
}

QzXmlAttributeSet::iterator QzXmlAttributeSet::findNamespaceByPrefix(const QzCString& prefix) {
    return findByLocalName(attributes_, prefix);
}

QzXmlAttributeSet::const_iterator QzXmlAttributeSet::findNamespaceByPrefix(
    const QzCString& prefix) const {
    return findByLocalName(attributes_, prefix);
}

QzXmlAttributeSet::iterator QzXmlAttributeSet::findNamespaceAttribute(const QzCString& prefix) {
    return findNamespaceByPrefix(prefix);
}

QzXmlAttributeSet::const_iterator QzXmlAttributeSet::findNamespaceAttribute(
    const QzCString& prefix) const {
    return findNamespaceByPrefix(prefix);
}

QzXmlAttributeSet::iterator QzXmlAttributeSet::findNamespaceAttribute(const QzXmlNamespace& ns) {
    return findNamespaceByPrefix(ns.getPrefix());
}

QzXmlAttributeSet::const_iterator QzXmlAttributeSet::findNamespaceAttribute(
    const QzXmlNamespace& ns) const {
    return findNamespaceByPrefix(ns.getPrefix());
}

void QzXmlAttributeSet::removeNamespaceAttribute(const QzCString& prefix) {
    erase(QzXmlName(prefix, QzXmlNamespace::getXmlns()));
}

void QzXmlAttributeSet::setDefaultNamespaceAttribute(const QzCString& uri) {
    add(defaultNamespaceName(), uri);
}

void QzXmlAttributeSet::setDefaultNamespaceAttribute(const QzXmlNamespace& ns) {
    setDefaultNamespaceAttribute(ns.getURI());
}

const QzCString& QzXmlAttributeSet::getDefaultNamespaceAttribute() const {
    const auto found = find(defaultNamespaceName());
    return found != end() ? found->getValue() : EmptyString;
}

void QzXmlAttributeSet::removeDefaultNamespaceAttribute() {
    erase(defaultNamespaceName());
}

int QzXmlAttributeSet::compareTo(const QzXmlAttributeSet& other) const {
    auto mine = begin();
    auto theirs = other.begin();
    for (; mine != end() && theirs != other.end(); ++mine, ++theirs) {
        const int order = mine->getName().compareTo(theirs->getName());
        if (order != 0) return order;
    }
    if (mine != end()) return 1;
    return theirs != other.end() ? -1 : 0;
}
