#ifndef QZUSTRING_H
#define QZUSTRING_H

#include "QzXmlExport.h"

#include "QzBasicUString.h"
#include "QzCString.h"

class QzUToUnicodeConverter;
class QzUFromUnicodeConverter;

/// A UTF-16 string that can be decoded from and encoded to byte encodings through ICU.
class QZXML_API QzUString : public QzBasicUString {
public:
    QzUString() = default;
    /// Decodes bytes with the converter; throws Qzxmsg on an illegal or unmappable sequence.
    QzUString(const QzCString& bytes, QzUToUnicodeConverter& converter);

    /// Encodes count UTF-16 units with the converter; throws Qzxmsg on an unmappable one.
    static QzCString toBytes(const unsigned short* units, unsigned long count,
                             QzUFromUnicodeConverter& converter);
};

#endif
