#ifndef QZBODYBASE_H
#define QZBODYBASE_H

#include "QzXmlExport.h"

#include <mutex>

/// Base of the bodies that counted handles (QzTPointer) share: a reference count guarded
/// by a mutex. A new body has no references.
class QZXML_API QzBodyBase {
public:
    virtual ~QzBodyBase();
    QzBodyBase(const QzBodyBase&) = delete;
    QzBodyBase& operator=(const QzBodyBase&) = delete;

    /// Adds one reference.
    void addReference();
    /// Drops one reference and returns how many remain.
    unsigned removeReference();
    /// The current number of references.
    unsigned references() const;

protected:
    QzBodyBase() = default;

private:
    mutable std::mutex mutex_;
    unsigned count_ = 0;
};

#endif
