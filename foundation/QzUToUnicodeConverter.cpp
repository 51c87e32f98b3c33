#include "QzUToUnicodeConverter.h"

#include <unicode/ucnv.h>

QzUToUnicodeConverter::QzUToUnicodeConverter(const char* encodingName)
    : QzUConverterBase(encodingName) {
    UErrorCode status = U_ZERO_ERROR;
    ucnv_setToUCallBack(handle(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
}
