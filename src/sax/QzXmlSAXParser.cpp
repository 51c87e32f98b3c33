#include "QzXmlSAXParser.h"

#include <algorithm>
#include <cstring>
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

// The names of the open elements, packed one after another into one byte buffer (each URI,
// then its local name), so that a deeply nested document costs a few bytes a level, not a
// name. The storage passes from one parse to the next in a thread, so that parsing many small
// documents allocates nothing for it once the first is parsed.
class OpenNames {
public:
    OpenNames() noexcept { trade(); }
    ~OpenNames() {
        // Storage grown past everyday sizes by an unusual document is let go.
        constexpr std::size_t kKeptBytes = 256 * 1024;
        constexpr std::size_t kKeptLevels = 4096;
        if (text_.size() > kKeptBytes || starts_.capacity() > kKeptLevels) return;
        starts_.clear();
        trade();
    }
    OpenNames(const OpenNames&) = delete;
    OpenNames& operator=(const OpenNames&) = delete;

    void push(const QzXmlNodeView& element) {
        const std::string_view uri = element.uri();
        const std::string_view local = element.localName();
        starts_.push_back({used_, used_ + uri.size()});
        append(uri);
        append(local);
    }
    void pop() {
        used_ = starts_.back().uri;
        starts_.pop_back();
    }
    // Whether element (by local name and URI) is the innermost open element.
    bool innermostIs(const QzXmlNodeView& element) const {
        if (starts_.empty()) return false;
        const Start& top = starts_.back();
        return holds(top.uri, top.local, element.uri()) &&
               holds(top.local, used_, element.localName());
    }

private:
    struct Start {
        std::size_t uri;
        std::size_t local;
    };
    struct Storage {
        std::vector<char> text;
        std::vector<Start> starts;
    };

    void trade() noexcept {
        thread_local Storage spare;
        text_.swap(spare.text);
        starts_.swap(spare.starts);
    }
    // In line, unlike a vector's or a string's general insert.
    void append(std::string_view bytes) {
        if (text_.size() - used_ < bytes.size())
            text_.resize(std::max(2 * text_.size(), used_ + bytes.size()));
        if (!bytes.empty()) std::memcpy(text_.data() + used_, bytes.data(), bytes.size());
        used_ += bytes.size();
    }
    bool holds(std::size_t first, std::size_t last, std::string_view text) const {
        return std::string_view(text_.data() + first, last - first) == text;
    }

    std::vector<char> text_;  ///< its size is the room; the names take the first used_ bytes
    std::size_t used_ = 0;
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
