#ifndef QZXMLNAMESPACESTACK_H
#define QZXMLNAMESPACESTACK_H

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "QzCString.h"
#include "QzXmlExport.h"
#include "QzXmlNamespace.h"

class QzXmlNamespaceIndex;

/// The namespace declarations in force, one scope per open element. Lookups search the
/// innermost scope first and, within a scope, the declarations in the order they were added.
///
/// Copies share scopes: a copy refers to the very scopes its source held, so a namespace added
/// to such a scope through either stack is seen through both. A shared scope lives as long as
/// any stack refers to it; scopes pushed later belong to the stack that pushed them.
class QZXML_API QzXmlNamespaceStack {
public:
    /// No scope open.
    QzXmlNamespaceStack();
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
    // The answers for prefixes looked up lately, while no declaration has come or gone since:
    // a prefix of up to Answer::Room bytes, in the slot its length and ends pick.
    struct Answer {
        static constexpr std::size_t Room = 15;
        std::uint8_t length = 0xFF;  ///< 0xFF: no answer
        char prefix[Room];
        const QzCString* uri;
    };
    mutable std::array<Answer, 8> answers_;
    using KeyOf = const QzCString& (QzXmlNamespace::*)() const noexcept;

    // The reader appends a whole tag's declarations to the innermost scope at once, so that
    // room is made for them in one go and they are indexed together.
    friend class QzXmlReader;
    /// The innermost scope with room for more declarations; QzXmlInternalError when no scope
    /// is open.
    Scope& innermostWithRoom(std::size_t more);
    /// Indexes the innermost scope's declarations from position first on; should that fail,
    /// they are taken out again.
    void indexFrom(std::size_t first);
    /// For a streaming reader, which may have to read a tag again: the scope closed last is
    /// kept aside (until the next one closes), so that rewind can open it again.
    void keepClosedScope() noexcept { keepClosed_ = true; }
    /// Back to scopes open scopes: those opened since are closed, the one closed is reopened.
    void rewind(std::size_t scopes);
    std::size_t scopeCount() const noexcept { return scopes_.size(); }
    /// A declaration to fill, with the storage of one that was closed when there is one.
    QzXmlNamespace spareDeclaration() noexcept;
    /// Closes every scope, keeping what they held for reuse.
    void closeAll();
    /// The number of declarations kept for reuse.
    std::size_t spareDeclarationCount() const noexcept { return spareDeclarations_.size(); }
    /// Trades everything with other, so that a reader can hand its storage to the next.
    void swap(QzXmlNamespaceStack& other) noexcept;

    void shareAll() const;
    void retire(std::shared_ptr<Scope>& scope);
    std::shared_ptr<Scope> newScope();
    const QzCString& walk(const QzCString& key, KeyOf keyOf, KeyOf answerOf) const;
    /// getURIForPrefix without making the prefix a string first; a recent answer is found
    /// inline.
    const QzCString& uriForPrefix(std::string_view prefix) const {
        if (prefix.size() <= Answer::Room && !shared_) {
            const Answer& answer = answers_[slotOf(prefix)];
            if (answer.length == prefix.size() && answers(answer, prefix)) return *answer.uri;
        }
        return answerFor(prefix);
    }
    const QzCString& answerFor(std::string_view prefix) const;
    const QzCString& lookUp(std::string_view prefix) const;
    static std::size_t slotOf(std::string_view prefix) noexcept {
        const std::size_t ends = prefix.empty() ? 0
                                                : static_cast<unsigned char>(prefix.front()) +
                                                      3 * static_cast<unsigned char>(prefix.back());
        return (prefix.size() + ends) % std::tuple_size<decltype(answers_)>::value;
    }
    // Prefixes are short: a loop beats a call to memcmp.
    static bool answers(const Answer& answer, std::string_view prefix) noexcept {
        for (std::size_t i = 0; i < prefix.size(); ++i) {
            if (answer.prefix[i] != prefix[i]) return false;
        }
        return true;
    }
    void forgetAnswers() const noexcept;
    /// Whether closing the innermost scope now lets go of declarations (the scope kept aside
    /// before it), which strings pointing into scopes must not outlive.
    bool closingDropsDeclarations() const noexcept { return closed_ && !closed_->empty(); }

    // Scopes stay unallocated (null) until something is declared in them, so that a deep
    // document costs no allocation per element.
    mutable std::vector<std::shared_ptr<Scope>> scopes_;  ///< outermost first
    std::vector<std::shared_ptr<Scope>> spareScopes_;     ///< popped scopes kept for reuse
    std::vector<QzXmlNamespace> spareDeclarations_;       ///< their declarations, likewise
    // Finds declarations without walking the scopes, while no copy shares them; created at
    // the first declaration.
    mutable std::unique_ptr<QzXmlNamespaceIndex> index_;
    // Once scopes are shared with a copy, either stack may add to them behind the other's
    // index, so lookups walk the scopes instead.
    mutable bool shared_ = false;

    mutable QzCString key_;  ///< a prefix being looked up in the index
    bool keepClosed_ = false;
    std::shared_ptr<Scope> closed_;  ///< the scope closed last, when keepClosed_
};

#endif
