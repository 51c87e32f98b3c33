// Our side: the pull reader, the event parser, document comparison and the string writer.

#include <optional>

#include "EventStream.h"
#include "QzXmlContentHandler.h"
#include "QzXmlNodeView.h"
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

std::uint64_t nameLength(const QzXmlNodeView& node) {
    return node.localName().size() + node.uri().size();
}

// The same sums through node views, without a copy.
std::uint64_t tagLength(const QzXmlNodeView& node) {
    std::uint64_t sum = nameLength(node);
    for (std::size_t i = 0; i < node.attributeCount(); ++i) {
        const QzXmlAttributeView& a = node.attribute(i);
        sum += a.localName.size() + a.uri.size() + a.value.size();
    }
    return sum;
}

// Lenient or strict by its options, through the owned accessors or the node views; all walk
// and count alike, so that their ratios are the cost of the checks or of the copies alone.
class ReaderWorkload : public Workload {
public:
    explicit ReaderWorkload(const QzXmlReaderOptions& options = {}, bool views = false)
        : options_(options), views_(views) {}
    void load(const Document& document) override { input_.assign(document); }
    void prepare() override { input_.restore(); }
    std::uint64_t run() override {
        std::uint64_t sum = 0;
        for (const Document::Part& part : input_.parts()) {
            QzXmlReader reader(input_.bytes() + part.offset, part.size, options_);
            const QzXmlNodeView& node = reader.getNodeView();
            if (views_) {
                sum += walk(
                    reader, [&] { return tagLength(node); }, [&] { return node.text().size(); });
            } else {
                sum += walk(
                    reader,
                    [&] {
                        return tagLength(reader.getCurrentName(), reader.getCurrentAttributes());
                    },
                    [&] { return reader.getValue().length(); });
            }
        }
        return sum;
    }

private:
    // Sums tag() over the start and empty-element tags and text() over the content nodes.
    template <class Tag, class Text>
    static std::uint64_t walk(QzXmlReader& reader, Tag tag, Text text) {
        std::uint64_t sum = 0;
        while (!reader.eof()) {
            reader.readNextNode();
            switch (reader.getNodeType()) {
                case QzXmlReader::StartTag:
                case QzXmlReader::EmptyElement:
                    sum += tag();
                    break;
                case QzXmlReader::Content:
                    sum += text();
                    break;
                default:
                    break;
            }
        }
        return sum;
    }

    QzXmlReaderOptions options_;
    bool views_;
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
        texts_.resize(document.parts().size());
        prepare();
    }
    // UTF-16 input is byte-swapped inside the string itself.
    void prepare() override {
        for (std::size_t i = 0; i < texts_.size(); ++i) {
            const Document::Part& part = source_->parts()[i];
            texts_[i].assign(source_->data() + part.offset, part.size);
        }
    }
    std::uint64_t run() override {
        SumHandler handler;
        QzXmlSAXParser parser;
        parser.setContentHandler(&handler);
        for (const QzCString& text : texts_)
            parser.parse(text);
        return handler.sum;
    }

private:
    const Document* source_ = nullptr;
    std::vector<QzCString> texts_;
};

class CompareWorkload : public Workload {
public:
    void load(const Document& document) override {
        for (const Document::Part& part : document.parts())
            texts_.emplace_back(document.data() + part.offset, part.size);
    }
    std::uint64_t run() override {
        std::uint64_t equal = 0;
        for (const QzCString& text : texts_)
            equal += QzXmlUtils::compareXml(text, text) ? 1 : 0;
        return equal;
    }

private:
    std::vector<QzCString> texts_;
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
    // The deep corpus nests past the strict default; libxml2 reads it with XML_PARSE_HUGE.
    QzXmlReaderOptions strict;
    strict.strict = true;
    strict.maxDepth = 0;
    const auto reader = [](const QzXmlReaderOptions& options, bool views) {
        return [options, views] { return std::make_unique<ReaderWorkload>(options, views); };
    };
    return {{"qz-reader", "qzxml reader", false, reader({}, false)},
            {"qz-views", "qzxml reader, views", false, reader({}, true)},
            {"qz-strict", "qzxml strict reader", false, reader(strict, false)},
            {"qz-strict-views", "qzxml strict reader, views", false, reader(strict, true)},
            makeEntry<EventParserWorkload>("qz-events", "qzxml event parser"),
            makeEntry<CompareWorkload>("qz-compare", "qzxml compareXml"),
            makeEntry<WriterWorkload>("qz-writer", "qzxml string writer", true)};
}
