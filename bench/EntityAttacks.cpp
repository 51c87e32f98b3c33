// Documents built to make entity expansion cost without end (billion laughs, quadratic
// blow-up, chains deeper than the limit, entities that contain themselves), read by the
// strict reader with its default limits: each must be rejected with its limit's message, and
// what expansion takes must stay below the document's size plus entityAmplificationThreshold:
// the heap the reader holds once constructed (its copy of the document and the declarations
// of the prolog) is the base the peak is measured from.
// Prints a Markdown table; exits 1 when a document is accepted or the bound is broken.
//
//   qzxml_entity_attacks
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "MallocCounter.h"
#include "QzXmlParseError.h"
#include "QzXmlReader.h"

namespace {

// Ten references to the level below at each of levels, the last one named by root.
std::string laughs(int levels, const std::string& use) {
    std::string doc = "<!DOCTYPE r [\n<!ENTITY l0 \"lol\">\n";
    for (int i = 1; i <= levels; ++i) {
        doc += "<!ENTITY l" + std::to_string(i) + " \"";
        for (int k = 0; k < 10; ++k)
            doc += "&l" + std::to_string(i - 1) + ";";
        doc += "\">\n";
    }
    return doc + "]>\n" + use + "\n";
}

// One entity of size bytes, referenced times times, each reference followed by between.
std::string quadratic(std::size_t size, int times, const std::string& between = "") {
    std::string doc = "<!DOCTYPE r [<!ENTITY big \"" + std::string(size, 'x') + "\">]>\n<r>";
    for (int i = 0; i < times; ++i)
        doc += "&big;" + between;
    return doc + "</r>\n";
}

// Entity i refers to entity i + 1, depth deep.
std::string chain(int depth) {
    std::string doc = "<!DOCTYPE r [\n";
    for (int i = 0; i < depth; ++i)
        doc += "<!ENTITY e" + std::to_string(i) + " \"&e" + std::to_string(i + 1) + ";\">\n";
    doc += "<!ENTITY e" + std::to_string(depth) + " \"end\">\n]>\n<r>&e0;</r>\n";
    return doc;
}

struct Attack {
    const char* name;
    std::string document;
};

}  // namespace

int main() {
    const std::vector<Attack> attacks = {
        {"billion laughs in text", laughs(9, "<r>&l9;</r>")},
        {"billion laughs in a value", laughs(9, "<r a=\"&l9;\"/>")},
        {"quadratic blow-up (30 kB x 5,000)", quadratic(30000, 5000)},
        {"quadratic blow-up, text between", quadratic(20000, 3000, "<![CDATA[y]]>z")},
        {"chain 1,000 deep", chain(1000)},
        {"entity containing itself through another",
         "<!DOCTYPE r [<!ENTITY a \"x&b;\"><!ENTITY b \"y&a;\">]><r>&a;</r>"},
    };
    const std::size_t threshold = 8 << 20;
    bool ok = true;
    std::printf(
        "| document | bytes | rejected with | ms | peak heap (KiB) | bound (KiB) |\n"
        "|---|---:|---|---:|---:|---:|\n");
    for (const Attack& attack : attacks) {
        QzXmlReaderOptions options;
        options.strict = true;
        std::string message = "accepted";
        const QzCString document(attack.document);
        std::int64_t before = MallocCounter::live();
        const auto start = std::chrono::steady_clock::now();
        try {
            QzXmlReader reader(document, options);
            before = MallocCounter::live();
            MallocCounter::resetPeak();
            while (!reader.eof())
                reader.readNextNode();
            ok = false;
        } catch (const QzXmlParseError& e) {
            message = e.why();
        }
        const double ms =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
                .count();
        const std::int64_t peak = (MallocCounter::peak() - before + 1023) / 1024;
        const std::int64_t bound =
            static_cast<std::int64_t>(attack.document.size() + threshold) / 1024;
        ok = ok && peak <= bound;
        std::printf("| %s | %zu | %s | %.1f | %lld | %lld |\n", attack.name, attack.document.size(),
                    message.c_str(), ms, static_cast<long long>(peak),
                    static_cast<long long>(bound));
    }
    return ok ? 0 : 1;
}
