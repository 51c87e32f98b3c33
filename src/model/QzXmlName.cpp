#include "QzXmlName.h"

namespace {

// Joins head, separator and local, or gives local alone when head is empty.
QzCString joinNonEmpty(const QzCString& head, const char* separator, const QzCString& local) {
    if (head.empty()) return local;
    QzCString joined(head);
    joined += separator;
    joined += local;
    return joined;
}

int sign(int value) {
    return (value > 0) - (value < 0);
}

}  // namespace

QzCString QzXmlName::getQualifiedName() const {
    return joinNonEmpty(getPrefix(), ":", localName_);
}

QzCString QzXmlName::getUniqueName() const {
    return joinNonEmpty(getURI(), "::", localName_);
}

int QzXmlName::compareTo(const QzXmlName& other) const {
    const int byLocalName = localName_.compareTo(other.localName_);
    if (byLocalName != 0) return sign(byLocalName);
    return sign(getURI().compareTo(other.getURI()));
}

bool operator==(const QzXmlName& a, const QzXmlName& b) {
    return a.getLocalName() == b.getLocalName() && a.getURI() == b.getURI();
}

bool operator!=(const QzXmlName& a, const QzXmlName& b) {
    return !(a == b);
}

bool operator<(const QzXmlName& a, const QzXmlName& b) {
    return a.compareTo(b) < 0;
}
