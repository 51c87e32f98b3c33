// ISO 8601 conversions and character-set conversion over arbitrary text. Parsed date-times
// survive formatting; conversions between named character sets either succeed or throw
// QzXmlBadArgError, and a conversion through UTF-16 and back is stable after one round.
#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <string>

#include "FuzzCheck.h"
#include "QzDate.h"
#include "QzDateTime.h"
#include "QzXmlBadArgError.h"
#include "QzXmlUtils.h"

namespace {

const char* const Charsets[] = {"UTF-8",     "UTF-16",   "UTF-16LE",   "UTF-16BE",
                                "UTF-32",    "US-ASCII", "ISO-8859-1", "windows-1252",
                                "Shift_JIS", "GB18030",  "ibm-037",    "EBCDIC",
                                "",          "bogus",    "UTF-8 ",     "x-\xff\xfe"};

QzCString charset(FuzzedDataProvider& in) {
    return QzCString(Charsets[in.ConsumeIntegralInRange<std::size_t>(
        0, sizeof Charsets / sizeof Charsets[0] - 1)]);
}

void checkDateTime(const QzCString& text) {
    const QzDateTime parsed = QzXmlUtils::convertISODateStringToDateTime(text);
    const QzDate date = QzXmlUtils::convertISODateStringToDate(text);
    if (!parsed.isValid()) return;
    const QzCString formatted =
        QzXmlUtils::convertDateTimeToISOString(parsed, QzXmlUtils::ISO8601Format);
    fuzzCheck(QzXmlUtils::convertISODateStringToDateTime(formatted) == parsed,
              "a formatted date-time parses to itself");
    fuzzCheck(!QzXmlUtils::convertDateToISOString(date).empty(), "a parsed date formats");
}

// Converts and returns whether the conversion succeeded; only QzXmlBadArgError may come out.
bool convert(const QzCString& data, const QzCString& from, const QzCString& to, QzCString& out) {
    try {
        out = QzXmlUtils::convertCharset(data, from, to);
        return true;
    } catch (const QzXmlBadArgError&) {
        return false;
    }
}

void checkCharsets(FuzzedDataProvider& in) {
    const QzCString source = charset(in);
    const QzCString target = charset(in);
    const QzCString from = charset(in);
    const QzCString data(in.ConsumeRemainingBytesAsString());
    QzCString out;
    convert(data, source, target, out);
    QzCString wide;
    QzCString back;
    if (!convert(data, from, QzCString("UTF-16LE"), wide)) return;
    if (!convert(wide, QzCString("UTF-16LE"), from, back)) return;
    QzCString wideAgain;
    QzCString backAgain;
    fuzzCheck(convert(back, from, QzCString("UTF-16LE"), wideAgain), "converted text converts");
    fuzzCheck(convert(wideAgain, QzCString("UTF-16LE"), from, backAgain), "and back again");
    fuzzCheck(backAgain == back, "a round through UTF-16 is stable");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    const QzCString text(in.ConsumeRandomLengthString(64));
    checkDateTime(text);
    const std::string pattern = in.ConsumeRandomLengthString(16);
    const QzDateTime now = QzXmlUtils::convertISODateStringToDateTime(text);
    (void)QzXmlUtils::convertDateTimeToISOString(now, QzCString(pattern));
    const QzDate date(in.ConsumeIntegral<unsigned>(), in.ConsumeIntegral<unsigned>(),
                      in.ConsumeIntegral<unsigned>());
    (void)QzXmlUtils::convertDateToISOString(date);
    checkCharsets(in);
    return 0;
}
