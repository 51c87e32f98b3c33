#include <QzXmlReader.h>
#include <iostream>

int main() {
    QzXmlReader reader(
        QzCString("<order id='7'><item sku='tea'>2</item><item sku='cup'>1</item></order>"));
    std::cout << "order " << reader.readElementStart("order").find(QzXmlName("id"))->getValue();
    while (reader.isElementNext(QzXmlName("item"))) {
        std::cout << ", " << reader.readElementStart("item").find(QzXmlName("sku"))->getValue();
        std::cout << " x" << reader.readElementValue();
        reader.readElementEnd("item");
    }
    reader.readElementEnd("order");
    std::cout << '\n';
}
