#ifndef QZTPOINTER_H
#define QZTPOINTER_H

#include "QzXmlExport.h"

#include <utility>

#include "QzInvalidPointerErr.h"
#include "QzMessage.h"
#include "qzfoundationmsg.h"

/// A counted handle to a body T derived from QzBodyBase. Copies share the body; the last
/// handle to let go destroys it. Dereferencing an empty handle throws QzInvalidPointerErr.
template <class T>
class QZXML_API QzTPointer {
public:
    /// The empty handle.
    QzTPointer() noexcept = default;
    /// Takes a reference to body (which may be null); a body with no references yet is
    /// thereby owned by the handles.
    explicit QzTPointer(T* body) : body_(body) { acquire(); }
    /// Another handle to the body of other.
    QzTPointer(const QzTPointer& other) : body_(other.body_) { acquire(); }
    /// Takes over the body of other, which becomes empty.
    QzTPointer(QzTPointer&& other) noexcept : body_(std::exchange(other.body_, nullptr)) {}
    /// Refers to the body of other, letting go of the current one.
    QzTPointer& operator=(QzTPointer other) noexcept {
        std::swap(body_, other.body_);
        return *this;
    }
    ~QzTPointer() { release(); }

    /// True when the handle refers to a body.
    bool isValid() const noexcept { return body_ != nullptr; }
    /// The body; throws QzInvalidPointerErr on an empty handle.
    T& operator*() const { return *validBody(); }
    /// The body; throws QzInvalidPointerErr on an empty handle.
    T* operator->() const { return validBody(); }

private:
    void acquire() {
        if (body_ != nullptr) body_->addReference();
    }
    void release() noexcept {
        if (body_ != nullptr && body_->removeReference() == 0) delete body_;
    }
    T* validBody() const {
        if (body_ == nullptr)
            throw QzInvalidPointerErr(QzMessage(&QZFOUNDATIONMSG_INVALID_POINTER));
        return body_;
    }

    T* body_ = nullptr;
};

#endif
