#include "QzBoundsErr.h"

#include "QzMessage.h"
#include "qzfoundationmsg.h"

QzBoundsErr::~QzBoundsErr() = default;

void QzBoundsErr::raise() const {
    throw *this;
}

void throwBoundsErr(std::size_t index, std::size_t length) {
    throw QzBoundsErr(QzMessage(&QZFOUNDATIONMSG_BOUNDS, index, length));
}
