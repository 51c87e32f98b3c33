// compareDocuments: what the documents say, and where the first difference lies.
#include <QzXmlUtils.h>

#include <iostream>

void compare(const char* a, const char* b, const QzXmlCompareOptions& options = {}) {
    const QzXmlComparison c = QzXmlUtils::compareDocuments(a, b, options);
    if (c.equal) {
        std::cout << "equal\n";
        return;
    }
    std::cout << c.message << "\n  first:  " << c.first.line << ':' << c.first.column << ' '
              << c.first.path << "\n  second: " << c.second.line << ':' << c.second.column << ' '
              << c.second.path << '\n';
}

int main() {
    compare("<p:a xmlns:p='urn:x' k='1' j='2'>\n  <p:b/>\n</p:a>",
            "<a xmlns='urn:x' j='2' k='1'><b></b></a>");
    compare("<a><b>1</b><b>2</b></a>", "<a>\n  <b>1</b>\n  <b>3</b>\n</a>");
    compare("<a><b id='7'/></a>", "<a><b/><c/></a>");
    compare("<a><b/><c/></a>", "<a><b/></a>");
    QzXmlCompareOptions strictText;
    strictText.ignoreWhitespaceText = false;
    compare("<a>\n  <b/>\n</a>", "<a><b/></a>", strictText);
    QzXmlCompareOptions withComments;
    withComments.compareComments = true;
    compare("<a><!-- v1 --><b/></a>", "<a><!-- v2 --><b/></a>", withComments);
}
