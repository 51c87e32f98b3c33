#include "Formatter.h"

#include <utility>

#include "QzXmlAttributeSet.h"
#include "QzXmlProlog.h"

namespace {

// An attribute value in double quotes that reads back as it is: "&", "<" and the quote
// escaped, and tab, line feed and carriage return as character references, which attribute
// value normalisation leaves alone.
void appendAttributeValue(QzCString& out, const QzCString& value) {
    for (const char c : value.std()) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\t':
                out += "&#9;";
                break;
            case '\n':
                out += "&#10;";
                break;
            case '\r':
                out += "&#13;";
                break;
            default:
                out += c;
        }
    }
}

}  // namespace

Formatter::Formatter(QzXmlWriter& out, std::vector<bool> verbatim, unsigned indent,
                     bool keepWhitespace)
    : out_(out), verbatim_(std::move(verbatim)), indent_(indent), keepWhitespace_(keepWhitespace) {}

void Formatter::prolog(const QzXmlProlog& prolog) {
    // The output is UTF-8 whatever the input was.
    QzCString declaration = "<?xml version=\"" + prolog.getVersion() + "\" encoding=\"UTF-8\"";
    if (prolog.hasStandalone())
        declaration += prolog.isStandalone() ? " standalone=\"yes\"" : " standalone=\"no\"";
    out_.write(declaration + "?>", false);
    started_ = true;
}

void Formatter::startElement(const QzXmlName& name, const QzXmlAttributeSet& attributes) {
    writeHeldStart(false);
    const bool inVerbatim = keepWhitespace_ || (!open_.empty() && open_.back());
    if (!inVerbatim) breakLine(open_.size());
    const bool verbatim = inVerbatim || (elements_ < verbatim_.size() && verbatim_[elements_]);
    ++elements_;
    open_.push_back(verbatim);
    heldTag_ = "<" + name.getQualifiedName();
    for (const QzXmlAttribute& attribute : attributes) {
        heldTag_ += " " + attribute.getName().getQualifiedName() + "=\"";
        appendAttributeValue(heldTag_, attribute.getValue());
        heldTag_ += "\"";
    }
    held_ = true;
}

void Formatter::endElement(const QzXmlName& name) {
    if (held_) {
        writeHeldStart(true);
        open_.pop_back();
        return;
    }
    const bool verbatim = open_.back();
    open_.pop_back();
    if (!verbatim) breakLine(open_.size());
    out_.write("</" + name.getQualifiedName() + ">", false);
}

void Formatter::characters(const QzCString& text) {
    // Outside verbatim elements only whitespace-only text arrives: it gives way to indentation.
    if (open_.empty() || !open_.back()) return;
    writeHeldStart(false);
    out_.write(text, true);
}

void Formatter::finish() {
    out_.write("\n", false);
    out_.flush();
}

// A new line indented for depth, except before the first output.
void Formatter::breakLine(std::size_t depth) {
    if (started_) out_.write("\n" + QzCString(std::string(depth * indent_, ' ')), false);
    started_ = true;
}

void Formatter::writeHeldStart(bool isEmpty) {
    if (!held_) return;
    held_ = false;
    heldTag_ += isEmpty ? "/>" : ">";
    out_.write(heldTag_, false);
    started_ = true;
}
