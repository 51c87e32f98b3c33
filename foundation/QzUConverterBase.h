#ifndef QZUCONVERTERBASE_H
#define QZUCONVERTERBASE_H

#include "QzXmlExport.h"

struct UConverter;

/// Owns one ICU converter opened by encoding name; closes it (ucnv_close) on destruction.
/// Conversions stop at the first illegal or unmappable character rather than substitute.
class QZXML_API QzUConverterBase {
public:
    /// Opens the converter named encodingName; throws Qzxmsg when ICU does not know it.
    explicit QzUConverterBase(const char* encodingName);
    virtual ~QzUConverterBase();
    QzUConverterBase(const QzUConverterBase&) = delete;
    QzUConverterBase& operator=(const QzUConverterBase&) = delete;

    /// The ICU converter, for the conversion routines.
    UConverter* handle() const noexcept { return converter_; }

private:
    UConverter* converter_;
};

#endif
