#ifndef QZXMLCHARCHECKS_H
#define QZXMLCHARCHECKS_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "QzCString.h"
#include "QzXmlSimd.h"

/// What the strict reader asks of characters: UTF-8 that encodes only characters XML allows,
/// names of fifth-edition name characters, line ends normalised to line feeds. All work on
/// UTF-8 bytes; the reader runs them over text it has already decoded to UTF-8.
class QzXmlCharChecks {
public:
    using Byte = unsigned char;

    /// Length of the well-formed UTF-8 sequence at p of a character XML allows; 0 when the
    /// bytes from p on are anything else (overlong forms, surrogates, U+FFFE, U+FFFF, ...).
    static int characterLength(const Byte* p, const Byte* last) {
        const Byte b0 = p[0];
        const std::ptrdiff_t left = last - p;
        if (b0 < 0x80) return b0 >= 0x20 || b0 == '\t' || b0 == '\n' || b0 == '\r' ? 1 : 0;
        if (b0 >= 0xC2 && b0 <= 0xDF) return left >= 2 && isContinuation(p[1]) ? 2 : 0;
        if (b0 >= 0xE0 && b0 <= 0xEF) {
            if (left < 3 || !isContinuation(p[2])) return 0;
            const Byte low = b0 == 0xE0 ? 0xA0 : 0x80;
            const Byte high = b0 == 0xED ? 0x9F : 0xBF;
            if (p[1] < low || p[1] > high) return 0;
            return b0 == 0xEF && p[1] == 0xBF && p[2] >= 0xBE ? 0 : 3;
        }
        if (b0 >= 0xF0 && b0 <= 0xF4) {
            if (left < 4 || !isContinuation(p[2]) || !isContinuation(p[3])) return 0;
            const Byte low = b0 == 0xF0 ? 0x90 : 0x80;
            const Byte high = b0 == 0xF4 ? 0x8F : 0xBF;
            return p[1] >= low && p[1] <= high ? 4 : 0;
        }
        return 0;
    }
    /// The first byte from p on that is "<", "&" or "]", or that is not text: a control
    /// character other than tab, line feed and carriage return, or a byte from 0x80 outside a
    /// well-formed two-byte sequence (other sequences are left to characterLength); last when
    /// there is none. Sixteen bytes a step where the processor allows.
    [[gnu::always_inline]] static const Byte* findTextStop(const Byte* p, const Byte* last) {
#ifdef QZXML_SSE2
        Utf8State state;
        for (; last - p >= 16; p += 16) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
            const __m128i markup = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, _mm_set1_epi8('<')),
                                                             _mm_cmpeq_epi8(v, _mm_set1_epi8('&'))),
                                                _mm_cmpeq_epi8(v, _mm_set1_epi8(']')));
            // Bytes from 0x80 are negative as signed, so they count as below space.
            const __m128i low = _mm_cmplt_epi8(v, _mm_set1_epi8(0x20));
            if ((mask(_mm_or_si128(markup, low)) | static_cast<unsigned>(state.pending)) == 0) {
                continue;
            }
            const int stops =
                static_cast<int>(mask(markup)) | unchecked(v, static_cast<int>(mask(low)), state);
            if (stops < 0) return p - state.back;
            if (stops != 0) return p + __builtin_ctz(static_cast<unsigned>(stops));
        }
        if (state.pending != 0) return p - state.back;
#endif
        for (; p < last; ++p) {
            if (*p == '<' || *p == '&' || *p == ']' || needsCheck(*p)) return p;
        }
        return last;
    }
    /// The first byte from p on that ends a run of attribute value: the quote, "<", "&", a
    /// control character (whitespace included) or a byte from 0x80; last when there is none.
    [[gnu::always_inline]] static const Byte* findValueStop(const Byte* p, const Byte* last,
                                                            Byte quote) {
#ifdef QZXML_SSE2
        for (; last - p >= 16; p += 16) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
            const __m128i stops = _mm_or_si128(
                _mm_or_si128(_mm_cmpeq_epi8(v, _mm_set1_epi8(static_cast<char>(quote))),
                             _mm_cmpeq_epi8(v, _mm_set1_epi8('<'))),
                _mm_or_si128(_mm_cmpeq_epi8(v, _mm_set1_epi8('&')),
                             _mm_cmplt_epi8(v, _mm_set1_epi8(0x20))));
            const int mask = _mm_movemask_epi8(stops);
            if (mask != 0) return p + __builtin_ctz(static_cast<unsigned>(mask));
        }
#endif
        for (; p < last; ++p) {
            if (*p == quote || *p == '<' || *p == '&' || *p < 0x20 || *p >= 0x80) return p;
        }
        return last;
    }
    /// Whether b is not plain ASCII text: a control other than tab, line feed and carriage
    /// return, or a byte from 0x80, whose character has to be checked.
    static bool needsCheck(Byte b) {
        return b >= 0x80 || (b < 0x20 && b != '\t' && b != '\n' && b != '\r');
    }
    /// The first byte of the first sequence in [first, last) that is not well-formed UTF-8 or
    /// encodes a character outside XML's Char production; last when there is none. sawCR is
    /// set when a carriage return was met before that point.
    static const Byte* firstInvalidCharacter(const Byte* first, const Byte* last, bool& sawCR);
    /// What is wrong with the sequence at `at` (which firstInvalidCharacter returned).
    static QzCString describeInvalidCharacter(const Byte* at, const Byte* last);
    /// Replaces each CR LF pair and each lone CR in [first, last) with LF, in place; returns
    /// the new end.
    static Byte* normalizeLineEnds(Byte* first, Byte* last);

    /// Appends to out the UTF-8 of count 16-bit units, unit(i) being the i-th: surrogate
    /// pairs are joined, unpaired surrogates come out as three bytes. Unless whole, a high
    /// surrogate last waits for the unit after it: returns the number of units taken.
    template <class Unit>
    static std::size_t appendUtf16(std::string& out, std::size_t count, Unit unit, bool whole) {
        std::size_t i = 0;
        for (; i < count; ++i) {
            const std::uint32_t u = unit(i);
            if (u < 0x80) {
                out += static_cast<char>(u);
            } else if (u < 0x800) {
                out += static_cast<char>(0xC0 | (u >> 6));
                out += static_cast<char>(0x80 | (u & 0x3F));
            } else if (u >= 0xD800 && u <= 0xDBFF && i + 1 == count && !whole) {
                break;
            } else if (u >= 0xD800 && u <= 0xDBFF && i + 1 < count &&
                       (unit(i + 1) & 0xFC00) == 0xDC00) {
                const std::uint32_t cp = unit(++i) + ((u - 0xD800) << 10) + 0x2400;
                out += static_cast<char>(0xF0 | (cp >> 18));
                out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
                out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
                out += static_cast<char>(0x80 | (cp & 0x3F));
            } else {
                out += static_cast<char>(0xE0 | (u >> 12));
                out += static_cast<char>(0x80 | ((u >> 6) & 0x3F));
                out += static_cast<char>(0x80 | (u & 0x3F));
            }
        }
        return i;
    }
    /// The character at p, which must start well-formed UTF-8; p moves past it.
    static std::uint32_t decode(const Byte*& p);
    /// Whether c is allowed in an XML document.
    static bool isChar(std::uint32_t c);
    /// Whether c may start a name (fifth edition), ":" included.
    static bool isNameStartChar(std::uint32_t c);
    /// Whether c may continue a name (fifth edition).
    static bool isNameChar(std::uint32_t c);
    /// The character at p as "'c'" for printable ASCII, else "U+XXXX", for messages.
    static QzCString describe(const Byte* p, const Byte* last);

private:
    static bool isContinuation(Byte b) {
        return (b & 0xC0) == 0x80;
    }

#ifdef QZXML_SSE2
    /// What one sixteen-byte step of text leaves to the next: the masks of its leads and of the
    /// bytes that constrain the byte after them, and whether a sequence runs into the next.
    struct Utf8State {
        unsigned lead = 0, lead34 = 0, lead4 = 0, e0 = 0, ed = 0, f0 = 0, f4 = 0, ef = 0, bf = 0;
        int pending = 0;  ///< a sequence of the step before wants bytes of this one
        int back = 0;     ///< how far before this step that sequence starts
    };

    static unsigned mask(__m128i m) {
        return static_cast<unsigned>(_mm_movemask_epi8(m));
    }

    /// Of the sixteen bytes v, whose bytes below space (signed) low marks, those that text
    /// cannot take as they are: controls other than tab, line feed and carriage return, and,
    /// when any sequence of bytes from 0x80 is not a character XML allows, the first byte
    /// from 0x80 (or -1 when the broken sequence began in the step before, state.back bytes
    /// before it). Well-formed sequences pass, also across steps.
    [[gnu::always_inline]] static int unchecked(__m128i v, int low, Utf8State& state) {
        const unsigned high = mask(v);
        unsigned controls = static_cast<unsigned>(low) & ~high;
        if (controls != 0) {
            const __m128i allowed =
                _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, _mm_set1_epi8('\t')),
                                          _mm_cmpeq_epi8(v, _mm_set1_epi8('\n'))),
                             _mm_cmpeq_epi8(v, _mm_set1_epi8('\r')));
            controls &= ~mask(allowed);
        }
        if (high == 0 && state.pending == 0) {
            state = Utf8State();
            return static_cast<int>(controls);
        }
        // Unsigned ranges as signed compares of the bytes shifted by 0x80.
        const __m128i s = _mm_xor_si128(v, _mm_set1_epi8(static_cast<char>(0x80)));
        const auto atLeast = [&s](int byte) {
            return mask(_mm_cmpgt_epi8(s, _mm_set1_epi8(static_cast<char>(byte - 0x81))));
        };
        const auto equal = [&v](int byte) {
            return mask(_mm_cmpeq_epi8(v, _mm_set1_epi8(static_cast<char>(byte))));
        };
        const unsigned geC0 = atLeast(0xC0), geC2 = atLeast(0xC2), geE0 = atLeast(0xE0);
        if ((geE0 | state.lead34) == 0) {
            // Two-byte sequences only, the common case of Latin text: each lead is followed by
            // one continuation, and every continuation follows a lead.
            const unsigned continuations = high & ~geC0;
            const unsigned expected = ((geC2 << 1) | (state.lead >> 15)) & 0xFFFF;
            if ((expected ^ continuations) != 0 || (high & ~continuations & ~geC2) != 0) {
                return state.pending != 0 ? -1 : static_cast<int>(controls | high);
            }
            const int pending = static_cast<int>(geC2 >> 15);
            state = Utf8State{geC2, 0, 0, 0, 0, 0, 0, 0, 0, pending, pending};
            return static_cast<int>(controls);
        }
        const unsigned geF0 = atLeast(0xF0), geF5 = atLeast(0xF5);
        const unsigned continuations = high & ~geC0;
        const unsigned lead = geC2 & ~geF5, lead34 = geE0 & ~geF5, lead4 = geF0 & ~geF5;
        // Masks of this step above those of the step before, which give the context.
        const auto both = [](unsigned now, unsigned before) {
            return static_cast<std::uint64_t>(now) << 16 | before;
        };
        const std::uint64_t expected = both(lead, state.lead) << 1 |
                                       both(lead34, state.lead34) << 2 |
                                       both(lead4, state.lead4) << 3;
        // Only three- and four-byte sequences have second bytes out of range or U+FFFE.
        unsigned e0 = 0, ed = 0, f0 = 0, f4 = 0, ef = 0, bf = 0;
        std::uint64_t special = 0;
        if ((lead34 | state.lead34) != 0) {
            const unsigned ge90 = high & atLeast(0x90), geA0 = high & atLeast(0xA0);
            const unsigned geBE = high & atLeast(0xBE);
            e0 = equal(0xE0), ed = equal(0xED), f0 = equal(0xF0), f4 = equal(0xF4);
            ef = equal(0xEF), bf = equal(0xBF);
            special =
                (both(e0, state.e0) << 1 & ~(std::uint64_t(geA0) << 16)) |
                (both(ed, state.ed) << 1 & std::uint64_t(geA0) << 16) |
                (both(f0, state.f0) << 1 & ~(std::uint64_t(ge90) << 16)) |
                (both(f4, state.f4) << 1 & std::uint64_t(ge90) << 16) |
                (both(ef, state.ef) << 2 & both(bf, state.bf) << 1 & std::uint64_t(geBE) << 16);
        }
        const unsigned broken = ((static_cast<unsigned>(expected >> 16) & 0xFFFF) ^ continuations) |
                                (high & ~continuations & ~lead) |
                                (static_cast<unsigned>(special >> 16) & 0xFFFF);
        if (broken != 0) {
            if (state.pending != 0) return -1;
            return static_cast<int>(controls | high);
        }
        // A sequence that runs into the next step starts at the last lead of this one.
        const int pending = static_cast<int>(expected >> 32) & 7;
        const unsigned leadsAtEnd = lead & 0xE000;
        state = Utf8State{lead,
                          lead34,
                          lead4,
                          e0,
                          ed,
                          f0,
                          f4,
                          ef,
                          bf,
                          pending,
                          pending != 0 ? 16 - (31 - __builtin_clz(leadsAtEnd)) : 0};
        return static_cast<int>(controls);
    }
#endif
};

#endif
