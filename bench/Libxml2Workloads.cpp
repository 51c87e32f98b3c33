// libxml2: the pull reader (xmlTextReader), the SAX2 push parser and xmlTextWriter.

#include <libxml/parser.h>
#include <libxml/xmlreader.h>
#include <libxml/xmlwriter.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

#include "EventStream.h"
#include "Workload.h"

namespace {

std::uint64_t length(const xmlChar* text) {
    return text ? std::strlen(reinterpret_cast<const char*>(text)) : 0;
}

const xmlChar* xml(const char* text) {
    return reinterpret_cast<const xmlChar*>(text);
}

class TextReaderWorkload : public Workload {
public:
    ~TextReaderWorkload() override { xmlFreeTextReader(reader_); }

    void load(const Document& document) override { document_ = &document; }
    std::uint64_t run() override {
        // A fresh reader each pass: one reset over UTF-16 input fails to detect it again.
        // The messages of a set reuse it.
        xmlFreeTextReader(reader_);
        reader_ = nullptr;
        std::uint64_t sum = 0;
        for (const Document::Part& part : document_->parts()) {
            const char* data = document_->data() + part.offset;
            const int length = static_cast<int>(part.size);
            if (reader_ == nullptr) {
                reader_ = xmlReaderForMemory(data, length, nullptr, nullptr, XML_PARSE_HUGE);
            } else {
                xmlReaderNewMemory(reader_, data, length, nullptr, nullptr, XML_PARSE_HUGE);
            }
            sum += walk();
        }
        return sum;
    }

private:
    std::uint64_t walk() {
        std::uint64_t sum = 0;
        while (xmlTextReaderRead(reader_) == 1) {
            switch (xmlTextReaderNodeType(reader_)) {
                case XML_READER_TYPE_ELEMENT:
                    sum += length(xmlTextReaderConstLocalName(reader_)) +
                           length(xmlTextReaderConstNamespaceUri(reader_));
                    while (xmlTextReaderMoveToNextAttribute(reader_) == 1)
                        sum += attribute();
                    break;
                case XML_READER_TYPE_TEXT:
                case XML_READER_TYPE_CDATA:
                case XML_READER_TYPE_WHITESPACE:
                case XML_READER_TYPE_SIGNIFICANT_WHITESPACE:
                    sum += length(xmlTextReaderConstValue(reader_));
                    break;
                default:
                    break;
            }
        }
        return sum;
    }

    // A declaration counts as its prefix and URI; "xmlns" alone declares no prefix.
    std::uint64_t attribute() {
        const std::uint64_t value = length(xmlTextReaderConstValue(reader_));
        if (xmlTextReaderIsNamespaceDecl(reader_)) {
            const bool prefixed = xmlTextReaderConstPrefix(reader_) != nullptr;
            return value + (prefixed ? length(xmlTextReaderConstLocalName(reader_)) : 0);
        }
        return value + length(xmlTextReaderConstLocalName(reader_)) +
               length(xmlTextReaderConstNamespaceUri(reader_));
    }

    const Document* document_ = nullptr;
    xmlTextReaderPtr reader_ = nullptr;
};

class Sax2Workload : public Workload {
public:
    Sax2Workload() {
        handler_.initialized = XML_SAX2_MAGIC;
        handler_.startElementNs = startElement;
        handler_.characters = characters;
        handler_.cdataBlock = characters;
    }
    ~Sax2Workload() override { xmlFreeParserCtxt(context_); }

    void load(const Document& document) override { document_ = &document; }
    std::uint64_t run() override {
        sum_ = 0;
        // A fresh context each pass, as for the reader; the messages of a set reuse it.
        xmlFreeParserCtxt(context_);
        context_ = nullptr;
        for (const Document::Part& part : document_->parts())
            push(document_->data() + part.offset, part.size);
        return sum_;
    }

private:
    static constexpr std::size_t ChunkSize = 64 * 1024;

    // The first four bytes tell the encoding.
    void push(const char* data, std::size_t left) {
        const int head = static_cast<int>(std::min<std::size_t>(left, 4));
        if (context_ == nullptr) {
            context_ = xmlCreatePushParserCtxt(&handler_, this, data, head, nullptr);
        } else {
            xmlCtxtResetPush(context_, data, head, nullptr, nullptr);
        }
        xmlCtxtUseOptions(context_, XML_PARSE_HUGE);
        data += head;
        left -= static_cast<std::size_t>(head);
        while (left > 0) {
            const std::size_t chunk = std::min(left, ChunkSize);
            xmlParseChunk(context_, data, static_cast<int>(chunk), 0);
            data += chunk;
            left -= chunk;
        }
        xmlParseChunk(context_, nullptr, 0, 1);
    }

    static std::uint64_t& sum(void* context) { return static_cast<Sax2Workload*>(context)->sum_; }

    static void startElement(void* context, const xmlChar* localName, const xmlChar*,
                             const xmlChar* uri, int namespaceCount, const xmlChar** namespaces,
                             int attributeCount, int, const xmlChar** attributes) {
        std::uint64_t total = length(localName) + length(uri);
        for (int i = 0; i < 2 * namespaceCount; ++i)
            total += length(namespaces[i]);
        // Five pointers per attribute: local name, prefix, URI, value start and value end.
        for (int i = 0; i < 5 * attributeCount; i += 5) {
            total += length(attributes[i]) + length(attributes[i + 2]) +
                     static_cast<std::uint64_t>(attributes[i + 4] - attributes[i + 3]);
        }
        sum(context) += total;
    }
    static void characters(void* context, const xmlChar*, int length) {
        sum(context) += static_cast<std::uint64_t>(length);
    }

    xmlSAXHandler handler_{};
    const Document* document_ = nullptr;
    xmlParserCtxtPtr context_ = nullptr;
    std::uint64_t sum_ = 0;
};

// xmlTextWriter is given the same document as our writer, by qualified names, with the
// namespace declarations as plain attributes (it does not track namespaces itself).
class TextWriterWorkload : public Workload {
public:
    ~TextWriterWorkload() override { xmlBufferFree(buffer_); }

    void load(const Document& document) override {
        events_.emplace(document);
        for (const QzXmlName& name : events_->names()) {
            names_.push_back(name.getQualifiedName().std());
        }
        for (const QzXmlAttributeSet& set : events_->attributeSets()) {
            Attributes& attributes = attributeSets_.emplace_back();
            for (const QzXmlAttribute& attribute : set) {
                attributes.emplace_back(attribute.getName().getQualifiedName().std(),
                                        attribute.getValue().std());
            }
        }
        buffer_ = xmlBufferCreate();
    }
    std::uint64_t run() override {
        xmlBufferEmpty(buffer_);
        xmlTextWriterPtr writer = xmlNewTextWriterMemory(buffer_, 0);
        for (const EventStream::Event& event : events_->events()) {
            switch (event.kind) {
                case EventStream::Start:
                    startElement(writer, event);
                    break;
                case EventStream::Empty:
                    startElement(writer, event);
                    xmlTextWriterEndElement(writer);
                    break;
                case EventStream::End:
                    xmlTextWriterEndElement(writer);
                    break;
                case EventStream::Text:
                    xmlTextWriterWriteString(writer, xml(events_->texts()[event.index].c_str()));
                    break;
            }
        }
        xmlTextWriterFlush(writer);
        xmlFreeTextWriter(writer);
        return static_cast<std::uint64_t>(xmlBufferLength(buffer_));
    }

private:
    using Attributes = std::vector<std::pair<std::string, std::string>>;

    void startElement(xmlTextWriterPtr writer, const EventStream::Event& event) {
        xmlTextWriterStartElement(writer, xml(names_[event.index].c_str()));
        for (const auto& [name, value] : attributeSets_[event.attributes]) {
            xmlTextWriterWriteAttribute(writer, xml(name.c_str()), xml(value.c_str()));
        }
    }

    std::optional<EventStream> events_;
    std::vector<std::string> names_;
    std::vector<Attributes> attributeSets_;
    xmlBufferPtr buffer_ = nullptr;
};

}  // namespace

std::vector<WorkloadEntry> libxml2Workloads() {
    return {makeEntry<TextReaderWorkload>("libxml2-reader", "libxml2 xmlTextReader"),
            makeEntry<Sax2Workload>("libxml2-sax2", "libxml2 SAX2"),
            makeEntry<TextWriterWorkload>("libxml2-writer", "libxml2 xmlTextWriter", true)};
}
