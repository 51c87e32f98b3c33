#include "QzXmlNamespaceStack.h"

#include <string>
#include <unordered_map>

#include "QzXmlAttributeSet.h"
#include "QzXmlInternalError.h"

namespace {

// Below this size a linear scan beats hashing; above it a scope with thousands of
// declarations must not make every lookup linear.
constexpr std::size_t kIndexThreshold = 16;

}  // namespace

// One scope: declarations in the order they were added, plus, once the scope is large, the
// position of the first declaration of each prefix and of each URI.
class QzXmlNamespaceStack::Scope {
public:
    void add(const QzXmlNamespace& ns) {
        declarations_.push_back(ns);
        if (declarations_.size() == kIndexThreshold) {
            for (std::size_t i = 0; i < declarations_.size(); ++i)
                index(i);
        } else if (declarations_.size() > kIndexThreshold) {
            index(declarations_.size() - 1);
        }
    }

    const QzXmlNamespace* findPrefix(const QzCString& prefix) const {
        return find(prefix, byPrefix_, &QzXmlNamespace::getPrefix);
    }

    const std::vector<QzXmlNamespace>& declarations() const { return declarations_; }

    const QzXmlNamespace* findURI(const QzCString& uri) const {
        return find(uri, byURI_, &QzXmlNamespace::getURI);
    }

private:
    using Index = std::unordered_map<std::string, std::size_t>;

    // emplace keeps an existing entry, so the earliest declaration stays the answer.
    void index(std::size_t i) {
        byPrefix_.emplace(declarations_[i].getPrefix().std(), i);
        byURI_.emplace(declarations_[i].getURI().std(), i);
    }

    const QzXmlNamespace* find(const QzCString& key, const Index& index,
                               const QzCString& (QzXmlNamespace::*keyOf)() const noexcept) const {
        if (declarations_.size() >= kIndexThreshold) {
            auto hit = index.find(key.std());
            return hit == index.end() ? nullptr : &declarations_[hit->second];
        }
        for (const QzXmlNamespace& ns : declarations_) {
            if ((ns.*keyOf)() == key) return &ns;
        }
        return nullptr;
    }

    std::vector<QzXmlNamespace> declarations_;
    Index byPrefix_;
    Index byURI_;
};

QzXmlNamespaceStack::QzXmlNamespaceStack(const QzXmlNamespaceStack& other) {
    other.shareAll();
    scopes_ = other.scopes_;
    populated_ = other.populated_;
}

QzXmlNamespaceStack& QzXmlNamespaceStack::operator=(const QzXmlNamespaceStack& other) {
    if (this != &other) {
        other.shareAll();
        scopes_ = other.scopes_;
        populated_ = other.populated_;
    }
    return *this;
}

QzXmlNamespaceStack::~QzXmlNamespaceStack() = default;

// A copy must share every scope, also those still empty, so each gets its object now.
void QzXmlNamespaceStack::shareAll() const {
    populated_.clear();
    for (std::size_t i = 0; i < scopes_.size(); ++i) {
        if (!scopes_[i]) scopes_[i] = std::make_shared<Scope>();
        populated_.push_back(i);
    }
}

void QzXmlNamespaceStack::pushScope() {
    scopes_.emplace_back();
}

void QzXmlNamespaceStack::popScope() {
    if (scopes_.empty()) return;
    if (!populated_.empty() && populated_.back() == scopes_.size() - 1) populated_.pop_back();
    scopes_.pop_back();
}

void QzXmlNamespaceStack::addNamespace(const QzXmlNamespace& ns) {
    if (scopes_.empty()) {
        throw QzXmlInternalError(QzCString("addNamespace called with no namespace scope open"));
    }
    std::shared_ptr<Scope>& innermost = scopes_.back();
    if (!innermost) {
        innermost = std::make_shared<Scope>();
        populated_.push_back(scopes_.size() - 1);
    }
    innermost->add(ns);
}

const QzCString& QzXmlNamespaceStack::getURIForPrefix(const QzCString& prefix) const {
    return lookUp(prefix, &Scope::findPrefix, &QzXmlNamespace::getURI);
}

const QzCString& QzXmlNamespaceStack::getPrefixForURI(const QzCString& uri) const {
    return lookUp(uri, &Scope::findURI, &QzXmlNamespace::getPrefix);
}

const std::vector<QzXmlNamespace>& QzXmlNamespaceStack::getInnermostScope() const {
    static const std::vector<QzXmlNamespace> none;
    return scopes_.empty() || !scopes_.back() ? none : scopes_.back()->declarations();
}

// Innermost scope first, so inner declarations hide outer ones.
const QzCString& QzXmlNamespaceStack::lookUp(const QzCString& key, FindIn findIn,
                                             AnswerOf answerOf) const {
    for (auto at = populated_.rbegin(); at != populated_.rend(); ++at) {
        if (const QzXmlNamespace* ns = (scopes_[*at].get()->*findIn)(key)) return (ns->*answerOf)();
    }
    return QzXmlAttributeSet::EmptyString;
}
