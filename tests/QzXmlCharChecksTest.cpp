#include <gtest/gtest.h>

#include <random>
#include <string>

#include "QzXmlCharChecks.h"

namespace {

using Byte = unsigned char;

// Where a strict text scan ends and why: "stop@N" at markup, "bad@N" at a character XML does
// not allow, "end" at the end; walked one character at a time.
std::string scanByCharacters(const std::string& text) {
    const Byte* first = reinterpret_cast<const Byte*>(text.data());
    const Byte* last = first + text.size();
    for (const Byte* p = first; p < last;) {
        if (*p == '<' || *p == '&' || *p == ']') return "stop@" + std::to_string(p - first);
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

}  // namespace

// The vector scan takes whole two-byte sequences without stopping; wherever it does stop, it
// must agree with a walk character by character, on every kind of byte at every offset.
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
                                  "\xff"};
    std::mt19937 random(7);
    for (int round = 0; round < 20000; ++round) {
        std::string text;
        // Short texts and long ones, with sequences across many sixteen-byte steps.
        const int pieceCount = static_cast<int>(random() % (round % 2 ? 40 : 160));
        // Mostly text that scans to its end, with a rare odd piece.
        for (int i = 0; i < pieceCount; ++i) {
            const std::size_t pick = random() % 100;
            text += pick < 60 ? pieces[0] : pick < 80 ? pieces[5] : pieces[random() % 22];
        }
        ASSERT_EQ(scanBySteps(text), scanByCharacters(text)) << round;
    }
    EXPECT_EQ(scanBySteps(std::string(15, 'a') + "\xc3\xa9" + std::string(20, 'b') + "<"),
              "stop@37");
    EXPECT_EQ(scanBySteps(std::string(15, 'a') + "\xc3" + std::string(20, 'b')), "bad@15");
    EXPECT_EQ(scanBySteps(std::string(31, 'a') + "\xc3\xa9"), "end");
    // A sequence across the steps, and a broken one, at each offset of a long text.
    for (std::size_t at = 0; at < 100; ++at) {
        std::string text(100, 'a');
        text.replace(at, 1, "\xe2\x82\xac");
        ASSERT_EQ(scanBySteps(text), "end") << at;
        text.replace(at, 3, "\xe2\x82");
        ASSERT_EQ(scanBySteps(text), "bad@" + std::to_string(at)) << at;
    }
}
