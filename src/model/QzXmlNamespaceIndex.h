#ifndef QZXMLNAMESPACEINDEX_H
#define QZXMLNAMESPACEINDEX_H

#include <cstdint>
#include <vector>

#include "QzXmlKeyIndex.h"
#include "QzXmlNamespace.h"

/// The namespace stack's lookups while it alone holds its scopes. Every declaration in force
/// is an entry, found by its prefix and by its URI through a key index; an entry remembers
/// the one it hides for each key, so that closing a scope gives the outer answers back.
/// Within a scope the earliest declaration of a key answers, as a walk of the scopes finds.
class QzXmlNamespaceIndex {
public:
    using Scope = std::vector<QzXmlNamespace>;

    /// Indexes the declarations of scope, the innermost scope open, from position first on.
    void addFrom(const Scope& scope, std::size_t first);
    /// Forgets the declarations of scope, the innermost scope open, before it is closed.
    void removeScope(const Scope& scope);
    /// The declaration that answers for prefix, or null.
    const QzXmlNamespace* findPrefix(const QzCString& prefix) const;
    /// The declaration that answers for uri, or null; URIs are indexed at the first call.
    const QzXmlNamespace* findURI(const QzCString& uri);
    /// True when no declaration is in force.
    bool empty() const noexcept { return entries_.empty(); }

private:
    using KeyOf = const QzCString& (QzXmlNamespace::*)() const noexcept;
    // An entry's place under one of its keys: the entry that answered for the key before,
    // and whether the key answers to this entry now.
    struct Link {
        std::int32_t hidden;
        bool answers;
    };
    struct Entry {
        const Scope* scope;
        std::size_t position;
        std::size_t prefixHash;
        std::size_t uriHash;  ///< once URIs are indexed
        Link prefix;
        Link uri;
    };

    void removeLast();
    void rebuild();
    const QzXmlNamespace& declaration(std::int32_t entry) const;
    std::size_t slotOf(const QzXmlKeyIndex& index, KeyOf keyOf, const QzCString& key,
                       std::size_t hash) const;
    Entry newEntry(const Scope& scope, std::size_t position) const;
    void linkKeys(std::int32_t number);
    void indexURIs();
    Link link(QzXmlKeyIndex& index, KeyOf keyOf, std::size_t hash, std::int32_t number);
    static void relink(QzXmlKeyIndex& index, std::size_t hash, const Link& link,
                       std::int32_t entry);
    static void unlink(QzXmlKeyIndex& index, std::size_t hash, const Link& link,
                       std::int32_t entry);
    const QzXmlNamespace* find(const QzXmlKeyIndex& index, KeyOf keyOf, const QzCString& key) const;

    std::vector<Entry> entries_;  ///< outermost scope first, each scope's in order
    QzXmlKeyIndex byPrefix_;
    QzXmlKeyIndex byURI_;
    bool urisIndexed_ = false;
};

#endif
