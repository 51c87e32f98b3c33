// What the reader detects: a byte-order mark, the first bytes, or the XML declaration.
#include <QzXmlReader.h>
#include <QzXmlUtils.h>

#include <iostream>

void show(const QzCString& document) {
    QzXmlReader reader(document);
    reader.readElementStart();
    std::cout << reader.getEncodingName() << ": " << reader.readElementValue() << '\n';
}

int main() {
    show("<a>caf\xC3\xA9</a>");              // no declaration: UTF-8
    show("\xEF\xBB\xBF<a>caf\xC3\xA9</a>");  // UTF-8 byte-order mark
    show("<?xml version='1.0' encoding='ISO-8859-1'?><a>caf\xE9</a>");
    show("<?xml version='1.0' encoding='windows-1252'?><a>\x80 5</a>");  // through ICU
    const QzCString utf16 = QzXmlUtils::convertCharset("<a>caf\xC3\xA9</a>", "UTF-8", "UTF-16LE");
    show(QzCString("\xFF\xFE", 2) + utf16);  // UTF-16 little-endian byte-order mark
    show("<?xml version='1.0' encoding='utf-8'?><a>caf\xC3\xA9</a>");  // the name as declared
}
