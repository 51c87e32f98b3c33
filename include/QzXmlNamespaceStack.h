#ifndef QZXMLNAMESPACESTACK_H
#define QZXMLNAMESPACESTACK_H

#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "QzCString.h"
#include "QzXmlExport.h"
#include "QzXmlNamespace.h"

/// The namespace declarations in force, one scope per open element. Lookups search the
/// innermost scope first and, within a scope, the declarations in the order they were added.
///
/// Copies share scopes: a copy refers to the very scopes its source held, so a namespace added
/// to such a scope through either stack is seen through both. A shared scope lives as long as
/// any stack refers to it; scopes pushed later belong to the stack that pushed them.
class QZXML_API QzXmlNamespaceStack {
public:
    /// No scope open.
    QzXmlNamespaceStack() = default;
    /// A stack sharing the scopes that other holds now.
    QzXmlNamespaceStack(const QzXmlNamespaceStack& other);
    /// Drops this stack's scopes and shares the scopes that other holds now.
    QzXmlNamespaceStack& operator=(const QzXmlNamespaceStack& other);
    /// Releases this stack's scopes; a scope is destroyed once no stack refers to it.
    ~QzXmlNamespaceStack();

    /// Opens a new, empty innermost scope.
    void pushScope();
    /// Closes the innermost scope; does nothing when no scope is open.
    void popScope();
    /// Appends ns to the innermost scope; throws QzXmlInternalError when no scope is open.
    void addNamespace(const QzXmlNamespace& ns);
    /// The URI of the first declaration of prefix, innermost scope first; EmptyString if none.
    const QzCString& getURIForPrefix(const QzCString& prefix) const;
    /// The prefix of the first declaration of uri, innermost scope first; EmptyString if none.
    const QzCString& getPrefixForURI(const QzCString& uri) const;
    /// The declarations of the innermost scope in the order they were added; an empty
    /// sequence when no scope is open.
    const std::vector<QzXmlNamespace>& getInnermostScope() const;

private:
    using Scope = std::vector<QzXmlNamespace>;
    // Where the declaration that answers for a key lies: scope index and position in it.
    struct Binding {
        std::size_t scope;
        std::size_t position;
    };
    // For each key, the bindings of the scopes that declare it, innermost last: a lookup
    // costs one hash probe however deep the document.
    using Index = std::unordered_map<std::string, std::vector<Binding>>;
    using KeyOf = const QzCString& (QzXmlNamespace::*)() const noexcept;

    void shareAll() const;
    static void bind(Index& index, const QzCString& key, Binding binding);
    void unbind(Index& index, const QzCString& key, std::size_t scope);
    void sweep(Index& index);
    std::shared_ptr<Scope> newScope();
    const QzCString& lookUp(const QzCString& key, const Index& index, KeyOf keyOf,
                            KeyOf answerOf) const;

    // Scopes stay unallocated (null) until something is declared in them, so that a deep
    // document costs no allocation per element; a deque, so that growing never moves them.
    mutable std::deque<std::shared_ptr<Scope>> scopes_;  ///< outermost first
    std::vector<std::shared_ptr<Scope>> spareScopes_;     ///< popped scopes kept for reuse
    std::size_t declarations_ = 0;                        ///< namespaces in all open scopes
    Index byPrefix_;
    Index byURI_;
    // Once scopes are shared with a copy, either stack may add to them behind the other's
    // index, so lookups walk the scopes instead.
    mutable bool shared_ = false;
    // The last prefix looked up and its answer, while no declaration has come or gone since.
    mutable QzCString lastPrefix_;
    mutable const QzCString* lastURI_ = nullptr;
    mutable bool lastPrefixValid_ = false;
};

#endif
