#ifndef QZTFUNCTORIMPBASE0_H
#define QZTFUNCTORIMPBASE0_H

#include "QzXmlExport.h"

#include "QzBodyBase.h"

/// The counted body of a functor that takes no argument: subclasses supply run().
class QZXML_API QzTFunctorImpBase0 : public QzBodyBase {
public:
    /// Calls the wrapped callable.
    virtual void run() const = 0;
};

#endif
