#ifndef QZUFROMUNICODECONVERTER_H
#define QZUFROMUNICODECONVERTER_H

#include "QzUConverterBase.h"

/// Converter from UTF-16 into a named byte encoding.
class QzUFromUnicodeConverter : public QzUConverterBase {
public:
    /// Opens encodingName for encoding; throws Qzxmsg when ICU does not know it.
    explicit QzUFromUnicodeConverter(const char* encodingName);
};

#endif
