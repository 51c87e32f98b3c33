#include "QzXmlAvx2Steps.h"

#if defined(__AVX2__)
#include <immintrin.h>

#include <cstdint>

namespace {

using Byte = QzXmlAvx2Steps::Byte;

// UTF-8 is checked two bytes at a time, the byte before and the byte at hand, by three tables
// looked up by the high and low half of the byte before and the high half of the byte at
// hand; each sets a bit for every fault that its half allows, so that a fault is present
// where all three set its bit. Each fault is so a product of three sets of halves.
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

struct Tables {
    Byte before[16], beforeLow[16], high[16], stopHigh[16], stopLow[16], controlLow[16];
};

constexpr bool within(int n, int low, int high) {
    return n >= low && n <= high;
}

constexpr Tables makeTables() {
    Tables t{};
    for (int n = 0; n < 16; ++n) {
        t.before[n] = (n >= 0xC ? kTooShort : 0) | (n <= 7 ? kTooLong : 0) |
                      (n == 0xE ? kOverlong3 | kSurrogate : 0) |
                      (n == 0xF ? kTooLarge | kTooLarge1000 : 0) | (n == 0xC ? kOverlong2 : 0) |
                      (within(n, 8, 0xB) ? kTwoContinuations : 0);
        t.beforeLow[n] = kTooShort | kTooLong | kTwoContinuations | (n == 0 ? kOverlong3 : 0) |
                         (n >= 4 ? kTooLarge : 0) | (n == 0xD ? kSurrogate : 0) |
                         (n <= 1 ? kOverlong2 : 0) | (n == 0 || n >= 5 ? kTooLarge1000 : 0);
        t.high[n] = (n <= 7 || n >= 0xC ? kTooShort : 0) |
                    (within(n, 8, 0xB) ? kTooLong | kOverlong2 | kTwoContinuations : 0) |
                    (within(n, 8, 9) ? kOverlong3 : 0) | (within(n, 9, 0xB) ? kTooLarge : 0) |
                    (within(n, 0xA, 0xB) ? kSurrogate : 0) | (n == 8 ? kTooLarge1000 : 0);
        // Controls are 00-1F but for tab (09), line feed (0A) and carriage return (0D).
        t.stopHigh[n] = n == 0   ? kControl0
                        : n == 1 ? kControl1
                        : n == 2 ? kAmpersand
                        : n == 3 ? kLess
                        : n == 5 ? kBracket
                                 : 0;
        t.controlLow[n] = (n == 9 || n == 0xA || n == 0xD ? 0 : kControl0) | kControl1;
        t.stopLow[n] = t.controlLow[n] | (n == 0xC ? kLess : 0) | (n == 6 ? kAmpersand : 0) |
                       (n == 0xD ? kBracket : 0);
    }
    return t;
}

constexpr Tables kTables = makeTables();

__m256i table(const Byte (&entries)[16]) {
    return _mm256_broadcastsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(entries)));
}

__m256i set(int byte) {
    return _mm256_set1_epi8(static_cast<char>(byte));
}

// The bytes that are not zero.
std::uint32_t nonzero(__m256i v) {
    return ~static_cast<std::uint32_t>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi8(v, _mm256_setzero_si256())));
}

}  // namespace

const Byte* QzXmlAvx2Steps::cleanSteps(const Byte* p, const Byte* last, bool markup) {
    const __m256i before = table(kTables.before), beforeLow = table(kTables.beforeLow);
    const __m256i high = table(kTables.high), stopHigh = table(kTables.stopHigh);
    const __m256i stopLow = table(markup ? kTables.stopLow : kTables.controlLow);
    const __m256i halfMask = set(0x0F);
    const auto halves = [&halfMask](__m256i v, __m256i& upper, __m256i& lower) {
        upper = _mm256_and_si256(_mm256_srli_epi16(v, 4), halfMask);
        lower = _mm256_and_si256(v, halfMask);
    };
    // The step before: zero bytes, at the start, want nothing of the first step.
    __m256i previous = _mm256_setzero_si256();
    for (; last - p >= 32; p += 32) {
        const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
        __m256i upper, lower, upper1, lower1;
        halves(v, upper, lower);
        const std::uint32_t stops = nonzero(_mm256_and_si256(_mm256_shuffle_epi8(stopHigh, upper),
                                                             _mm256_shuffle_epi8(stopLow, lower)));
        // The bytes one, two and three places before each, across the steps.
        const __m256i across = _mm256_permute2x128_si256(previous, v, 0x21);
        const __m256i before1 = _mm256_alignr_epi8(v, across, 15);
        const __m256i before2 = _mm256_alignr_epi8(v, across, 14);
        const __m256i before3 = _mm256_alignr_epi8(v, across, 13);
        previous = v;
        halves(before1, upper1, lower1);
        const __m256i faults =
            _mm256_and_si256(_mm256_and_si256(_mm256_shuffle_epi8(before, upper1),
                                              _mm256_shuffle_epi8(beforeLow, lower1)),
                             _mm256_shuffle_epi8(high, upper));
        // Second and third continuations: where a lead from E0 stands two places before, or
        // one from F0 three places before (the saturating differences reach 0x80 exactly then).
        const __m256i wanted =
            _mm256_and_si256(_mm256_or_si256(_mm256_subs_epu8(before2, set(0xE0 - 0x80)),
                                             _mm256_subs_epu8(before3, set(0xF0 - 0x80))),
                             set(0x80));
        // U+FFFE and U+FFFF (EF BF BE, EF BF BF), which XML does not allow.
        const __m256i nonCharacter =
            _mm256_and_si256(_mm256_and_si256(_mm256_cmpeq_epi8(before2, set(0xEF)),
                                              _mm256_cmpeq_epi8(before1, set(0xBF))),
                             _mm256_cmpeq_epi8(_mm256_or_si256(v, set(1)), set(0xBF)));
        const std::uint32_t wrong =
            nonzero(_mm256_or_si256(_mm256_xor_si256(faults, wanted), nonCharacter));
        if ((stops | wrong) == 0) continue;
        // A fault shows at the latest where a stop interrupts a sequence, so a stop before
        // the first fault ends clean text.
        if ((stops & (wrong - 1) & ~wrong) != 0) return p + __builtin_ctz(stops);
        return p;
    }
    return p;
}

#endif
