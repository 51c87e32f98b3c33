#ifndef QZXMLCHARCHECKS_H
#define QZXMLCHARCHECKS_H

#include <cstdint>

#include "QzCString.h"

/// What the strict reader asks of characters: UTF-8 that encodes only characters XML allows,
/// names of fifth-edition name characters, line ends normalised to line feeds. All work on
/// UTF-8 bytes; the reader runs them over text it has already decoded to UTF-8.
class QzXmlCharChecks {
public:
    using Byte = unsigned char;

    /// The first byte of the first sequence in [first, last) that is not well-formed UTF-8 or
    /// encodes a character outside XML's Char production; last when there is none. sawCR is
    /// set when a carriage return was met before that point.
    static const Byte* firstInvalidCharacter(const Byte* first, const Byte* last, bool& sawCR);
    /// What is wrong with the sequence at `at` (which firstInvalidCharacter returned).
    static QzCString describeInvalidCharacter(const Byte* at, const Byte* last);
    /// Replaces each CR LF pair and each lone CR in [first, last) with LF, in place; returns
    /// the new end.
    static Byte* normalizeLineEnds(Byte* first, Byte* last);

    /// The character at p, which must start well-formed UTF-8; p moves past it.
    static std::uint32_t decode(const Byte*& p);
    /// Whether c is allowed in an XML document.
    static bool isChar(std::uint32_t c);
    /// Whether c may start a name (fifth edition), ":" included.
    static bool isNameStartChar(std::uint32_t c);
    /// Whether c may continue a name (fifth edition).
    static bool isNameChar(std::uint32_t c);
    /// The first character of [first, last) that breaks the Name production, or last. Input
    /// must be well-formed UTF-8.
    static const Byte* invalidNameCharacter(const Byte* first, const Byte* last);
    /// The character at p as "'c'" for printable ASCII, else "U+XXXX", for messages.
    static QzCString describe(const Byte* p, const Byte* last);
};

#endif
