#ifndef QZXMLLENGTHERROR_H
#define QZXMLLENGTHERROR_H

#include "QzXmlExport.h"

#include <stdexcept>

#include "QzXmlError.h"

/// A length beyond what an operation supports.
class QZXML_API QzXmlLengthError : public QzXmlError, public std::length_error {
public:
    /// An error whose message (why() and what()) is the bytes of msg up to the first NUL.
    explicit QzXmlLengthError(const QzCString& msg);
    /// An error whose message (why() and what()) is the formatted text of msg.
    explicit QzXmlLengthError(const QzMessage& msg);
    ~QzXmlLengthError() override;
};

#endif
