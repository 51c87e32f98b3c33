// How element and attribute names resolve, and three ways to ask for an element.
#include <QzXmlReader.h>

#include <iostream>

void show(const QzXmlName& name) {
    std::cout << name.getQualifiedName() << " -> " << name.getUniqueName() << '\n';
}

int main() {
    QzXmlReader reader(
        QzCString("<env:Envelope xmlns:env='urn:example:envelope' xmlns='urn:example:orders'>"
                  "<env:Body><order id='7' env:priority='high' x:flag='1'/></env:Body>"
                  "</env:Envelope>"));
    reader.readElementStart("env:Envelope");  // by prefix, resolved by the declarations
    reader.readElementStart(QzXmlName("Body", QzXmlNamespace("", "urn:example:envelope")));
    reader.readElementStart(QzXmlName("order"));  // no prefix: the default namespace
    show(reader.getCurrentName());
    for (const QzXmlAttribute& attribute : reader.getCurrentAttributes()) {
        show(attribute.getName());
    }
    reader.readElementEnd("order");
    reader.readElementEnd("env:Body");
    reader.readElementEnd("env:Envelope");
}
