#include <gtest/gtest.h>

#include <random>
#include <string>

#include "QzXmlCharChecks.h"

namespace {

using Byte = unsigned char;

// Where a strict text scan ends and why: "stop@N" at markup (unless not asked), "bad@N" at a
// character XML does not allow, "end" at the end; walked one character at a time.
std::string scanByCharacters(const std::string& text, bool markup = true) {
    const Byte* first = reinterpret_cast<const Byte*>(text.data());
    const Byte* last = first + text.size();
    for (const Byte* p = first; p < last;) {
        if (markup && (*p == '<' || *p == '&' || *p == ']')) {
            return "stop@" + std::to_string(p - first);
        }
        const int length = QzXmlCharChecks::characterLength(p, last);
        if (length == 0) return "bad@" + std::to_string(p - first);
        p += length;
    }
    return "end";
}

// The same, as the reader scans: findTextStop, and characterLength where it stops otherwise.
std::string scanBySteps(const std::string& text) {
    const Byte* first = reinterpret_cast<const Byte*>(text.data());
    const Byte* last = first + text.size();
    for (const Byte* p = first;;) {
        p = QzXmlCharChecks::findTextStop(p, last);
        if (p == last) return "end";
        if (*p == '<' || *p == '&' || *p == ']') return "stop@" + std::to_string(p - first);
        const int length = QzXmlCharChecks::characterLength(p, last);
        if (length == 0) return "bad@" + std::to_string(p - first);
        p += length;
    }
}

// The same for the checks of text without markup.
std::string firstInvalid(const std::string& text) {
    const Byte* first = reinterpret_cast<const Byte*>(text.data());
    const Byte* last = first + text.size();
    const Byte* bad = QzXmlCharChecks::firstInvalidCharacter(first, last);
    return bad == last ? "end" : "bad@" + std::to_string(bad - first);
}

}  // namespace

// The vector steps (AVX2's and SSE2's, where the processor has them) take text without
// stopping where nothing is amiss; wherever they stop, they must agree with a walk character
// by character, on every kind of byte at every offset. The checks without markup agree too.
TEST(QzXmlCharChecks, TextScanAgreesWithACharacterWalk) {
    const std::string pieces[] = {"a",
                                  " ",
                                  "\n",
                                  "\t",
                                  "\r",
                                  "\xc3\xa9",
                                  "\xe2\x82\xac",
                                  "\xf0\x9f\x98\x80",
                                  "<",
                                  "&",
                                  "]",
                                  "\x01",
                                  "\xc3",
                                  "\xa9",
                                  "\xc0\xaf",
                                  "\xed\xa0\x80",
                                  "\xef\xbf\xbe",
                                  "\xdf\xbf",
                                  "\x7f",
                                  "\xc2\x80",
                                  "\xf4\x90\x80\x80",
                                  "\xff",
                                  "\xe0\x9f\xbf",
                                  "\xf0\x8f\xbf\xbf",
                                  "\xef\xbf\xbd",
                                  "\xf4\x8f\xbf\xbf",
                                  "\xed\x9f\xbf",
                                  "\xf5\x80\x80\x80"};
    const std::size_t pieceKinds = sizeof pieces / sizeof pieces[0];
    const bool wide = QzXmlCharChecks::wideSteps();
    for (const bool avx2 : {false, true}) {
        QzXmlCharChecks::setWideSteps(avx2);
        std::mt19937 random(7);
        for (int round = 0; round < 20000; ++round) {
            std::string text;
            // Short texts and long ones, with sequences across many steps; mostly text that
            // scans to its end, with a rare odd piece, Latin or wider.
            const int pieceCount = static_cast<int>(random() % (round % 2 ? 40 : 160));
            const std::string& common = pieces[round % 3 == 0 ? 6 : 5];
            for (int i = 0; i < pieceCount; ++i) {
                const std::size_t pick = random() % 100;
                text += pick < 60 ? pieces[0] : pick < 80 ? common : pieces[random() % pieceKinds];
            }
            ASSERT_EQ(scanBySteps(text), scanByCharacters(text)) << round;
            ASSERT_EQ(firstInvalid(text), scanByCharacters(text, false)) << round;
        }
        EXPECT_EQ(scanBySteps(std::string(15, 'a') + "\xc3\xa9" + std::string(20, 'b') + "<"),
                  "stop@37");
        EXPECT_EQ(scanBySteps(std::string(15, 'a') + "\xc3" + std::string(20, 'b')), "bad@15");
        EXPECT_EQ(scanBySteps(std::string(31, 'a') + "\xc3\xa9"), "end");
        // A sequence across the steps, and a broken one, at each offset of a long text; a
        // lead cut short by markup.
        for (std::size_t at = 0; at < 100; ++at) {
            std::string text(100, 'a');
            text.replace(at, 1, "\xe2\x82\xac");
            ASSERT_EQ(scanBySteps(text), "end") << at;
            text.replace(at, 3, "\xe2\x82");
            ASSERT_EQ(scanBySteps(text), "bad@" + std::to_string(at)) << at;
            text.replace(at, 2, "\xe2<");
            ASSERT_EQ(scanBySteps(text), "bad@" + std::to_string(at)) << at;
        }
    }
    QzXmlCharChecks::setWideSteps(wide);
}

// Every pair of bytes, and every three-byte sequence with a lead from E0 (and four-byte ones
// from F0 with their last byte varied), inside a step and across two, by both kinds of steps.
TEST(QzXmlCharChecks, EveryShortSequenceAsACharacterWalkSees) {
    const bool wide = QzXmlCharChecks::wideSteps();
    const auto check = [](const std::string& bytes) {
        for (const std::size_t at : {std::size_t{5}, std::size_t{30}}) {
            std::string text(70, 'a');
            text.replace(at, bytes.size(), bytes);
            ASSERT_EQ(scanBySteps(text), scanByCharacters(text)) << at;
        }
    };
    for (const bool avx2 : {false, true}) {
        QzXmlCharChecks::setWideSteps(avx2);
        for (int b1 = 0; b1 < 256; ++b1) {
            for (int b2 = 0; b2 < 256; ++b2) {
                const std::string pair{static_cast<char>(b1), static_cast<char>(b2)};
                check(pair);
                if (b1 < 0xE0 || (b2 >= 0x40 && b2 < 0x80)) continue;
                for (int b3 = 0; b3 < 256; b3 += b1 >= 0xF0 ? 3 : 1) {
                    check(pair + static_cast<char>(b3));
                    if (b1 >= 0xF0) check(pair + static_cast<char>(b3) + "\xbf");
                }
            }
        }
    }
    QzXmlCharChecks::setWideSteps(wide);
}
