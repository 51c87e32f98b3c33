// qzxml-bench [options] FILE...: runs our reader, event parser, comparison and writer beside
// libxml2, expat, Xerces-C and pugixml on the same documents, and prints MB/s, the ratio to
// expat and the peak extra heap of a pass.

#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "Measurement.h"
#include "ProcessSetup.h"
#include "Qzxmsg.h"
#include "Workload.h"

namespace {

constexpr const char* Usage =
    "usage: qzxml-bench [options] FILE...\n"
    "  --corpus=LIST   only the documents whose file name (without .xml) starts with one of\n"
    "                  the comma-separated prefixes\n"
    "  --only=LIST     only the workloads whose name starts with one of the prefixes\n"
    "  --passes=N      timed passes after the warm-up (default 5); the median counts\n"
    "  --no-memory     skip the peak-memory child processes\n"
    "  --tsv=FILE      also write the results as tab-separated values\n"
    "  --list          list the workloads\n";

struct Options {
    std::string corpora;
    std::string workloads;
    int passes = 5;
    bool memory = true;
    std::string tsv;
    std::vector<std::string> files;
};

struct Row {
    std::string corpus;
    std::size_t bytes;
    const WorkloadEntry* entry;
    Measurement measurement;
    std::string error;

    double megabytesPerSecond() const {
        return error.empty() ? static_cast<double>(bytes) / 1e6 / measurement.seconds : 0;
    }
};

bool option(const char* argument, const char* name, std::string& value) {
    const std::size_t length = std::strlen(name);
    if (std::strncmp(argument, name, length) != 0 || argument[length] != '=') return false;
    value = argument + length + 1;
    return true;
}

bool parseOptions(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        std::string value;
        if (option(argv[i], "--corpus", options.corpora) ||
            option(argv[i], "--only", options.workloads) || option(argv[i], "--tsv", options.tsv)) {
            continue;
        }
        if (option(argv[i], "--passes", value)) {
            options.passes = std::stoi(value);
        } else if (std::strcmp(argv[i], "--no-memory") == 0) {
            options.memory = false;
        } else if (std::strcmp(argv[i], "--list") == 0) {
            for (const WorkloadEntry& entry : allWorkloads()) {
                std::printf("%-16s %s\n", entry.name.c_str(), entry.label.c_str());
            }
            std::exit(0);
        } else if (argv[i][0] == '-') {
            return false;
        } else {
            options.files.push_back(argv[i]);
        }
    }
    return !options.files.empty() && options.passes > 0;
}

Row measure(const Document& document, const WorkloadEntry& entry, const std::string& path,
            const Options& options) {
    Row row{document.name(), document.size(), &entry, {}, {}};
    try {
        std::unique_ptr<Workload> workload = entry.make();
        workload->load(document);
        row.measurement = timePasses(*workload, options.passes);
    } catch (const Qzxmsg& error) {
        row.error = error.why();
    } catch (const std::exception& error) {
        row.error = error.what();
    }
    if (options.memory && row.error.empty()) {
        row.measurement.peakKiB =
            measurePeakKiB(siblingProgram("qzxml-bench-memory"), entry.name, path);
    }
    return row;
}

// MB/s of each workload on one corpus, by workload name.
std::map<std::string, double> speeds(const std::vector<Row>& rows, const std::string& corpus) {
    std::map<std::string, double> result;
    for (const Row& row : rows) {
        if (row.corpus == corpus && row.error.empty()) {
            result[row.entry->name] = row.megabytesPerSecond();
        }
    }
    return result;
}

std::string ratio(double value, double base) {
    if (value <= 0 || base <= 0) return "-";
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", value / base);
    return text;
}

void printRow(std::FILE* out, const Row& row, const std::string& toExpat) {
    if (!row.error.empty()) {
        std::fprintf(out, "%-14s %8.2f  %-16s error: %s\n", row.corpus.c_str(), row.bytes / 1e6,
                     row.entry->name.c_str(), row.error.c_str());
        return;
    }
    std::fprintf(out, "%-14s %8.2f  %-16s %9.1f %8s %14llu %10ld\n", row.corpus.c_str(),
                 row.bytes / 1e6, row.entry->name.c_str(), row.megabytesPerSecond(),
                 toExpat.c_str(), static_cast<unsigned long long>(row.measurement.checksum),
                 row.measurement.peakKiB);
    std::fflush(out);
}

void writeTsv(const std::string& file, const std::vector<Row>& rows) {
    std::ofstream out(file);
    out << "corpus\tbytes\tworkload\tlabel\twrites\tmb_per_s\tratio_to_expat\tchecksum\tpeak_kib\n";
    for (const Row& row : rows) {
        const double expat = speeds(rows, row.corpus)["expat"];
        out << row.corpus << '\t' << row.bytes << '\t' << row.entry->name << '\t'
            << row.entry->label << '\t' << (row.entry->writes ? 1 : 0) << '\t'
            << row.megabytesPerSecond() << '\t' << ratio(row.megabytesPerSecond(), expat) << '\t'
            << row.measurement.checksum << '\t' << row.measurement.peakKiB << '\n';
    }
}

// The speed targets: the reader (owned strings) against expat, the reader through views
// against pugixml, the event parser and the strict reader against the reader, the writer
// against xmlTextWriter.
void printTargets(const std::vector<Row>& rows, const std::vector<std::string>& corpora) {
    std::printf("\n%-14s %14s %14s %14s %14s %14s\n", "corpus", "reader/expat", "views/pugixml",
                "events/reader", "strict/reader", "writer/libxml2");
    std::printf("%-14s %14s %14s %14s %14s %14s\n", "(target)", ">= 3", ">= 1", ">= 0.9", ">= 0.85",
                ">= 3");
    for (const std::string& corpus : corpora) {
        std::map<std::string, double> speed = speeds(rows, corpus);
        std::printf("%-14s %14s %14s %14s %14s %14s\n", corpus.c_str(),
                    ratio(speed["qz-reader"], speed["expat"]).c_str(),
                    ratio(speed["qz-views"], speed["pugixml"]).c_str(),
                    ratio(speed["qz-events"], speed["qz-reader"]).c_str(),
                    ratio(speed["qz-strict"], speed["qz-reader"]).c_str(),
                    ratio(speed["qz-writer"], speed["libxml2-writer"]).c_str());
    }
}

}  // namespace

int main(int argc, char** argv) {
    // A tree parser's pages are then reused from pass to pass like every other workload's
    // buffers, instead of being faulted in afresh.
    setUpProcess();
    Options options;
    if (!parseOptions(argc, argv, options)) {
        std::fputs(Usage, stderr);
        return 2;
    }
    const std::vector<WorkloadEntry> entries = selectWorkloads(options.workloads);
    std::vector<Row> rows;
    std::vector<std::string> corpora;
    std::printf("%-14s %8s  %-16s %9s %8s %14s %10s\n", "corpus", "MB", "workload", "MB/s",
                "x expat", "checksum", "peak KiB");
    for (const std::string& path : options.files) {
        const Document document(path);
        if (!matchesFilter(document.name(), options.corpora)) continue;
        corpora.push_back(document.name());
        const std::size_t first = rows.size();
        for (const WorkloadEntry& entry : entries) {
            // The writers write one document back; a set of messages is not one.
            if (entry.writes && document.parts().size() > 1) continue;
            rows.push_back(measure(document, entry, path, options));
        }
        // Ratios need expat's figure, so the rows of a corpus are printed once all are in.
        const double expat = speeds(rows, document.name())["expat"];
        for (std::size_t i = first; i < rows.size(); ++i) {
            printRow(stdout, rows[i], ratio(rows[i].megabytesPerSecond(), expat));
        }
    }
    printTargets(rows, corpora);
    if (!options.tsv.empty()) writeTsv(options.tsv, rows);
    return 0;
}
