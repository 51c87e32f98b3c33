#include "QzXmlRangeError.h"

#include "QzMessage.h"

QzXmlRangeError::QzXmlRangeError(const QzCString& msg)
    : QzXmlError(msg), std::range_error(msg.c_str()) {}

QzXmlRangeError::QzXmlRangeError(const QzMessage& msg)
    : QzXmlError(msg), std::range_error(msg.str()) {}

QzXmlRangeError::~QzXmlRangeError() = default;
