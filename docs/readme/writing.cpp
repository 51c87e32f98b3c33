#include <QzXmlStringWriter.h>
#include <iostream>

int main() {
    QzXmlStringWriter writer;
    const QzXmlName order("order", QzXmlNamespace("o", "urn:example:orders"));
    QzXmlAttributeSet attributes;
    attributes.add(QzXmlName("id"), "7");
    writer.writeElementStart(order, attributes, false);
    writer.writeSimpleElement(QzXmlName("note", order.getNamespace()), "tea & cups", "", false);
    writer.writeElementEnd(order);
    std::cout << writer.getString() << '\n';
}
