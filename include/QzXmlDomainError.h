#ifndef QZXMLDOMAINERROR_H
#define QZXMLDOMAINERROR_H

#include "QzXmlExport.h"

#include <stdexcept>

#include "QzXmlError.h"

/// Input outside the domain of an operation; the base of QzXmlParseError.
class QZXML_API QzXmlDomainError : public QzXmlError, public std::domain_error {
public:
    /// An error whose message (why() and what()) is the bytes of msg up to the first NUL.
    explicit QzXmlDomainError(const QzCString& msg);
    /// An error whose message (why() and what()) is the formatted text of msg.
    explicit QzXmlDomainError(const QzMessage& msg);
    ~QzXmlDomainError() override;
};

#endif
