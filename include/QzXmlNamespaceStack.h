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
    QzXmlNamespaceStack(const QzXmlNamespaceStack& other) = default;
    /// Drops this stack's scopes and shares the scopes that other holds now.
    QzXmlNamespaceStack& operator=(const QzXmlNamespaceStack& other) = default;
    /// Releases this stack's scopes; a scope is destroyed once no stack refers to it.
    ~QzXmlNamespaceStack() = default;

    /// Opens a new, empty innermost scope.
    void pushScope();
    /// Closes the innermost scope; does nothing when no scope is open.
    void popScope();
    /// Appends a copy of ns to the innermost scope; throws QzXmlInternalError with no scope open.
    void addNamespace(const QzXmlNamespace& ns);
    /// The URI of the first declaration of prefix found, or QzXmlAttributeSet::EmptyString.
    /// The reference stays valid until its scope is popped or added to.
    const QzCString& getURIForPrefix(const QzCString& prefix) const;
    /// The prefix of the first declaration of uri found, or QzXmlAttributeSet::EmptyString.
    /// The reference stays valid until its scope is popped or added to.
    const QzCString& getPrefixForURI(const QzCString& uri) const;

private:
    using Scope = std::vector<QzXmlNamespace>;

    const QzCString& lookUp(const QzCString& key,
                            const QzCString& (QzXmlNamespace::*keyOf)() const noexcept,
                            const QzCString& (QzXmlNamespace::*answerOf)() const noexcept) const;

    std::vector<std::shared_ptr<Scope>> scopes_;  ///< outermost first
};

#endif
