#ifndef QZXMLBADARGERROR_H
#define QZXMLBADARGERROR_H

#include "QzXmlExport.h"

#include <stdexcept>

#include "QzXmlError.h"

/// An invalid argument, such as text that cannot be converted between character sets.
class QZXML_API QzXmlBadArgError : public QzXmlError, public std::invalid_argument {
public:
    /// An error whose message (why() and what()) is the bytes of msg up to the first NUL.
    explicit QzXmlBadArgError(const QzCString& msg);
    /// An error whose message (why() and what()) is the formatted text of msg.
    explicit QzXmlBadArgError(const QzMessage& msg);
    ~QzXmlBadArgError() override;
};

#endif
