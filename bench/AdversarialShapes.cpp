// Time per input byte of documents shaped to hurt a parser (deep nesting, huge tags, huge
// values, many references, huge comments) against an ordinary document of the same size,
// from 1 MB up to 64 MB. Each shape must stay within 4 times the ordinary document's time per
// byte and grow no faster than n log n (beyond what the ordinary document's own time per
// byte grows, which is the memory hierarchy's share). Prints a Markdown table; exits 1 when a
// bound is broken. A shape that costs under a quarter of the ordinary time per byte at every
// size is held to the first bound only: its growth is too small to tell from noise.
//
//   qzxml_adversarial [MAX_MB]     (sizes 1, 4, 16, 64 MB up to MAX_MB; default 64)
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

#include "ProcessSetup.h"
#include "QzXmlContentHandler.h"
#include "QzXmlReader.h"
#include "QzXmlSAXParser.h"

namespace {

constexpr std::size_t MB = 1 << 20;
constexpr double PerByteBound = 4.0;

// Repeats unit until body reaches about bytes, between head and tail.
std::string fill(const std::string& head, const std::string& unit, const std::string& tail,
                 std::size_t bytes) {
    std::string doc = head;
    doc.reserve(bytes + head.size() + tail.size() + unit.size());
    while (doc.size() + tail.size() < bytes)
        doc += unit;
    return doc + tail;
}

std::string ordinary(std::size_t bytes) {
    return fill("<records>",
                "\n  <record id=\"1042\" type=\"sale\"><name>Ren\xC3\xA9"
                "e Fran\xC3\xA7ois</name><amount currency=\"EUR\">12.50</amount><note>paid "
                "&amp; shipped</note></record>",
                "\n</records>", bytes);
}

std::string deepNesting(std::size_t bytes) {
    const std::size_t levels = bytes / 7;
    std::string doc;
    doc.reserve(levels * 7);
    for (std::size_t i = 0; i < levels; ++i)
        doc += "<a>";
    for (std::size_t i = 0; i < levels; ++i)
        doc += "</a>";
    return doc;
}

std::string manyAttributes(std::size_t bytes) {
    std::string doc = "<r";
    for (std::size_t i = 0; doc.size() + 3 < bytes; ++i)
        doc += " a" + std::to_string(i) + "=\"v\"";
    return doc + "/>";
}

std::string manyNamespaces(std::size_t bytes) {
    std::string doc = "<r";
    std::size_t i = 0;
    for (; doc.size() + 40 < bytes; ++i)
        doc += " xmlns:p" + std::to_string(i) + "=\"urn:" + std::to_string(i) + "\"";
    return doc + "><p" + std::to_string(i / 2) + ":c p0:x=\"1\"/></r>";
}

std::string hugeAttributeValue(std::size_t bytes) {
    return "<r a=\"" + std::string(bytes - 10, 'x') + "\"/>";
}

std::string characterReferences(std::size_t bytes) {
    return fill("<r>", "&#65;&#x42;", "</r>", bytes);
}

std::string hugeComment(std::size_t bytes) {
    return "<r><!--" + std::string(bytes - 14, 'x') + "--></r>";
}

class NullHandler : public QzXmlContentHandler {
public:
    void startElement(const QzXmlName&, const QzXmlAttributeSet&) override {}
    void endElement(const QzXmlName&) override {}
    void characters(const QzCString&) override {}
};

void readAll(const QzCString& doc) {
    QzXmlReader reader(doc);
    while (!reader.eof())
        reader.readNextNode();
}

void parseAll(const QzCString& doc) {
    NullHandler handler;
    QzXmlSAXParser parser;
    parser.setContentHandler(&handler);
    parser.parse(doc);
}

// CPU time of the process: other work on a shared machine stretches the wall clock, not this.
double cpuNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e9 + double(now.tv_nsec);
}

// Best of five runs (the machine is shared, and load on it comes in bursts), in nanoseconds per
// byte.
double nsPerByte(const std::function<void(const QzCString&)>& run, const QzCString& doc) {
    double best = 1e300;
    for (int i = 0; i < 5; ++i) {
        const double start = cpuNanoseconds();
        run(doc);
        best = std::min(best, (cpuNanoseconds() - start) / static_cast<double>(doc.length()));
    }
    return best;
}

struct Shape {
    const char* name;
    std::string (*make)(std::size_t);
};

struct Timing {
    double reader;
    double parser;
};

Timing measure(const Shape& shape, std::size_t bytes) {
    const QzCString doc(shape.make(bytes));
    return {nsPerByte(readAll, doc), nsPerByte(parseAll, doc)};
}

}  // namespace

int main(int argc, char** argv) {
    setUpProcess();
    const std::size_t maxMb = argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 64;
    std::vector<std::size_t> sizes;
    for (std::size_t mb = 1; mb <= maxMb; mb *= 4)
        sizes.push_back(mb * MB);
    const Shape baseline = {"ordinary records", ordinary};
    const Shape shapes[] = {{"(a) nesting 7 bytes a level", deepNesting},
                            {"(b) attributes in one tag", manyAttributes},
                            {"(c) namespace declarations in one tag", manyNamespaces},
                            {"(d) one attribute value", hugeAttributeValue},
                            {"(e) character references", characterReferences},
                            {"(f) one comment", hugeComment}};

    std::vector<Timing> base;
    for (std::size_t bytes : sizes)
        base.push_back(measure(baseline, bytes));
    // The ordinary document's own growth of time per byte from the smallest to the largest.
    const double baseGrowth = std::max(
        {1.0, base.back().reader / base.front().reader, base.back().parser / base.front().parser});
    const double nLogN = std::log2(double(sizes.back())) / std::log2(double(sizes.front()));

    std::printf(
        "| shape | MB | reader ns/byte | x ordinary | event parser ns/byte | x ordinary |\n"
        "|---|---|---|---|---|---|\n");
    for (std::size_t i = 0; i < sizes.size(); ++i)
        std::printf("| %s | %zu | %.2f | 1.00 | %.2f | 1.00 |\n", baseline.name, sizes[i] / MB,
                    base[i].reader, base[i].parser);
    bool ok = true;
    std::vector<std::string> growth;
    for (const Shape& shape : shapes) {
        std::vector<Timing> t;
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            t.push_back(measure(shape, sizes[i]));
            const double rx = t[i].reader / base[i].reader;
            const double px = t[i].parser / base[i].parser;
            const bool within = rx <= PerByteBound && px <= PerByteBound;
            ok = ok && within;
            std::printf("| %s | %zu | %.2f | %.2f%s | %.2f | %.2f%s |\n", shape.name, sizes[i] / MB,
                        t[i].reader, rx, rx <= PerByteBound ? "" : " (over)", t[i].parser, px,
                        px <= PerByteBound ? "" : " (over)");
            std::fflush(stdout);
        }
        const double g =
            std::max(t.back().reader / t.front().reader, t.back().parser / t.front().parser);
        bool cheap = true;
        for (std::size_t i = 0; i < sizes.size(); ++i)
            cheap = cheap &&
                    std::max(t[i].reader / base[i].reader, t[i].parser / base[i].parser) < 0.25;
        const bool withinGrowth = cheap || g <= nLogN * baseGrowth;
        ok = ok && withinGrowth;
        char line[256];
        std::snprintf(line, sizeof line, "%s: time per byte grew %.2fx (bound %.2fx)%s%s",
                      shape.name, g, nLogN * baseGrowth,
                      cheap ? ", under a quarter of ordinary" : "", withinGrowth ? "" : " OVER");
        growth.push_back(line);
    }
    std::printf(
        "\nFrom %zu MB to %zu MB (bound: log n grows %.2fx, times the ordinary "
        "document's own %.2fx):\n",
        sizes.front() / MB, sizes.back() / MB, nLogN, baseGrowth);
    for (const std::string& line : growth)
        std::printf("- %s\n", line.c_str());
    std::printf("\n%s\n", ok ? "every shape within its bounds" : "SOME SHAPE IS OUT OF BOUNDS");
    return ok ? 0 : 1;
}
