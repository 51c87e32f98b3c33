#include "QzXmlWriter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <typeinfo>

#include "QzXmlByteScan.h"
#include "QzXmlShortCopy.h"
#include "QzXmlStringWriter.h"
#include "QzXmlWriterScopes.h"

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
// Larger ones use the writer's own buffer up to this size, and a buffer of their own beyond
// it, so that one huge string does not leave the writer holding five times its size.
constexpr std::size_t SpillLimit = 256 * 1024;
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

#ifndef QZXML_SSE2
// Without vector steps, eight bytes a step in a general-purpose register.
std::uint64_t load64(const char* at) {
    std::uint64_t word;
    std::memcpy(&word, at, sizeof word);
    return word;
}

// The bytes of word (eight bytes of text, the first one lowest) that either table may
// replace. The lowest set bit marks the first such byte; bits above it may be false alarms.
std::uint64_t candidateBytes(std::uint64_t word) {
    constexpr std::uint64_t Ones = 0x0101010101010101ull;
    constexpr std::uint64_t Highs = 0x8080808080808080ull;
    std::uint64_t found = 0;
    for (const unsigned char c : {'&', '<', '>', '"', '\'', '\r'}) {
        const std::uint64_t x = word ^ (Ones * c);
        found |= (x - Ones) & ~x & Highs;
    }
    return found;
}
#endif

// The bytes that either table may replace.
constexpr QzXmlByteScan<6> Candidates("&<>\"'\r");

// The first byte from in on that either table may replace (or, in the last few bytes, that
// table replaces), or end. begin is where the string starts: its last sixteen (or eight)
// bytes are read in one go even when some of them come before in; a string shorter than
// that is read in two halves.
const char* findCandidate(const char* begin, const char* in, const char* end,
                          const EscapeTable& table) {
    if (const char* found = Candidates.find(in, end)) return found;
#ifdef QZXML_SSE2
    if (end - begin >= 16) return in == end ? end : Candidates.findInLastStep(in, end);
    if (end - in >= 4) return Candidates.findInHalves(in, end);
#else
    for (; end - in >= 8; in += 8) {
        if (const std::uint64_t found = candidateBytes(load64(in))) {
            return in + __builtin_ctzll(found) / 8;
        }
    }
    if (in != end && end - begin >= 8) {
        // Bits of the bytes before in are shifted out; one of them may leave a false alarm.
        const auto before = static_cast<unsigned>(8 - (end - in));
        const std::uint64_t found = candidateBytes(load64(end - 8)) >> (8 * before);
        return found ? in + __builtin_ctzll(found) / 8 : end;
    }
#endif
    while (in != end && table[static_cast<unsigned char>(*in)] == Copy)
        ++in;
    return in;
}

// The first byte from in on that table replaces, or end.
const char* findEscape(const char* in, const char* end, const EscapeTable& table) {
    // Short strings (the whitespace between tags, most values) are quickest byte by byte.
    if (end - in < 8) {
        while (in != end && table[static_cast<unsigned char>(*in)] == Copy)
            ++in;
        return in;
    }
    const char* const begin = in;
    for (;;) {
        const char* candidate = findCandidate(begin, in, end, table);
        if (candidate == end || table[static_cast<unsigned char>(*candidate)] != Copy) {
            return candidate;
        }
        in = candidate + 1;
    }
}

// Copies [in, end) to out, replacing the bytes that table marks; returns the end of the copy.
// out must have room for the longest replacement per input byte. Runs of bytes that stay are
// copied whole.
char* escapeInto(const char* in, const char* end, char* out, const EscapeTable& table) {
    for (;;) {
        const char* run = findEscape(in, end, table);
        out = QzXmlShortCopy::copy(out, in, static_cast<std::size_t>(run - in));
        if (run == end) return out;
        const Escape escape = table[static_cast<unsigned char>(*run)];
        if (escape == AmpersandUnlessEntity && startsWithEntity(run, end)) {
            *out++ = *run;
        } else {
            std::memcpy(out, Replacements[escape].text, Replacements[escape].length);
            out += Replacements[escape].length;
        }
        in = run + 1;
    }
}

// Whether adding ns to attributes as a declaration would change nothing: an attribute of
// the declaration's name (which unqualified attributes share) already has its URI as value.
// Most tags carry every declaration of their scope, and then the set is written as given.
bool hasNamespaceAttribute(const QzXmlAttributeSet& attributes, const QzXmlNamespace& ns) {
    const auto found = attributes.find(QzXmlName(ns.getPrefix(), QzXmlNamespace::getXmlns()));
    return found != attributes.end() && found->getValue() == ns.getURI();
}

[[gnu::always_inline]] inline char* copyInto(const QzCString& text, char* out) {
    return QzXmlShortCopy::copy(out, text.data(), text.length());
}

// Writes `prefix:localName` (no colon without a prefix) at out; returns the end.
[[gnu::always_inline]] inline char* qualifiedInto(char* out, const QzCString& prefix,
                                                  const QzCString& localName) {
    if (!prefix.empty()) {
        out = copyInto(prefix, out);
        *out++ = ':';
    }
    return copyInto(localName, out);
}

[[gnu::always_inline]] inline char* nameInto(char* out, const QzXmlName& name) {
    return qualifiedInto(out, name.getPrefix(), name.getLocalName());
}

// Writes ` prefix:localName="value"` (no colon without a prefix) at out, escaping the value
// when asked; returns the end.
char* attributeInto(char* out, const QzCString& prefix, const QzCString& localName,
                    const QzCString& value, bool escape) {
    *out++ = ' ';
    out = qualifiedInto(out, prefix, localName);
    *out++ = '=';
    *out++ = '"';
    out = escape ? escapeInto(value.data(), value.data() + value.length(), out, AttributeEscapes)
                 : copyInto(value, out);
    *out++ = '"';
    return out;
}

// The prefix and local name an attribute is written with. The default-namespace declaration
// is stored as "xmlns:" with an empty local name, and written as "xmlns".
struct WrittenName {
    const QzCString& prefix;
    const QzCString& localName;
};

WrittenName writtenName(const QzXmlName& name) {
    if (name.getPrefix() == QzXmlWriter::XmlNamespaceTag && name.getLocalName().empty())
        return {QzXmlAttributeSet::EmptyString, QzXmlWriter::XmlNamespaceTag};
    return {name.getPrefix(), name.getLocalName()};
}

// The most ` prefix:localName="value"` can take, every byte of the value escaped.
std::size_t attributeSize(const QzCString& prefix, const QzCString& localName,
                          const QzCString& value, bool escape) {
    const std::size_t nameLength = localName.length() + (prefix.empty() ? 0 : prefix.length() + 1);
    return nameLength + value.length() * (escape ? MaxAttributeGrowth : 1) + AttributeFrame;
}

// The most `opening prefix:localName closing` can take (the colon counted either way), the
// opening being so many bytes long.
std::size_t tagSize(std::size_t opening, const QzXmlName& name, const QzCString& closing) {
    return opening + name.getPrefix().length() + 1 + name.getLocalName().length() +
           closing.length();
}

// The most a start tag can take: "<", the name, the attributes escaped, the closing markup.
std::size_t startTagSize(const QzXmlName& name, const QzXmlAttributeSet& attributes,
                         const QzCString& closing) {
    std::size_t size = tagSize(1, name, closing);  // "<"
    for (const QzXmlAttribute& attribute : attributes) {
        const WrittenName written = writtenName(attribute.getName());
        size += attributeSize(written.prefix, written.localName, attribute.getValue(), true);
    }
    return size;
}

// A buffer of at least the requested size: the fixed one on the stack when that is enough,
// the writer's spill buffer up to SpillLimit, otherwise one from the heap for this call.
class WorkBuffer {
public:
    WorkBuffer(std::size_t size, std::vector<char>& spill) : data_(fixed_) {
        if (size <= FixedBufferSize) return;
        if (size <= SpillLimit) {
            if (spill.size() < size)
                spill.resize(std::min(std::max(size, 2 * spill.size()), SpillLimit));
            data_ = spill.data();
        } else {
            heap_.reset(new char[size]);
            data_ = heap_.get();
        }
    }

    char* data() noexcept { return data_; }

private:
    char fixed_[FixedBufferSize];
    std::unique_ptr<char[]> heap_;
    char* data_;
};

}  // namespace

QzXmlWriter::QzXmlWriter()
    : indent_(0),
      indentStep_(2),
      atLineStart_(false),
      scopes_(std::make_unique<QzXmlWriterScopes>()) {
    scopes_->pushScope();
}

QzXmlWriter::~QzXmlWriter() = default;

void QzXmlWriter::writeToSink(const char* bytes, unsigned long n) {
    writeToSink(QzCString(bytes, n));
}

void QzXmlWriter::writeElementStart(const QzXmlName& name, const QzXmlAttributeSet& attributes,
                                    bool isEmpty) {
    // Values mostly come from far away in memory: their loads start while the namespaces
    // are settled.
    for (const QzXmlAttribute& attribute : attributes)
        __builtin_prefetch(attribute.getValue().data());
    scopes_->pushScope();
    addNamespaceToScopeIfNecessary(name.getNamespace());
    const QzXmlAttributeSet& complete = completeAttributes(attributes);
    if (isEmpty) scopes_->popScope();
    const QzCString& closing = isEmpty ? UnpairedTag : EndTag;
    // The whole tag in one piece where it fits the buffer; piece by piece otherwise, which
    // gives the same bytes and the same growth.
    const bool direct = emitDirect(startTagSize(name, complete, closing), [&](char* out) {
        out = nameInto(copyInto(StartTag, out), name);
        for (const QzXmlAttribute& attribute : complete) {
            const WrittenName written = writtenName(attribute.getName());
            out = attributeInto(out, written.prefix, written.localName, attribute.getValue(), true);
        }
        return copyInto(closing, out);
    });
    if (direct) return;
    writeTag(StartTag, name, QzXmlAttributeSet::EmptyString);
    for (const QzXmlAttribute& attribute : complete) {
        const WrittenName written = writtenName(attribute.getName());
        writePrefixedAttribute(written.prefix, written.localName, attribute.getValue(), true);
    }
    writeMarkup(closing);
}

void QzXmlWriter::writeElementEnd(const QzXmlName& name) {
    writeTag(StartEndTag, name, EndTag);
    scopes_->popScope();
}

// The tag text goes to the sink in one piece, through a string that keeps its capacity
// unless it goes straight into a string writer's buffer.
void QzXmlWriter::writeTag(const QzCString& opening, const QzXmlName& name,
                           const QzCString& closing) {
    const QzCString& prefix = name.getPrefix();
    const bool written = emitDirect(tagSize(opening.length(), name, closing), [&](char* out) {
        return copyInto(closing, nameInto(copyInto(opening, out), name));
    });
    if (written) return;
    tag_.assign(opening);
    if (!prefix.empty()) {
        tag_ += prefix;
        tag_ += ':';
    }
    tag_ += name.getLocalName();
    tag_ += closing;
    write(tag_, false);
}

// The end of a start tag, in line where it goes straight into the buffer.
void QzXmlWriter::writeMarkup(const QzCString& markup) {
    if (!emitDirect(markup.length(), [&markup](char* out) { return copyInto(markup, out); }))
        write(markup, false);
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
        output(text);
        return;
    }
    const char* begin = text.data();
    const char* end = begin + text.length();
    const char* first = findEscape(begin, end, TextEscapes);
    // Nothing to replace: the text goes to the sink as it is, without a copy.
    if (first == end) {
        output(begin, static_cast<unsigned long>(text.length()));
        return;
    }
    const std::size_t clean = static_cast<std::size_t>(first - begin);
    const std::size_t size = text.length() * MaxTextGrowth;
    QzXmlStringWriter* direct = directOutput();
    if (char* room = direct ? direct->room(size) : nullptr) {
        std::memcpy(room, begin, clean);
        direct->advance(
            static_cast<unsigned long>(escapeInto(first, end, room + clean, TextEscapes) - room));
        return;
    }
    WorkBuffer buffer(size, spill_);
    std::memcpy(buffer.data(), begin, clean);
    const char* out = escapeInto(first, end, buffer.data() + clean, TextEscapes);
    writeToSink(buffer.data(), static_cast<unsigned long>(out - buffer.data()));
}

void QzXmlWriter::writeAttribute(const QzCString& name, const QzCString& value, bool escape) {
    writePrefixedAttribute(QzXmlAttributeSet::EmptyString, name, value, escape);
}

void QzXmlWriter::writeAttribute(const QzXmlName& name, const QzCString& value, bool escape) {
    writePrefixedAttribute(name.getPrefix(), name.getLocalName(), value, escape);
}

// Writes ` prefix:localName="value"`, or ` localName="value"` without a prefix.
void QzXmlWriter::writePrefixedAttribute(const QzCString& prefix, const QzCString& localName,
                                         const QzCString& value, bool escape) {
    const std::size_t size = attributeSize(prefix, localName, value, escape);
    const auto fill = [&](char* out) {
        return attributeInto(out, prefix, localName, value, escape);
    };
    if (emitDirect(size, fill)) return;
    WorkBuffer buffer(size, spill_);
    const char* out = fill(buffer.data());
    writeToSink(buffer.data(), static_cast<unsigned long>(out - buffer.data()));
}

template <class Fill>
bool QzXmlWriter::emitDirect(std::size_t size, Fill fill) {
    writeIndentChars();
    QzXmlStringWriter* direct = directOutput();
    char* room = direct ? direct->room(size) : nullptr;
    if (room) direct->advance(static_cast<unsigned long>(fill(room) - room));
    return room != nullptr;
}

// When the writer is exactly a QzXmlStringWriter, nothing overrides its sink operations, and
// output may go straight into its buffer: the same bytes, the same growth, no virtual calls.
// Where escaped text fits the buffer as it is, it is escaped in place, without a copy.
QzXmlStringWriter* QzXmlWriter::directOutput() {
    if (!directKnown_) {
        direct_ = typeid(*this) == typeid(QzXmlStringWriter) ? static_cast<QzXmlStringWriter*>(this)
                                                             : nullptr;
        directKnown_ = true;
    }
    return direct_;
}

void QzXmlWriter::output(const QzCString& text) {
    if (QzXmlStringWriter* direct = directOutput()) {
        direct->append(text.data(), static_cast<unsigned long>(text.length()));
    } else {
        writeToSink(text);
    }
}

void QzXmlWriter::output(const char* bytes, unsigned long n) {
    if (QzXmlStringWriter* direct = directOutput()) {
        direct->append(bytes, n);
    } else {
        writeToSink(bytes, n);
    }
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
    scopes_->addNamespace(ns.getPrefix(), ns.getURI());
}

void QzXmlWriter::addNamespaceToScopeIfNecessary(const QzXmlNamespace& ns) {
    declareIfNecessary(ns.getPrefix(), ns.getURI());
}

void QzXmlWriter::declareIfNecessary(const QzCString& prefix, const QzCString& uri) {
    // The empty namespace has the empty URI.
    if (uri.empty()) return;
    if (prefix.empty()) {
        if (scopes_->getDefaultURI() != uri) scopes_->addNamespace(prefix, uri);
    } else {
        // A prefixed namespace counts as declared when its URI is bound to any prefix, so a
        // second prefix for the same URI is never declared.
        scopes_->addNamespaceUnlessPrefixed(prefix, uri);
    }
}

QzXmlAttributeSet QzXmlWriter::getCompleteAttributeSet(const QzXmlAttributeSet& attributes) {
    registerNamespaces(attributes);
    return withInnermostDeclarations(attributes);
}

bool QzXmlWriter::registerNamespaces(const QzXmlAttributeSet& attributes) {
    // Declarations made before (for the element's name) must be carried by the set too.
    bool carried = carriesDeclarations(attributes, 0);
    for (const QzXmlAttribute& attribute : attributes) {
        const QzXmlName& name = attribute.getName();
        // Declarations, and with them every unqualified attribute, register their name as a
        // prefix bound to their value; the attribute itself then carries that declaration.
        // The xmlns namespace has the empty URI, as unqualified attributes have. Their values
        // are seldom namespaces in use, and most elements end before anything asks: the
        // scopes decide on them when asked.
        if (name.getURI().empty()) {
            const QzCString& prefix = name.getLocalName();
            const QzCString& value = attribute.getValue();
            if (prefix.empty() || value.empty()) {
                declareIfNecessary(prefix, value);
            } else {
                scopes_->addNamespaceUnlessPrefixedLater(prefix, value);
            }
        } else {
            const std::size_t before = scopes_->innermostSize();
            declareIfNecessary(name.getPrefix(), name.getURI());
            carried = carried && carriesDeclarations(attributes, before);
        }
    }
    return carried;
}

bool QzXmlWriter::carriesDeclarations(const QzXmlAttributeSet& attributes,
                                      std::size_t first) const {
    bool carried = true;
    scopes_->forEachInnermost(
        [&](const QzXmlNamespace& ns) {
            carried = carried && hasNamespaceAttribute(attributes, ns);
        },
        first);
    return carried;
}

const QzXmlAttributeSet& QzXmlWriter::completeAttributes(const QzXmlAttributeSet& attributes) {
    if (registerNamespaces(attributes)) return attributes;
    attributes_ = withInnermostDeclarations(attributes);
    return attributes_;
}

QzXmlAttributeSet QzXmlWriter::withInnermostDeclarations(
    const QzXmlAttributeSet& attributes) const {
    QzXmlAttributeSet complete(attributes);
    scopes_->forEachInnermost(
        [&complete](const QzXmlNamespace& ns) { complete.addNamespaceAttribute(ns); });
    return complete;
}
