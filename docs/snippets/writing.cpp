// Writing: indentation on request, escaping, and namespace declarations where first needed.
#include <QzXmlProlog.h>
#include <QzXmlStringWriter.h>

#include <iostream>

int main() {
    const QzXmlNamespace inv("inv", "urn:example:invoice");
    QzXmlStringWriter writer;
    QzXmlProlog prolog;
    prolog.setEncoding("UTF-8");
    prolog.setHasEncoding(true);
    writer.write(prolog.asString(), false);
    writer.writeNewLine();

    QzXmlAttributeSet attributes;
    attributes.add(QzXmlName("title"), "\"Q&A\" &amp; more");
    attributes.addNamespaceAttribute(QzXmlNamespace::getXsd());  // for the xsd:decimal below
    writer.writeElementStart(QzXmlName("invoice", inv), attributes, false);
    writer.writeNewLine();
    writer.incrementIndent();
    writer.writeSimpleElement(QzXmlName("customer", inv), "Smith & Sons <Ltd>", "", false);
    writer.writeSimpleElement(QzXmlName("amount", inv), "12.50", "xsd:decimal", true);
    writer.writeSimpleElement(QzXmlName("note", QzXmlNamespace("n", "urn:example:notes")), "", "",
                              false);
    writer.decrementIndent();
    writer.writeElementEnd(QzXmlName("invoice", inv));
    writer.writeNewLine();
    std::cout << writer.getString();
}
