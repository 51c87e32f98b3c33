// compareXml: the same elements, attributes and significant text, whatever the layout.
#include <QzXmlUtils.h>

#include <iostream>

void compare(const char* a, const char* b) {
    std::cout << (QzXmlUtils::compareXml(a, b) ? "same:      " : "different: ") << a << "  " << b
              << '\n';
}

int main() {
    compare("<a x='1' y='2'><b>1</b></a>", "<a y=\"2\" x=\"1\">\n  <b>1</b>\n</a>");
    compare("<a><b>1</b> tail</a>", "<a><b>1</b> other tail</a>");
    compare("<a><b>1</b> tail</a>", "<a><b>1</b></a>");
    compare("<a><b> 1</b></a>", "<a><b>1</b></a>");
    compare("<a><b/></a>", "<a><b></b></a>");
    compare("<a><b/></a>", "<a><c></c></a>");
    compare("<a><b/></a>", "<a><b> </b></a>");
    compare("<a><b/></a>", "<a> <b/></a>");
    compare("<p:a xmlns:p='urn:x'/>", "<q:a xmlns:q='urn:x'/>");
}
