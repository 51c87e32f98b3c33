#ifndef QZUTOUNICODECONVERTER_H
#define QZUTOUNICODECONVERTER_H

#include "QzXmlExport.h"

#include "QzUConverterBase.h"

/// Converter from a named byte encoding into UTF-16.
class QZXML_API QzUToUnicodeConverter : public QzUConverterBase {
public:
    /// Opens encodingName for decoding; throws Qzxmsg when ICU does not know it.
    explicit QzUToUnicodeConverter(const char* encodingName);
};

#endif
