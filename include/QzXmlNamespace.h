#ifndef QZXMLNAMESPACE_H
#define QZXMLNAMESPACE_H

#include "QzXmlExport.h"

#include "QzCString.h"

/// A namespace prefix with the namespace URI it stands for; either may be empty.
class QZXML_API QzXmlNamespace {
public:
    /// Empty prefix and empty URI.
    QzXmlNamespace() = default;
    /// The namespace uri, written with prefix.
    QzXmlNamespace(const QzCString& prefix, const QzCString& uri) : prefix_(prefix), uri_(uri) {}

    /// The prefix as written.
    const QzCString& getPrefix() const noexcept { return prefix_; }
    /// Replaces the prefix.
    void setPrefix(const QzCString& prefix) { prefix_ = prefix; }
    /// The namespace URI.
    const QzCString& getURI() const noexcept { return uri_; }
    /// Replaces the URI.
    void setURI(const QzCString& uri) { uri_ = uri; }

    /// Prefix "xmlns" with an empty URI: the namespace of prefix declarations.
    static const QzXmlNamespace& getXmlns();
    /// Prefix "xsi" with the 2001 XML Schema instance URI.
    static const QzXmlNamespace& getXsi();
    /// Prefix "xsd" with the 2001 XML Schema URI.
    static const QzXmlNamespace& getXsd();
    /// Empty prefix, empty URI.
    static const QzXmlNamespace& getEmptyNamespace();

    /// True when ns has the URI of getXmlns(), that is any namespace with an empty URI.
    static bool matchXmlns(const QzXmlNamespace& ns);
    /// True when ns has the 2001 or the 1999 XML Schema instance URI; the prefix is ignored.
    static bool matchXsi(const QzXmlNamespace& ns);
    /// True when ns has the 2001 or the 1999 XML Schema URI; the prefix is ignored.
    static bool matchXsd(const QzXmlNamespace& ns);

private:
    // The reader fills names and values straight from the document, and the writer's scopes
    // their declarations from their own store, without temporaries.
    friend class QzXmlReader;
    friend class QzXmlWriterScopes;

    QzCString prefix_;
    QzCString uri_;
};

#endif
