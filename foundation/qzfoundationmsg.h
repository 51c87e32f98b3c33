#ifndef QZFOUNDATIONMSG_H
#define QZFOUNDATIONMSG_H

/// @file
/// The foundation's message catalog records.

#include "QzXmlExport.h"

#include "QzCatMsg.h"

/// Catalog name of the foundation's own messages.
inline constexpr char QZFOUNDATIONNAME[] = "qzfoundation";

/// "Index %zu is out of bounds for a length of %zu": arguments index and length (size_t).
extern QZXML_API const QzCatMsg QZFOUNDATIONMSG_BOUNDS;
/// The operation is not defined on an invalid date-time.
extern QZXML_API const QzCatMsg QZFOUNDATIONMSG_INVALID_DATETIME_OP;
/// A null counted pointer was dereferenced.
extern QZXML_API const QzCatMsg QZFOUNDATIONMSG_INVALID_POINTER;
/// "Cannot open converter for '%s': %s": arguments the encoding name and ICU's error name.
extern QZXML_API const QzCatMsg QZFOUNDATIONMSG_CONVERTER_OPEN;
/// "Conversion failed: %s": argument ICU's error name.
extern QZXML_API const QzCatMsg QZFOUNDATIONMSG_CONVERSION;
/// "Unknown locale '%s'": argument the locale name.
extern QZXML_API const QzCatMsg QZFOUNDATIONMSG_UNKNOWN_LOCALE;

#endif
