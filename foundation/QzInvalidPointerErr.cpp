#include "QzInvalidPointerErr.h"

QzInvalidPointerErr::~QzInvalidPointerErr() = default;

void QzInvalidPointerErr::raise() const {
    throw *this;
}
