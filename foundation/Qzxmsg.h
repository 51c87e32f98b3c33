#ifndef QZXMSG_H
#define QZXMSG_H

#include "QzXmlExport.h"

#include <string>

class QzMessage;

/// The root of the foundation's exceptions: carries one message text. It is deliberately
/// not a std::exception, so that classes may add a standard base of their own.
class QZXML_API Qzxmsg {
public:
    /// A copy of the NUL-terminated message.
    explicit Qzxmsg(const char* msg) : msg_(msg != nullptr ? msg : "") {}
    /// The formatted text of a catalog message.
    explicit Qzxmsg(const QzMessage& msg);
    virtual ~Qzxmsg();

    /// The message text.
    virtual const char* why() const { return msg_.c_str(); }
    /// Throws a copy of this object as its dynamic type (subclasses override to keep theirs).
    [[noreturn]] virtual void raise() const;

private:
    std::string msg_;
};

#endif
