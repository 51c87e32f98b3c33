// Counts the elements of a feed with the event parser: no tree is built, the handler sees
// each element as the parser reaches it.
// Usage: count_feed FILE           counts the elements of a file
//        count_feed --generate N  counts those of a feed of N entries made in memory
#include <QzXmlContentHandler.h>
#include <QzXmlName.h>
#include <QzXmlParseError.h>
#include <QzXmlSAXParser.h>

#include <fstream>
#include <iostream>
#include <map>
#include <string>

class ElementCounter : public QzXmlContentHandler {
public:
    void startElement(const QzXmlName& name, const QzXmlAttributeSet&) override {
        ++counts_[name.getUniqueName().std()];
        if (++depth_ > maxDepth_) maxDepth_ = depth_;
    }
    void endElement(const QzXmlName&) override { --depth_; }
    void characters(const QzCString& text) override { textBytes_ += text.length(); }

    void report() const {
        for (const auto& [name, count] : counts_)
            std::cout << count << '\t' << name << '\n';
        std::cout << "deepest nesting: " << maxDepth_ << ", text bytes: " << textBytes_ << '\n';
    }

private:
    std::map<std::string, long> counts_;  // by URI::local name
    int depth_ = 0;
    int maxDepth_ = 0;
    long textBytes_ = 0;
};

QzCString generatedFeed(long entries) {
    std::string feed = "<feed xmlns='http://www.w3.org/2005/Atom'>\n";
    for (long i = 0; i < entries; ++i) {
        feed += "  <entry><id>urn:entry:" + std::to_string(i) + "</id><title>Entry " +
                std::to_string(i) + "</title><link href='https://example.org/" + std::to_string(i) +
                "'/></entry>\n";
    }
    return QzCString(feed + "</feed>\n");
}

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "usage: count_feed FILE | count_feed --generate N\n";
        return 2;
    }
    const std::string arg = argv[1];
    QzCString document;
    if (arg == "--generate" && argc > 2) {
        document = generatedFeed(std::stol(argv[2]));
    } else {
        std::ifstream in(arg, std::ios::binary);
        if (!in) {
            std::cerr << arg << ": cannot read\n";
            return 2;
        }
        document.readFile(in);
    }
    ElementCounter counter;
    QzXmlSAXParser parser;
    parser.setContentHandler(&counter);
    try {
        parser.parse(document);
    } catch (const QzXmlParseError& e) {
        std::cerr << arg << ':' << e.getLine() << ':' << e.getColumn() << ": " << e.what() << '\n';
        return 2;
    }
    counter.report();
}
