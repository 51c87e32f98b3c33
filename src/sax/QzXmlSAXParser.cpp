#include "QzXmlSAXParser.h"

#include <deque>

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

}  // namespace

void QzXmlSAXParser::parse(const QzCString& document, const QzCString&) {
    // The reader works on the caller's bytes in place, which is what saves the copy.
    QzXmlReader reader(reinterpret_cast<unsigned char*>(const_cast<char*>(document.data())),
                       document.length());
    reader.setExpandReferences(expandReferences_);
    if (contentHandler_ && !reader.getDeclaredVersion().empty()) {
        reportProlog(reader, *contentHandler_);
    }
    // Open element names; slots are reused, so that their strings keep their capacity. A deque
    // grows without moving the names already open, however deep the document nests.
    std::deque<QzXmlName> open;
    std::size_t depth = 0;
    while (!reader.eof()) {
        reader.readNextNode();
        const QzXmlName& name = reader.getCurrentName();
        switch (reader.getNodeType()) {
            case QzXmlReader::StartTag:
                if (depth == open.size()) open.emplace_back();
                open[depth++] = name;
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
                if (depth == 0 || open[depth - 1] != name) {
                    reader.err(QzCString("Unmatched start tag for ") + name.asString());
                }
                --depth;
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
