#ifndef QZINTERNALERR_H
#define QZINTERNALERR_H

#include "Qzxmsg.h"

/// Raised for an impossible state, such as arithmetic on an invalid date-time.
class QzInternalErr : public Qzxmsg {
public:
    using Qzxmsg::Qzxmsg;
    ~QzInternalErr() override;
    [[noreturn]] void raise() const override;
};

#endif
