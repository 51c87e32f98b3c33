#include "QzXmlProlog.h"

#include "QzXmlUtils.h"

namespace {

// Appends name="value".
void appendPseudoAttribute(QzCString& text, const char* name, const QzCString& value) {
    text += name;
    text += "=\"";
    text += value;
    text += '"';
}

}  // namespace

QzXmlProlog::QzXmlProlog() : version_("1.0") {}

QzXmlProlog::~QzXmlProlog() = default;

QzCString QzXmlProlog::asString() const {
    QzCString text("<?xml ");
    appendPseudoAttribute(text, "version", version_);
    if (hasEncoding_) {
        text += QzXmlUtils::Blank;
        appendPseudoAttribute(text, "encoding", encoding_);
    }
    if (hasStandalone_) {
        text += QzXmlUtils::Blank;
        appendPseudoAttribute(text, "standalone", standalone_ ? "yes" : "no");
    }
    text += "?>";
    return text;
}

bool operator==(const QzXmlProlog& a, const QzXmlProlog& b) {
    return a.getVersion() == b.getVersion() && a.getEncoding() == b.getEncoding() &&
           a.hasEncoding() == b.hasEncoding() && a.isStandalone() == b.isStandalone() &&
           a.hasStandalone() == b.hasStandalone();
}

bool operator!=(const QzXmlProlog& a, const QzXmlProlog& b) {
    return !(a == b);
}
