#ifndef QZBOUNDSERR_H
#define QZBOUNDSERR_H

/// @file
/// QzBoundsErr and the function that throws it.

#include "QzXmlExport.h"

#include <cstddef>

#include "Qzxmsg.h"

/// An index at or past the end of a sequence.
class QZXML_API QzBoundsErr : public Qzxmsg {
public:
    using Qzxmsg::Qzxmsg;
    ~QzBoundsErr() override;
    [[noreturn]] void raise() const override;
};

/// Throws a QzBoundsErr naming the bad index and the length.
[[noreturn]] QZXML_API void throwBoundsErr(std::size_t index, std::size_t length);

#endif
