#ifndef QZXMLPROLOG_H
#define QZXMLPROLOG_H

/// @file
/// QzXmlProlog and its comparison operators.

#include "QzXmlExport.h"

#include "QzCString.h"

/// What an XML declaration says: version, encoding and standalone, with flags telling which
/// optional parts are present. The fields are independent: a value is kept while its flag is
/// false, and each setter changes its own field only.
class QZXML_API QzXmlProlog {
public:
    /// Version "1.0", empty encoding, all flags false.
    QzXmlProlog();
    /// A copy of all five fields.
    QzXmlProlog(const QzXmlProlog&) = default;
    /// Assigns all five fields.
    QzXmlProlog& operator=(const QzXmlProlog&) = default;
    virtual ~QzXmlProlog();

    /// The version text.
    const QzCString& getVersion() const noexcept { return version_; }
    /// Replaces the version text.
    void setVersion(const QzCString& version) { version_ = version; }
    /// The encoding text (kept even when hasEncoding() is false).
    const QzCString& getEncoding() const noexcept { return encoding_; }
    /// Replaces the encoding text; hasEncoding() is unchanged.
    void setEncoding(const QzCString& encoding) { encoding_ = encoding; }
    /// True when the declaration has an encoding part.
    bool hasEncoding() const noexcept { return hasEncoding_; }
    /// Sets whether the declaration has an encoding part.
    void setHasEncoding(bool hasEncoding) noexcept { hasEncoding_ = hasEncoding; }
    /// True for standalone="yes", false for "no" (kept even when hasStandalone() is false).
    bool isStandalone() const noexcept { return standalone_; }
    /// Sets the standalone value; hasStandalone() is unchanged.
    void setStandalone(bool standalone) noexcept { standalone_ = standalone; }
    /// True when the declaration has a standalone part.
    bool hasStandalone() const noexcept { return hasStandalone_; }
    /// Sets whether the declaration has a standalone part.
    void setHasStandalone(bool hasStandalone) noexcept { hasStandalone_ = hasStandalone; }

    /// The declaration text, e.g. <?xml version="1.0" encoding="UTF-8" standalone="yes"?>,
    /// with only the parts whose flag is set, values unescaped, no line break.
    QzCString asString() const;

private:
    QzCString version_;
    QzCString encoding_;
    bool hasEncoding_ = false;
    bool standalone_ = false;
    bool hasStandalone_ = false;
};

/// True when all five fields are equal as stored, so prologs that print alike may differ.
QZXML_API bool operator==(const QzXmlProlog& a, const QzXmlProlog& b);
/// The negation of ==.
QZXML_API bool operator!=(const QzXmlProlog& a, const QzXmlProlog& b);

#endif
