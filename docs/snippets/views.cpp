// Reading names, attributes and text as views into the input, without a copy.
#include <QzXmlReader.h>
#include <QzXmlSAXParser.h>
#include <QzXmlViewHandler.h>

#include <iostream>
#include <string>

// Counts the items of an order and adds up their quantities, copying nothing.
class ItemCounter : public QzXmlViewHandler {
public:
    void startElement(const QzXmlNodeView& element) override {
        if (element.localName() != "item") return;
        ++items;
        for (std::size_t i = 0; i < element.attributeCount(); ++i) {
            if (element.attribute(i).localName == "qty")
                quantity += std::stoi(std::string(element.attribute(i).value));
        }
    }
    void endElement(const QzXmlNodeView&) override {}
    void characters(std::string_view) override {}

    int items = 0;
    int quantity = 0;
};

int main() {
    const QzCString order(
        "<o:order xmlns:o='urn:orders'><o:item sku='A1' qty='2'>Tea &amp; cake</o:item>"
        "<o:item sku='B7' qty='5'/></o:order>");

    // The pull reader: the view is valid until the next read.
    QzXmlReader reader(order);
    const QzXmlNodeView& node = reader.getNodeView();
    while (!reader.eof()) {
        reader.readNextNode();
        if (reader.getNodeType() == QzXmlReader::StartTag ||
            reader.getNodeType() == QzXmlReader::EmptyElement) {
            std::cout << node.localName() << " in " << node.uri() << ':';
            for (std::size_t i = 0; i < node.attributeCount(); ++i)
                std::cout << ' ' << node.attribute(i).qualifiedName << '='
                          << node.attribute(i).value;
            std::cout << '\n';
        } else if (reader.getNodeType() == QzXmlReader::Content) {
            std::cout << "text: " << node.text() << '\n';
        }
    }

    // The event parser hands the same views to a view handler.
    ItemCounter counter;
    QzXmlSAXParser parser;
    parser.setViewHandler(&counter);
    parser.parse(order);
    std::cout << counter.items << " items, " << counter.quantity << " in all\n";
}
