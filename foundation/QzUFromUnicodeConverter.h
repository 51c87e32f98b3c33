#ifndef QZUFROMUNICODECONVERTER_H
#define QZUFROMUNICODECONVERTER_H

#include "QzXmlExport.h"

#include "QzUConverterBase.h"

/// Converter from UTF-16 into a named byte encoding.
class QZXML_API QzUFromUnicodeConverter : public QzUConverterBase {
public:
    /// Opens encodingName for encoding; throws Qzxmsg when ICU does not know it.
    explicit QzUFromUnicodeConverter(const char* encodingName);
};

#endif
