// Durations from arbitrary text: formatting is stable after one round through the text, the
// partial order is irreflexive and asymmetric, and adding to date-times never fails.
#include <fuzzer/FuzzedDataProvider.h>

#include <cmath>
#include <cstdint>
#include <string>

#include "FuzzCheck.h"
#include "QzLocaleSnapshot.h"
#include "QzXmlDuration.h"
#include "QzZone.h"

namespace {

// Seconds are written with six significant digits, so one round may round them.
bool closeSeconds(double a, double b) {
    if (std::isnan(a) || std::isinf(a)) return std::isnan(a) ? std::isnan(b) : a == b;
    return std::fabs(a - b) <= 1e-5 * std::fabs(a);
}

void checkTextRoundTrip(const QzXmlDuration& d) {
    if (!d.isValid()) {
        fuzzCheck(d.asString().empty(), "an invalid duration has no text");
        return;
    }
    const QzCString text = d.asString();
    const QzXmlDuration again(text);
    fuzzCheck(again.isValid(), "a duration's text parses");
    fuzzCheck(again.isNegative() == d.isNegative() && again.getYears() == d.getYears() &&
                  again.getMonths() == d.getMonths() && again.getDays() == d.getDays() &&
                  again.getHours() == d.getHours() && again.getMinutes() == d.getMinutes(),
              "a duration's text keeps its components");
    fuzzCheck(closeSeconds(d.getSeconds(), again.getSeconds()), "seconds survive the text");
    fuzzCheck(again.asString() == text, "the text is stable");
    fuzzCheck(QzXmlDuration(again.asString()) == again, "the value is stable");
}

void checkOrder(const QzXmlDuration& a, const QzXmlDuration& b) {
    fuzzCheck(!(a < a), "< is irreflexive");
    fuzzCheck(!(a < b && b < a), "< is asymmetric");
}

void checkAddition(const QzXmlDuration& d, FuzzedDataProvider& in) {
    const QzCString text(in.ConsumeRandomLengthString(40));
    const QzDateTime start(text, QzDateTime::iso8601, QzLocaleSnapshot("C"), QzZone::utc());
    const QzDateTime fixed(in.ConsumeIntegralInRange(0u, 9999u), in.ConsumeIntegralInRange(1u, 12u),
                           in.ConsumeIntegralInRange(1u, 28u), in.ConsumeIntegralInRange(0u, 23u),
                           in.ConsumeIntegralInRange(0u, 59u), in.ConsumeIntegralInRange(0u, 59u),
                           in.ConsumeIntegralInRange(0u, 999u), QzZone::utc());
    for (const QzDateTime& t : {start, fixed}) {
        if (t.isValid()) (void)(d + t);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider in(data, size);
    const QzXmlDuration a(QzCString(in.ConsumeRandomLengthString(64)));
    const QzXmlDuration b(QzCString(in.ConsumeRandomLengthString(64)));
    checkTextRoundTrip(a);
    checkTextRoundTrip(b);
    checkOrder(a, b);
    checkAddition(a, in);
    return 0;
}
