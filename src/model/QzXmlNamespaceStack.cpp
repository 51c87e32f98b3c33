#include "QzXmlNamespaceStack.h"

#include <algorithm>
#include <cstring>

#include "QzXmlAttributeSet.h"
#include "QzXmlInternalError.h"
#include "QzXmlNamespaceIndex.h"

// Out of line, with the destructor, where the index type is complete.
QzXmlNamespaceStack::QzXmlNamespaceStack() = default;

QzXmlNamespaceStack::QzXmlNamespaceStack(const QzXmlNamespaceStack& other) {
    *this = other;
}

QzXmlNamespaceStack& QzXmlNamespaceStack::operator=(const QzXmlNamespaceStack& other) {
    if (this != &other) {
        other.shareAll();
        scopes_ = other.scopes_;
        shareAll();
    }
    return *this;
}

QzXmlNamespaceStack::~QzXmlNamespaceStack() = default;

// A copy must share every scope, also those still empty, so each gets its object now. Either
// stack may then add to a shared scope behind the other's index, so neither keeps one.
void QzXmlNamespaceStack::shareAll() const {
    for (std::shared_ptr<Scope>& scope : scopes_) {
        if (!scope) scope = std::make_shared<Scope>();
    }
    shared_ = true;
    index_.reset();
    forgetAnswers();
}

void QzXmlNamespaceStack::pushScope() {
    scopes_.emplace_back();
}

void QzXmlNamespaceStack::popScope() {
    if (scopes_.empty()) return;
    std::shared_ptr<Scope>& innermost = scopes_.back();
    if (innermost) {
        forgetAnswers();
        if (index_) index_->removeScope(*innermost);
    }
    // A streaming reader may open the scope again; the one kept before is done with.
    if (keepClosed_ && (innermost || closed_)) innermost.swap(closed_);
    retire(innermost);
    scopes_.pop_back();
}

// A scope no copy shares is kept for the next declaration, with its capacity, and so are its
// declarations' strings.
void QzXmlNamespaceStack::retire(std::shared_ptr<Scope>& scope) {
    if (!scope || scope.use_count() != 1) return;
    for (QzXmlNamespace& ns : *scope)
        spareDeclarations_.push_back(std::move(ns));
    scope->clear();
    spareScopes_.push_back(std::move(scope));
}

QzXmlNamespace QzXmlNamespaceStack::spareDeclaration() noexcept {
    if (spareDeclarations_.empty()) return QzXmlNamespace();
    QzXmlNamespace ns = std::move(spareDeclarations_.back());
    spareDeclarations_.pop_back();
    return ns;
}

void QzXmlNamespaceStack::closeAll() {
    while (!scopes_.empty())
        popScope();
    retire(closed_);
    closed_.reset();
    keepClosed_ = false;
}

void QzXmlNamespaceStack::swap(QzXmlNamespaceStack& other) noexcept {
    scopes_.swap(other.scopes_);
    spareScopes_.swap(other.spareScopes_);
    spareDeclarations_.swap(other.spareDeclarations_);
    index_.swap(other.index_);
    std::swap(shared_, other.shared_);
    std::swap(keepClosed_, other.keepClosed_);
    closed_.swap(other.closed_);
    forgetAnswers();
    other.forgetAnswers();
}

void QzXmlNamespaceStack::addNamespace(const QzXmlNamespace& ns) {
    Scope& innermost = innermostWithRoom(1);
    innermost.push_back(ns);
    indexFrom(innermost.size() - 1);
}

// Grows as push_back would, so that adding one at a time stays linear.
QzXmlNamespaceStack::Scope& QzXmlNamespaceStack::innermostWithRoom(std::size_t more) {
    if (scopes_.empty()) {
        throw QzXmlInternalError(QzCString("addNamespace called with no namespace scope open"));
    }
    std::shared_ptr<Scope>& innermost = scopes_.back();
    if (!innermost) innermost = newScope();
    // Making room may move the declarations the answers point into.
    forgetAnswers();
    if (innermost->capacity() - innermost->size() < more) {
        innermost->reserve(std::max(innermost->size() + more, 2 * innermost->capacity()));
    }
    return *innermost;
}

void QzXmlNamespaceStack::rewind(std::size_t scopes) {
    while (scopes_.size() > scopes)
        popScope();
    if (scopes_.size() < scopes) {
        scopes_.push_back(std::move(closed_));
        forgetAnswers();
        if (scopes_.back() && !scopes_.back()->empty()) indexFrom(0);
    }
}

void QzXmlNamespaceStack::indexFrom(std::size_t first) {
    if (shared_) return;
    Scope& innermost = *scopes_.back();
    try {
        if (!index_) index_ = std::make_unique<QzXmlNamespaceIndex>();
        index_->addFrom(innermost, first);
    } catch (...) {
        innermost.erase(innermost.begin() + static_cast<std::ptrdiff_t>(first), innermost.end());
        throw;
    }
}

std::shared_ptr<QzXmlNamespaceStack::Scope> QzXmlNamespaceStack::newScope() {
    if (spareScopes_.empty()) return std::make_shared<Scope>();
    std::shared_ptr<Scope> scope = std::move(spareScopes_.back());
    spareScopes_.pop_back();
    return scope;
}

const QzCString& QzXmlNamespaceStack::getURIForPrefix(const QzCString& prefix) const {
    return uriForPrefix(std::string_view(prefix.data(), prefix.length()));
}

// Documents use a few prefixes over and over, so their answers are kept until a declaration
// comes or goes. A stack sharing scopes cannot see that happen, so it keeps none.
const QzCString& QzXmlNamespaceStack::answerFor(std::string_view prefix) const {
    const QzCString& uri = lookUp(prefix);
    if (prefix.size() > Answer::Room || shared_) return uri;
    Answer& answer = answers_[slotOf(prefix)];
    std::memcpy(answer.prefix, prefix.data(), prefix.size());
    answer.length = static_cast<std::uint8_t>(prefix.size());
    answer.uri = &uri;
    return uri;
}

// A document without declarations never pays for hashing.
const QzCString& QzXmlNamespaceStack::lookUp(std::string_view prefix) const {
    key_.assign(prefix.data(), prefix.size());
    if (shared_) return walk(key_, &QzXmlNamespace::getPrefix, &QzXmlNamespace::getURI);
    const QzXmlNamespace* found = index_ ? index_->findPrefix(key_) : nullptr;
    return found ? found->getURI() : QzXmlAttributeSet::EmptyString;
}

void QzXmlNamespaceStack::forgetAnswers() const noexcept {
    for (Answer& answer : answers_)
        answer.length = 0xFF;
}

const QzCString& QzXmlNamespaceStack::getPrefixForURI(const QzCString& uri) const {
    if (shared_) return walk(uri, &QzXmlNamespace::getURI, &QzXmlNamespace::getPrefix);
    const QzXmlNamespace* found = index_ ? index_->findURI(uri) : nullptr;
    return found ? found->getPrefix() : QzXmlAttributeSet::EmptyString;
}

const std::vector<QzXmlNamespace>& QzXmlNamespaceStack::getInnermostScope() const {
    static const Scope none;
    return scopes_.empty() || !scopes_.back() ? none : *scopes_.back();
}

// Innermost scope first, so inner declarations hide outer ones; within a scope the earliest
// declaration wins.
const QzCString& QzXmlNamespaceStack::walk(const QzCString& key, KeyOf keyOf,
                                           KeyOf answerOf) const {
    for (auto scope = scopes_.rbegin(); scope != scopes_.rend(); ++scope) {
        if (!*scope) continue;
        for (const QzXmlNamespace& ns : **scope) {
            if ((ns.*keyOf)() == key) return (ns.*answerOf)();
        }
    }
    return QzXmlAttributeSet::EmptyString;
}
