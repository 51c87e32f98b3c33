// Every syntax error is a QzXmlParseError with the line and column where it was found.
#include <QzXmlParseError.h>
#include <QzXmlReader.h>
#include <QzXmlSAXParser.h>

#include <iostream>
#include <stdexcept>

void check(const char* document) {
    try {
        QzXmlSAXParser().parse(document);  // no handler: reads and checks the whole document
        std::cout << "well-formed\n";
    } catch (const QzXmlParseError& e) {
        std::cout << e.getLine() << ':' << e.getColumn() << ": " << e.what() << '\n';
    }
}

int main() {
    check("");
    check("order");
    check("<order>\n  <total>12.50</totl>\n</order>");
    check("<order id=7/>");
    check("<order note='1 < 2'/>");
    check("<order>\n<!-- a -- b -->\n</order>");
    check("<order><1st/></order>");
    check("<order>&#xff;</order>");
    check("<order>12.50");
    try {
        QzXmlReader reader(QzCString("<order/>"));
        reader.readElementStart("invoice");
    } catch (const std::domain_error& e) {  // every parse error is a std::domain_error too
        std::cout << e.what() << '\n';
    }
}
