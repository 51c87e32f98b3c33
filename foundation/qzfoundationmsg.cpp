#include "qzfoundationmsg.h"

const QzCatMsg QZFOUNDATIONMSG_BOUNDS = {QZFOUNDATIONNAME, 0x100,
                                         "Index %zu is out of bounds for a length of %zu"};
const QzCatMsg QZFOUNDATIONMSG_INVALID_DATETIME_OP = {
    QZFOUNDATIONNAME, 0x101, "Operation not defined on an invalid date-time"};
const QzCatMsg QZFOUNDATIONMSG_INVALID_POINTER = {QZFOUNDATIONNAME, 0x102,
                                                  "Null counted pointer dereferenced"};
const QzCatMsg QZFOUNDATIONMSG_CONVERTER_OPEN = {QZFOUNDATIONNAME, 0x103,
                                                 "Cannot open converter for '%s': %s"};
const QzCatMsg QZFOUNDATIONMSG_CONVERSION = {QZFOUNDATIONNAME, 0x104, "Conversion failed: %s"};
const QzCatMsg QZFOUNDATIONMSG_UNKNOWN_LOCALE = {QZFOUNDATIONNAME, 0x105, "Unknown locale '%s'"};
