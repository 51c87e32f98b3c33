#include "QzXmlLengthError.h"

#include "QzMessage.h"

QzXmlLengthError::QzXmlLengthError(const QzCString& msg)
    : QzXmlError(msg), std::length_error(msg.c_str()) {}

QzXmlLengthError::QzXmlLengthError(const QzMessage& msg)
    : QzXmlError(msg), std::length_error(msg.str()) {}

QzXmlLengthError::~QzXmlLengthError() = default;
