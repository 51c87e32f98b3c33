#include "QzXmlWriter.h"

#include <array>
#include <cstring>
#include <memory>

const QzCString QzXmlWriter::XmlNamespaceTag("xmlns");
const QzCString QzXmlWriter::Colon(":");
const QzCString QzXmlWriter::Newline("\n");
const QzCString QzXmlWriter::WhiteSpace(" ");
const QzCString QzXmlWriter::Blank(" ");
const QzCString QzXmlWriter::EqualToAndQuotes("=\"");
const QzCString QzXmlWriter::Quotes("\"");
const QzCString QzXmlWriter::TrueValue("1");
const QzCString QzXmlWriter::FalseValue("0");
const QzCString QzXmlWriter::StartTag("<");
const QzCString QzXmlWriter::EndTag(">");
const QzCString QzXmlWriter::StartEndTag("</");
const QzCString QzXmlWriter::UnpairedTag("/>");
const QzCString QzXmlWriter::MarkupGt("&gt;");
const QzCString QzXmlWriter::MarkupLt("&lt;");
const QzCString QzXmlWriter::MarkupAmpersand("&amp;");
const QzCString QzXmlWriter::MarkupQuotes("&quot;");
const QzCString QzXmlWriter::MarkupApos("&apos;");
const QzCString QzXmlWriter::MarkupCR("&#xD;");

namespace {

constexpr char markupCR[] = "&#xD;";
constexpr char markupGt[] = "&gt;";
constexpr char markupLt[] = "&lt;";
constexpr char markupAmpersand[] = "&amp;";
constexpr char markupQuotes[] = "&quot;";
constexpr char markupApos[] = "&apos;";

// Small writes escape into a buffer on the stack, so that they do not allocate.
constexpr std::size_t FixedBufferSize = 1024;
// The longest replacement, "&quot;" or "&apos;", per input byte.
constexpr std::size_t MaxAttributeGrowth = 6;
// The longest text replacement, "&amp;" or "&#xD;".
constexpr std::size_t MaxTextGrowth = 5;
// The space, "=" and the two quotes around an attribute value.
constexpr std::size_t AttributeFrame = 4;

// What an escaping table does with a byte: copy it, or write a replacement text.
enum Escape : unsigned char { Copy, Ampersand, AmpersandUnlessEntity, Lt, Gt, Quot, Apos, CR };

struct Replacement {
    const char* text;
    std::size_t length;
};

template <std::size_t N>
constexpr Replacement replacement(const char (&text)[N]) {
    return {text, N - 1};
}

// The replacement texts, indexed by Escape.
constexpr Replacement Replacements[] = {
    {"", 0},
    replacement(markupAmpersand),
    replacement(markupAmpersand),
    replacement(markupLt),
    replacement(markupGt),
    replacement(markupQuotes),
    replacement(markupApos),
    replacement(markupCR),
};

using EscapeTable = std::array<Escape, 256>;

// Text keeps quotes but hides a carriage return from end-of-line normalisation.
constexpr EscapeTable textEscapes() {
    EscapeTable table{};
    table['&'] = Ampersand;
    table['<'] = Lt;
    table['>'] = Gt;
    table['\r'] = CR;
    return table;
}

// Attribute values sit in double quotes; values that are already escaped stay as they are.
constexpr EscapeTable attributeEscapes() {
    EscapeTable table{};
    table['&'] = AmpersandUnlessEntity;
    table['<'] = Lt;
    table['>'] = Gt;
    table['"'] = Quot;
    table['\''] = Apos;
    return table;
}

constexpr EscapeTable TextEscapes = textEscapes();
constexpr EscapeTable AttributeEscapes = attributeEscapes();

constexpr Replacement PredefinedEntities[] = {
    replacement(markupAmpersand), replacement(markupLt),   replacement(markupGt),
    replacement(markupQuotes),    replacement(markupApos),
};

// True when [at, end) begins with one of the five predefined entity references.
bool startsWithEntity(const char* at, const char* end) {
    for (const Replacement& entity : PredefinedEntities) {
        if (static_cast<std::size_t>(end - at) >= entity.length &&
            std::memcmp(at, entity.text, entity.length) == 0) {
            return true;
        }
    }
    return false;
}

// Copies [in, end) to out, replacing the bytes that table marks; returns the end of the copy.
// out must have room for the longest replacement per input byte.
char* escapeInto(const char* in, const char* end, char* out, const EscapeTable& table) {
    for (; in != end; ++in) {
        const Escape escape = table[static_cast<unsigned char>(*in)];
        if (escape == Copy || (escape == AmpersandUnlessEntity && startsWithEntity(in, end))) {
            *out++ = *in;
        } else {
            std::memcpy(out, Replacements[escape].text, Replacements[escape].length);
            out += Replacements[escape].length;
        }
    }
    return out;
}

char* copyInto(const QzCString& text, char* out) {
    std::memcpy(out, text.data(), text.length());
    return out + text.length();
}

// A buffer of at least the requested size: the fixed one on the stack when that is enough,
// otherwise one from the heap.
class WorkBuffer {
public:
    explicit WorkBuffer(std::size_t size)
        : heap_(size > FixedBufferSize ? new char[size] : nullptr) {}

    char* data() noexcept { return heap_ ? heap_.get() : fixed_; }

private:
    char fixed_[FixedBufferSize];
    std::unique_ptr<char[]> heap_;
};

}  // namespace

QzXmlWriter::QzXmlWriter() : indent_(0), indentStep_(2), atLineStart_(false) {
    namespaces_.pushScope();
}

QzXmlWriter::~QzXmlWriter() = default;

void QzXmlWriter::writeToSink(const char* bytes, unsigned long n) {
    writeToSink(QzCString(bytes, n));
}

void QzXmlWriter::writeElementStart(const QzXmlName& name, const QzXmlAttributeSet& attributes,
                                    bool isEmpty) {
    namespaces_.pushScope();
    addNamespaceToScopeIfNecessary(name.getNamespace());
    write(StartTag + name.getQualifiedName(), false);
    for (const QzXmlAttribute& attribute : getCompleteAttributeSet(attributes)) {
        const QzXmlName& attributeName = attribute.getName();
        // The default-namespace declaration is stored as "xmlns:" with an empty local name.
        if (attributeName.getPrefix() == XmlNamespaceTag && attributeName.getLocalName().empty()) {
            writeAttribute(XmlNamespaceTag, attribute.getValue(), true);
        } else {
            writeAttribute(attributeName, attribute.getValue(), true);
        }
    }
    if (isEmpty) {
        namespaces_.popScope();
        write(UnpairedTag, false);
    } else {
        write(EndTag, false);
    }
}

void QzXmlWriter::writeElementEnd(const QzXmlName& name) {
    write(StartEndTag + name.getQualifiedName() + EndTag, false);
    namespaces_.popScope();
}

void QzXmlWriter::writeSimpleElement(const QzXmlName& name, const QzCString& value,
                                     const QzCString& type, bool addType) {
    QzXmlAttributeSet attributes;
    if (addType) attributes.add(QzXmlName("type", QzXmlNamespace::getXsi()), type);
    if (value.empty()) {
        writeElementStart(name, attributes, true);
    } else {
        writeElementStart(name, attributes, false);
        write(value, true);
        writeElementEnd(name);
    }
    writeNewLine();
}

void QzXmlWriter::writeSimpleElement(const QzCString& localName, const QzCString& value,
                                     const QzCString& type, bool addType) {
    writeSimpleElement(QzXmlName(localName), value, type, addType);
}

void QzXmlWriter::write(const QzCString& text, bool escape) {
    writeIndentChars();
    if (!escape) {
        writeToSink(text);
        return;
    }
    WorkBuffer buffer(text.length() * MaxTextGrowth);
    const char* end =
        escapeInto(text.data(), text.data() + text.length(), buffer.data(), TextEscapes);
    writeToSink(buffer.data(), static_cast<unsigned long>(end - buffer.data()));
}

void QzXmlWriter::writeAttribute(const QzCString& name, const QzCString& value, bool escape) {
    WorkBuffer buffer(name.length() + value.length() * (escape ? MaxAttributeGrowth : 1) +
                      AttributeFrame);
    char* out = buffer.data();
    *out++ = ' ';
    out = copyInto(name, out);
    *out++ = '=';
    *out++ = '"';
    out = escape ? escapeInto(value.data(), value.data() + value.length(), out, AttributeEscapes)
                 : copyInto(value, out);
    *out++ = '"';
    writeIndentChars();
    writeToSink(buffer.data(), static_cast<unsigned long>(out - buffer.data()));
}

void QzXmlWriter::writeAttribute(const QzXmlName& name, const QzCString& value, bool escape) {
    writeAttribute(name.getQualifiedName(), value, escape);
}

void QzXmlWriter::writeNewLine() {
    writeToSink('\n');
    atLineStart_ = true;
}

void QzXmlWriter::writeIndentChars() {
    if (!atLineStart_) return;
    for (unsigned long i = 0; i < indent_; ++i)
        writeToSink(' ');
    atLineStart_ = false;
}

void QzXmlWriter::addNamespace(const QzXmlNamespace& ns) {
    namespaces_.addNamespace(ns);
}

void QzXmlWriter::addNamespaceToScopeIfNecessary(const QzXmlNamespace& ns) {
    if (ns.getURI() == QzXmlNamespace::getEmptyNamespace().getURI()) return;
    // A prefixed namespace counts as declared when its URI is bound to any prefix, so a
    // second prefix for the same URI is never declared.
    const bool inScope = ns.getPrefix().empty()
                             ? namespaces_.getURIForPrefix(ns.getPrefix()) == ns.getURI()
                             : !namespaces_.getPrefixForURI(ns.getURI()).empty();
    if (!inScope) namespaces_.addNamespace(ns);
}

QzXmlAttributeSet QzXmlWriter::getCompleteAttributeSet(const QzXmlAttributeSet& attributes) {
    QzXmlAttributeSet complete(attributes);
    for (const QzXmlAttribute& attribute : attributes) {
        const QzXmlName& name = attribute.getName();
        // Declarations, and with them every unqualified attribute, register their name as a
        // prefix bound to their value.
        if (QzXmlNamespace::matchXmlns(name.getNamespace())) {
            addNamespaceToScopeIfNecessary(
                QzXmlNamespace(name.getLocalName(), attribute.getValue()));
        } else {
            addNamespaceToScopeIfNecessary(name.getNamespace());
        }
    }
    for (const QzXmlNamespace& ns : namespaces_.getInnermostScope()) {
        complete.addNamespaceAttribute(ns);
    }
    return complete;
}
