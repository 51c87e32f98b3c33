#ifndef QZTFUNCTOR_H
#define QZTFUNCTOR_H

#include "QzXmlExport.h"

#include "QzTFunctorImpBase0.h"
#include "QzTPointer.h"

/// A counted handle to a callable body; copies share the body.
class QZXML_API QzTFunctor : public QzTPointer<QzTFunctorImpBase0> {
public:
    /// The empty functor; calling it throws QzInvalidPointerErr.
    QzTFunctor() noexcept = default;
    /// A functor sharing body.
    explicit QzTFunctor(QzTFunctorImpBase0* body) : QzTPointer<QzTFunctorImpBase0>(body) {}

    /// Runs the body; throws QzInvalidPointerErr on an empty functor.
    void operator()() const { (**this).run(); }
};

#endif
