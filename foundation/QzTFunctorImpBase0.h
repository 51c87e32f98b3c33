#ifndef QZTFUNCTORIMPBASE0_H
#define QZTFUNCTORIMPBASE0_H

#include "QzBodyBase.h"

/// The counted body of a functor that takes no argument: subclasses supply run().
class QzTFunctorImpBase0 : public QzBodyBase {
public:
    /// Calls the wrapped callable.
    virtual void run() const = 0;
};

#endif
