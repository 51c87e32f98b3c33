#include "QzXmlDomainError.h"

#include "QzMessage.h"

QzXmlDomainError::QzXmlDomainError(const QzCString& msg)
    : QzXmlError(msg), std::domain_error(msg.c_str()) {}

QzXmlDomainError::QzXmlDomainError(const QzMessage& msg)
    : QzXmlError(msg), std::domain_error(msg.str()) {}

QzXmlDomainError::~QzXmlDomainError() = default;
