#include "QzUConverterBase.h"

#include <unicode/ucnv.h>

#include "QzMessage.h"
#include "Qzxmsg.h"
#include "qzfoundationmsg.h"

QzUConverterBase::QzUConverterBase(const char* encodingName) {
    UErrorCode status = U_ZERO_ERROR;
    // An empty name would make ICU open its default converter; treat it as unknown instead.
    converter_ = (encodingName != nullptr && *encodingName != '\0')
                     ? ucnv_open(encodingName, &status)
                     : nullptr;
    if (converter_ == nullptr || U_FAILURE(status)) {
        if (converter_ != nullptr) ucnv_close(converter_);
        if (!U_FAILURE(status)) status = U_ILLEGAL_ARGUMENT_ERROR;
        throw Qzxmsg(QzMessage(&QZFOUNDATIONMSG_CONVERTER_OPEN,
                               encodingName != nullptr ? encodingName : "", u_errorName(status)));
    }
}

QzUConverterBase::~QzUConverterBase() {
    ucnv_close(converter_);
}
