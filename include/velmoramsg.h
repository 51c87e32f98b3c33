#ifndef VELMORAMSG_H
#define VELMORAMSG_H

/// @file
/// The library's message catalog "velmora_": three records and their accessors.

#include "QzXmlExport.h"

#include "QzCatMsg.h"

/// Catalog name of the library's localisable messages.
inline constexpr char QZVELMORANAME[] = "velmora_";

/// 28929: "[BOUNDED_ARRAY][Array is bounded]".
extern QZXML_API const QzCatMsg QZVELMORAMSG_BOUNDED_ARRAY;
/// 28930: "[PARSING_ERROR][A parse error occurred while parsing the XML document]".
extern QZXML_API const QzCatMsg QZVELMORAMSG_PARSING_ERROR;
/// 28931: "[INVALID_DATETIME_FORMAT] Allowed datetime or date or time format MUST confirm to
/// ISO8601" (spelling kept: callers match on the text).
extern QZXML_API const QzCatMsg QZVELMORAMSG_INVALID_DATETIME_FORMAT;

/// The record QZVELMORAMSG_BOUNDED_ARRAY.
QZXML_API const QzCatMsg* qzvelmora_BOUNDED_ARRAY();
/// The record QZVELMORAMSG_PARSING_ERROR.
QZXML_API const QzCatMsg* qzvelmora_PARSING_ERROR();
/// The record QZVELMORAMSG_INVALID_DATETIME_FORMAT.
QZXML_API const QzCatMsg* qzvelmora_INVALID_DATETIME_FORMAT();

#endif
