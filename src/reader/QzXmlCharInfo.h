#ifndef QZXMLCHARINFO_H
#define QZXMLCHARINFO_H

#include <cstdint>

/// XML 1.0 character classes, two bits per code point of the Basic Multilingual Plane, four
/// code points a byte with the lowest in the highest bits: 0 not an XML character, 1 other
/// character (whitespace included), 2 name character, 3 name-start character.
extern const unsigned char qzXmlCharacterInfo[16384];

/// The class of code point c; code points above U+FFFF are outside the table and class 0.
inline unsigned qzXmlCharClass(std::uint64_t c) {
    return c > 0xFFFF ? 0 : (qzXmlCharacterInfo[c >> 2] >> (6 - 2 * (c & 3))) & 3;
}

#endif
