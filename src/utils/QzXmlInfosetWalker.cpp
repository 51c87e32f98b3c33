#include "QzXmlInfosetWalker.h"

#include <algorithm>
#include <string>
#include <utility>

namespace {

bool isWhitespaceOnly(const char* first, const char* last) {
    return std::all_of(first, last,
                       [](char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; });
}

bool isNamespaceDeclaration(const QzXmlName& name) {
    static const QzCString xmlns("xmlns");
    return name.getPrefix() == xmlns || (name.getPrefix().empty() && name.getLocalName() == xmlns);
}

}  // namespace

QzXmlInfosetWalker::QzXmlInfosetWalker(const QzCString& document,
                                       const QzXmlCompareOptions& options)
    : options_(options), reader_(document, options.readerOptions, &log_), open_(1) {}

QzCString QzXmlInfosetWalker::expandedName(const QzXmlName& name) {
    if (name.getURI().empty()) return name.getQualifiedName();
    return "{" + name.getURI() + "}" + name.getLocalName();
}

const QzXmlInfosetWalker::Item& QzXmlInfosetWalker::next() {
    while (queue_.empty())
        readNode();
    current_ = std::move(queue_.front());
    queue_.pop_front();
    enter(current_);
    return current_;
}

// Queues what one read of the reader yields: the markup skipped before the node, then the
// node; at the end of the document, an End item.
void QzXmlInfosetWalker::readNode() {
    std::size_t start = reader_.cursor_ - reader_.documentBuffer_;
    const bool atEnd = reader_.eof();
    if (!atEnd) reader_.readNextNode();
    std::size_t entry = 0;
    for (; entry < log_.entries.size() &&
           log_.entries[entry].textOffset == QzXmlMarkupLog::BeforeNode;
         ++entry) {
        const QzXmlMarkupLog::Entry& skipped = log_.entries[entry];
        start = skipped.offset + skipped.markup.size();
        if (wanted(skipped)) queueMarkup(skipped);
    }
    const int type = atEnd ? QzXmlReader::NoNode : reader_.getNodeType();
    if (type == QzXmlReader::Content) {
        queueText(start, entry);
    } else if (type == QzXmlReader::NoNode) {
        Item end;
        end.offset = reader_.limit_ - reader_.documentBuffer_;
        queue_.push_back(std::move(end));
    } else {
        queueElement(reader_.lastTagStart_ - reader_.documentBuffer_);
    }
    log_.entries.clear();
}

void QzXmlInfosetWalker::queueElement(std::size_t offset) {
    Item item;
    item.name = reader_.getCurrentName();
    item.key = expandedName(item.name);
    item.offset = offset;
    if (reader_.getNodeType() == QzXmlReader::EndTag) {
        item.kind = Kind::EndElement;
        queue_.push_back(std::move(item));
        return;
    }
    item.kind = Kind::StartElement;
    for (const QzXmlAttribute& attribute : reader_.getCurrentAttributes()) {
        if (!isNamespaceDeclaration(attribute.getName()))
            item.attributes.emplace_back(expandedName(attribute.getName()), attribute.getValue());
    }
    // In one order on both sides, so that two tags compare pair by pair.
    std::sort(item.attributes.begin(), item.attributes.end());
    queue_.push_back(item);
    if (reader_.getNodeType() == QzXmlReader::EmptyElement) {
        item.kind = Kind::EndElement;
        item.attributes.clear();
        queue_.push_back(std::move(item));
    }
}

// The text node, cut where compared markup stood inside it.
void QzXmlInfosetWalker::queueText(std::size_t offset, std::size_t firstEntry) {
    std::size_t from = 0;
    for (std::size_t i = firstEntry; i < log_.entries.size(); ++i) {
        const QzXmlMarkupLog::Entry& markup = log_.entries[i];
        if (!wanted(markup)) continue;
        queueTextPiece(from, markup.textOffset, offset);
        queueMarkup(markup);
        from = markup.textOffset;
        offset = markup.offset + markup.markup.size();
    }
    queueTextPiece(from, reader_.getValue().length(), offset);
}

void QzXmlInfosetWalker::queueTextPiece(std::size_t first, std::size_t last, std::size_t offset) {
    const char* text = reader_.getValue().data();
    if (first == last) return;
    if (options_.ignoreWhitespaceText && isWhitespaceOnly(text + first, text + last)) return;
    Item item;
    item.kind = Kind::Text;
    item.text = QzCString(text + first, last - first);
    item.offset = offset;
    queue_.push_back(std::move(item));
}

// A comment's text between "<!--" and "-->"; a processing instruction's target, and its data
// after the whitespace that follows the target.
void QzXmlInfosetWalker::queueMarkup(const QzXmlMarkupLog::Entry& entry) {
    const std::string& markup = entry.markup;
    Item item;
    item.offset = entry.offset;
    if (markup[1] == '!') {
        item.kind = Kind::Comment;
        item.text = QzCString(markup.substr(4, markup.size() - 7));
    } else {
        item.kind = Kind::ProcessingInstruction;
        const std::string body = markup.substr(2, markup.size() - 4);
        const std::size_t targetEnd = std::min(body.find_first_of(" \t\r\n"), body.size());
        const std::size_t dataStart =
            std::min(body.find_first_not_of(" \t\r\n", targetEnd), body.size());
        item.key = QzCString(body.substr(0, targetEnd));
        item.text = QzCString(body.substr(dataStart));
    }
    queue_.push_back(std::move(item));
}

bool QzXmlInfosetWalker::wanted(const QzXmlMarkupLog::Entry& entry) const {
    return entry.markup[1] == '!' ? options_.compareComments
                                  : options_.compareProcessingInstructions;
}

// Keeps the open elements and the sibling counts that paths are made of up to date, and
// checks that an end tag closes the innermost open element.
void QzXmlInfosetWalker::enter(const Item& item) {
    if (leaving_) {
        open_.pop_back();
        leaving_ = false;
    }
    if (item.kind == Kind::StartElement) {
        const std::uint64_t index = ++open_.back().children[item.name.getQualifiedName().std()];
        open_.push_back({item.name, index, {}});
    } else if (item.kind == Kind::EndElement) {
        if (open_.size() == 1 || !(open_.back().name == item.name)) {
            reader_.err(QzCString("Unmatched start tag for ") + item.name.asString());
        }
        leaving_ = true;
    }
}

QzXmlComparison::Place QzXmlInfosetWalker::place() const {
    QzXmlComparison::Place place;
    const unsigned char* first = reader_.documentBuffer_;
    const unsigned char* at =
        first + std::min<std::size_t>(current_.offset, reader_.limit_ - first);
    place.line = 1 + std::count(first, at, '\n');
    const unsigned char* lineStart = at;
    while (lineStart != first && lineStart[-1] != '\n')
        --lineStart;
    place.column = static_cast<std::uint64_t>(at - lineStart) + 1;
    for (std::size_t i = 1; i < open_.size(); ++i) {
        place.path.append("/" + open_[i].name.getQualifiedName().std() + "[" +
                          std::to_string(open_[i].index) + "]");
    }
    if (place.path.empty()) place.path = "/";
    return place;
}
