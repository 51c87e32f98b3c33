#ifndef QZXMLWRITER_H
#define QZXMLWRITER_H

#include <memory>
#include <vector>

#include "QzCString.h"
#include "QzXmlAttributeSet.h"
#include "QzXmlExport.h"
#include "QzXmlName.h"
#include "QzXmlNamespace.h"

class QzXmlStringWriter;
class QzXmlWriterScopes;

/// The abstract base of XML writers: turns element starts, text, attributes and element ends
/// into escaped, namespace-qualified and optionally indented bytes, and hands every byte to
/// the sink operations that a subclass implements. Namespaces are declared where they are
/// first needed and stay in scope until the end tag of the element that declared them.
/// Nothing is checked: unbalanced calls and invalid names are written as given.
class QZXML_API QzXmlWriter {
public:
    static const QzCString XmlNamespaceTag;   ///< "xmlns"
    static const QzCString Colon;             ///< ":"
    static const QzCString Newline;           ///< "\n"
    static const QzCString WhiteSpace;        ///< " "
    static const QzCString Blank;             ///< " "
    static const QzCString EqualToAndQuotes;  ///< "=\""
    static const QzCString Quotes;            ///< "\""
    static const QzCString TrueValue;         ///< "1"
    static const QzCString FalseValue;        ///< "0"
    static const QzCString StartTag;          ///< "<"
    static const QzCString EndTag;            ///< ">"
    static const QzCString StartEndTag;       ///< "</"
    static const QzCString UnpairedTag;       ///< "/>"
    static const QzCString MarkupGt;          ///< "&gt;"
    static const QzCString MarkupLt;          ///< "&lt;"
    static const QzCString MarkupAmpersand;   ///< "&amp;"
    static const QzCString MarkupQuotes;      ///< "&quot;"
    static const QzCString MarkupApos;        ///< "&apos;"
    static const QzCString MarkupCR;          ///< "&#xD;"

    /// Indent 0, indent step 2, not at a line start, the document scope open.
    QzXmlWriter();
    virtual ~QzXmlWriter();

    // A copy would share the namespace scopes of its original.
    QzXmlWriter(const QzXmlWriter&) = delete;
    QzXmlWriter& operator=(const QzXmlWriter&) = delete;

    /// Appends the string's bytes to the output.
    virtual void writeToSink(const QzCString& text) = 0;
    /// Appends n bytes; this version hands them to writeToSink(const QzCString&).
    virtual void writeToSink(const char* bytes, unsigned long n);
    /// Appends one byte.
    virtual void writeToSink(char c) = 0;
    /// Pushes buffered output to its destination.
    virtual void flush() = 0;

    /// Writes the start tag of name with attributes and the namespace declarations still
    /// missing; isEmpty makes it an empty-element tag ("/>"). Opens a namespace scope that
    /// writeElementEnd closes (an empty element closes its own at once).
    void writeElementStart(const QzXmlName& name, const QzXmlAttributeSet& attributes,
                           bool isEmpty);
    /// Writes the end tag of name and closes the scope of its start tag.
    void writeElementEnd(const QzXmlName& name);
    /// Writes a whole element holding the escaped value (an empty-element tag when value is
    /// empty), with an xsi:type attribute of type when addType is true, then a newline.
    void writeSimpleElement(const QzXmlName& name, const QzCString& value, const QzCString& type,
                            bool addType);
    /// writeSimpleElement with localName in the empty namespace.
    void writeSimpleElement(const QzCString& localName, const QzCString& value,
                            const QzCString& type, bool addType);
    /// Writes text, escaping "&", "<", ">" and carriage return when escape is true; any
    /// pending indentation comes first.
    void write(const QzCString& text, bool escape);
    /// Writes ` name="value"`; with escape, quotes, "<" and ">" are escaped, and "&" too
    /// unless it starts one of the five predefined entity references.
    void writeAttribute(const QzCString& name, const QzCString& value, bool escape);
    /// writeAttribute with the name's qualified name.
    void writeAttribute(const QzXmlName& name, const QzCString& value, bool escape);
    /// Writes a line feed; the next output is indented.
    void writeNewLine();
    /// Writes the indentation if a newline was just written; otherwise nothing.
    void writeIndentChars();
    /// Raises the indentation by the step.
    void incrementIndent() noexcept { indent_ += indentStep_; }
    /// Lowers the indentation by the step, stopping at 0.
    void decrementIndent() noexcept { indent_ = indent_ < indentStep_ ? 0 : indent_ - indentStep_; }
    /// The current indentation in spaces.
    unsigned long getIndent() const noexcept { return indent_; }

    /// Counts ns as declared in the innermost scope without writing anything.
    void addNamespace(const QzXmlNamespace& ns);
    /// Adds ns to the innermost scope unless its URI is empty or already in force: for a
    /// default namespace, bound to the empty prefix; otherwise, bound to any prefix at all.
    void addNamespaceToScopeIfNecessary(const QzXmlNamespace& ns);
    /// attributes with the declarations of the innermost scope added, after registering the
    /// namespaces they use. An unqualified attribute counts as a declaration of its own name
    /// bound to its value, and stays in scope as such until the element ends.
    QzXmlAttributeSet getCompleteAttributeSet(const QzXmlAttributeSet& attributes);

private:
    void declareIfNecessary(const QzCString& prefix, const QzCString& uri);
    bool registerNamespaces(const QzXmlAttributeSet& attributes);
    bool carriesDeclarations(const QzXmlAttributeSet& attributes, std::size_t first) const;
    const QzXmlAttributeSet& completeAttributes(const QzXmlAttributeSet& attributes);
    QzXmlAttributeSet withInnermostDeclarations(const QzXmlAttributeSet& attributes) const;
    void writeTag(const QzCString& opening, const QzXmlName& name, const QzCString& closing);
    void writeMarkup(const QzCString& markup);
    // Named apart from the public writeAttribute, so that a subclass's using-declaration
    // does not reach a private overload.
    void writePrefixedAttribute(const QzCString& prefix, const QzCString& localName,
                                const QzCString& value, bool escape);
    QzXmlStringWriter* directOutput();
    // Where at most size bytes fit straight into a string writer's buffer, has fill put them
    // at the pointer it gets (returning their end) and answers true.
    template <class Fill>
    bool emitDirect(std::size_t size, Fill fill);
    void output(const QzCString& text);
    void output(const char* bytes, unsigned long n);

    unsigned long indent_;
    unsigned long indentStep_;
    bool atLineStart_;
    std::unique_ptr<QzXmlWriterScopes> scopes_;
    // Reused from tag to tag, so that writing allocates nothing once they have grown.
    QzCString tag_;                        ///< "<name" or "</name>"
    QzXmlAttributeSet attributes_;         ///< the complete attribute set of the tag being written
    std::vector<char> spill_;              ///< escaping buffer for strings too long for the stack
    QzXmlStringWriter* direct_ = nullptr;  ///< this, when exactly a QzXmlStringWriter
    bool directKnown_ = false;             ///< direct_ has been decided
};

#endif
