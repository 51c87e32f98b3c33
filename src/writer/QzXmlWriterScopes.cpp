#include "QzXmlWriterScopes.h"

#include <algorithm>
#include <cstring>

#include "QzXmlAttributeSet.h"
#include "QzXmlInternalError.h"

void QzXmlWriterScopes::pushScope() {
    scopeStarts_.push_back(count_);
}

// Latest declaration first, so that each key gets back the declaration it answered to before.
// A declaration that answers for its URI is in the index under the URI's hash, so its slot
// is found without comparing strings. Declarations kept aside answer for nothing yet.
void QzXmlWriterScopes::popScope() {
    if (scopeStarts_.empty()) return;
    const std::size_t first = scopeStarts_.back();
    while (count_ > first) {
        const auto index = static_cast<std::int32_t>(--count_);
        const Declaration& declaration = declarations_[count_];
        if (declaration.uri.answers) {
            ++takeovers_;
            const std::size_t slot = byURI_.slotHolding(declaration.uriHash, index);
            if (declaration.uri.hidden == None) {
                byURI_.vacate(slot);
            } else {
                byURI_.put(slot, declaration.uriHash, declaration.uri.hidden);
            }
        }
        if (declaration.defaultNamespace.answers) {
            defaultNamespace_ = declaration.defaultNamespace.hidden;
        }
    }
    settled_ = std::min(settled_, count_);
    asideSize_ = count_ == 0 ? 0 : declarations_[count_ - 1].asideEnd;
    scopeStarts_.pop_back();
}

// Both ways of adding at once share this, kept in line so that each costs no extra call.
[[gnu::always_inline]] inline void QzXmlWriterScopes::addNow(const QzCString& prefix,
                                                             const QzCString& uri,
                                                             bool unlessPrefixed) {
    settle();
    if (unlessPrefixed && recentlyPrefixed(uri)) return;
    const std::size_t hash = QzXmlKeyIndex::hashOf(uri);
    const std::size_t slot = uriSlot(uri, hash);
    if (unlessPrefixed && prefixedAt(slot)) {
        rememberPrefixed(byURI_.at(slot));
        return;
    }
    const std::int32_t index = append(prefix, uri);
    link(index, hash, slot);
    linkDefault(index);
    settled_ = count_;
}

bool QzXmlWriterScopes::recentlyPrefixed(const QzCString& uri) {
    if (recentAt_ != takeovers_) {
        recentPrefixed_.fill(None);
        recentAt_ = takeovers_;
        return false;
    }
    for (const std::int32_t index : recentPrefixed_) {
        if (index != None && declarations_[index].ns.getURI() == uri) return true;
    }
    return false;
}

void QzXmlWriterScopes::rememberPrefixed(std::int32_t index) {
    recentPrefixed_[recentNext_] = index;
    recentNext_ = (recentNext_ + 1) % recentPrefixed_.size();
}

void QzXmlWriterScopes::addNamespace(const QzCString& prefix, const QzCString& uri) {
    addNow(prefix, uri, false);
}

void QzXmlWriterScopes::addNamespaceUnlessPrefixed(const QzCString& prefix, const QzCString& uri) {
    addNow(prefix, uri, true);
}

// Whether the declaration is added depends on the URI's binding when it is made, which no
// one asks about before the next question: it is decided then, in turn with the others kept
// aside. A declaration of the empty prefix (the default namespace) is never kept aside.
void QzXmlWriterScopes::addNamespaceUnlessPrefixedLater(const QzCString& prefix,
                                                        const QzCString& uri) {
    if (prefix.empty()) {
        addNamespaceUnlessPrefixed(prefix, uri);
    } else {
        keepAside(prefix, uri);
    }
}

QzXmlWriterScopes::Declaration& QzXmlWriterScopes::next() {
    if (scopeStarts_.empty()) {
        throw QzXmlInternalError(QzCString("addNamespace called with no namespace scope open"));
    }
    if (count_ == declarations_.size()) declarations_.emplace_back();
    Declaration& declaration = declarations_[count_];
    declaration.scope = static_cast<std::uint32_t>(scopeStarts_.size());
    declaration.uri = Link{};
    declaration.defaultNamespace = Link{};
    declaration.absent = false;
    declaration.asideEnd = asideSize_;
    return declaration;
}

std::int32_t QzXmlWriterScopes::append(const QzCString& prefix, const QzCString& uri) {
    Declaration& declaration = next();
    declaration.ns.setPrefix(prefix);
    declaration.ns.setURI(uri);
    return static_cast<std::int32_t>(count_++);
}

void QzXmlWriterScopes::keepAside(const QzCString& prefix, const QzCString& uri) {
    Declaration& declaration = next();
    const std::size_t size = asideSize_ + prefix.length() + uri.length();
    if (size > aside_.size()) aside_.resize(std::max(size, 2 * aside_.size()));
    char* out = aside_.data() + asideSize_;
    std::memcpy(out, prefix.data(), prefix.length());
    std::memcpy(out + prefix.length(), uri.data(), uri.length());
    declaration.prefixLength = prefix.length();
    declaration.uriLength = uri.length();
    declaration.asideEnd = asideSize_ = size;
    ++count_;
}

void QzXmlWriterScopes::link(std::int32_t index, std::size_t uriHash, std::size_t uriSlot) const {
    Declaration& declaration = declarations_[index];
    declaration.uriHash = uriHash;
    const std::int32_t current = byURI_.at(uriSlot);
    declaration.uri = Link{current, takesOver(current, declaration.scope)};
    if (declaration.uri.answers) {
        ++takeovers_;
        byURI_.put(uriSlot, uriHash, index);
    }
}

void QzXmlWriterScopes::linkDefault(std::int32_t index) {
    Declaration& declaration = declarations_[index];
    declaration.defaultNamespace =
        Link{defaultNamespace_,
             declaration.ns.getPrefix().empty() && takesOver(defaultNamespace_, declaration.scope)};
    if (declaration.defaultNamespace.answers) defaultNamespace_ = index;
}

void QzXmlWriterScopes::settleAside() const {
    for (; settled_ < count_; ++settled_) {
        Declaration& declaration = declarations_[settled_];
        const char* prefix =
            aside_.data() + declaration.asideEnd - declaration.uriLength - declaration.prefixLength;
        declaration.ns.prefix_.assign(prefix, declaration.prefixLength);
        declaration.ns.uri_.assign(prefix + declaration.prefixLength, declaration.uriLength);
        const QzCString& uri = declaration.ns.getURI();
        const std::size_t hash = QzXmlKeyIndex::hashOf(uri);
        const std::size_t slot = uriSlot(uri, hash);
        declaration.absent = prefixedAt(slot);
        if (!declaration.absent) link(static_cast<std::int32_t>(settled_), hash, slot);
    }
}

bool QzXmlWriterScopes::prefixedAt(std::size_t uriSlot) const {
    const std::int32_t bound = byURI_.at(uriSlot);
    return bound != None && !declarations_[bound].ns.getPrefix().empty();
}

std::size_t QzXmlWriterScopes::uriSlot(const QzCString& uri, std::size_t hash) const {
    return byURI_.slotOf(uri, hash, [this](std::int32_t d) -> const QzCString& {
        return declarations_[d].ns.getURI();
    });
}

bool QzXmlWriterScopes::takesOver(std::int32_t current, std::uint32_t scope) const {
    return current == None || declarations_[current].scope != scope;
}

const QzCString& QzXmlWriterScopes::getDefaultURI() const {
    return defaultNamespace_ == None ? QzXmlAttributeSet::EmptyString
                                     : declarations_[defaultNamespace_].ns.getURI();
}

const QzCString& QzXmlWriterScopes::getPrefixForURI(const QzCString& uri) const {
    settle();
    const std::int32_t found = byURI_.at(uriSlot(uri, QzXmlKeyIndex::hashOf(uri)));
    return found == None ? QzXmlAttributeSet::EmptyString : declarations_[found].ns.getPrefix();
}
