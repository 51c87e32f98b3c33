#include "QzBodyBase.h"

QzBodyBase::~QzBodyBase() = default;

void QzBodyBase::addReference() {
    std::lock_guard<std::mutex> lock(mutex_);
    ++count_;
}

unsigned QzBodyBase::removeReference() {
    std::lock_guard<std::mutex> lock(mutex_);
    return --count_;
}

unsigned QzBodyBase::references() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return count_;
}
