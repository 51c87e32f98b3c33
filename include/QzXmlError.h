#ifndef QZXMLERROR_H
#define QZXMLERROR_H

#include "QzXmlExport.h"

#include "QzCString.h"
#include "Qzxmsg.h"

class QzMessage;

/// Root of the library's exceptions. It is a Qzxmsg, so foundation code catches it by why();
/// each subclass adds a standard-library base for code that catches by what().
/// No class of the family overrides raise(): raise() throws a plain Qzxmsg copy.
class QZXML_API QzXmlError : public Qzxmsg {
public:
    /// An error whose message is the bytes of msg up to the first NUL.
    explicit QzXmlError(const QzCString& msg);
    /// An error whose message is the formatted text of msg.
    explicit QzXmlError(const QzMessage& msg);
    ~QzXmlError() override;
};

#endif
