#ifndef QZXMLWRITERSCOPES_H
#define QZXMLWRITERSCOPES_H

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
/// every unqualified attribute, so this is on its path for every attribute it writes.
class QzXmlWriterScopes {
public:
    void pushScope();
    /// Closes the innermost scope; nothing when none is open.
    void popScope();
    /// Adds a declaration to the innermost scope; QzXmlInternalError when none is open.
    void addNamespace(const QzCString& prefix, const QzCString& uri);
    /// addNamespace, unless uri is bound to a prefix that is not empty.
    void addNamespaceUnlessPrefixed(const QzCString& prefix, const QzCString& uri);
    /// The URI bound to the empty prefix, or the shared empty string.
    const QzCString& getDefaultURI() const;
    /// The prefix bound to uri, or the shared empty string.
    const QzCString& getPrefixForURI(const QzCString& uri) const;

    /// The number of declarations in the innermost scope.
    std::size_t innermostSize() const noexcept {
        return scopeStarts_.empty() ? 0 : count_ - scopeStarts_.back();
    }
    /// Calls visit with each declaration of the innermost scope from the one at position
    /// first on, in the order they were added.
    template <typename Visit>
    void forEachInnermost(Visit visit, std::size_t first = 0) const {
        if (scopeStarts_.empty()) return;
        for (std::size_t i = scopeStarts_.back() + first; i < count_; ++i) {
            visit(declarations_[i].ns);
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
        QzXmlNamespace ns;
        std::uint32_t scope = 0;
        std::size_t uriHash = 0;
        Link uri;
        Link defaultNamespace;  ///< for an empty prefix only
    };

    /// The slot of uri in byURI_.
    std::size_t uriSlot(const QzCString& uri, std::size_t hash) const;
    void add(const QzCString& prefix, const QzCString& uri, std::size_t uriHash,
             std::size_t uriSlot);
    /// Whether a new declaration in the innermost scope takes over a key that answers to
    /// current: within one scope the earliest declaration answers.
    bool takesOver(std::int32_t current) const;

    std::vector<Declaration> declarations_;  ///< beyond count_, spares kept for their strings
    std::size_t count_ = 0;
    std::vector<std::size_t> scopeStarts_;  ///< first declaration of each open scope
    QzXmlKeyIndex byURI_;
    std::int32_t defaultNamespace_ = None;  ///< the declaration that answers for ""
};

#endif
