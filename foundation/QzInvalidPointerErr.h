#ifndef QZINVALIDPOINTERERR_H
#define QZINVALIDPOINTERERR_H

#include "QzXmlExport.h"

#include "Qzxmsg.h"

/// Raised when an empty counted handle is dereferenced.
class QZXML_API QzInvalidPointerErr : public Qzxmsg {
public:
    using Qzxmsg::Qzxmsg;
    ~QzInvalidPointerErr() override;
    [[noreturn]] void raise() const override;
};

#endif
