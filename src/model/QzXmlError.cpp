#include "QzXmlError.h"

QzXmlError::QzXmlError(const QzCString& msg) : Qzxmsg(msg.c_str()) {}

QzXmlError::QzXmlError(const QzMessage& msg) : Qzxmsg(msg) {}

QzXmlError::~QzXmlError() = default;
