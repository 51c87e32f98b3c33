#include "QzXmlWriterScopes.h"

#include <cstring>

#include "QzXmlAttributeSet.h"
#include "QzXmlInternalError.h"

namespace {

constexpr std::size_t InitialSlots = 64;
constexpr std::uint64_t Multiplier = 0x9E3779B97F4A7C15ull;

std::uint64_t mix(std::uint64_t hash, std::uint64_t word) {
    hash = (hash ^ word) * Multiplier;
    return hash ^ (hash >> 29);
}

// Eight bytes at a time over the whole key: keys are mostly short, and a hash that skipped
// bytes would let keys that differ only in the middle (URIs, dates) pile up in one run.
std::size_t hashOf(const QzCString& key) {
    const char* at = key.data();
    std::size_t left = key.length();
    std::uint64_t hash = mix(Multiplier, left);
    for (; left >= 8; at += 8, left -= 8) {
        std::uint64_t word;
        std::memcpy(&word, at, 8);
        hash = mix(hash, word);
    }
    if (left > 0) {
        std::uint64_t word = 0;
        std::memcpy(&word, at, left);
        hash = mix(hash, word);
    }
    return static_cast<std::size_t>(mix(hash, 0));
}

// Whether home lies in the cyclic range (from, to].
bool between(std::size_t home, std::size_t from, std::size_t to) {
    return from <= to ? from < home && home <= to : from < home || home <= to;
}

}  // namespace

QzXmlWriterScopes::Index::Index(const std::vector<Declaration>& declarations, KeyOf keyOf)
    : declarations_(declarations), keyOf_(keyOf), slots_(InitialSlots, Slot{0, None}) {}

std::size_t QzXmlWriterScopes::Index::slotOf(const QzCString& key, std::size_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
        const Slot& slot = slots_[at];
        if (slot.declaration == None) return at;
        if (slot.hash == hash && (declarations_[slot.declaration].ns.*keyOf_)() == key) return at;
    }
}

void QzXmlWriterScopes::Index::put(std::size_t slot, std::size_t hash, std::int32_t declaration) {
    if (slots_[slot].declaration == None) ++used_;
    slots_[slot] = Slot{hash, declaration};
    // At most half full, so that probe runs stay short.
    if (2 * used_ > slots_.size()) grow();
}

// Backward-shift deletion: later entries of the probe run move up, so no tombstones are left.
void QzXmlWriterScopes::Index::vacate(std::size_t slot) {
    const std::size_t mask = slots_.size() - 1;
    std::size_t hole = slot;
    for (std::size_t next = (hole + 1) & mask; slots_[next].declaration != None;
         next = (next + 1) & mask) {
        if (!between(slots_[next].hash & mask, hole, next)) {
            slots_[hole] = slots_[next];
            hole = next;
        }
    }
    slots_[hole].declaration = None;
    --used_;
}

void QzXmlWriterScopes::Index::grow() {
    std::vector<Slot> old(2 * slots_.size(), Slot{0, None});
    old.swap(slots_);
    const std::size_t mask = slots_.size() - 1;
    for (const Slot& slot : old) {
        if (slot.declaration == None) continue;
        std::size_t at = slot.hash & mask;
        while (slots_[at].declaration != None)
            at = (at + 1) & mask;
        slots_[at] = slot;
    }
}

QzXmlWriterScopes::QzXmlWriterScopes()
    : byPrefix_(declarations_, &QzXmlNamespace::getPrefix),
      byURI_(declarations_, &QzXmlNamespace::getURI) {}

void QzXmlWriterScopes::pushScope() {
    scopeStarts_.push_back(count_);
}

void QzXmlWriterScopes::popScope() {
    if (scopeStarts_.empty()) return;
    const std::size_t first = scopeStarts_.back();
    // Latest first, so that each key gets back the declaration it answered to before.
    while (count_ > first) {
        const Declaration& declaration = declarations_[--count_];
        unbind(byPrefix_, declaration.ns.getPrefix(), declaration.prefix);
        unbind(byURI_, declaration.ns.getURI(), declaration.uri);
    }
    scopeStarts_.pop_back();
}

void QzXmlWriterScopes::addNamespace(const QzCString& prefix, const QzCString& uri) {
    add(prefix, uri, hashOf(uri));
}

void QzXmlWriterScopes::addNamespaceUnlessPrefixed(const QzCString& prefix, const QzCString& uri) {
    const std::size_t hash = hashOf(uri);
    const std::int32_t bound = byURI_.at(byURI_.slotOf(uri, hash));
    if (bound == None || declarations_[bound].ns.getPrefix().empty()) add(prefix, uri, hash);
}

void QzXmlWriterScopes::add(const QzCString& prefix, const QzCString& uri, std::size_t uriHash) {
    if (scopeStarts_.empty()) {
        throw QzXmlInternalError(QzCString("addNamespace called with no namespace scope open"));
    }
    if (count_ == declarations_.size()) declarations_.emplace_back();
    Declaration& declaration = declarations_[count_];
    declaration.ns.setPrefix(prefix);
    declaration.ns.setURI(uri);
    declaration.scope = static_cast<std::uint32_t>(scopeStarts_.size());
    declaration.prefix.hash = hashOf(prefix);
    declaration.uri.hash = uriHash;
    const auto index = static_cast<std::int32_t>(count_++);
    bind(byPrefix_, prefix, index, declaration.prefix);
    bind(byURI_, uri, index, declaration.uri);
}

// Within one scope the earliest declaration of a key answers, so a later one is not bound.
void QzXmlWriterScopes::bind(Index& index, const QzCString& key, std::int32_t declaration,
                             Link& link) {
    const std::size_t slot = index.slotOf(key, link.hash);
    link.hidden = index.at(slot);
    link.answers =
        link.hidden == None || declarations_[link.hidden].scope != declarations_[declaration].scope;
    if (link.answers) index.put(slot, link.hash, declaration);
}

void QzXmlWriterScopes::unbind(Index& index, const QzCString& key, const Link& link) {
    if (!link.answers) return;
    const std::size_t slot = index.slotOf(key, link.hash);
    if (link.hidden == None) {
        index.vacate(slot);
    } else {
        index.put(slot, link.hash, link.hidden);
    }
}

const QzCString& QzXmlWriterScopes::getURIForPrefix(const QzCString& prefix) const {
    return lookUp(byPrefix_, prefix, &QzXmlNamespace::getURI);
}

const QzCString& QzXmlWriterScopes::getPrefixForURI(const QzCString& uri) const {
    return lookUp(byURI_, uri, &QzXmlNamespace::getPrefix);
}

const QzCString& QzXmlWriterScopes::lookUp(const Index& index, const QzCString& key,
                                           KeyOf answerOf) const {
    const std::int32_t found = index.at(index.slotOf(key, hashOf(key)));
    return found == None ? QzXmlAttributeSet::EmptyString : (declarations_[found].ns.*answerOf)();
}
