#include "QzXmlBadArgError.h"

#include "QzMessage.h"

QzXmlBadArgError::QzXmlBadArgError(const QzCString& msg)
    : QzXmlError(msg), std::invalid_argument(msg.c_str()) {}

QzXmlBadArgError::QzXmlBadArgError(const QzMessage& msg)
    : QzXmlError(msg), std::invalid_argument(msg.str()) {}

QzXmlBadArgError::~QzXmlBadArgError() = default;
