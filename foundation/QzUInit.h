#ifndef QZUINIT_H
#define QZUINIT_H

#include "QzXmlExport.h"

/// Scope guard that makes sure the Unicode layer (ICU) is initialised while it lives.
/// Throws Qzxmsg when ICU cannot load its data.
class QZXML_API QzUInit {
public:
    QzUInit();
    /// Leaves ICU loaded: releasing it (u_cleanup) would break other ICU users in the process.
    ~QzUInit();
    QzUInit(const QzUInit&) = delete;
    QzUInit& operator=(const QzUInit&) = delete;
};

#endif
