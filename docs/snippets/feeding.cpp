// Reading a stream a chunk at a time, and reading input as it arrives.
#include <QzXmlFeedReader.h>
#include <QzXmlReader.h>

#include <iostream>
#include <sstream>
#include <string>

int main() {
    // From a stream, in memory bounded by the largest node: 8 bytes at a time here.
    std::istringstream file("<log><entry n='1'>started</entry><entry n='2'>done</entry></log>");
    QzXmlReaderOptions options;
    options.chunkSize = 8;
    QzXmlReader streamed(file, options);
    while (!streamed.eof()) {
        streamed.readNextNode();
        if (streamed.getNodeType() == QzXmlReader::Content)
            std::cout << "streamed: " << streamed.getValue() << '\n';
    }

    // Fed by the caller, as pieces come off a socket: next() never waits for input.
    const std::string pieces[] = {"<msg><to>Ann", "a</to><body>Hi", " there</bo", "dy></msg>"};
    QzXmlFeedReader fed;
    std::size_t next = 0;
    for (;;) {
        const QzXmlFeedReader::Result result = fed.next();
        if (result == QzXmlFeedReader::Result::End) break;
        if (result == QzXmlFeedReader::Result::NeedInput) {
            std::cout << "(needs input)\n";
            if (next < 4) {
                fed.feed(pieces[next].data(), pieces[next].size());
                ++next;
            } else {
                fed.finish();
            }
        } else if (fed.getNodeType() == QzXmlReader::StartTag) {
            std::cout << "fed: <" << fed.getCurrentName().asString() << ">\n";
        } else if (fed.getNodeType() == QzXmlReader::Content) {
            std::cout << "fed: " << fed.getValue() << '\n';
        }
    }
}
