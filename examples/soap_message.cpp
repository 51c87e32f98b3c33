// Writes a SOAP-like message with the string writer: three namespaces, each declared on the
// element that first uses it, an attribute in another element's namespace, and xsi:type.
#include <QzXmlProlog.h>
#include <QzXmlStringWriter.h>

#include <iostream>

namespace {

const QzXmlNamespace kEnvelope("env", "http://www.w3.org/2003/05/soap-envelope");
const QzXmlNamespace kTransaction("t", "urn:example:transaction");
const QzXmlNamespace kPrices("m", "urn:example:prices");

// A start tag on a line of its own; what follows is indented one level more.
void open(QzXmlWriter& writer, const QzXmlName& name,
          const QzXmlAttributeSet& attributes = QzXmlAttributeSet()) {
    writer.writeElementStart(name, attributes, false);
    writer.writeNewLine();
    writer.incrementIndent();
}

void close(QzXmlWriter& writer, const QzXmlName& name) {
    writer.decrementIndent();
    writer.writeElementEnd(name);
    writer.writeNewLine();
}

}  // namespace

int main() {
    QzXmlStringWriter writer;
    QzXmlProlog prolog;
    prolog.setEncoding("UTF-8");
    prolog.setHasEncoding(true);
    writer.write(prolog.asString(), false);
    writer.writeNewLine();

    const QzXmlName envelope("Envelope", kEnvelope);
    QzXmlAttributeSet types;
    types.addNamespaceAttribute(QzXmlNamespace::getXsd());  // the xsd: of the xsi:type below
    open(writer, envelope, types);

    const QzXmlName header("Header", kEnvelope);
    open(writer, header);
    QzXmlAttributeSet mustUnderstand;
    mustUnderstand.add(QzXmlName("mustUnderstand", kEnvelope), "true");
    const QzXmlName transaction("Transaction", kTransaction);
    writer.writeElementStart(transaction, mustUnderstand, false);
    writer.write("5 < 6 & 7", true);
    writer.writeElementEnd(transaction);
    writer.writeNewLine();
    close(writer, header);

    const QzXmlName body("Body", kEnvelope), getPrice("GetPrice", kPrices);
    open(writer, body);
    open(writer, getPrice);
    writer.writeSimpleElement(QzXmlName("Item", kPrices), "Caf\xC3\xA9 cr\xC3\xA8me", "", false);
    writer.writeSimpleElement(QzXmlName("Quantity", kPrices), "2", "xsd:int", true);
    writer.writeSimpleElement(QzXmlName("Note", kPrices), "", "", false);
    close(writer, getPrice);
    close(writer, body);
    close(writer, envelope);

    std::cout << writer.getString();
}
