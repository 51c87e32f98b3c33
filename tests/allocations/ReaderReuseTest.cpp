// Readers made one after another in a thread reuse the storage the last one left: reading a
// small message allocates nothing once the first few are read. Its own program, since it
// counts every allocation the process makes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <string>

#include "QzXmlReader.h"

namespace {

thread_local long allocations = 0;

}  // namespace

void* operator new(std::size_t size) {
    ++allocations;
    if (void* p = std::malloc(size != 0 ? size : 1)) return p;
    throw std::bad_alloc();
}

void operator delete(void* p) noexcept {
    std::free(p);
}

void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}

namespace {

const char* const kMessage =
    "<?xml version='1.0' encoding='UTF-8'?>\n"
    "<s:Envelope xmlns:s='http://www.w3.org/2003/05/soap-envelope'"
    " xmlns:wsa='http://www.w3.org/2005/08/addressing'>\n"
    " <s:Header><wsa:To s:mustUnderstand='1'>https://svc.example.com/orders</wsa:To></s:Header>\n"
    " <s:Body><o:Order xmlns:o='urn:example:orders' o:version='2' id='C1'>\n"
    "  <o:Item sku='A-1' qty='3'>Tea &amp; cake</o:Item><o:Note>first\r\nsecond</o:Note>\n"
    " </o:Order></s:Body>\n"
    "</s:Envelope>\n";

// Allocations made constructing, walking (through views) and destroying one reader.
long allocationsOfOneMessage(const QzXmlReaderOptions& options) {
    std::string copy(kMessage);
    const long before = allocations;
    {
        QzXmlReader reader(reinterpret_cast<unsigned char*>(copy.data()), copy.size(), options);
        std::size_t sum = 0;
        while (!reader.eof()) {
            reader.readNextNode();
            sum += reader.getNodeView().text().size() + reader.getNodeView().attributeCount();
        }
        EXPECT_GT(sum, 0u);
    }
    return allocations - before;
}

}  // namespace

TEST(ReaderReuse, SmallMessagesAllocateNothingOnceWarm) {
    for (const bool strict : {false, true}) {
        QzXmlReaderOptions options;
        options.strict = strict;
        EXPECT_GT(allocationsOfOneMessage(options), 0) << "the first reader of the thread";
        for (int i = 0; i < 3; ++i)
            allocationsOfOneMessage(options);
        EXPECT_EQ(allocationsOfOneMessage(options), 0) << (strict ? "strict" : "lenient");
    }
}
