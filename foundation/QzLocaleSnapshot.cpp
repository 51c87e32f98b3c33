#include "QzLocaleSnapshot.h"

#include "QzMessage.h"
#include "Qzxmsg.h"
#include "qzfoundationmsg.h"

QzLocaleSnapshot::QzLocaleSnapshot(const char* name)
    : locale_(name != nullptr ? newlocale(LC_ALL_MASK, name, locale_t(0)) : locale_t(0)) {
    if (locale_ == locale_t(0)) {
        throw Qzxmsg(QzMessage(&QZFOUNDATIONMSG_UNKNOWN_LOCALE, name != nullptr ? name : ""));
    }
}

QzLocaleSnapshot::~QzLocaleSnapshot() {
    freelocale(locale_);
}
