#include "EventPrinter.h"

#include <iostream>
#include <string>

namespace {

// A text on one line: quotes, backslashes and control bytes escaped, other bytes as they are.
std::string quoted(const QzCString& text) {
    static const char kHex[] = "0123456789abcdef";
    std::string out = "\"";
    for (const char c : text.std()) {
        const auto b = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            out += '\\';
            out += c;
        } else if (c == '\n') {
            out += "\\n";
        } else if (c == '\t') {
            out += "\\t";
        } else if (c == '\r') {
            out += "\\r";
        } else if (b < 0x20) {
            out += "\\x";
            out += kHex[b >> 4];
            out += kHex[b & 15];
        } else {
            out += c;
        }
    }
    return out + '"';
}

// "{uri}local" when the name has a namespace URI, else the qualified name as written.
std::string describe(const QzXmlName& name) {
    if (name.getURI().empty()) return name.getQualifiedName().std();
    return "{" + name.getURI().std() + "}" + name.getLocalName().std();
}

}  // namespace

void EventPrinter::prolog(const QzXmlProlog& prolog) {
    std::cout << "prolog version=" << quoted(prolog.getVersion());
    if (prolog.hasEncoding()) std::cout << " encoding=" << quoted(prolog.getEncoding());
    if (prolog.hasStandalone())
        std::cout << " standalone=" << (prolog.isStandalone() ? "yes" : "no");
    std::cout << '\n';
}

void EventPrinter::startElement(const QzXmlName& name, const QzXmlAttributeSet& attributes) {
    std::cout << "start " << describe(name);
    for (const QzXmlAttribute& attribute : attributes) {
        std::cout << ' ' << describe(attribute.getName()) << '=' << quoted(attribute.getValue());
    }
    std::cout << '\n';
}

void EventPrinter::endElement(const QzXmlName& name) {
    std::cout << "end " << describe(name) << '\n';
}

void EventPrinter::characters(const QzCString& text) {
    std::cout << "text " << quoted(text) << '\n';
}
