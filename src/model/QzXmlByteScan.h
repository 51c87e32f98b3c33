#ifndef QZXMLBYTESCAN_H
#define QZXMLBYTESCAN_H

#include <cstddef>
#include <type_traits>

#include "QzXmlSimd.h"

/// A few bytes that a scan stops at, looked for sixteen bytes a step where the processor
/// allows. The reader's text and value scans and the writer's search for bytes to escape
/// share it; the fewer than sixteen bytes left at the end each caller scans its own way.
template <std::size_t N>
class QzXmlByteScan {
public:
    /// Stops at the N bytes of the literal stops.
    constexpr explicit QzXmlByteScan(const char (&stops)[N + 1]) : stops_{} {
        for (std::size_t i = 0; i < N; ++i)
            stops_[i] = stops[i];
    }

    /// The first stop byte in the whole sixteen-byte steps from p on, or null with p moved to
    /// where fewer than sixteen bytes are left before end.
    template <class Char>
    [[gnu::always_inline]] Char* find(Char*& p, const std::remove_const_t<Char>* end) const {
#ifdef QZXML_SSE2
        __m128i each[N];
        for (std::size_t i = 0; i < N; ++i)
            each[i] = _mm_set1_epi8(stops_[i]);
        for (; end - p >= 16; p += 16) {
            const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
            __m128i hits = _mm_cmpeq_epi8(bytes, each[0]);
            for (std::size_t i = 1; i < N; ++i)
                hits = _mm_or_si128(hits, _mm_cmpeq_epi8(bytes, each[i]));
            const int mask = _mm_movemask_epi8(hits);
            if (mask != 0) return p + __builtin_ctz(static_cast<unsigned>(mask));
        }
#else
        static_cast<void>(p);
        static_cast<void>(end);
#endif
        return nullptr;
    }

private:
    char stops_[N];
};

#endif
