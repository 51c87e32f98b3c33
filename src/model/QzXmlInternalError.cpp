#include "QzXmlInternalError.h"

#include "QzMessage.h"

QzXmlInternalError::QzXmlInternalError(const QzCString& msg)
    : QzXmlError(msg), std::logic_error(msg.c_str()) {}

QzXmlInternalError::QzXmlInternalError(const QzMessage& msg)
    : QzXmlError(msg), std::logic_error(msg.str()) {}

QzXmlInternalError::~QzXmlInternalError() = default;
