// expat, namespace-aware: names arrive as URI, separator, local name.

#include <expat.h>

#include <cstring>

#include "Workload.h"

namespace {

constexpr char Separator = '\n';

// A namespace URI cannot hold a line feed, so the first one ends the URI.
std::uint64_t nameLength(const XML_Char* name) {
    const char* separator = std::strchr(name, Separator);
    return std::strlen(name) - (separator ? 1 : 0);
}

class ExpatWorkload : public Workload {
public:
    ~ExpatWorkload() override {
        if (parser_ != nullptr) XML_ParserFree(parser_);
    }

    void load(const Document& document) override { document_ = &document; }
    std::uint64_t run() override {
        sum_ = 0;
        for (const Document::Part& part : document_->parts()) {
            // Resetting keeps the parser's buffers for the next document.
            if (parser_ == nullptr) {
                parser_ = XML_ParserCreateNS(nullptr, Separator);
            } else {
                XML_ParserReset(parser_, nullptr);
            }
            XML_SetUserData(parser_, &sum_);
            XML_SetStartElementHandler(parser_, startElement);
            XML_SetCharacterDataHandler(parser_, characters);
            XML_SetStartNamespaceDeclHandler(parser_, namespaceDeclaration);
            XML_Parse(parser_, document_->data() + part.offset, static_cast<int>(part.size), 1);
        }
        return sum_;
    }

private:
    static std::uint64_t& sum(void* data) { return *static_cast<std::uint64_t*>(data); }

    static void XMLCALL startElement(void* data, const XML_Char* name,
                                     const XML_Char** attributes) {
        std::uint64_t total = nameLength(name);
        for (; *attributes != nullptr; attributes += 2) {
            total += nameLength(attributes[0]) + std::strlen(attributes[1]);
        }
        sum(data) += total;
    }
    static void XMLCALL characters(void* data, const XML_Char*, int length) {
        sum(data) += static_cast<std::uint64_t>(length);
    }
    static void XMLCALL namespaceDeclaration(void* data, const XML_Char* prefix,
                                             const XML_Char* uri) {
        sum(data) += (prefix ? std::strlen(prefix) : 0) + (uri ? std::strlen(uri) : 0);
    }

    const Document* document_ = nullptr;
    XML_Parser parser_ = nullptr;
    std::uint64_t sum_ = 0;
};

}  // namespace

std::vector<WorkloadEntry> expatWorkloads() {
    return {makeEntry<ExpatWorkload>("expat", "expat")};
}
