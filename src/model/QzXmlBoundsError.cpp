#include "QzXmlBoundsError.h"

#include "QzMessage.h"

QzXmlBoundsError::QzXmlBoundsError(const QzCString& msg)
    : QzXmlError(msg), std::out_of_range(msg.c_str()) {}

QzXmlBoundsError::QzXmlBoundsError(const QzMessage& msg)
    : QzXmlError(msg), std::out_of_range(msg.str()) {}

QzXmlBoundsError::~QzXmlBoundsError() = default;
