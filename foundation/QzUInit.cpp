#include "QzUInit.h"

#include <unicode/uclean.h>
#include <unicode/utypes.h>

#include "QzMessage.h"
#include "Qzxmsg.h"
#include "qzfoundationmsg.h"

QzUInit::QzUInit() {
    UErrorCode status = U_ZERO_ERROR;
    u_init(&status);
    if (U_FAILURE(status))
        throw Qzxmsg(QzMessage(&QZFOUNDATIONMSG_CONVERSION, u_errorName(status)));
}

QzUInit::~QzUInit() = default;
