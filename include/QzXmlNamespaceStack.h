#ifndef QZXMLNAMESPACESTACK_H
#define QZXMLNAMESPACESTACK_H

#include <memory>
#include <vector>

#include "QzCString.h"
#include "QzXmlNamespace.h"

/// The namespace declarations in force, one scope per open element. Lookups search the
/// innermost scope first and, within a scope, the declarations in the order they were added.
///
/// Copies share scopes: a copy refers to the very scopes its source held, so a namespace added
/// to such a scope through either stack is seen through both. A shared scope lives as long as
/// any stack refers to it; scopes pushed later belong to the stack that pushed them.
class QzXmlNamespaceStack {
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
    class Scope;

    // Scopes stay unallocated (null) until something is declared in them, so that a deep
    // document costs no allocation per element; populated_ lists the allocated ones so that
    // lookups never walk the empty scopes.
    void shareAll() const;

    using FindIn = const QzXmlNamespace* (Scope::*)(const QzCString&) const;
    using AnswerOf = const QzCString& (QzXmlNamespace::*)() const noexcept;
    const QzCString& lookUp(const QzCString& key, FindIn findIn, AnswerOf answerOf) const;

    mutable std::vector<std::shared_ptr<Scope>> scopes_;  ///< outermost first
    mutable std::vector<std::size_t> populated_;          ///< indices of allocated scopes
};

#endif
