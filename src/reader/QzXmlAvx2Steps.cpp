#include "QzXmlAvx2Steps.h"

#if defined(__AVX2__)
#include <immintrin.h>

#include <cstdint>

namespace {

using Byte = QzXmlAvx2Steps::Byte;

// UTF-8 is checked two bytes at a time, the byte before and the byte at hand, by three tables
// looked up by the high and low half of the byte before and the high half of the byte at
// hand (the published lookup validation of Keiser and Lemire): each sets a bit for every fault
// that its half allows, so that a fault is present where all three set its bit. Each fault is
// so a product of three sets of halves.
enum Fault : std::uint8_t {
    kTooShort = 1,           // a lead from C0, then no continuation
    kTooLong = 2,            // ASCII, then a continuation
    kOverlong3 = 4,          // E0, then 80-9F
    kTooLarge = 8,           // F4-FF, then 90-BF
    kSurrogate = 16,         // ED, then A0-BF
    kOverlong2 = 32,         // C0 or C1, then a continuation
    kTooLarge1000 = 64,      // F5-FF then 80-8F, and F0 then 80-8F (overlong)
    kTwoContinuations = 128  // a continuation after a continuation: right only where a three-
                             // or four-byte lead wants it, which is checked apart
};

// Characters that end a run of text, found by the two halves of the byte at hand the same way.
enum Stop : std::uint8_t { kControl0 = 1, kControl1 = 2, kLess = 4, kAmpersand = 8, kBracket = 16 };

constexpr bool within(int n, int low, int high) {
    return n >= low && n <= high;
}

// The tables, and the bytes compared with, each filling a register.
struct alignas(32) Constants {
    Byte before[32], beforeLow[32], high[32], stopHigh[32], stopLow[32], controlLow[32];
    Byte halves[32], leadE0[32], leadF0[32], top[32], one[32], ef[32], bf[32];
};

constexpr Constants makeConstants() {
    Constants c{};
    for (int i = 0; i < 32; ++i) {
        const int n = i % 16;
        c.before[i] = (n >= 0xC ? kTooShort : 0) | (n <= 7 ? kTooLong : 0) |
                      (n == 0xE ? kOverlong3 | kSurrogate : 0) |
                      (n == 0xF ? kTooLarge | kTooLarge1000 : 0) | (n == 0xC ? kOverlong2 : 0) |
                      (within(n, 8, 0xB) ? kTwoContinuations : 0);
        c.beforeLow[i] = kTooShort | kTooLong | kTwoContinuations | (n == 0 ? kOverlong3 : 0) |
                         (n >= 4 ? kTooLarge : 0) | (n == 0xD ? kSurrogate : 0) |
                         (n <= 1 ? kOverlong2 : 0) | (n == 0 || n >= 5 ? kTooLarge1000 : 0);
        c.high[i] = (n <= 7 || n >= 0xC ? kTooShort : 0) |
                    (within(n, 8, 0xB) ? kTooLong | kOverlong2 | kTwoContinuations : 0) |
                    (within(n, 8, 9) ? kOverlong3 : 0) | (within(n, 9, 0xB) ? kTooLarge : 0) |
                    (within(n, 0xA, 0xB) ? kSurrogate : 0) | (n == 8 ? kTooLarge1000 : 0);
        // Controls are 00-1F but for tab (09), line feed (0A) and carriage return (0D).
        c.stopHigh[i] = n == 0   ? kControl0
                        : n == 1 ? kControl1
                        : n == 2 ? kAmpersand
                        : n == 3 ? kLess
                        : n == 5 ? kBracket
                                 : 0;
        c.controlLow[i] = (n == 9 || n == 0xA || n == 0xD ? 0 : kControl0) | kControl1;
        c.stopLow[i] = c.controlLow[i] | (n == 0xC ? kLess : 0) | (n == 6 ? kAmpersand : 0) |
                       (n == 0xD ? kBracket : 0);
        c.halves[i] = 0x0F;
        c.leadE0[i] = 0xE0 - 0x80;
        c.leadF0[i] = 0xF0 - 0x80;
        c.top[i] = 0x80;
        c.one[i] = 1;
        c.ef[i] = 0xEF;
        c.bf[i] = 0xBF;
    }
    return c;
}

constexpr Constants kConstants = makeConstants();

__m256i load(const Byte (&bytes)[32]) {
    return _mm256_load_si256(reinterpret_cast<const __m256i*>(bytes));
}

// The bytes that are not zero.
std::uint32_t nonzero(__m256i v) {
    return ~static_cast<std::uint32_t>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi8(v, _mm256_setzero_si256())));
}

// The high and the low half of each byte of v.
inline void halves(__m256i v, __m256i& upper, __m256i& lower) {
    upper = _mm256_and_si256(_mm256_srli_epi16(v, 4), load(kConstants.halves));
    lower = _mm256_and_si256(v, load(kConstants.halves));
}

// One step of thirty-two bytes: where it stops text, and the faults of its UTF-8 (zero bytes
// where there are none).
struct Step {
    std::uint32_t stops;
    __m256i faults;
};

// The step at p, previous holding the step before (zero bytes at the start, which want
// nothing of the first step); stopLow is the table of the stops' low halves.
[[gnu::always_inline]] inline Step step(const Byte* p, __m256i& previous,
                                        const Byte (&stopLow)[32]) {
    const Constants& c = kConstants;
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
    __m256i upper, lower, upper1, lower1;
    halves(v, upper, lower);
    const std::uint32_t stops = nonzero(_mm256_and_si256(
        _mm256_shuffle_epi8(load(c.stopHigh), upper), _mm256_shuffle_epi8(load(stopLow), lower)));
    // The bytes one, two and three places before each, across the steps.
    const __m256i across = _mm256_permute2x128_si256(previous, v, 0x21);
    const __m256i before1 = _mm256_alignr_epi8(v, across, 15);
    const __m256i before2 = _mm256_alignr_epi8(v, across, 14);
    const __m256i before3 = _mm256_alignr_epi8(v, across, 13);
    previous = v;
    halves(before1, upper1, lower1);
    const __m256i faults =
        _mm256_and_si256(_mm256_and_si256(_mm256_shuffle_epi8(load(c.before), upper1),
                                          _mm256_shuffle_epi8(load(c.beforeLow), lower1)),
                         _mm256_shuffle_epi8(load(c.high), upper));
    // Second and third continuations: where a lead from E0 stands two places before, or one
    // from F0 three places before (the saturating differences reach 0x80 exactly then).
    const __m256i wanted =
        _mm256_and_si256(_mm256_or_si256(_mm256_subs_epu8(before2, load(c.leadE0)),
                                         _mm256_subs_epu8(before3, load(c.leadF0))),
                         load(c.top));
    // U+FFFE and U+FFFF (EF BF BE, EF BF BF), which XML does not allow.
    const __m256i nonCharacter =
        _mm256_and_si256(_mm256_and_si256(_mm256_cmpeq_epi8(before2, load(c.ef)),
                                          _mm256_cmpeq_epi8(before1, load(c.bf))),
                         _mm256_cmpeq_epi8(_mm256_or_si256(v, load(c.one)), load(c.bf)));
    return {stops, _mm256_or_si256(_mm256_xor_si256(faults, wanted), nonCharacter)};
}

// Step by step from p, each looked at: the first stop before any fault, or the start of the
// step with a fault, or where fewer than thirty-two bytes are left.
QzXmlAvx2Steps::Reach closeSteps(const Byte* p, const Byte* last, const Byte (&stopLow)[32]) {
    __m256i previous = _mm256_setzero_si256();
    for (; last - p >= 32; p += 32) {
        const Step s = step(p, previous, stopLow);
        const std::uint32_t wrong = nonzero(s.faults);
        if ((s.stops | wrong) != 0) return QzXmlAvx2Steps::reachIn(p, s.stops, wrong);
    }
    return {p, false};
}

}  // namespace

// Faults are rare (a document with one is refused), so the steps only gather them, and
// branch on stops alone; where the steps have gathered a fault, they are taken again from
// the start, each looked at.
QzXmlAvx2Steps::Reach QzXmlAvx2Steps::cleanSteps(const Byte* p, const Byte* last, bool markup) {
    const Byte(&stopLow)[32] = markup ? kConstants.stopLow : kConstants.controlLow;
    const Byte* const first = p;
    __m256i previous = _mm256_setzero_si256();
    __m256i faults = _mm256_setzero_si256();
    for (; last - p >= 32; p += 32) {
        const Step s = step(p, previous, stopLow);
        if (s.stops == 0) {
            faults = _mm256_or_si256(faults, s.faults);
            continue;
        }
        if (_mm256_testz_si256(faults, faults)) {
            const Reach reach = reachIn(p, s.stops, nonzero(s.faults));
            if (reach.stop) return reach;
        }
        return closeSteps(first, last, stopLow);
    }
    return _mm256_testz_si256(faults, faults) ? Reach{p, false} : closeSteps(first, last, stopLow);
}

#endif
