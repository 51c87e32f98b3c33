// Reads an order document into a plain struct with the pull reader, then prints the struct.
// Usage: read_order [FILE]   (default: order-latin1.xml, an ISO-8859-1 document)
#include <QzXmlParseError.h>
#include <QzXmlReader.h>
#include <QzXmlUtils.h>

#include <fstream>
#include <iostream>
#include <string>
#include <vector>

struct Item {
    std::string sku;
    int quantity = 0;
    std::string description;
};

struct Order {
    std::string id;
    QzDateTime placed;
    std::string customer;
    std::vector<Item> items;
    std::string total;
    std::string currency;
};

// The value of an unprefixed attribute, or "" when the element has none of that name.
std::string attribute(const QzXmlAttributeSet& attributes, const char* name) {
    const QzXmlAttributeSet::const_iterator found = attributes.find(QzXmlName(name));
    return found == attributes.end() ? std::string() : found->getValue().std();
}

// The text of the next element, which must be called name.
std::string textElement(QzXmlReader& reader, const char* name) {
    reader.readElementStart(name);
    std::string text = reader.readElementValue().std();
    reader.readElementEnd(name);
    return text;
}

Order readOrder(std::istream& in) {
    QzXmlReader reader(in);  // names without a prefix resolve to the document's namespace
    Order order;
    const QzXmlAttributeSet& attributes = reader.readElementStart("order");
    order.id = attribute(attributes, "id");
    order.placed =
        QzXmlUtils::convertISODateStringToDateTime(attribute(attributes, "placed").c_str());
    order.customer = textElement(reader, "customer");
    while (reader.isElementNext(QzXmlName("item"))) {
        const QzXmlAttributeSet& item = reader.readElementStart("item");
        order.items.push_back({attribute(item, "sku"), std::stoi(attribute(item, "quantity")),
                               reader.readElementValue().std()});
        reader.readElementEnd("item");
    }
    order.currency = attribute(reader.readElementStart("total"), "currency");
    order.total = reader.readElementValue().std();
    reader.readElementEnd("total");
    reader.readElementEnd("order");
    return order;
}

void print(const Order& order) {
    std::cout << "Order " << order.id << ", placed "
              << QzXmlUtils::convertDateTimeToISOString(order.placed, "%d %B %Y at %H:%M UTC")
              << "\nCustomer: " << order.customer << '\n';
    for (const Item& item : order.items) {
        std::cout << "  " << item.quantity << " x " << item.description << " (" << item.sku
                  << ")\n";
    }
    std::cout << "Total: " << order.total << ' ' << order.currency << '\n';
}

int main(int argc, char** argv) {
    const std::string path = argc > 1 ? argv[1] : "order-latin1.xml";
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        std::cerr << path << ": cannot read\n";
        return 2;
    }
    try {
        print(readOrder(in));
    } catch (const QzXmlParseError& e) {
        std::cerr << path << ':' << e.getLine() << ':' << e.getColumn() << ": " << e.what() << '\n';
        return 2;
    }
}
