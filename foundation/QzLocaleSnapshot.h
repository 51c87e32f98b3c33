#ifndef QZLOCALESNAPSHOT_H
#define QZLOCALESNAPSHOT_H

#include "QzXmlExport.h"

#include <locale.h>

#include "QzLocale.h"

/// A locale built from a locale name, such as "C"; it owns its POSIX locale and does not
/// follow later changes of the process's locale.
class QZXML_API QzLocaleSnapshot : public QzLocale {
public:
    /// Loads the named locale; throws Qzxmsg ("Unknown locale '...'") when it does not exist.
    explicit QzLocaleSnapshot(const char* name);
    /// Frees the POSIX locale.
    ~QzLocaleSnapshot() override;

    QzLocaleSnapshot(const QzLocaleSnapshot&) = delete;
    QzLocaleSnapshot& operator=(const QzLocaleSnapshot&) = delete;

    /// The POSIX locale handle, valid for the lifetime of this object.
    locale_t posixLocale() const noexcept override { return locale_; }

private:
    locale_t locale_;
};

#endif
