#include "QzXmlNamespaceIndex.h"

#include <algorithm>
#include <limits>

#include "QzXmlLengthError.h"

namespace {

// How many entries are taken out one by one at most when a scope closes.
constexpr std::size_t kFewEntries = 16;

}  // namespace

// The keys' slots are loaded a few declarations ahead, so that a huge tag's declarations
// wait for memory together rather than one after another. Should anything fail, the
// entries are taken back out, with what they had linked.
void QzXmlNamespaceIndex::addFrom(const Scope& scope, std::size_t first) {
    constexpr std::size_t Ahead = 8;
    const std::size_t start = entries_.size();
    const std::size_t count = scope.size() - first;
    if (start + count > std::size_t{std::numeric_limits<std::int32_t>::max()}) {
        throw QzXmlLengthError(QzCString("too many namespace declarations in force"));
    }
    // A huge tag's entries are made room for at once; one at a time they grow as push_back would.
    if (entries_.capacity() - start < count) {
        entries_.reserve(std::max(start + count, 2 * entries_.capacity()));
    }
    try {
        for (std::size_t position = first; position < scope.size(); ++position)
            entries_.push_back(newEntry(scope, position));
        byPrefix_.reserve(count);
        if (urisIndexed_) byURI_.reserve(count);
        for (std::size_t e = start; e < entries_.size(); ++e) {
            if (e + Ahead < entries_.size()) {
                byPrefix_.prefetch(entries_[e + Ahead].prefixHash);
                if (urisIndexed_) byURI_.prefetch(entries_[e + Ahead].uriHash);
            }
            linkKeys(static_cast<std::int32_t>(e));
        }
    } catch (...) {
        while (entries_.size() > start)
            removeLast();
        throw;
    }
}

QzXmlNamespaceIndex::Entry QzXmlNamespaceIndex::newEntry(const Scope& scope,
                                                         std::size_t position) const {
    const QzXmlNamespace& ns = scope[position];
    const Link none{QzXmlKeyIndex::None, false};
    return Entry{&scope,
                 position,
                 QzXmlKeyIndex::hashOf(ns.getPrefix()),
                 urisIndexed_ ? QzXmlKeyIndex::hashOf(ns.getURI()) : 0,
                 none,
                 none};
}

void QzXmlNamespaceIndex::linkKeys(std::int32_t number) {
    Entry& entry = entries_[static_cast<std::size_t>(number)];
    entry.prefix = link(byPrefix_, &QzXmlNamespace::getPrefix, entry.prefixHash, number);
    if (urisIndexed_) entry.uri = link(byURI_, &QzXmlNamespace::getURI, entry.uriHash, number);
}

// Latest declaration first, so that each key gets back the entry it answered to before. A
// scope holding most of the entries (a huge tag closing) is cheaper to drop all at once, by
// indexing the rest afresh, than entry by entry through the probe runs.
void QzXmlNamespaceIndex::removeScope(const Scope& scope) {
    std::size_t first = entries_.size();
    while (first > 0 && entries_[first - 1].scope == &scope)
        --first;
    // Taking many entries out one by one costs more than indexing the rest again, but a few
    // come out quicker than the whole table is cleared.
    const std::size_t removed = entries_.size() - first;
    if (removed > kFewEntries && 2 * first < entries_.size()) {
        entries_.resize(first);
        rebuild();
        return;
    }
    while (entries_.size() > first)
        removeLast();
}

// An entry that answers for a key sits in the index under the key's hash, so its slot is
// found without comparing strings.
void QzXmlNamespaceIndex::removeLast() {
    const Entry& entry = entries_.back();
    const auto number = static_cast<std::int32_t>(entries_.size() - 1);
    unlink(byPrefix_, entry.prefixHash, entry.prefix, number);
    unlink(byURI_, entry.uriHash, entry.uri, number);
    entries_.pop_back();
}

// In document order each entry that answered for a key takes it over from the one it hid,
// which is in the index by then.
void QzXmlNamespaceIndex::rebuild() {
    byPrefix_.clear();
    byURI_.clear();
    for (std::size_t i = 0; i < entries_.size(); ++i) {
        const Entry& entry = entries_[i];
        relink(byPrefix_, entry.prefixHash, entry.prefix, static_cast<std::int32_t>(i));
        relink(byURI_, entry.uriHash, entry.uri, static_cast<std::int32_t>(i));
    }
}

void QzXmlNamespaceIndex::relink(QzXmlKeyIndex& index, std::size_t hash, const Link& link,
                                 std::int32_t entry) {
    if (!link.answers) return;
    if (link.hidden == QzXmlKeyIndex::None) {
        index.insert(hash, entry);
    } else {
        index.put(index.slotHolding(hash, link.hidden), hash, entry);
    }
}

const QzXmlNamespace* QzXmlNamespaceIndex::findPrefix(const QzCString& prefix) const {
    return find(byPrefix_, &QzXmlNamespace::getPrefix, prefix);
}

// Readers ask for prefixes only, so URIs are indexed once somebody asks for one.
const QzXmlNamespace* QzXmlNamespaceIndex::findURI(const QzCString& uri) {
    if (!urisIndexed_) indexURIs();
    return find(byURI_, &QzXmlNamespace::getURI, uri);
}

void QzXmlNamespaceIndex::indexURIs() {
    try {
        for (std::size_t i = 0; i < entries_.size(); ++i) {
            Entry& entry = entries_[i];
            entry.uriHash =
                QzXmlKeyIndex::hashOf(declaration(static_cast<std::int32_t>(i)).getURI());
            entry.uri =
                link(byURI_, &QzXmlNamespace::getURI, entry.uriHash, static_cast<std::int32_t>(i));
        }
    } catch (...) {
        byURI_.clear();
        for (Entry& entry : entries_)
            entry.uri = Link{QzXmlKeyIndex::None, false};
        throw;
    }
    urisIndexed_ = true;
}

const QzXmlNamespace& QzXmlNamespaceIndex::declaration(std::int32_t entry) const {
    const Entry& e = entries_[static_cast<std::size_t>(entry)];
    return (*e.scope)[e.position];
}

std::size_t QzXmlNamespaceIndex::slotOf(const QzXmlKeyIndex& index, KeyOf keyOf,
                                        const QzCString& key, std::size_t hash) const {
    return index.slotOf(key, hash, [this, keyOf](std::int32_t entry) -> const QzCString& {
        return (declaration(entry).*keyOf)();
    });
}

// Entry number takes its key over unless its own scope already holds the key.
QzXmlNamespaceIndex::Link QzXmlNamespaceIndex::link(QzXmlKeyIndex& index, KeyOf keyOf,
                                                    std::size_t hash, std::int32_t number) {
    const Scope* scope = entries_[static_cast<std::size_t>(number)].scope;
    const std::size_t slot = slotOf(index, keyOf, (declaration(number).*keyOf)(), hash);
    const std::int32_t current = index.at(slot);
    const bool answers = current == QzXmlKeyIndex::None ||
                         entries_[static_cast<std::size_t>(current)].scope != scope;
    if (answers) index.put(slot, hash, number);
    return Link{current, answers};
}

void QzXmlNamespaceIndex::unlink(QzXmlKeyIndex& index, std::size_t hash, const Link& link,
                                 std::int32_t entry) {
    if (!link.answers) return;
    const std::size_t slot = index.slotHolding(hash, entry);
    if (link.hidden == QzXmlKeyIndex::None) {
        index.vacate(slot);
    } else {
        index.put(slot, hash, link.hidden);
    }
}

const QzXmlNamespace* QzXmlNamespaceIndex::find(const QzXmlKeyIndex& index, KeyOf keyOf,
                                                const QzCString& key) const {
    const std::int32_t entry = index.at(slotOf(index, keyOf, key, QzXmlKeyIndex::hashOf(key)));
    return entry == QzXmlKeyIndex::None ? nullptr : &declaration(entry);
}
