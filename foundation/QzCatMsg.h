#ifndef QZCATMSG_H
#define QZCATMSG_H

#include "QzXmlExport.h"

#include <cstdint>

/// A static message-catalog record: catalog (domain) name, message identifier and the
/// default text used when no translation is found. Records are constant-initialised globals.
struct QZXML_API QzCatMsg {
    const char* catalog;      ///< the catalog (domain) name
    std::int32_t id;          ///< the message identifier within the catalog
    const char* defaultText;  ///< the text used when no translation is found
};

#endif
