#ifndef QZLOCALE_H
#define QZLOCALE_H

#include "QzXmlExport.h"

#include <locale.h>

/// An abstract locale: it supplies the POSIX locale that date and time formatting uses.
class QZXML_API QzLocale {
public:
    virtual ~QzLocale();

    /// The POSIX locale handle, valid for the lifetime of this object.
    virtual locale_t posixLocale() const noexcept = 0;

protected:
    /// Only subclasses are built.
    QzLocale() = default;
    /// Copies are made by subclasses.
    QzLocale(const QzLocale&) = default;
    /// Assigned by subclasses.
    QzLocale& operator=(const QzLocale&) = default;
};

#endif
