#ifndef QZXMLLINEFEEDS_H
#define QZXMLLINEFEEDS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "QzXmlSimd.h"

/// Line feeds counted sixteen bytes a step: lines are short, so finding them one by one would
/// cost a call each. The streaming reader counts the bytes it lets go of, the tool the bytes
/// it hands out.
class QzXmlLineFeeds {
public:
    /// The line feeds in [p, last).
    static std::uint64_t count(const char* p, const char* last) {
        std::uint64_t count = 0;
#ifdef QZXML_SSE2
        const __m128i feed = _mm_set1_epi8('\n');
        while (last - p >= 16) {
            // Each byte of sums counts the feeds of its column, for 255 steps at most.
            const char* stop = p + std::min<std::ptrdiff_t>((last - p) / 16, 255) * 16;
            __m128i sums = _mm_setzero_si128();
            for (; p < stop; p += 16) {
                const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
                sums = _mm_sub_epi8(sums, _mm_cmpeq_epi8(bytes, feed));
            }
            const __m128i total = _mm_sad_epu8(sums, _mm_setzero_si128());
            count += static_cast<std::uint64_t>(_mm_cvtsi128_si64(total)) +
                     static_cast<std::uint64_t>(_mm_extract_epi16(total, 4));
        }
#endif
        for (; p < last; ++p)
            count += *p == '\n';
        return count;
    }
};

#endif
