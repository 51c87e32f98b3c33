#include "QzXmlNamespaceStack.h"

#include "QzXmlAttributeSet.h"
#include "QzXmlInternalError.h"

QzXmlNamespaceStack::QzXmlNamespaceStack(const QzXmlNamespaceStack& other) {
    *this = other;
}

QzXmlNamespaceStack& QzXmlNamespaceStack::operator=(const QzXmlNamespaceStack& other) {
    if (this != &other) {
        other.shareAll();
        scopes_ = other.scopes_;
        byPrefix_ = other.byPrefix_;
        byURI_ = other.byURI_;
        shared_ = true;
    }
    return *this;
}

QzXmlNamespaceStack::~QzXmlNamespaceStack() = default;

// A copy must share every scope, also those still empty, so each gets its object now.
void QzXmlNamespaceStack::shareAll() const {
    for (std::shared_ptr<Scope>& scope : scopes_) {
        if (!scope) scope = std::make_shared<Scope>();
    }
    shared_ = true;
}

void QzXmlNamespaceStack::pushScope() {
    scopes_.emplace_back();
}

void QzXmlNamespaceStack::popScope() {
    if (scopes_.empty()) return;
    if (const std::shared_ptr<Scope>& innermost = scopes_.back()) {
        for (const QzXmlNamespace& ns : *innermost) {
            unbind(byPrefix_, ns.getPrefix(), scopes_.size() - 1);
            unbind(byURI_, ns.getURI(), scopes_.size() - 1);
        }
    }
    scopes_.pop_back();
}

void QzXmlNamespaceStack::addNamespace(const QzXmlNamespace& ns) {
    if (scopes_.empty()) {
        throw QzXmlInternalError(QzCString("addNamespace called with no namespace scope open"));
    }
    std::shared_ptr<Scope>& innermost = scopes_.back();
    if (!innermost) innermost = std::make_shared<Scope>();
    const Binding binding{scopes_.size() - 1, innermost->size()};
    innermost->push_back(ns);
    bind(byPrefix_, ns.getPrefix(), binding);
    bind(byURI_, ns.getURI(), binding);
}

// Within one scope the earliest declaration of a key answers, so a later one is not bound.
void QzXmlNamespaceStack::bind(Index& index, const QzCString& key, Binding binding) {
    std::vector<Binding>& bindings = index[key.std()];
    if (bindings.empty() || bindings.back().scope != binding.scope) bindings.push_back(binding);
}

void QzXmlNamespaceStack::unbind(Index& index, const QzCString& key, std::size_t scope) {
    const auto found = index.find(key.std());
    if (found == index.end() || found->second.back().scope != scope) return;
    found->second.pop_back();
    if (found->second.empty()) index.erase(found);
}

const QzCString& QzXmlNamespaceStack::getURIForPrefix(const QzCString& prefix) const {
    return lookUp(prefix, byPrefix_, &QzXmlNamespace::getPrefix, &QzXmlNamespace::getURI);
}

const QzCString& QzXmlNamespaceStack::getPrefixForURI(const QzCString& uri) const {
    return lookUp(uri, byURI_, &QzXmlNamespace::getURI, &QzXmlNamespace::getPrefix);
}

const std::vector<QzXmlNamespace>& QzXmlNamespaceStack::getInnermostScope() const {
    static const Scope none;
    return scopes_.empty() || !scopes_.back() ? none : *scopes_.back();
}

// Innermost scope first, so inner declarations hide outer ones; within a scope the earliest
// declaration wins.
const QzCString& QzXmlNamespaceStack::lookUp(const QzCString& key, const Index& index, KeyOf keyOf,
                                             KeyOf answerOf) const {
    if (!shared_) {
        // A document without declarations never pays for hashing.
        if (index.empty()) return QzXmlAttributeSet::EmptyString;
        const auto found = index.find(key.std());
        if (found == index.end()) return QzXmlAttributeSet::EmptyString;
        const Binding& binding = found->second.back();
        return ((*scopes_[binding.scope])[binding.position].*answerOf)();
    }
    for (auto scope = scopes_.rbegin(); scope != scopes_.rend(); ++scope) {
        if (!*scope) continue;
        for (const QzXmlNamespace& ns : **scope) {
            if ((ns.*keyOf)() == key) return (ns.*answerOf)();
        }
    }
    return QzXmlAttributeSet::EmptyString;
}
