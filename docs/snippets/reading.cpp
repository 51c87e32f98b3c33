// The typical read: an element's attributes, its children while one comes next, their text.
#include <QzXmlReader.h>

#include <iostream>

int main() {
    QzXmlReader reader(
        QzCString("<?xml version='1.0'?>\n"
                  "<order id='A-7'>\n"
                  "  <line sku='tea' quantity='2'>Green tea &amp; mint</line>\n"
                  "  <line sku='cup' quantity='1'/>\n"
                  "  <note>Leave at the door</note>\n"
                  "</order>\n"));
    const QzXmlAttributeSet& order = reader.readElementStart("order");
    std::cout << "order " << order.find(QzXmlName("id"))->getValue() << '\n';
    while (reader.isElementNext(QzXmlName("line"))) {
        const QzXmlAttributeSet& line = reader.readElementStart("line");
        std::cout << line.find(QzXmlName("sku"))->getValue() << " x"
                  << line.find(QzXmlName("quantity"))->getValue() << ": \""
                  << reader.readElementValue() << "\"\n";
        reader.readElementEnd("line");
    }
    reader.readElementStart("note");
    const QzCString note = reader.readElementValue();  // a copy: the next read reuses the text
    reader.readElementEnd("note");
    reader.readElementEnd("order");
    std::cout << "note: " << note << '\n';
}
