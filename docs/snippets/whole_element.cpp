// readElement returns a whole element as the raw text of the document.
#include <QzXmlReader.h>

#include <iostream>

int main() {
    QzXmlReader reader(
        QzCString("<feed>\n"
                  "  <entry id='1'>a &amp; <b>bold</b> b</entry>\n"
                  "  <entry id='2'/>\n"
                  "</feed>"));
    reader.readElementStart("feed");
    std::cout << '[' << reader.readElement("entry") << "]\n";
    std::cout << "inner text: [" << reader.getValue() << "]\n";
    if (reader.isElementNext(QzXmlName("entry"))) {  // reads the start tag ahead
        std::cout << '[' << reader.readElement("entry") << "]\n";
    }
    std::cout << "next: [" << reader.readElement() << "] pending: " << reader.isNodePending()
              << '\n';
    reader.readElementEnd("feed");
}
