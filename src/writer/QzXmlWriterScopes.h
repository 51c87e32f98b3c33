#ifndef QZXMLWRITERSCOPES_H
#define QZXMLWRITERSCOPES_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "QzCString.h"
#include "QzXmlKeyIndex.h"
#include "QzXmlNamespace.h"

/// The writer's namespace scopes. The writer asks two questions only, which URI the default
/// namespace has and which prefix a URI has, and they are answered as QzXmlNamespaceStack
/// answers them (innermost scope first, the earliest declaration within a scope). The
/// declarations live in one flat array, the URIs are found through a hash index and the
/// default namespace through a chain of the declarations that set it; array, index and
/// strings are reused from element to element, so that once they have grown, opening,
/// filling and closing scopes allocates nothing. The writer registers a declaration for
/// every unqualified attribute, so this is on its path for every attribute it writes: such
/// declarations are kept aside, unindexed, until a question needs them; most close with
/// their element before any is asked.
class QzXmlWriterScopes {
public:
    void pushScope();
    /// Closes the innermost scope; nothing when none is open.
    void popScope();
    /// Adds a declaration to the innermost scope; QzXmlInternalError when none is open.
    void addNamespace(const QzCString& prefix, const QzCString& uri);
    /// addNamespace, unless uri is bound to a prefix that is not empty.
    void addNamespaceUnlessPrefixed(const QzCString& prefix, const QzCString& uri);
    /// addNamespaceUnlessPrefixed, decided when the next question needs it, as if at once:
    /// for declarations whose URI is seldom bound and whose scope mostly closes unasked.
    void addNamespaceUnlessPrefixedLater(const QzCString& prefix, const QzCString& uri);
    /// The URI bound to the empty prefix, or the shared empty string.
    const QzCString& getDefaultURI() const;
    /// The prefix bound to uri, or the shared empty string.
    const QzCString& getPrefixForURI(const QzCString& uri) const;

    /// The position after the innermost scope's last declaration, for forEachInnermost's
    /// first (one that addNamespaceUnlessPrefixedLater left out still holds a position).
    std::size_t innermostSize() const noexcept {
        return scopeStarts_.empty() ? 0 : count_ - scopeStarts_.back();
    }
    /// Calls visit with each declaration of the innermost scope from the one at position
    /// first on, in the order they were added.
    template <typename Visit>
    void forEachInnermost(Visit visit, std::size_t first = 0) const {
        if (scopeStarts_.empty()) return;
        const std::size_t start = scopeStarts_.back();
        if (count_ > std::max(settled_, start)) settleAside();
        for (std::size_t i = start + first; i < count_; ++i) {
            if (!declarations_[i].absent) visit(declarations_[i].ns);
        }
    }

private:
    static constexpr std::int32_t None = QzXmlKeyIndex::None;

    /// A declaration's place where its key is looked up: the declaration that answered for
    /// the key before it, and whether the key answers to it now.
    struct Link {
        std::int32_t hidden = None;
        bool answers = false;
    };
    struct Declaration {
        QzXmlNamespace ns;  ///< for one kept aside, filled when it is settled
        std::uint32_t scope = 0;
        std::size_t uriHash = 0;
        Link uri;
        Link defaultNamespace;  ///< for an empty prefix only
        bool absent = false;    ///< not added after all: its URI had a prefix
        // One kept aside has its prefix and URI, one after the other, in aside_ up to here.
        std::size_t asideEnd = 0;
        std::size_t prefixLength = 0;
        std::size_t uriLength = 0;
    };

    /// The slot of uri in byURI_.
    std::size_t uriSlot(const QzCString& uri, std::size_t hash) const;
    /// Whether the URI of a slot is bound to a prefix that is not empty.
    bool prefixedAt(std::size_t uriSlot) const;
    /// addNamespace, or addNamespaceUnlessPrefixed when unlessPrefixed, decided at once.
    void addNow(const QzCString& prefix, const QzCString& uri, bool unlessPrefixed);
    /// A declaration in the innermost scope, not yet in the index; its number.
    std::int32_t append(const QzCString& prefix, const QzCString& uri);
    /// The next declaration of the innermost scope, its strings untouched; count_ not moved.
    Declaration& next();
    /// Copies prefix and uri into aside_ for the next declaration.
    void keepAside(const QzCString& prefix, const QzCString& uri);
    /// Puts declaration index into the index, under uri's hash and slot.
    void link(std::int32_t index, std::size_t uriHash, std::size_t uriSlot) const;
    /// Makes declaration index answer for the default namespace when its prefix is empty.
    void linkDefault(std::int32_t index);
    /// Adds or leaves out the declarations kept aside, in the order they came.
    void settle() const {
        if (settled_ < count_) settleAside();
    }
    void settleAside() const;
    /// Whether a new declaration of scope takes over a key that answers to current: within
    /// one scope the earliest declaration answers.
    bool takesOver(std::int32_t current, std::uint32_t scope) const;

    // Settling changes what the declarations look like inside, not the answers: the const
    // questions may settle (so even they are not for two threads at once; a writer asks
    // them only from its own non-const operations).
    mutable std::vector<Declaration> declarations_;  ///< beyond count_, spares for their strings
    std::size_t count_ = 0;
    mutable std::size_t settled_ = 0;       ///< declarations from here on are kept aside
    std::vector<std::size_t> scopeStarts_;  ///< first declaration of each open scope
    mutable QzXmlKeyIndex byURI_;
    /// Whether uri is one of recentPrefixed_'s, which still answer for their URIs.
    bool recentlyPrefixed(const QzCString& uri);
    /// Remembers the declaration that answers for a URI with a prefix.
    void rememberPrefixed(std::int32_t index);

    // The declarations last found answering for URIs with a prefix: names mostly share the
    // namespaces of the few names before, and while no declaration takes a URI over or goes
    // (takeovers_ as at recentAt_) they still answer, without hashing the URI again.
    std::array<std::int32_t, 4> recentPrefixed_{None, None, None, None};
    std::size_t recentNext_ = 0;
    std::uint64_t recentAt_ = 0;
    mutable std::uint64_t takeovers_ = 0;
    // The bytes of the declarations kept aside, cheaper to fill than two strings each; cut
    // back as their scopes close.
    std::vector<char> aside_;
    std::size_t asideSize_ = 0;
    std::int32_t defaultNamespace_ = None;  ///< the declaration that answers for ""
};

#endif
