// The streaming and the fed reader against the in-memory reader on arbitrary bytes: the same
// nodes, values, errors, lines and columns. The first input byte picks the mode (strict or
// lenient) and the chunk or piece size (1 to 64 bytes); the rest is the document.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "FuzzCheck.h"
#include "ThreeWayReading.h"

namespace {

// Reports two traces that part; the messages of the two errors reported where they are met
// (a byte the charset does not decode, one outside US-ASCII) are compared alone.
void compare(const std::vector<std::string>& expected, const std::vector<std::string>& got,
             const char* how) {
    const std::string& last = expected.back();
    if (last.find("Couldn't transcode") != std::string::npos ||
        last.find("The encoding is US-ASCII") != std::string::npos) {
        const auto message = [](const std::string& line) {
            const std::size_t space = line.find(' ', 6);
            return space == std::string::npos ? line : line.substr(space);
        };
        fuzzCheck(message(got.back()) == message(last), "the same decoding error");
        return;
    }
    const std::string difference = three_way::firstDifference(expected, got);
    if (difference.empty()) return;
    std::fprintf(stderr, "%s: %s\n", how, difference.c_str());
    fuzzCheck(false, "streamed and fed readers read as the in-memory reader");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1) return 0;
    QzXmlReaderOptions options;
    options.strict = (data[0] & 0x80) != 0;
    const std::size_t piece = 1 + (data[0] & 0x3F);
    const std::string document(reinterpret_cast<const char*>(data) + 1, size - 1);
    // One reading of the two goes through node views, so that views meet every window move.
    const three_way::Access viewed =
        (data[0] & 0x40) != 0 ? three_way::Access::Views : three_way::Access::Owned;
    const three_way::Access owned =
        viewed == three_way::Access::Views ? three_way::Access::Owned : three_way::Access::Views;
    const std::vector<std::string> expected = three_way::inMemory(document, options);
    compare(expected, three_way::streamed(document, options, piece, viewed), "streamed");
    compare(expected, three_way::fed(document, options, piece, owned), "fed");
    return 0;
}
