#include "QzXmlSAXParser.h"

#include <string_view>
#include <vector>

#include "QzXmlContentHandler.h"
#include "QzXmlParseError.h"
#include "QzXmlProlog.h"
#include "QzXmlReader.h"
#include "QzXmlViewHandler.h"

namespace {

void reportProlog(const QzXmlReader& reader, QzXmlContentHandler& handler) {
    QzXmlProlog prolog;
    prolog.setVersion(reader.getDeclaredVersion());
    if (reader.isEncodingDeclared()) {
        prolog.setEncoding(reader.getEncodingName());
        prolog.setHasEncoding(true);
    }
    if (reader.isStandaloneDeclared()) {
        prolog.setHasStandalone(true);
        prolog.setStandalone(reader.getDeclaredStandalone() == QzCString("yes"));
    }
    handler.prolog(prolog);
}

// The names of the open elements, packed one after another into one string (each URI, then
// its local name), so that a deeply nested document costs a few bytes a level, not a name.
class OpenNames {
public:
    void push(const QzXmlNodeView& element) {
        const std::string_view uri = element.uri();
        const std::string_view local = element.localName();
        starts_.push_back({text_.size(), text_.size() + uri.size()});
        text_.insert(text_.end(), uri.begin(), uri.end());
        text_.insert(text_.end(), local.begin(), local.end());
    }
    void pop() {
        text_.resize(starts_.back().uri);
        starts_.pop_back();
    }
    // Whether element (by local name and URI) is the innermost open element.
    bool innermostIs(const QzXmlNodeView& element) const {
        if (starts_.empty()) return false;
        const Start& top = starts_.back();
        return holds(top.uri, top.local, element.uri()) &&
               holds(top.local, text_.size(), element.localName());
    }

private:
    struct Start {
        std::size_t uri;
        std::size_t local;
    };
    bool holds(std::size_t first, std::size_t last, std::string_view text) const {
        return std::string_view(text_.data() + first, last - first) == text;
    }
    // A plain byte vector: its appends and truncations are inlined, unlike a string's.
    std::vector<char> text_;
    std::vector<Start> starts_;
};

}  // namespace

void QzXmlSAXParser::parse(const QzCString& document, const QzCString&) {
    // The reader works on the caller's bytes in place, which is what saves the copy.
    QzXmlReader reader(reinterpret_cast<unsigned char*>(const_cast<char*>(document.data())),
                       document.length(), readerOptions_);
    report(reader);
}

void QzXmlSAXParser::parse(std::istream& input) {
    QzXmlReader reader(input, readerOptions_);
    report(reader);
}

// Each event goes to the content handler (owned names and strings), then to the view handler.
void QzXmlSAXParser::report(QzXmlReader& reader) {
    reader.setExpandReferences(expandReferences_);
    if (contentHandler_ && !reader.getDeclaredVersion().empty()) {
        reportProlog(reader, *contentHandler_);
    }
    const QzXmlNodeView& view = reader.getNodeView();
    const auto start = [&] {
        if (contentHandler_)
            contentHandler_->startElement(reader.getCurrentName(), reader.getCurrentAttributes());
        if (viewHandler_) viewHandler_->startElement(view);
    };
    const auto end = [&] {
        if (contentHandler_) contentHandler_->endElement(reader.getCurrentName());
        if (viewHandler_) viewHandler_->endElement(view);
    };
    OpenNames open;
    while (!reader.eof()) {
        reader.readNextNode();
        switch (reader.getNodeType()) {
            case QzXmlReader::StartTag:
                open.push(view);
                start();
                break;
            case QzXmlReader::EmptyElement:
                start();
                end();
                break;
            case QzXmlReader::EndTag:
                // An end tag with nothing open is as unmatched as one closing the wrong element.
                if (!open.innermostIs(view)) {
                    reader.err(QzCString("Unmatched start tag for ") +
                               reader.getCurrentName().asString());
                }
                open.pop();
                end();
                break;
            case QzXmlReader::Content:
                if (contentHandler_) contentHandler_->characters(reader.getValue());
                if (viewHandler_) viewHandler_->characters(view.text());
                break;
            default:
                return;
        }
    }
}
