#ifndef QZINTERNALERR_H
#define QZINTERNALERR_H

#include "QzXmlExport.h"

#include "Qzxmsg.h"

/// Raised for an impossible state, such as arithmetic on an invalid date-time.
class QZXML_API QzInternalErr : public Qzxmsg {
public:
    using Qzxmsg::Qzxmsg;
    ~QzInternalErr() override;
    [[noreturn]] void raise() const override;
};

#endif
