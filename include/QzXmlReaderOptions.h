#ifndef QZXMLREADEROPTIONS_H
#define QZXMLREADEROPTIONS_H

#include <cstddef>
#include <limits>

/// How a QzXmlReader (or the event parser) reads: leniently, as the specified reader always
/// has, or strictly, as a conforming XML 1.0 (fifth edition) and Namespaces processor; and
/// the limits that bound what a document may cost.
///
/// Each limit holds ModeDefault until set: that is no limit for the lenient reader and the
/// value named beside the limit for the strict one. 0 means no limit in either mode; any
/// other value is the limit. An exceeded limit throws QzXmlParseError naming the limit and
/// its value. Default options read exactly as the reader's constructors without options.
class QzXmlReaderOptions {
public:
    /// What to do with a document type declaration.
    enum class Doctype {
        Parse,    ///< read it: the strict reader takes its internal subset's declarations
        Prohibit  ///< reject any document that has one
    };

    /// A limit left to the mode: none when lenient, the documented value when strict.
    static constexpr std::size_t ModeDefault = std::numeric_limits<std::size_t>::max();

    /// Check every well-formedness and namespace constraint, and normalise line ends and
    /// attribute values as the recommendations say; false keeps the lenient reading.
    bool strict = false;
    /// Parse or prohibit a document type declaration (in either mode).
    Doctype doctype = Doctype::Parse;

    /// Most elements open at once; strict default 256.
    std::size_t maxDepth = ModeDefault;
    /// Most attributes on one tag, namespace declarations included; strict default 512.
    std::size_t maxAttributes = ModeDefault;
    /// Longest element, attribute, target or entity name, in bytes; strict default 50,000.
    std::size_t maxNameLength = ModeDefault;
    /// Longest text node or attribute value, in bytes after decoding; strict default
    /// 10,000,000.
    std::size_t maxTextLength = ModeDefault;
    /// Longest document, in bytes as given; strict default: none.
    std::size_t maxDocumentLength = ModeDefault;

    /// Deepest nesting of entity expansions; strict default 40. The entity members apply to
    /// the strict reader, which expands the internal entities its document declares.
    std::size_t maxEntityDepth = ModeDefault;
    /// Most bytes that expansions may produce per byte of the document; strict default 100.
    std::size_t maxEntityAmplification = ModeDefault;
    /// Bytes of expansion below which the amplification is not checked; strict default 8 MiB.
    std::size_t entityAmplificationThreshold = ModeDefault;
    /// Whether a reference to an external entity is an error (true) or skipped. External
    /// entities and the external subset are never fetched: a skipped reference stays in the
    /// text as written, "&name;", as does one to an undeclared entity where declarations may
    /// lie unread (an external subset or a parameter-entity reference, not standalone).
    bool rejectExternalEntities = true;

    /// Bytes read from a stream at a time by the streaming reader.
    std::size_t chunkSize = 65536;

    /// value as it applies: strictDefault or none (0) for ModeDefault, as the mode says.
    std::size_t effective(std::size_t value, std::size_t strictDefault) const noexcept {
        return value != ModeDefault ? value : strict ? strictDefault : 0;
    }
};

#endif
