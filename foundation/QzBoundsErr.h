#ifndef QZBOUNDSERR_H
#define QZBOUNDSERR_H

#include <cstddef>

#include "Qzxmsg.h"

/// An index at or past the end of a sequence.
class QzBoundsErr : public Qzxmsg {
public:
    using Qzxmsg::Qzxmsg;
    ~QzBoundsErr() override;
    [[noreturn]] void raise() const override;
};

/// Throws a QzBoundsErr naming the bad index and the length.
[[noreturn]] void throwBoundsErr(std::size_t index, std::size_t length);

#endif
