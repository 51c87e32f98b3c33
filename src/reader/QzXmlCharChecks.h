#ifndef QZXMLCHARCHECKS_H
#define QZXMLCHARCHECKS_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "QzCString.h"
#include "QzXmlAvx2Steps.h"
#include "QzXmlSimd.h"

/// What the strict reader asks of characters: UTF-8 that encodes only characters XML allows,
/// names of fifth-edition name characters, line ends normalised to line feeds. All work on
/// UTF-8 bytes; the reader runs them over text it has already decoded to UTF-8.
class QzXmlCharChecks {
public:
    using Byte = unsigned char;

    /// The bytes a sequence with this lead byte claims: 1 for ASCII and stray continuations.
    static constexpr int leadLength(Byte b) {
        return b >= 0xF0 ? 4 : b >= 0xE0 ? 3 : b >= 0xC0 ? 2 : 1;
    }
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
    /// The first byte from p on that is "<", "&" or "]", or that starts a character text cannot
    /// take (a control other than tab, line feed and carriage return, UTF-8 that is not
    /// well formed or encodes a character XML refuses); last when there is none. p must start
    /// a character. Thirty-two bytes a step with AVX2, sixteen with SSE2, byte by byte only
    /// around what the steps stop at.
    [[gnu::always_inline]] static const Byte* findTextStop(const Byte* p, const Byte* last) {
        return firstStop<true>(p, last);
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
    /// encodes a character outside XML's Char production; last when there is none.
    static const Byte* firstInvalidCharacter(const Byte* first, const Byte* last);
    /// Whether the vector scans take thirty-two bytes a step (AVX2): so where the processor
    /// has it, unless the environment sets QZXML_SIMD=sse2.
    static bool wideSteps();
    /// Takes AVX2 steps (where the processor has them) or SSE2's; for tests of both.
    static void setWideSteps(bool wide);
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
    using Reach = QzXmlAvx2Steps::Reach;

    static bool isContinuation(Byte b) {
        return (b & 0xC0) == 0x80;
    }

    /// The first byte from p on that starts a character text cannot take, or that is "<",
    /// "&" or "]" when Markup; last when there is none. p must start a character.
    template <bool Markup>
    [[gnu::always_inline]] static const Byte* firstStop(const Byte* p, const Byte* last) {
        const Byte* const first = p;
        for (;;) {
            const Reach reach = vectorSteps<Markup>(p, last);
            if (reach.stop) return reach.at;
            p = sequenceStart(reach.at, first);
            // Where the vector steps stopped, a step's worth is walked character by character
            // (all that is left when little is).
            const Byte* until = last - p > 2 * kWalk ? p + kWalk : last;
            if (walkCharacters<Markup>(p, until, last) || p == last) return p;
        }
    }
    /// Walks the characters from p, which must start one, until a character begins at or
    /// after until: false then, p on it. True with p on the first character text cannot take,
    /// or on "<", "&" or "]" when Markup.
    template <bool Markup>
    static bool walkCharacters(const Byte*& p, const Byte* until, const Byte* last) {
        while (p < until) {
            const Byte b = *p;
            if (b < 0x80) {
                if ((Markup && (b == '<' || b == '&' || b == ']')) || needsCheck(b)) return true;
                ++p;
                continue;
            }
            const int length = characterLength(p, last);
            if (length == 0) return true;
            p += length;
        }
        return false;
    }
    /// The start of the character p falls in, when one begun in the three bytes before p (not
    /// before first) runs on to p or past it; else p.
    static const Byte* sequenceStart(const Byte* p, const Byte* first) {
        for (int back = 1; back <= 3 && p - back >= first; ++back) {
            const Byte b = p[-back];
            if (isContinuation(b)) continue;
            return leadLength(b) > back ? p - back : p;
        }
        return p;
    }

#ifdef QZXML_SSE2
    static constexpr std::ptrdiff_t kWalk = 32;
    /// Whether the vector steps are AVX2's.
    static bool avx2_;

    /// Vector steps from p over text that needs no closer look, by the widest instructions
    /// the processor has: up to the first "<", "&" or "]" when Markup (a stop), or the
    /// control, AVX2 steps find when nothing is amiss before it; else to the start of the
    /// step where something is, or where fewer bytes are left than a step takes.
    template <bool Markup>
    [[gnu::always_inline]] static Reach vectorSteps(const Byte* p, const Byte* last) {
        // Most texts are short (the indentation between tags above all): one that ends in its
        // first sixteen bytes, plain ASCII and whitespace up to there, is done with here.
        if (Markup && last - p >= 16) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
            const unsigned markup = markupIn(v);
            const unsigned odd = mask(_mm_cmplt_epi8(v, _mm_set1_epi8(0x20))) & ~spaceIn(v);
            if (markup != 0 && (odd & ((markup & (0u - markup)) - 1)) == 0) {
                return {p + __builtin_ctz(markup), true};
            }
        }
        if (avx2_) return QzXmlAvx2Steps::cleanSteps(p, last, Markup);
        return sse2Steps<Markup>(p, last);
    }

    /// What one sixteen-byte step leaves to the next: its bytes shifted by 0x80 (so that
    /// unsigned ranges are signed compares), and which of its last three are from 0xE0, and
    /// from 0x80 (a sequence may run on).
    struct Context {
        __m128i shifted = _mm_setzero_si128();
        unsigned wide = 0;
        unsigned open = 0;
    };

    template <bool Markup>
    [[gnu::always_inline]] static Reach sse2Steps(const Byte* p, const Byte* last) {
        Context context;
        for (; last - p >= 16; p += 16) {
            const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
            const unsigned markup = Markup ? markupIn(v) : 0;
            // Plain ASCII without controls or whitespace, after a step that left no sequence
            // open, is the common case and needs no closer look (the context stays as it is:
            // its end is ASCII too).
            const unsigned odd = mask(_mm_cmplt_epi8(v, _mm_set1_epi8(0x20)));
            if ((markup | odd | context.open) == 0) continue;
            const unsigned wrong = faults(v, context);
            if ((markup | wrong) != 0) return QzXmlAvx2Steps::reachIn(p, markup, wrong);
        }
        return {p, false};
    }
    /// The bytes of now, each moved N places on, the last N of before coming in first.
    template <int N>
    static __m128i shiftIn(__m128i now, __m128i before) {
        return _mm_or_si128(_mm_slli_si128(now, N), _mm_srli_si128(before, 16 - N));
    }
    static unsigned mask(__m128i m) {
        return static_cast<unsigned>(_mm_movemask_epi8(m));
    }
    /// Of the sixteen bytes v, the tabs, line feeds and carriage returns ((b | 4) == 13 takes
    /// tab and carriage return).
    static unsigned spaceIn(__m128i v) {
        return mask(
            _mm_or_si128(_mm_cmpeq_epi8(_mm_or_si128(v, _mm_set1_epi8(4)), _mm_set1_epi8(13)),
                         _mm_cmpeq_epi8(v, _mm_set1_epi8('\n'))));
    }
    /// Of the sixteen bytes v, the "<", "&" and "]".
    static unsigned markupIn(__m128i v) {
        return mask(_mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, _mm_set1_epi8('<')),
                                              _mm_cmpeq_epi8(v, _mm_set1_epi8('&'))),
                                 _mm_cmpeq_epi8(v, _mm_set1_epi8(']'))));
    }
    /// Of the sixteen bytes v, those text cannot take as they are: controls other than tab,
    /// line feed and carriage return, and where UTF-8 goes wrong or encodes a character XML
    /// refuses (at the faulty byte, or where the continuation it lacks should be: at most
    /// three bytes after the sequence's start, across steps by way of context).
    [[gnu::always_inline]] static unsigned faults(__m128i v, Context& context) {
        const auto set = [](int byte) { return _mm_set1_epi8(static_cast<char>(byte)); };
        // Which of the bytes x (shifted) are from `byte` on, and which below, as unsigned.
        const auto atLeast = [&set](__m128i x, int byte) {
            return _mm_cmpgt_epi8(x, set((byte ^ 0x80) - 1));
        };
        const auto below = [&set](__m128i x, int byte) {
            return _mm_cmplt_epi8(x, set(byte ^ 0x80));
        };
        const __m128i s = _mm_xor_si128(v, set(0x80));
        const __m128i before1 = shiftIn<1>(s, context.shifted);
        // Continuations are 0x80-0xBF, below -64 as signed; a lead from 0xC0 wants one next.
        const __m128i continuation = _mm_cmplt_epi8(v, set(0xC0));
        __m128i wanted = atLeast(before1, 0xC0);
        __m128i wrong = _mm_cmpeq_epi8(_mm_and_si128(v, set(0xFE)), set(0xC0));
        const unsigned wide = mask(atLeast(s, 0xE0));
        if ((wide | context.wide) != 0) {
            // Three- and four-byte sequences, rare in most text: the leads from 0xE0 and 0xF0
            // want a second and third continuation, and constrain the byte after them.
            const __m128i before2 = shiftIn<2>(s, context.shifted);
            const __m128i before3 = shiftIn<3>(s, context.shifted);
            wanted =
                _mm_or_si128(wanted, _mm_or_si128(atLeast(before2, 0xE0), atLeast(before3, 0xF0)));
            const __m128i belowA0 = below(s, 0xA0), below90 = below(s, 0x90);
            const auto after = [&before1, &set](int lead) {
                return _mm_cmpeq_epi8(before1, set(lead ^ 0x80));
            };
            // Leads past F4; overlong forms after E0 and F0, surrogates after ED, code points
            // past U+10FFFF after F4; U+FFFE and U+FFFF (EF BF BE, EF BF BF).
            wrong = _mm_or_si128(wrong, atLeast(s, 0xF5));
            wrong = _mm_or_si128(wrong, _mm_and_si128(after(0xE0), belowA0));
            wrong = _mm_or_si128(wrong, _mm_andnot_si128(belowA0, after(0xED)));
            wrong = _mm_or_si128(wrong, _mm_and_si128(after(0xF0), below90));
            wrong = _mm_or_si128(wrong, _mm_andnot_si128(below90, after(0xF4)));
            const __m128i ef = _mm_cmpeq_epi8(before2, set(0xEF ^ 0x80));
            wrong = _mm_or_si128(wrong,
                                 _mm_andnot_si128(below(s, 0xBE), _mm_and_si128(ef, after(0xBF))));
        }
        context.shifted = s;
        context.wide = wide & 0xE000;
        context.open = mask(v) & 0xE000;
        wrong = _mm_or_si128(wrong, _mm_xor_si128(wanted, continuation));
        // Controls are below 0x20; tab, line feed and carriage return pass.
        return mask(wrong) | (mask(below(s, 0x20)) & ~spaceIn(v));
    }
#else
    static constexpr std::ptrdiff_t kWalk = PTRDIFF_MAX / 4;

    template <bool Markup>
    static Reach vectorSteps(const Byte* p, const Byte*) {
        return {p, false};
    }
#endif
};

#endif
