// Strict reading: a conforming XML 1.0 and Namespaces processor, with limits.
#include <QzXmlParseError.h>
#include <QzXmlReader.h>

#include <iostream>

void read(const char* document, const QzXmlReaderOptions& options) {
    try {
        QzXmlReader reader(document, options);
        while (!reader.eof())
            reader.readNextNode();
        std::cout << "well-formed:  " << document << '\n';
    } catch (const QzXmlParseError& e) {
        std::cout << "rejected " << e.getLine() << ':' << e.getColumn() << ": " << e.why() << '\n';
    }
}

int main() {
    QzXmlReaderOptions lenient;
    QzXmlReaderOptions strict;
    strict.strict = true;
    read("<a x='1' x='2'>&nbsp;</a>", lenient);
    read("<a x='1' x='2'>&nbsp;</a>", strict);
    read("<a>&nbsp;</a>", strict);
    read("<p:a/>", strict);
    read("<a><!-- x -- y --></a>", strict);
    read("<a/><!-- a comment after the root -->", strict);
    read("<!DOCTYPE a [<!ENTITY who 'world'>]><a>hello, &who;</a>", strict);
    strict.maxDepth = 2;
    read("<a><b><c/></b></a>", strict);
}
