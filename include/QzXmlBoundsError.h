#ifndef QZXMLBOUNDSERROR_H
#define QZXMLBOUNDSERROR_H

#include "QzXmlExport.h"

#include <stdexcept>

#include "QzXmlError.h"

/// An index or position outside the valid range.
class QZXML_API QzXmlBoundsError : public QzXmlError, public std::out_of_range {
public:
    /// An error whose message (why() and what()) is the bytes of msg up to the first NUL.
    explicit QzXmlBoundsError(const QzCString& msg);
    /// An error whose message (why() and what()) is the formatted text of msg.
    explicit QzXmlBoundsError(const QzMessage& msg);
    ~QzXmlBoundsError() override;
};

#endif
