#include "Formatter.h"

#include "QzXmlUtils.h"

void Formatter::prolog(const QzXmlProlog& prolog) {
    // The output is UTF-8 whatever the input was.
    writer_.write("<?xml version=\"" + prolog.getVersion() + "\" encoding=\"UTF-8\"?>", false);
}

void Formatter::startElement(const QzXmlName& name, const QzXmlAttributeSet& attributes) {
    writeHeldStart(false);
    held_ = true;
    heldName_ = name;
    heldAttributes_ = attributes;
    // The writer declares the default namespace from the element's name itself.
    heldAttributes_.erase(QzXmlName(QzXmlAttributeSet::DefaultNamespaceAttributeTag));
}

void Formatter::endElement(const QzXmlName& name) {
    if (held_) {
        writeHeldStart(true);
        return;
    }
    writer_.decrementIndent();
    if (!lineOpen_) breakLine();
    writer_.writeElementEnd(name);
    lineOpen_ = false;
}

void Formatter::characters(const QzCString& text) {
    if (QzXmlUtils::stripWhiteSpaceAndNewlines(text, QzCString::both).empty()) return;
    writeHeldStart(false);
    writer_.write(text, true);
    // The end tag follows the text at once, so that no whitespace is added to it.
    lineOpen_ = true;
}

QzCString Formatter::finish() {
    writer_.writeNewLine();
    return writer_.getString();
}

void Formatter::breakLine() {
    if (writer_.getLength() > 0) writer_.writeNewLine();
}

void Formatter::writeHeldStart(bool isEmpty) {
    if (!held_) return;
    held_ = false;
    breakLine();
    writer_.writeElementStart(heldName_, heldAttributes_, isEmpty);
    if (!isEmpty) writer_.incrementIndent();
    lineOpen_ = !isEmpty;
}
