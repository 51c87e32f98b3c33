#include "QzInternalErr.h"

QzInternalErr::~QzInternalErr() = default;

void QzInternalErr::raise() const {
    throw *this;
}
