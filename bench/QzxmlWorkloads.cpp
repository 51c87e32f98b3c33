// Our side: the pull reader, the event parser, document comparison and the string writer.

#include <optional>

#include "EventStream.h"
#include "QzXmlContentHandler.h"
#include "QzXmlReader.h"
#include "QzXmlReaderOptions.h"
#include "QzXmlSAXParser.h"
#include "QzXmlStringWriter.h"
#include "QzXmlUtils.h"
#include "Workload.h"

namespace {

std::uint64_t nameLength(const QzXmlName& name) {
    return name.getLocalName().length() + name.getURI().length();
}

// Namespace declarations are attributes here, named by their prefix, so they count as the
// declared prefix and URI, as the peers that report them separately count them.
std::uint64_t tagLength(const QzXmlName& name, const QzXmlAttributeSet& attributes) {
    std::uint64_t sum = nameLength(name);
    for (const QzXmlAttribute& attribute : attributes) {
        sum += nameLength(attribute.getName()) + attribute.getValue().length();
    }
    return sum;
}

// Lenient or strict by its options; both walk and count alike, so that their ratio is the
// cost of the checks alone.
class ReaderWorkload : public Workload {
public:
    explicit ReaderWorkload(const QzXmlReaderOptions& options = {}) : options_(options) {}
    void load(const Document& document) override { input_.assign(document); }
    void prepare() override { input_.restore(); }
    std::uint64_t run() override {
        QzXmlReader reader(input_.bytes(), input_.size(), options_);
        std::uint64_t sum = 0;
        while (!reader.eof()) {
            reader.readNextNode();
            switch (reader.getNodeType()) {
                case QzXmlReader::StartTag:
                case QzXmlReader::EmptyElement:
                    sum += tagLength(reader.getCurrentName(), reader.getCurrentAttributes());
                    break;
                case QzXmlReader::Content:
                    sum += reader.getValue().length();
                    break;
                default:
                    break;
            }
        }
        return sum;
    }

private:
    QzXmlReaderOptions options_;
    InputCopy input_;
};

class SumHandler : public QzXmlContentHandler {
public:
    void startElement(const QzXmlName& name, const QzXmlAttributeSet& attributes) override {
        sum += tagLength(name, attributes);
    }
    void endElement(const QzXmlName&) override {}
    void characters(const QzCString& text) override { sum += text.length(); }

    std::uint64_t sum = 0;
};

class EventParserWorkload : public Workload {
public:
    void load(const Document& document) override {
        source_ = &document;
        text_.assign(document.data(), document.size());
    }
    // UTF-16 input is byte-swapped inside the string itself.
    void prepare() override { text_.assign(source_->data(), source_->size()); }
    std::uint64_t run() override {
        SumHandler handler;
        QzXmlSAXParser parser;
        parser.setContentHandler(&handler);
        parser.parse(text_);
        return handler.sum;
    }

private:
    const Document* source_ = nullptr;
    QzCString text_;
};

class CompareWorkload : public Workload {
public:
    void load(const Document& document) override { text_.assign(document.data(), document.size()); }
    std::uint64_t run() override { return QzXmlUtils::compareXml(text_, text_) ? 1 : 0; }

private:
    QzCString text_;
};

class WriterWorkload : public Workload {
public:
    void load(const Document& document) override {
        events_.emplace(document);
        attributeSets_ = events_->attributeSets();
        // The writer declares an element's default namespace from its name.
        for (QzXmlAttributeSet& attributes : attributeSets_) {
            attributes.erase(QzXmlName(QzXmlAttributeSet::DefaultNamespaceAttributeTag));
        }
    }
    std::uint64_t run() override {
        writer_.reset();
        const EventStream& stream = *events_;
        for (const EventStream::Event& event : stream.events()) {
            switch (event.kind) {
                case EventStream::Start:
                case EventStream::Empty:
                    writer_.writeElementStart(stream.names()[event.index],
                                              attributeSets_[event.attributes],
                                              event.kind == EventStream::Empty);
                    break;
                case EventStream::End:
                    writer_.writeElementEnd(stream.names()[event.index]);
                    break;
                case EventStream::Text:
                    writer_.write(stream.texts()[event.index], true);
                    break;
            }
        }
        return writer_.getLength();
    }

private:
    std::optional<EventStream> events_;
    std::vector<QzXmlAttributeSet> attributeSets_;
    QzXmlStringWriter writer_;
};

}  // namespace

std::vector<WorkloadEntry> qzxmlWorkloads() {
    const auto strictReader = [] {
        QzXmlReaderOptions options;
        options.strict = true;
        // The deep corpus nests past the strict default; libxml2 reads it with XML_PARSE_HUGE.
        options.maxDepth = 0;
        return std::make_unique<ReaderWorkload>(options);
    };
    return {makeEntry<ReaderWorkload>("qz-reader", "qzxml reader"),
            {"qz-strict", "qzxml strict reader", false, strictReader},
            makeEntry<EventParserWorkload>("qz-events", "qzxml event parser"),
            makeEntry<CompareWorkload>("qz-compare", "qzxml compareXml"),
            makeEntry<WriterWorkload>("qz-writer", "qzxml string writer", true)};
}
