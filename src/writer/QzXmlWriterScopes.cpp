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

std::uint64_t load64(const char* at) {
    std::uint64_t word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

std::uint64_t load32(const char* at) {
    std::uint32_t word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

// The last left bytes (1 to 7) before end, read in whole words, not byte by byte through
// memory (which would stall the load that follows). Which bytes overlap is fixed by the
// length, which the hash mixes in as well.
std::uint64_t tail(const char* begin, const char* end, std::size_t left) {
    if (end - begin >= 8) return load64(end - 8) >> (8 * (8 - left));
    if (left >= 4) return load32(end - left) | load32(end - 4) << 32;
    const auto byte = [](const char* at) { return std::uint64_t{static_cast<unsigned char>(*at)}; };
    return byte(end - left) | byte(end - 1 - left / 2) << 8 | byte(end - 1) << 16;
}

// The whole key, sixteen bytes a round in two independent lanes: keys are mostly short, and
// a hash that skipped bytes would let keys that differ only in the middle (URIs, dates)
// pile up in one probe run.
std::size_t hashOf(const QzCString& key) {
    const char* const begin = key.data();
    const char* at = begin;
    std::size_t left = key.length();
    std::uint64_t first = mix(Multiplier, left);
    std::uint64_t second = ~Multiplier;
    for (; left >= 16; at += 16, left -= 16) {
        first = mix(first, load64(at));
        second = mix(second, load64(at + 8));
    }
    if (left >= 8) {
        first = mix(first, load64(at));
        at += 8;
        left -= 8;
    }
    if (left > 0) second = mix(second, tail(begin, at + left, left));
    return static_cast<std::size_t>(mix(first, second));
}

// Whether home lies in the cyclic range (from, to].
bool between(std::size_t home, std::size_t from, std::size_t to) {
    return from <= to ? from < home && home <= to : from < home || home <= to;
}

}  // namespace

QzXmlWriterScopes::Index::Index(const std::vector<Declaration>& declarations)
    : declarations_(declarations), slots_(InitialSlots, Slot{0, None}) {}

std::size_t QzXmlWriterScopes::Index::slotOf(const QzCString& uri, std::size_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
        const Slot& slot = slots_[at];
        if (slot.declaration == None) return at;
        if (slot.hash == hash && declarations_[slot.declaration].ns.getURI() == uri) return at;
    }
}

std::size_t QzXmlWriterScopes::Index::slotHolding(std::size_t hash,
                                                  std::int32_t declaration) const {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].declaration != declaration)
        at = (at + 1) & mask;
    return at;
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

QzXmlWriterScopes::QzXmlWriterScopes() : byURI_(declarations_) {}

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
    const std::size_t hash = hashOf(uri);
    add(prefix, uri, hash, byURI_.slotOf(uri, hash));
}

void QzXmlWriterScopes::addNamespaceUnlessPrefixed(const QzCString& prefix, const QzCString& uri) {
    const std::size_t hash = hashOf(uri);
    const std::size_t slot = byURI_.slotOf(uri, hash);
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

bool QzXmlWriterScopes::takesOver(std::int32_t current) const {
    return current == None || declarations_[current].scope != scopeStarts_.size();
}

const QzCString& QzXmlWriterScopes::getDefaultURI() const {
    return defaultNamespace_ == None ? QzXmlAttributeSet::EmptyString
                                     : declarations_[defaultNamespace_].ns.getURI();
}

const QzCString& QzXmlWriterScopes::getPrefixForURI(const QzCString& uri) const {
    const std::int32_t found = byURI_.at(byURI_.slotOf(uri, hashOf(uri)));
    return found == None ? QzXmlAttributeSet::EmptyString : declarations_[found].ns.getPrefix();
}
