#include "QzXmlWriterScopes.h"

#include "QzXmlAttributeSet.h"
#include "QzXmlInternalError.h"

void QzXmlWriterScopes::pushScope() {
    scopeStarts_.push_back(count_);
}

// Latest declaration first, so that each key gets back the declaration it answered to before.
// A declaration that answers for its URI is in the index under the URI's hash, so its slot
// is found without comparing strings.
void QzXmlWriterScopes::popScope() {
    if (scopeStarts_.empty()) return;
    const std::size_t first = scopeStarts_.back();
    while (count_ > first) {
        const auto index = static_cast<std::int32_t>(--count_);
        const Declaration& declaration = declarations_[count_];
        if (declaration.uri.answers) {
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
    scopeStarts_.pop_back();
}

void QzXmlWriterScopes::addNamespace(const QzCString& prefix, const QzCString& uri) {
    const std::size_t hash = QzXmlKeyIndex::hashOf(uri);
    add(prefix, uri, hash, uriSlot(uri, hash));
}

void QzXmlWriterScopes::addNamespaceUnlessPrefixed(const QzCString& prefix, const QzCString& uri) {
    const std::size_t hash = QzXmlKeyIndex::hashOf(uri);
    const std::size_t slot = uriSlot(uri, hash);
    const std::int32_t bound = byURI_.at(slot);
    if (bound == None || declarations_[bound].ns.getPrefix().empty()) add(prefix, uri, hash, slot);
}

void QzXmlWriterScopes::add(const QzCString& prefix, const QzCString& uri, std::size_t uriHash,
                            std::size_t uriSlot) {
    if (scopeStarts_.empty()) {
        throw QzXmlInternalError(QzCString("addNamespace called with no namespace scope open"));
    }
    if (count_ == declarations_.size()) declarations_.emplace_back();
    const auto index = static_cast<std::int32_t>(count_);
    Declaration& declaration = declarations_[count_++];
    declaration.ns.setPrefix(prefix);
    declaration.ns.setURI(uri);
    declaration.scope = static_cast<std::uint32_t>(scopeStarts_.size());
    declaration.uriHash = uriHash;
    const std::int32_t current = byURI_.at(uriSlot);
    declaration.uri = Link{current, takesOver(current)};
    if (declaration.uri.answers) byURI_.put(uriSlot, uriHash, index);
    declaration.defaultNamespace =
        Link{defaultNamespace_, prefix.empty() && takesOver(defaultNamespace_)};
    if (declaration.defaultNamespace.answers) defaultNamespace_ = index;
}

std::size_t QzXmlWriterScopes::uriSlot(const QzCString& uri, std::size_t hash) const {
    return byURI_.slotOf(uri, hash, [this](std::int32_t d) -> const QzCString& {
        return declarations_[d].ns.getURI();
    });
}

bool QzXmlWriterScopes::takesOver(std::int32_t current) const {
    return current == None || declarations_[current].scope != scopeStarts_.size();
}

const QzCString& QzXmlWriterScopes::getDefaultURI() const {
    return defaultNamespace_ == None ? QzXmlAttributeSet::EmptyString
                                     : declarations_[defaultNamespace_].ns.getURI();
}

const QzCString& QzXmlWriterScopes::getPrefixForURI(const QzCString& uri) const {
    const std::int32_t found = byURI_.at(uriSlot(uri, QzXmlKeyIndex::hashOf(uri)));
    return found == None ? QzXmlAttributeSet::EmptyString : declarations_[found].ns.getPrefix();
}
