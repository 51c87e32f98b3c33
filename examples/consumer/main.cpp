// Checks that the installed headers and library work from another project.
#include <QzXmlName.h>
#include <QzXmlNamespace.h>
#include <QzXmlUtils.h>

#include <iostream>

int main() {
    const QzXmlName name("order", QzXmlNamespace("o", "urn:example:orders"));
    const QzCString utf8 = QzXmlUtils::convertCharset("caf\xE9", "ISO-8859-1", "UTF-8");
    const QzDateTime when =
        QzXmlUtils::convertISODateStringToDateTime("2026-11-23T09:30:00,5+01:00");
    std::cout << name.getQualifiedName() << ' ' << name.getUniqueName() << ' ' << utf8 << ' '
              << QzXmlUtils::convertDateTimeToISOString(when, QzXmlUtils::ISO8601Format) << '\n';
    return utf8 == QzCString("caf\xC3\xA9") ? 0 : 1;
}
