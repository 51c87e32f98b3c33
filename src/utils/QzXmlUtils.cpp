#include "QzXmlUtils.h"

// Built at load time in this order; read-only afterwards.
const QzCString QzXmlUtils::Blank(" ");
const QzCString QzXmlUtils::Newline("\n");
const QzCString QzXmlUtils::Tab("\t");
const QzCString QzXmlUtils::WhiteSpace(" \n\t");
const QzCString QzXmlUtils::EmptyString;
const QzCString QzXmlUtils::Hypen("-");
const QzCString QzXmlUtils::Hyphen("-");
const QzCString QzXmlUtils::Colon(":");
const QzCString QzXmlUtils::Plus("+");
const QzCString QzXmlUtils::Minus("-");
const QzCString QzXmlUtils::TimeSeparator("T");
const QzCString QzXmlUtils::UTimeZone("Z");
const QzCString QzXmlUtils::TZD("Z+-");
const QzCString QzXmlUtils::ISO8601Format("%Y-%m-%dT%X");
const QzCString QzXmlUtils::ISO8601Date("%Y-%m-%d");
const QzCString QzXmlUtils::ISO8601Time("%X");
