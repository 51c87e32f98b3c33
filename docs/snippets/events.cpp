// The event parser calls a handler for the declaration, each tag and each run of text.
#include <QzXmlContentHandler.h>
#include <QzXmlName.h>
#include <QzXmlProlog.h>
#include <QzXmlSAXParser.h>

#include <iostream>

class Printer : public QzXmlContentHandler {
public:
    void prolog(const QzXmlProlog& prolog) override {
        std::cout << "prolog " << prolog.asString() << '\n';
    }
    void startElement(const QzXmlName& name, const QzXmlAttributeSet& attributes) override {
        std::cout << "start " << name.getUniqueName() << " (" << attributes.size()
                  << " attributes)\n";
    }
    void endElement(const QzXmlName& name) override {
        std::cout << "end " << name.getQualifiedName() << '\n';
    }
    void characters(const QzCString& text) override { std::cout << "text [" << text << "]\n"; }
};

int main() {
    Printer printer;
    QzXmlSAXParser parser;
    parser.setContentHandler(&printer);
    parser.parse(
        "<?xml version='1.0' standalone='yes'?>\n"
        "<list xmlns='urn:example:list' n='2'>\n"
        "  <item>a<!-- skipped -->b</item><item/>\n"
        "</list>\n");
}
