#include "QzXmlNamespace.h"

// The well-known namespaces are function-local statics: built once on first use (thread-safe)
// and usable from other units' static initialisers, whatever the order of initialisation.

const QzXmlNamespace& QzXmlNamespace::getXmlns() {
    static const QzXmlNamespace xmlns("xmlns", "");
    return xmlns;
}

const QzXmlNamespace& QzXmlNamespace::getXsi() {
    static const QzXmlNamespace xsi("xsi", "http://www.w3.org/2001/XMLSchema-instance");
    return xsi;
}

const QzXmlNamespace& QzXmlNamespace::getXsd() {
    static const QzXmlNamespace xsd("xsd", "http://www.w3.org/2001/XMLSchema");
    return xsd;
}

const QzXmlNamespace& QzXmlNamespace::getEmptyNamespace() {
    static const QzXmlNamespace empty;
    return empty;
}

bool QzXmlNamespace::matchXmlns(const QzXmlNamespace& ns) {
    return ns.uri_ == getXmlns().uri_;
}

bool QzXmlNamespace::matchXsi(const QzXmlNamespace& ns) {
    if (ns.uri_ == getXsi().uri_) return true;
    static const QzCString xsi1999("http://www.w3.org/1999/XMLSchema-instance");
    return ns.uri_ == xsi1999;
}

bool QzXmlNamespace::matchXsd(const QzXmlNamespace& ns) {
    if (ns.uri_ == getXsd().uri_) return true;
    static const QzCString xsd1999("http://www.w3.org/1999/XMLSchema");
    return ns.uri_ == xsd1999;
}
