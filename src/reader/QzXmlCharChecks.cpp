#include "QzXmlCharChecks.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

using Byte = QzXmlCharChecks::Byte;

#ifdef QZXML_SSE2
bool processorHasAvx2() {
    return __builtin_cpu_supports("avx2");
}

// AVX2 steps where the processor has them, unless the environment asks for SSE2's.
bool avx2Wanted() {
    const char* choice = std::getenv("QZXML_SIMD");
    return processorHasAvx2() && (choice == nullptr || std::strcmp(choice, "sse2") != 0);
}
#endif

QzCString hexCode(const char* format, unsigned value) {
    char text[96];
    std::snprintf(text, sizeof text, format, value);
    return QzCString(text);
}

}  // namespace

#ifdef QZXML_SSE2
bool QzXmlCharChecks::avx2_ = avx2Wanted();
#endif

bool QzXmlCharChecks::wideSteps() {
#ifdef QZXML_SSE2
    return avx2_;
#else
    return false;
#endif
}

void QzXmlCharChecks::setWideSteps(bool wide) {
#ifdef QZXML_SSE2
    avx2_ = wide && processorHasAvx2();
#else
    static_cast<void>(wide);
#endif
}

const Byte* QzXmlCharChecks::firstInvalidCharacter(const Byte* first, const Byte* last) {
    return firstStop<false>(first, last);
}

QzCString QzXmlCharChecks::describeInvalidCharacter(const Byte* at, const Byte* last) {
    const Byte b0 = *at;
    if (b0 < 0x80) return hexCode("Character U+%04X is not allowed in XML", b0);
    // A complete sequence that decodes to a refused code point is named by that code point.
    const int length = leadLength(b0);
    bool complete = last - at >= length && b0 >= 0xC2 && b0 <= 0xF4;
    for (int i = 1; complete && i < length; ++i)
        complete = (at[i] & 0xC0) == 0x80;
    if (complete) {
        const Byte* p = at;
        const std::uint32_t c = decode(p);
        const bool overlong = (length == 3 && c < 0x800) || (length == 4 && c < 0x10000);
        if (!overlong && c <= 0x10FFFF) return hexCode("Character U+%04X is not allowed in XML", c);
    }
    return hexCode("Invalid UTF-8: byte 0x%02X does not start a well-formed sequence", b0);
}

Byte* QzXmlCharChecks::normalizeLineEnds(Byte* first, Byte* last) {
    Byte* cr = static_cast<Byte*>(std::memchr(first, '\r', last - first));
    if (cr == nullptr) return last;
    Byte* out = cr;
    for (const Byte* in = cr; in < last;) {
        if (*in == '\r') {
            *out++ = '\n';
            in += (in + 1 < last && in[1] == '\n') ? 2 : 1;
        } else {
            *out++ = *in++;
        }
    }
    return out;
}

std::uint32_t QzXmlCharChecks::decode(const Byte*& p) {
    const Byte b0 = *p++;
    if (b0 < 0x80) return b0;
    if (b0 < 0xE0) return (b0 & 0x1Fu) << 6 | (*p++ & 0x3Fu);
    if (b0 < 0xF0) {
        const std::uint32_t c = (b0 & 0x0Fu) << 12 | (p[0] & 0x3Fu) << 6 | (p[1] & 0x3Fu);
        p += 2;
        return c;
    }
    const std::uint32_t c =
        (b0 & 0x07u) << 18 | (p[0] & 0x3Fu) << 12 | (p[1] & 0x3Fu) << 6 | (p[2] & 0x3Fu);
    p += 3;
    return c;
}

bool QzXmlCharChecks::isChar(std::uint32_t c) {
    if (c < 0x20) return c == '\t' || c == '\n' || c == '\r';
    return c <= 0xD7FF || (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
}

bool QzXmlCharChecks::isNameStartChar(std::uint32_t c) {
    if (c < 0x80) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':';
    }
    return (c >= 0xC0 && c <= 0xD6) || (c >= 0xD8 && c <= 0xF6) || (c >= 0xF8 && c <= 0x2FF) ||
           (c >= 0x370 && c <= 0x37D) || (c >= 0x37F && c <= 0x1FFF) ||
           (c >= 0x200C && c <= 0x200D) || (c >= 0x2070 && c <= 0x218F) ||
           (c >= 0x2C00 && c <= 0x2FEF) || (c >= 0x3001 && c <= 0xD7FF) ||
           (c >= 0xF900 && c <= 0xFDCF) || (c >= 0xFDF0 && c <= 0xFFFD) ||
           (c >= 0x10000 && c <= 0xEFFFF);
}

bool QzXmlCharChecks::isNameChar(std::uint32_t c) {
    if (isNameStartChar(c)) return true;
    if (c < 0x80) return c == '-' || c == '.' || (c >= '0' && c <= '9');
    return c == 0xB7 || (c >= 0x300 && c <= 0x36F) || (c >= 0x203F && c <= 0x2040);
}

QzCString QzXmlCharChecks::describe(const Byte* p, const Byte* last) {
    if (p >= last) return QzCString("the end of the document");
    if (*p >= 0x20 && *p < 0x7F)
        return QzCString("'") + QzCString(reinterpret_cast<const char*>(p), 1) + QzCString("'");
    if (characterLength(p, last) == 0) return hexCode("byte 0x%02X", *p);
    const Byte* q = p;
    return hexCode("U+%04X", decode(q));
}
