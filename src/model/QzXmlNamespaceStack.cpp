#include "QzXmlNamespaceStack.h"

#include "QzXmlAttributeSet.h"
#include "QzXmlInternalError.h"

void QzXmlNamespaceStack::pushScope() {
    scopes_.push_back(std::make_shared<Scope>());
}

void QzXmlNamespaceStack::popScope() {
    if (!scopes_.empty()) scopes_.pop_back();
}

void QzXmlNamespaceStack::addNamespace(const QzXmlNamespace& ns) {
    if (scopes_.empty()) {
        throw QzXmlInternalError(QzCString("addNamespace called with no namespace scope open"));
    }
    scopes_.back()->push_back(ns);
}

const QzCString& QzXmlNamespaceStack::getURIForPrefix(const QzCString& prefix) const {
    return lookUp(prefix, &QzXmlNamespace::getPrefix, &QzXmlNamespace::getURI);
}

const QzCString& QzXmlNamespaceStack::getPrefixForURI(const QzCString& uri) const {
    return lookUp(uri, &QzXmlNamespace::getURI, &QzXmlNamespace::getPrefix);
}

// Innermost scope first, so inner declarations hide outer ones; within a scope the earliest
// declaration wins.
const QzCString& QzXmlNamespaceStack::lookUp(const QzCString& key,
                                             const QzCString& (QzXmlNamespace::*keyOf)()
                                                 const noexcept,
                                             const QzCString& (QzXmlNamespace::*answerOf)()
                                                 const noexcept) const {
    for (auto scope = scopes_.rbegin(); scope != scopes_.rend(); ++scope) {
        for (const QzXmlNamespace& ns : **scope) {
            if ((ns.*keyOf)() == key) return (ns.*answerOf)();
        }
    }
    return QzXmlAttributeSet::EmptyString;
}
