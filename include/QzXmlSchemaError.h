#ifndef QZXMLSCHEMAERROR_H
#define QZXMLSCHEMAERROR_H

#include "QzXmlExport.h"

#include <stdexcept>

#include "QzXmlError.h"

/// Content that breaks a schema's rules. Its standard base is std::logic_error itself, so no
/// narrower standard handler catches it.
class QZXML_API QzXmlSchemaError : public QzXmlError, public std::logic_error {
public:
    /// An error whose message (why() and what()) is the bytes of msg up to the first NUL.
    explicit QzXmlSchemaError(const QzCString& msg);
    /// An error whose message (why() and what()) is the formatted text of msg.
    explicit QzXmlSchemaError(const QzMessage& msg);
    ~QzXmlSchemaError() override;
};

#endif
