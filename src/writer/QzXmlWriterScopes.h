#ifndef QZXMLWRITERSCOPES_H
#define QZXMLWRITERSCOPES_H

#include <cstdint>
#include <vector>

#include "QzCString.h"
#include "QzXmlNamespace.h"

/// The writer's namespace scopes. Lookups answer as QzXmlNamespaceStack's do (innermost scope
/// first, the earliest declaration within a scope), but the declarations live in one flat
/// array and are found through two hash indexes whose slots and strings are reused from
/// element to element: once they have grown, opening, filling and closing scopes allocates
/// nothing. The writer registers a declaration for every unqualified attribute, so this is
/// on its path for every attribute it writes.
class QzXmlWriterScopes {
public:
    QzXmlWriterScopes();

    void pushScope();
    /// Closes the innermost scope; nothing when none is open.
    void popScope();
    /// Adds a declaration to the innermost scope; QzXmlInternalError when none is open.
    void addNamespace(const QzCString& prefix, const QzCString& uri);
    /// addNamespace, unless uri is bound to a prefix that is not empty.
    void addNamespaceUnlessPrefixed(const QzCString& prefix, const QzCString& uri);
    /// The URI bound to prefix, or the shared empty string.
    const QzCString& getURIForPrefix(const QzCString& prefix) const;
    /// The prefix bound to uri, or the shared empty string.
    const QzCString& getPrefixForURI(const QzCString& uri) const;

    /// Calls visit with each declaration of the innermost scope, in the order they were added.
    template <typename Visit>
    void forEachInnermost(Visit visit) const {
        if (scopeStarts_.empty()) return;
        for (std::size_t i = scopeStarts_.back(); i < count_; ++i)
            visit(declarations_[i].ns);
    }

private:
    static constexpr std::int32_t None = -1;

    /// A declaration's place in one index: its key's hash, the declaration the key answered
    /// to before it, and whether the key answers to it now.
    struct Link {
        std::size_t hash = 0;
        std::int32_t hidden = None;
        bool answers = false;
    };
    struct Declaration {
        QzXmlNamespace ns;
        std::uint32_t scope = 0;
        Link prefix;
        Link uri;
    };
    using KeyOf = const QzCString& (QzXmlNamespace::*)() const noexcept;

    /// Open addressing with linear probing from a key to the declaration that answers for
    /// it; keys are not copied, a slot compares against its declaration's own string.
    class Index {
    public:
        Index(const std::vector<Declaration>& declarations, KeyOf keyOf);
        /// The slot of key: the one holding it, or the free one where it would go.
        std::size_t slotOf(const QzCString& key, std::size_t hash) const;
        /// The declaration in a slot, None when it is free.
        std::int32_t at(std::size_t slot) const { return slots_[slot].declaration; }
        /// Puts declaration into a slot found by slotOf (slots found before are void then).
        void put(std::size_t slot, std::size_t hash, std::int32_t declaration);
        /// Frees a slot found by slotOf.
        void vacate(std::size_t slot);

    private:
        struct Slot {
            std::size_t hash;
            std::int32_t declaration;  ///< None for a free slot
        };
        void grow();

        const std::vector<Declaration>& declarations_;
        KeyOf keyOf_;
        std::vector<Slot> slots_;
        std::size_t used_ = 0;
    };

    void add(const QzCString& prefix, const QzCString& uri, std::size_t uriHash);
    void bind(Index& index, const QzCString& key, std::int32_t declaration, Link& link);
    static void unbind(Index& index, const QzCString& key, const Link& link);
    const QzCString& lookUp(const Index& index, const QzCString& key, KeyOf answerOf) const;

    std::vector<Declaration> declarations_;  ///< beyond count_, spares kept for their strings
    std::size_t count_ = 0;
    std::vector<std::size_t> scopeStarts_;  ///< first declaration of each open scope
    Index byPrefix_;
    Index byURI_;
};

#endif
