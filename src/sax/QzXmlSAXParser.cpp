#include "QzXmlSAXParser.h"

#include <cstring>
#include <vector>

#include "QzXmlContentHandler.h"
#include "QzXmlParseError.h"
#include "QzXmlProlog.h"
#include "QzXmlReader.h"

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
    void push(const QzXmlName& name) {
        const QzCString& uri = name.getURI();
        const QzCString& local = name.getLocalName();
        starts_.push_back({text_.size(), text_.size() + uri.length()});
        text_.insert(text_.end(), uri.data(), uri.data() + uri.length());
        text_.insert(text_.end(), local.data(), local.data() + local.length());
    }
    void pop() {
        text_.resize(starts_.back().uri);
        starts_.pop_back();
    }
    // Whether name (by local name and URI) is the innermost open element.
    bool innermostIs(const QzXmlName& name) const {
        if (starts_.empty()) return false;
        const Start& top = starts_.back();
        return holds(top.uri, top.local, name.getURI()) &&
               holds(top.local, text_.size(), name.getLocalName());
    }

private:
    struct Start {
        std::size_t uri;
        std::size_t local;
    };
    bool holds(std::size_t first, std::size_t last, const QzCString& text) const {
        return last - first == text.length() &&
               (text.empty() || std::memcmp(text_.data() + first, text.data(), text.length()) == 0);
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

void QzXmlSAXParser::report(QzXmlReader& reader) {
    reader.setExpandReferences(expandReferences_);
    if (contentHandler_ && !reader.getDeclaredVersion().empty()) {
        reportProlog(reader, *contentHandler_);
    }
    OpenNames open;
    while (!reader.eof()) {
        reader.readNextNode();
        const QzXmlName& name = reader.getCurrentName();
        switch (reader.getNodeType()) {
            case QzXmlReader::StartTag:
                open.push(name);
                if (contentHandler_)
                    contentHandler_->startElement(name, reader.getCurrentAttributes());
                break;
            case QzXmlReader::EmptyElement:
                if (contentHandler_)
                    contentHandler_->startElement(name, reader.getCurrentAttributes());
                if (contentHandler_) contentHandler_->endElement(name);
                break;
            case QzXmlReader::EndTag:
                // An end tag with nothing open is as unmatched as one closing the wrong element.
                if (!open.innermostIs(name)) {
                    reader.err(QzCString("Unmatched start tag for ") + name.asString());
                }
                open.pop();
                if (contentHandler_) contentHandler_->endElement(name);
                break;
            case QzXmlReader::Content:
                if (contentHandler_) contentHandler_->characters(reader.getValue());
                break;
            default:
                return;
        }
    }
}
