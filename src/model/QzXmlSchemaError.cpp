#include "QzXmlSchemaError.h"

#include "QzMessage.h"

QzXmlSchemaError::QzXmlSchemaError(const QzCString& msg)
    : QzXmlError(msg), std::logic_error(msg.c_str()) {}

QzXmlSchemaError::QzXmlSchemaError(const QzMessage& msg)
    : QzXmlError(msg), std::logic_error(msg.str()) {}

QzXmlSchemaError::~QzXmlSchemaError() = default;
