#include "QzUFromUnicodeConverter.h"

#include <unicode/ucnv.h>

QzUFromUnicodeConverter::QzUFromUnicodeConverter(const char* encodingName)
    : QzUConverterBase(encodingName) {
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setFromUCallBack(handle(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
}
