#include "QzUString.h"

#include <unicode/ucnv.h>

#include "QzMessage.h"
#include "QzUFromUnicodeConverter.h"
#include "QzUToUnicodeConverter.h"
#include "Qzxmsg.h"
#include "qzfoundationmsg.h"

namespace {

[[noreturn]] void throwConversionError(UErrorCode status) {
    throw Qzxmsg(QzMessage(&QZFOUNDATIONMSG_CONVERSION, u_errorName(status)));
}

// Runs one ICU streaming conversion over the whole input, growing the output until it fits.
// step(target, targetLimit, status) converts as much as fits and advances target.
template <class Out, class Step>
void convertAll(Out& out, std::size_t estimate, Step step) {
    out.resize(estimate + 16);
    std::size_t used = 0;
    for (;;) {
        auto* target = &out[0] + used;
        auto* const limit = &out[0] + out.size();
        UErrorCode status = U_ZERO_ERROR;
        step(target, limit, status);
        used = static_cast<std::size_t>(target - &out[0]);
        if (status != U_BUFFER_OVERFLOW_ERROR) {
            if (U_FAILURE(status)) throwConversionError(status);
            out.resize(used);
            return;
        }
        out.resize(out.size() * 2);
    }
}

}  // namespace

QzUString::QzUString(const QzCString& bytes, QzUToUnicodeConverter& converter) {
    UConverter* cnv = converter.handle();
    ucnv_resetToUnicode(cnv);
    const char* source = bytes.data();
    const char* const sourceLimit = source + bytes.length();
    convertAll(units(), bytes.length(), [&](char16_t*& target, char16_t* limit, UErrorCode& st) {
        ucnv_toUnicode(cnv, &target, limit, &source, sourceLimit, nullptr, true, &st);
    });
}

QzCString QzUString::toBytes(const unsigned short* units, unsigned long count,
                             QzUFromUnicodeConverter& converter) {
    UConverter* cnv = converter.handle();
    ucnv_resetFromUnicode(cnv);
    // ICU reads the units as UChar, the same 16-bit representation.
    const UChar* source = reinterpret_cast<const UChar*>(units);
    const UChar* const sourceLimit = source + count;
    std::string out;
    convertAll(out, count, [&](char*& target, char* limit, UErrorCode& st) {
        ucnv_fromUnicode(cnv, &target, limit, &source, sourceLimit, nullptr, true, &st);
    });
    return QzCString(std::move(out));
}
