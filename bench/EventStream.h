#ifndef QZXML_BENCH_EVENTSTREAM_H
#define QZXML_BENCH_EVENTSTREAM_H

#include <cstdint>
#include <vector>

#include "Document.h"
#include "QzCString.h"
#include "QzXmlAttributeSet.h"
#include "QzXmlName.h"

/// The tags and text of a document, read once with the pull reader, for the writers to write
/// back. Names are stored once each; every start tag refers to its own attribute set, which
/// holds the tag's namespace declarations as the reader reports them.
class EventStream {
public:
    enum Kind : std::uint8_t { Start, Empty, End, Text };

    struct Event {
        Kind kind;
        std::uint32_t index;       ///< into names() for tags, into texts() for text
        std::uint32_t attributes;  ///< into attributeSets() for Start and Empty
    };

    explicit EventStream(const Document& document);

    const std::vector<Event>& events() const noexcept { return events_; }
    const std::vector<QzXmlName>& names() const noexcept { return names_; }
    const std::vector<QzXmlAttributeSet>& attributeSets() const noexcept { return attributeSets_; }
    const std::vector<QzCString>& texts() const noexcept { return texts_; }

private:
    std::uint32_t attributeIndex(const QzXmlAttributeSet& attributes);

    std::vector<Event> events_;
    std::vector<QzXmlName> names_;
    std::vector<QzXmlAttributeSet> attributeSets_;  ///< the first one is empty
    std::vector<QzCString> texts_;
};

#endif
