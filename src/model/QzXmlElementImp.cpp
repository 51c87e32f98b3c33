#include "QzXmlElementImp.h"

QzXmlElementImp::~QzXmlElementImp() = default;

void QzXmlElementImp::setName(const QzXmlName& name) {
    name_ = name;
}

const QzXmlName& QzXmlElementImp::getName() const {
    return name_;
}

QzXmlName& QzXmlElementImp::getName() {
    return name_;
}

void QzXmlElementImp::addNamespaceAttribute(const QzXmlNamespace& ns) {
    attributes_.addNamespaceAttribute(ns);
}

QzXmlElementImp::const_iterator QzXmlElementImp::findNamespaceAttribute(
    const QzCString& prefix) const {
    return attributes_.findNamespaceAttribute(prefix);
}

QzXmlElementImp::iterator QzXmlElementImp::findNamespaceAttribute(const QzCString& prefix) {
    return attributes_.findNamespaceAttribute(prefix);
}

QzXmlElementImp::const_iterator QzXmlElementImp::findNamespaceAttribute(
    const QzXmlNamespace& ns) const {
    return attributes_.findNamespaceAttribute(ns);
}

QzXmlElementImp::iterator QzXmlElementImp::findNamespaceAttribute(const QzXmlNamespace& ns) {
    return attributes_.findNamespaceAttribute(ns);
}

void QzXmlElementImp::removeNamespaceAttribute(const QzXmlNamespace& ns) {
    attributes_.removeNamespaceAttribute(ns.getPrefix());
}

void QzXmlElementImp::removeNamespaceAttribute(const QzCString& prefix) {
    attributes_.removeNamespaceAttribute(prefix);
}

void QzXmlElementImp::setDefaultNamespaceAttribute(const QzXmlNamespace& ns) {
    attributes_.setDefaultNamespaceAttribute(ns);
}

void QzXmlElementImp::setDefaultNamespaceAttribute(const QzCString& uri) {
    attributes_.setDefaultNamespaceAttribute(uri);
}

void QzXmlElementImp::unsetDefaultNamespaceAttribute() {
    setDefaultNamespaceAttribute(QzXmlAttributeSet::EmptyString);
}

const QzCString& QzXmlElementImp::getDefaultNamespaceAttribute() const {
    return attributes_.getDefaultNamespaceAttribute();
}

QzXmlElementImp::iterator QzXmlElementImp::attributesBegin() {
    return attributes_.begin();
}

QzXmlElementImp::const_iterator QzXmlElementImp::attributesBegin() const {
    return attributes_.begin();
}

QzXmlElementImp::iterator QzXmlElementImp::attributesEnd() {
    return attributes_.end();
}

QzXmlElementImp::const_iterator QzXmlElementImp::attributesEnd() const {
    return attributes_.end();
}

QzSize_T QzXmlElementImp::attributeCount() const {
    return attributes_.size();
}

void QzXmlElementImp::clearAttributes() {
    attributes_.clear();
}

void QzXmlElementImp::addAttribute(const QzXmlName& name, const QzCString& value) {
    attributes_.add(name, value);
}

void QzXmlElementImp::addAttribute(const QzXmlAttribute& attribute) {
    attributes_.add(attribute);
}

void QzXmlElementImp::removeAttribute(const QzXmlName& name) {
    const auto found = attributes_.find(name);
    if (found != attributes_.end()) attributes_.erase(found);
}

void QzXmlElementImp::removeAttribute(const QzXmlAttribute& attribute) {
    attributes_.erase(attribute.getName());
}

QzXmlElementImp::iterator QzXmlElementImp::removeAttribute(iterator position) {
    return position == attributes_.end() ? position : attributes_.erase(position);
}

QzXmlElementImp::const_iterator QzXmlElementImp::findAttribute(const QzXmlName& name) const {
    return attributes_.find(name);
}

QzXmlElementImp::iterator QzXmlElementImp::findAttribute(const QzXmlName& name) {
    return attributes_.find(name);
}

QzXmlElementImp::const_iterator QzXmlElementImp::findAttribute(
    const QzXmlAttribute& attribute) const {
    return attributes_.find(attribute.getName());
}

QzXmlElementImp::iterator QzXmlElementImp::findAttribute(const QzXmlAttribute& attribute) {
    return attributes_.find(attribute.getName());
}

bool QzXmlElementImp::hasAttribute(const QzXmlName& name) const {
    return attributes_.contains(name);
}

bool QzXmlElementImp::hasAttribute(const QzXmlAttribute& attribute) const {
    return attributes_.contains(attribute.getName());
}

const QzXmlAttributeSet& QzXmlElementImp::getAttributes() const {
    return attributes_;
}

QzXmlAttributeSet& QzXmlElementImp::getAttributes() {
    return attributes_;
}
