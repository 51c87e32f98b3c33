#ifndef QZXMLINTERNALERROR_H
#define QZXMLINTERNALERROR_H

#include "QzXmlExport.h"

#include <stdexcept>

#include "QzXmlError.h"

/// A broken internal invariant or misuse of the library. Its standard base is std::logic_error
/// itself, so no narrower standard handler catches it.
class QZXML_API QzXmlInternalError : public QzXmlError, public std::logic_error {
public:
    /// An error whose message (why() and what()) is the bytes of msg up to the first NUL.
    explicit QzXmlInternalError(const QzCString& msg);
    /// An error whose message (why() and what()) is the formatted text of msg.
    explicit QzXmlInternalError(const QzMessage& msg);
    ~QzXmlInternalError() override;
};

#endif
