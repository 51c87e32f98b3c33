// What the strict reader's character checks cost, beside what the readers cost, on the same
// documents in one run: the room a strict/lenient ratio leaves for checking, and how much of
// it the checks take with each vector width. For each document it prints, in milliseconds of
// this thread's CPU time (median of the passes):
//
//   lenient, strict    the readers over the document in memory, owned strings, as qzxml-bench
//   room               what strict may take beyond lenient and still read at 85 % of its speed
//   read               one pass that only loads every byte (memchr of a byte absent)
//   stops              the strict text scan from stop to stop over the whole document: "<",
//                      "&" and "]" found, every character checked on the way
//   check              the characters alone: one pass of the checks, nothing to stop at
//
// "stops" and "check" are given for each vector width this processor has (SSE2, AVX2).
//
//   qzxml_check_cost [--passes=N (9)] FILE...
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "Document.h"
#include "Measurement.h"
#include "QzXmlCharChecks.h"
#include "Workload.h"

namespace {

using Byte = QzXmlCharChecks::Byte;

// A pass over the document's bytes; Scan returns a checksum of where it went.
template <class Scan>
class ScanWorkload : public Workload {
public:
    explicit ScanWorkload(Scan scan) : scan_(scan) {}
    void load(const Document& document) override {
        first_ = reinterpret_cast<const Byte*>(document.data());
        last_ = first_ + document.size();
    }
    std::uint64_t run() override { return scan_(first_, last_); }

private:
    Scan scan_;
    const Byte* first_ = nullptr;
    const Byte* last_ = nullptr;
};

template <class Scan>
double milliseconds(const Document& document, Scan scan, int passes) {
    ScanWorkload<Scan> workload(scan);
    workload.load(document);
    return timePasses(workload, passes).seconds * 1e3;
}

double readerMilliseconds(const Document& document, const char* name, int passes) {
    const std::unique_ptr<Workload> workload = makeWorkload(name);
    if (!workload) {
        std::fprintf(stderr, "no workload %s\n", name);
        std::exit(2);
    }
    workload->load(document);
    return timePasses(*workload, passes).seconds * 1e3;
}

std::uint64_t readBytes(const Byte* first, const Byte* last) {
    return std::memchr(first, 0x01, last - first) == nullptr;
}

// Every text stop of the document, as the strict reader finds them; a character the checks
// refuse also stops, and is stepped over.
std::uint64_t textStops(const Byte* first, const Byte* last) {
    std::uint64_t stops = 0;
    for (const Byte* p = first; (p = QzXmlCharChecks::findTextStop(p, last)) != last; ++p) {
        ++stops;
    }
    return stops;
}

std::uint64_t checkAlone(const Byte* first, const Byte* last) {
    return QzXmlCharChecks::firstInvalidCharacter(first, last) - first;
}

}  // namespace

int main(int argc, char** argv) {
    int passes = 9;
    std::vector<std::string> files;
    for (int i = 1; i < argc; ++i) {
        if (std::strncmp(argv[i], "--passes=", 9) == 0) {
            passes = std::atoi(argv[i] + 9);
        } else {
            files.emplace_back(argv[i]);
        }
    }
    if (files.empty() || passes < 1) {
        std::fprintf(stderr, "usage: qzxml_check_cost [--passes=N] FILE...\n");
        return 2;
    }
    const bool wide = QzXmlCharChecks::wideSteps();
    std::printf("%-22s %8s %8s %6s %7s %7s %11s %11s\n", "document", "lenient", "strict", "ratio",
                "room", "read", "stops", "check");
    for (const std::string& file : files) {
        const Document document(file);
        const double lenient = readerMilliseconds(document, "qz-reader", passes);
        const double strict = readerMilliseconds(document, "qz-strict", passes);
        std::string stops, check;
        for (const bool avx2 : {false, true}) {
            QzXmlCharChecks::setWideSteps(avx2);
            if (QzXmlCharChecks::wideSteps() != avx2) continue;
            char figure[32];
            std::snprintf(figure, sizeof figure, "%s%.2f", stops.empty() ? "" : "/",
                          milliseconds(document, textStops, passes));
            stops += figure;
            std::snprintf(figure, sizeof figure, "%s%.2f", check.empty() ? "" : "/",
                          milliseconds(document, checkAlone, passes));
            check += figure;
        }
        QzXmlCharChecks::setWideSteps(wide);
        std::printf("%-22s %8.2f %8.2f %6.2f %7.2f %7.2f %11s %11s\n", document.name().c_str(),
                    lenient, strict, lenient / strict, lenient / 0.85 - lenient,
                    milliseconds(document, readBytes, passes), stops.c_str(), check.c_str());
    }
    std::printf("(stops and check: SSE2/AVX2 where both run; milliseconds per pass)\n");
}
