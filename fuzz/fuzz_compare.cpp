// Document comparison over arbitrary bytes: the input split in two at a place its first byte
// chooses, the halves compared with each other and each with itself. A document that parses
// must compare equal to itself.
#include <cstddef>
#include <cstdint>

#include "FuzzCheck.h"
#include "QzBoundsErr.h"
#include "QzXmlParseError.h"
#include "QzXmlUtils.h"

namespace {

// Whether the comparison ran to a result; a parse or bounds error leaves result untouched.
bool compare(const QzCString& a, const QzCString& b, bool& result) {
    try {
        result = QzXmlUtils::compareXml(a, b);
        return true;
    } catch (const QzXmlParseError&) {
    } catch (const QzBoundsErr&) {
    }
    return false;
}

void checkSelf(const QzCString& text) {
    bool equal = false;
    if (compare(text, text, equal)) fuzzCheck(equal, "a document equals itself");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    const char* text = reinterpret_cast<const char*>(data + 1);
    const std::size_t rest = size - 1;
    const std::size_t split = rest == 0 ? 0 : data[0] * rest / 255;
    const QzCString first(text, split);
    const QzCString second(text + split, rest - split);
    bool equal = false;
    compare(first, second, equal);
    checkSelf(QzCString(reinterpret_cast<const char*>(data), size));
    checkSelf(first);
    checkSelf(second);
    return 0;
}
