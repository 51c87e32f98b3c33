// The event parser over arbitrary bytes, with a handler that checks that every end event
// closes the innermost start it saw and that the declaration comes first, once.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "FuzzCheck.h"
#include "QzBoundsErr.h"
#include "QzXmlContentHandler.h"
#include "QzXmlParseError.h"
#include "QzXmlSAXParser.h"

namespace {

class BalanceChecker : public QzXmlContentHandler {
public:
    void startElement(const QzXmlName& name, const QzXmlAttributeSet&) override {
        open_.push_back(name);
        ++events_;
    }
    void endElement(const QzXmlName& name) override {
        fuzzCheck(!open_.empty(), "an end event has a start");
        fuzzCheck(open_.back() == name, "an end event closes the innermost start");
        open_.pop_back();
        ++events_;
    }
    // An empty CDATA section is a character event with no text, so text is not checked.
    void characters(const QzCString&) override { ++events_; }
    void prolog(const QzXmlProlog&) override {
        fuzzCheck(events_ == 0, "the declaration comes first, once");
        ++events_;
    }

private:
    std::vector<QzXmlName> open_;
    std::size_t events_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    for (bool expand : {true, false}) {
        BalanceChecker checker;
        QzXmlSAXParser parser;
        parser.setContentHandler(&checker);
        parser.setExpandReferences(expand);
        try {
            parser.parse(QzCString(reinterpret_cast<const char*>(data), size));
        } catch (const QzXmlParseError&) {
        } catch (const QzBoundsErr&) {
        }
    }
    return 0;
}
