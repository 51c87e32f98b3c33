// Reads one document with libxml2 and with the strict reader into the same normalized events,
// so that the two can be compared: start (URI, local name, attributes sorted by URI and local
// name, namespace declarations left out), end, and text (adjacent text, CDATA sections and
// whitespace merged; comments and processing instructions dropped). Shared by the libxml2
// test and the fuzz_strict target.
#ifndef QZXML_STRICTORACLE_H
#define QZXML_STRICTORACLE_H

#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/tree.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "QzXmlParseError.h"
#include "QzXmlReader.h"
#include "QzXmlReaderOptions.h"

namespace strict_oracle {

// Bytes outside printable ASCII as \xNN, so that events print on one line.
inline std::string quote(const std::string& s) {
    std::string out = "\"";
    for (unsigned char c : s) {
        if (c == '"' || c == '\\') {
            out += '\\';
            out += static_cast<char>(c);
        } else if (c < 0x20 || c == 0x7f) {
            char hex[5];
            std::snprintf(hex, sizeof hex, "\\x%02x", c);
            out += hex;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out + "\"";
}

struct Attribute {
    std::string uri, local, value;
    bool operator<(const Attribute& o) const {
        return std::tie(uri, local, value) < std::tie(o.uri, o.local, o.value);
    }
};

// Builds the normalized events, one line each.
class Events {
public:
    void start(const std::string& uri, const std::string& local, std::vector<Attribute> attrs) {
        flush();
        std::sort(attrs.begin(), attrs.end());
        std::string line = "start {" + uri + "}" + local;
        for (const Attribute& a : attrs)
            line += " {" + a.uri + "}" + a.local + "=" + quote(a.value);
        lines_.push_back(line);
        ++depth_;
    }
    void end() {
        flush();
        lines_.push_back("end");
        --depth_;
    }
    void text(const std::string& s) { text_ += s; }
    std::vector<std::string> finish() {
        flush();
        return std::move(lines_);
    }

private:
    void flush() {
        // Outside the root only whitespace is well-formed, and libxml2 does not report it.
        const bool blank = text_.find_first_not_of(" \t\r\n") == std::string::npos;
        if (!text_.empty() && !(depth_ == 0 && blank)) lines_.push_back("text " + quote(text_));
        text_.clear();
    }
    std::vector<std::string> lines_;
    std::string text_;
    int depth_ = 0;
};

struct Reading {
    bool accepted = false;
    std::string error;  ///< the first error, when rejected
    std::vector<std::string> events;
};

// libxml2's reading, with what it saw of a document type declaration.
struct OracleReading : Reading {
    std::vector<std::string> errors;  ///< the errors that reject, in order
    bool doctype = false;             ///< the document has a document type declaration
    bool undeclaredEntity = false;    ///< it references an entity nobody declared
    bool declaredEntity = false;      ///< the internal subset declares a general entity
    bool attributeDefault = false;    ///< ... an attribute default
    bool tokenizedAttribute = false;  ///< ... an attribute of a type other than CDATA
    bool fourthEditionName = false;   ///< libxml2 refused a name only the fifth edition allows
};

namespace detail {

struct Collector {
    OracleReading* reading;
};

inline Collector*& collector() {
    static thread_local Collector* current = nullptr;
    return current;
}

inline void ignore(void*, const char*, ...) {}

// Fatal errors break well-formedness; namespace errors, reported as plain errors, break
// namespace well-formedness. Other errors (an undeclared entity under an external subset,
// for one) and warnings do not reject.
inline void onError(void*, xmlErrorPtr error) {
    Collector* c = collector();
    if (c == nullptr || error == nullptr) return;
    if (error->code == XML_WAR_UNDECLARED_ENTITY || error->code == XML_ERR_UNDECLARED_ENTITY)
        c->reading->undeclaredEntity = true;
    // libxml2 also parses each namespace name as a URI; namespace well-formedness does not
    // ask for that, and strict mode does not check it.
    if (error->code == XML_WAR_NS_URI) return;
    // An attribute-list declaration's QName whose local part starts with a character outside
    // the fourth edition's letters (U+0370, U+FEFF, ...) stops libxml2, though the fifth
    // edition's NameStartChar admits it and elements and tags take the same names.
    if (error->code == XML_NS_ERR_QNAME && error->message &&
        std::any_of(error->message, error->message + std::strlen(error->message),
                    [](char ch) { return static_cast<unsigned char>(ch) >= 0x80; }))
        c->reading->fourthEditionName = true;
    const bool rejects = error->level == XML_ERR_FATAL ||
                         (error->level == XML_ERR_ERROR && error->domain == XML_FROM_NAMESPACE);
    if (!rejects) return;
    std::string message = error->message ? error->message : "";
    while (!message.empty() && message.back() == '\n')
        message.pop_back();
    c->reading->errors.push_back(message + " (line " + std::to_string(error->line) + ", code " +
                                 std::to_string(error->code) + ")");
}

// Called once the name and external identifier are read.
inline void onInternalSubset(void* ctx, const xmlChar* name, const xmlChar* publicId,
                             const xmlChar* systemId) {
    xmlSAX2InternalSubset(ctx, name, publicId, systemId);
    collector()->reading->doctype = true;
}

inline std::string str(const xmlChar* s) {
    return s ? reinterpret_cast<const char*>(s) : "";
}

// Text and CDATA as they are, a reference to an entity as written (entities are not
// substituted, and strict mode passes unknown ones through literally).
inline std::string textOf(const xmlNode* node) {
    if (node->type == XML_ENTITY_REF_NODE) return "&" + str(node->name) + ";";
    return str(node->content);
}

inline std::string valueOf(const xmlAttr* attribute) {
    std::string out;
    for (const xmlNode* n = attribute->children; n != nullptr; n = n->next)
        out += textOf(n);
    return out;
}

// Without entity substitution libxml2 keeps an "&" of a namespace declaration's value as
// "&#38;" in the namespace name (the value it reads is escaped for a later decoding that
// namespaces never get); with substitution the name is the value as decoded, and must not be
// decoded again.
inline std::string uriOf(const xmlNs* ns, bool escaped) {
    std::string uri = ns ? str(ns->href) : "";
    if (!escaped) return uri;
    for (std::size_t at = 0; (at = uri.find("&#38;", at)) != std::string::npos; ++at)
        uri.replace(at, 5, "&");
    return uri;
}

inline void walk(const xmlNode* node, Events& events, bool escaped) {
    for (; node != nullptr; node = node->next) {
        switch (node->type) {
            case XML_ELEMENT_NODE: {
                std::vector<Attribute> attrs;
                for (const xmlAttr* a = node->properties; a != nullptr; a = a->next)
                    attrs.push_back({uriOf(a->ns, escaped), str(a->name), valueOf(a)});
                events.start(uriOf(node->ns, escaped), str(node->name), attrs);
                walk(node->children, events, escaped);
                events.end();
                break;
            }
            case XML_TEXT_NODE:
            case XML_CDATA_SECTION_NODE:
            case XML_ENTITY_REF_NODE:
                events.text(textOf(node));
                break;
            default:
                break;
        }
    }
}

inline void readDeclarations(const xmlDtd* dtd, OracleReading& reading) {
    if (dtd == nullptr) return;
    for (const xmlNode* n = dtd->children; n != nullptr; n = n->next) {
        if (n->type == XML_ENTITY_DECL) {
            const auto* e = reinterpret_cast<const xmlEntity*>(n);
            if (e->etype != XML_INTERNAL_PARAMETER_ENTITY &&
                e->etype != XML_EXTERNAL_PARAMETER_ENTITY)
                reading.declaredEntity = true;
        } else if (n->type == XML_ATTRIBUTE_DECL) {
            const auto* a = reinterpret_cast<const xmlAttribute*>(n);
            if (a->defaultValue != nullptr) reading.attributeDefault = true;
            if (a->atype != XML_ATTRIBUTE_CDATA) reading.tokenizedAttribute = true;
        }
    }
}

inline void noExternalSubset(void*, const xmlChar*, const xmlChar*, const xmlChar*) {}

}  // namespace detail

// libxml2 without network access, entity substitution or attribute defaulting (unless
// expand: then with both, as the strict reader will read the internal subset; never with the
// external subset): well-formed only when it reports neither a well-formedness nor a
// namespace error.
inline OracleReading readWithLibxml2(const std::string& document, bool expand = false) {
    OracleReading reading;
    detail::Collector collector{&reading};
    detail::collector() = &collector;
    xmlSetStructuredErrorFunc(nullptr, detail::onError);
    xmlSetGenericErrorFunc(nullptr, detail::ignore);
    xmlParserCtxtPtr ctxt =
        xmlCreateMemoryParserCtxt(document.data(), static_cast<int>(document.size()));
    if (ctxt == nullptr) {
        reading.error = "libxml2 made no parser";
        detail::collector() = nullptr;
        return reading;
    }
    xmlCtxtUseOptions(
        ctxt, expand ? XML_PARSE_NONET | XML_PARSE_NOENT | XML_PARSE_DTDATTR : XML_PARSE_NONET);
    ctxt->sax->internalSubset = detail::onInternalSubset;
    ctxt->sax->externalSubset = detail::noExternalSubset;
    xmlParseDocument(ctxt);
    if (!ctxt->wellFormed && reading.errors.empty())
        reading.errors.push_back("not well-formed, without a message");
    // libxml2 takes a U+0000 for the end of its input and accepts what came before; the
    // character is never allowed.
    const xmlParserInput* in = ctxt->input;
    if (reading.errors.empty() && in != nullptr && in->cur < in->end && *in->cur == 0)
        reading.errors.push_back("U+0000, where libxml2 stopped reading");
    reading.accepted = reading.errors.empty();
    if (!reading.accepted) reading.error = reading.errors.front();
    if (ctxt->myDoc != nullptr) {
        detail::readDeclarations(ctxt->myDoc->intSubset, reading);
        if (reading.accepted) {
            Events events;
            detail::walk(ctxt->myDoc->children, events, !expand);
            reading.events = events.finish();
        }
        xmlFreeDoc(ctxt->myDoc);
    }
    xmlFreeParserCtxt(ctxt);
    detail::collector() = nullptr;
    return reading;
}

inline QzXmlReaderOptions strictOptions() {
    QzXmlReaderOptions options;
    options.strict = true;
    return options;
}

// The strict reader made by makeReader, walked to the end. Only QzXmlParseError is caught.
template <class MakeReader>
Reading readStrictWith(const MakeReader& makeReader) {
    Reading reading;
    Events events;
    try {
        std::unique_ptr<QzXmlReader> reader = makeReader();
        while (!reader->eof()) {
            reader->readNextNode();
            const int type = reader->getNodeType();
            if (type == QzXmlReader::StartTag || type == QzXmlReader::EmptyElement) {
                std::vector<Attribute> attrs;
                for (const QzXmlAttribute& a : reader->getCurrentAttributes()) {
                    const QzXmlName& n = a.getName();
                    const std::string prefix(n.getPrefix().data(), n.getPrefix().length());
                    const std::string local(n.getLocalName().data(), n.getLocalName().length());
                    if (prefix == "xmlns" || (prefix.empty() && local == "xmlns")) continue;
                    attrs.push_back({std::string(n.getURI().data(), n.getURI().length()), local,
                                     std::string(a.getValue().data(), a.getValue().length())});
                }
                const QzXmlName& name = reader->getCurrentName();
                events.start(std::string(name.getURI().data(), name.getURI().length()),
                             std::string(name.getLocalName().data(), name.getLocalName().length()),
                             attrs);
                if (type == QzXmlReader::EmptyElement) events.end();
            } else if (type == QzXmlReader::EndTag) {
                events.end();
            } else if (type == QzXmlReader::Content) {
                events.text(std::string(reader->getValue().data(), reader->getValue().length()));
            }
        }
        reading.accepted = true;
    } catch (const QzXmlParseError& e) {
        reading.error = std::string(QzCString(e.why()).data()) + " (" +
                        std::to_string(e.getLine()) + ":" + std::to_string(e.getColumn()) + ")";
    }
    reading.events = events.finish();
    return reading;
}

inline Reading readStrict(const std::string& document,
                          const QzXmlReaderOptions& options = strictOptions()) {
    return readStrictWith([&] {
        return std::make_unique<QzXmlReader>(QzCString(document.data(), document.size()), options);
    });
}

// The first event where a and b differ, as "index: a | b".
inline std::string firstDifference(const std::vector<std::string>& a,
                                   const std::vector<std::string>& b) {
    for (std::size_t i = 0; i < a.size() || i < b.size(); ++i) {
        const std::string x = i < a.size() ? a[i] : "(none)";
        const std::string y = i < b.size() ? b[i] : "(none)";
        if (x != y) return "event " + std::to_string(i) + ": libxml2 " + x + " | qzxml " + y;
    }
    return "";
}

}  // namespace strict_oracle

#endif
