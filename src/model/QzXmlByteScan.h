#ifndef QZXMLBYTESCAN_H
#define QZXMLBYTESCAN_H

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "QzXmlSimd.h"

/// A few bytes that a scan stops at, looked for sixteen bytes a step where the processor
/// allows. The reader's text and value scans and the writer's search for bytes to escape
/// share it. The fewer than sixteen bytes left at the end each caller scans its own way, or
/// with one of the overlapping steps below where it may read the bytes they take.
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
        for (; end - p >= 16; p += 16) {
            if (const unsigned mask = stopsIn(load(p))) return p + __builtin_ctz(mask);
        }
#else
        static_cast<void>(p);
        static_cast<void>(end);
#endif
        return nullptr;
    }

#ifdef QZXML_SSE2
    /// The first stop byte in [p, end), fewer than sixteen bytes that end a run of at least
    /// sixteen readable ones, in one step over the last sixteen; end when there is none.
    template <class Char>
    [[gnu::always_inline]] Char* findInLastStep(Char* p, Char* end) const {
        const unsigned mask = stopsIn(load(end - 16)) >> (16 - (end - p));
        return mask != 0 ? p + __builtin_ctz(mask) : end;
    }
    /// The first stop byte in [p, end), four to fifteen bytes, in one step over the first and
    /// the last half (which may overlap); end when there is none.
    template <class Char>
    [[gnu::always_inline]] Char* findInHalves(Char* p, Char* end) const {
        const std::ptrdiff_t n = end - p;
        // The last half's bits are moved down onto the bytes they stand for.
        unsigned mask;
        if (n >= 8) {
            const unsigned both = stopsIn(_mm_unpacklo_epi64(loadHalf<8>(p), loadHalf<8>(end - 8)));
            mask = (both & 0xFF) | (both & 0xFF00) >> (16 - n);
        } else {
            const unsigned both = stopsIn(_mm_unpacklo_epi32(loadHalf<4>(p), loadHalf<4>(end - 4)));
            mask = (both & 0xF) | (both & 0xF0) >> (8 - n);
        }
        return mask != 0 ? p + __builtin_ctz(mask) : end;
    }
#endif

private:
#ifdef QZXML_SSE2
    static __m128i load(const void* p) {
        return _mm_loadu_si128(static_cast<const __m128i*>(p));
    }
    // The Size (eight or four) bytes from p in the low end of a vector, zeros above.
    template <int Size>
    static __m128i loadHalf(const void* p) {
        if constexpr (Size == 8) {
            return _mm_loadl_epi64(static_cast<const __m128i*>(p));
        } else {
            int word;
            std::memcpy(&word, p, sizeof word);
            return _mm_cvtsi32_si128(word);
        }
    }
    // A bit for each of the sixteen bytes that is a stop.
    [[gnu::always_inline]] unsigned stopsIn(__m128i bytes) const {
        __m128i hits = _mm_cmpeq_epi8(bytes, _mm_set1_epi8(stops_[0]));
        for (std::size_t i = 1; i < N; ++i)
            hits = _mm_or_si128(hits, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(stops_[i])));
        return static_cast<unsigned>(_mm_movemask_epi8(hits));
    }
#endif

    char stops_[N];
};

#endif
