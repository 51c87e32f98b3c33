#include "velmoramsg.h"

const QzCatMsg QZVELMORAMSG_BOUNDED_ARRAY = {QZVELMORANAME, 0x7101,
                                             "[BOUNDED_ARRAY][Array is bounded]"};
const QzCatMsg QZVELMORAMSG_PARSING_ERROR = {
    QZVELMORANAME, 0x7102,
    "[PARSING_ERROR][A parse error occurred while parsing the XML document]"};
const QzCatMsg QZVELMORAMSG_INVALID_DATETIME_FORMAT = {
    QZVELMORANAME, 0x7103,
    "[INVALID_DATETIME_FORMAT] Allowed datetime or date or time format MUST confirm to ISO8601"};

const QzCatMsg* qzvelmora_BOUNDED_ARRAY() {
    return &QZVELMORAMSG_BOUNDED_ARRAY;
}

const QzCatMsg* qzvelmora_PARSING_ERROR() {
    return &QZVELMORAMSG_PARSING_ERROR;
}

const QzCatMsg* qzvelmora_INVALID_DATETIME_FORMAT() {
    return &QZVELMORAMSG_INVALID_DATETIME_FORMAT;
}
