// Converting bytes between any two character sets that ICU knows.
#include <QzXmlBadArgError.h>
#include <QzXmlUtils.h>

#include <cstdio>
#include <iostream>

int main() {
    const QzCString latin1("Fran\xE7ois");
    const QzCString utf8 = QzXmlUtils::convertCharset(latin1, "ISO-8859-1", "UTF-8");
    std::cout << utf8 << " (" << utf8.length() << " bytes)\n";

    const QzCString utf16 = QzXmlUtils::convertCharset(utf8, "UTF-8", "UTF-16BE");
    for (std::size_t i = 0; i < utf16.length(); ++i) {
        std::printf("%02X ", static_cast<unsigned char>(utf16[i]));
    }
    std::printf("\n");
    std::fflush(stdout);

    try {
        QzXmlUtils::convertCharset(utf8, "UTF-8", "no-such-charset");
    } catch (const QzXmlBadArgError& e) {
        std::cout << e.what() << '\n';
    }
}
