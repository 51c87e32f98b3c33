#ifndef QZXMLRANGEERROR_H
#define QZXMLRANGEERROR_H

#include "QzXmlExport.h"

#include <stdexcept>

#include "QzXmlError.h"

/// A result that cannot be represented.
class QZXML_API QzXmlRangeError : public QzXmlError, public std::range_error {
public:
    /// An error whose message (why() and what()) is the bytes of msg up to the first NUL.
    explicit QzXmlRangeError(const QzCString& msg);
    /// An error whose message (why() and what()) is the formatted text of msg.
    explicit QzXmlRangeError(const QzMessage& msg);
    ~QzXmlRangeError() override;
};

#endif
