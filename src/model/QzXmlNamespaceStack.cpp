#include "QzXmlNamespaceStack.h"

#include <algorithm>

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
        declarations_ = other.declarations_;
        shared_ = true;
        lastPrefixValid_ = false;
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
    if (std::shared_ptr<Scope>& innermost = scopes_.back()) {
        lastPrefixValid_ = false;
        for (const QzXmlNamespace& ns : *innermost) {
            unbind(byPrefix_, ns.getPrefix(), scopes_.size() - 1);
            unbind(byURI_, ns.getURI(), scopes_.size() - 1);
        }
        declarations_ -= std::min(declarations_, innermost->size());
        sweep(byPrefix_);
        sweep(byURI_);
        // A scope no copy shares is kept for the next declaration, with its capacity.
        if (innermost.use_count() == 1) {
            innermost->clear();
            spareScopes_.push_back(std::move(innermost));
        }
    }
    scopes_.pop_back();
}

void QzXmlNamespaceStack::addNamespace(const QzXmlNamespace& ns) {
    if (scopes_.empty()) {
        throw QzXmlInternalError(QzCString("addNamespace called with no namespace scope open"));
    }
    std::shared_ptr<Scope>& innermost = scopes_.back();
    if (!innermost) innermost = newScope();
    lastPrefixValid_ = false;
    const Binding binding{scopes_.size() - 1, innermost->size()};
    innermost->push_back(ns);
    ++declarations_;
    bind(byPrefix_, ns.getPrefix(), binding);
    bind(byURI_, ns.getURI(), binding);
}

std::shared_ptr<QzXmlNamespaceStack::Scope> QzXmlNamespaceStack::newScope() {
    if (spareScopes_.empty()) return std::make_shared<Scope>();
    std::shared_ptr<Scope> scope = std::move(spareScopes_.back());
    spareScopes_.pop_back();
    return scope;
}

// Within one scope the earliest declaration of a key answers, so a later one is not bound.
void QzXmlNamespaceStack::bind(Index& index, const QzCString& key, Binding binding) {
    std::vector<Binding>& bindings = index[key.std()];
    if (bindings.empty() || bindings.back().scope != binding.scope) bindings.push_back(binding);
}

// A key left without bindings stays in the index, so that a document declaring the same
// prefixes over and over does not allocate for them each time.
void QzXmlNamespaceStack::unbind(Index& index, const QzCString& key, std::size_t scope) {
    const auto found = index.find(key.std());
    if (found == index.end() || found->second.empty() || found->second.back().scope != scope)
        return;
    found->second.pop_back();
}

// Sweeps only once dead keys outnumber the declarations in force, so that each declaration
// pays for its key's removal at most once.
void QzXmlNamespaceStack::sweep(Index& index) {
    if (index.size() <= 64 + 2 * declarations_) return;
    for (auto entry = index.begin(); entry != index.end();) {
        entry = entry->second.empty() ? index.erase(entry) : std::next(entry);
    }
}

// Documents use one prefix for long runs of names, so the last answer is kept until a
// declaration comes or goes. A stack sharing scopes cannot see that happen, so it keeps none.
const QzCString& QzXmlNamespaceStack::getURIForPrefix(const QzCString& prefix) const {
    if (lastPrefixValid_ && !shared_ && prefix == lastPrefix_) return *lastURI_;
    const QzCString& uri =
        lookUp(prefix, byPrefix_, &QzXmlNamespace::getPrefix, &QzXmlNamespace::getURI);
    lastPrefix_.assign(prefix);
    lastURI_ = &uri;
    lastPrefixValid_ = true;
    return uri;
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
        if (found == index.end() || found->second.empty()) return QzXmlAttributeSet::EmptyString;
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
