// Xerces-C SAX2, namespace-aware, reading the document where it lies. It hands out UTF-16,
// so its sums count UTF-16 units and differ from the others on non-ASCII text.

#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/sax2/Attributes.hpp>
#include <xercesc/sax2/DefaultHandler.hpp>
#include <xercesc/sax2/SAX2XMLReader.hpp>
#include <xercesc/sax2/XMLReaderFactory.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/XMLString.hpp>

#include <memory>

#include "Workload.h"

namespace {

namespace xc = xercesc;

std::uint64_t length(const XMLCh* text) {
    return text ? xc::XMLString::stringLen(text) : 0;
}

class SumHandler : public xc::DefaultHandler {
public:
    void startElement(const XMLCh* uri, const XMLCh* localName, const XMLCh*,
                      const xc::Attributes& attributes) override {
        std::uint64_t total = length(uri) + length(localName);
        for (XMLSize_t i = 0; i < attributes.getLength(); ++i) {
            total += length(attributes.getLocalName(i)) + length(attributes.getURI(i)) +
                     length(attributes.getValue(i));
        }
        sum += total;
    }
    void characters(const XMLCh* const, const XMLSize_t length) override { sum += length; }
    void startPrefixMapping(const XMLCh* const prefix, const XMLCh* const uri) override {
        sum += length(prefix) + length(uri);
    }

    std::uint64_t sum = 0;
};

void initialiseXerces() {
    // Once per process; the library stays up until exit.
    static const bool initialised = [] {
        xc::XMLPlatformUtils::Initialize();
        return true;
    }();
    (void)initialised;
}

class XercesWorkload : public Workload {
public:
    void load(const Document& document) override {
        initialiseXerces();
        document_ = &document;
        parser_.reset(xc::XMLReaderFactory::createXMLReader());
        parser_->setFeature(xc::XMLUni::fgSAX2CoreNameSpaces, true);
        parser_->setFeature(xc::XMLUni::fgSAX2CoreNameSpacePrefixes, false);
        parser_->setFeature(xc::XMLUni::fgSAX2CoreValidation, false);
        parser_->setFeature(xc::XMLUni::fgXercesSchema, false);
        parser_->setFeature(xc::XMLUni::fgXercesLoadExternalDTD, false);
        parser_->setContentHandler(&handler_);
        parser_->setErrorHandler(&handler_);
    }
    std::uint64_t run() override {
        handler_.sum = 0;
        for (const Document::Part& part : document_->parts()) {
            // The input source refers to the document's bytes without copying them.
            xc::MemBufInputSource source(
                reinterpret_cast<const XMLByte*>(document_->data() + part.offset), part.size,
                "document", false);
            parser_->parse(source);
        }
        return handler_.sum;
    }

private:
    const Document* document_ = nullptr;
    SumHandler handler_;
    std::unique_ptr<xc::SAX2XMLReader> parser_;
};

}  // namespace

std::vector<WorkloadEntry> xercesWorkloads() {
    return {makeEntry<XercesWorkload>("xerces-sax2", "Xerces-C SAX2")};
}
