#ifndef QZXML_BENCH_WORKLOAD_H
#define QZXML_BENCH_WORKLOAD_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Document.h"

/// One benchmarked operation (a parse, a comparison or a write) over one document. The
/// harness calls load once, then prepare and run for every pass; only run is timed.
class Workload {
public:
    virtual ~Workload() = default;

    /// Takes in the document and builds whatever the passes reuse.
    virtual void load(const Document& document) = 0;
    /// Restores the input of an in-place parser, which rewrites its buffer.
    virtual void prepare() {}
    /// One pass; returns the sum of the lengths of the names, URIs, attribute values and
    /// text seen (or, for writers, the bytes written), so that passes cannot be optimised
    /// away and parsers can be checked against each other.
    virtual std::uint64_t run() = 0;
};

/// A workload as the harness lists it: a short name for filters and tables, a label for
/// the chart, and whether it writes (its peer is a writer) or reads.
struct WorkloadEntry {
    std::string name;
    std::string label;
    bool writes;
    std::function<std::unique_ptr<Workload>()> make;
};

/// The entry for a workload class with a default constructor.
template <typename T>
WorkloadEntry makeEntry(const char* name, const char* label, bool writes = false) {
    return {name, label, writes, [] { return std::make_unique<T>(); }};
}

std::vector<WorkloadEntry> qzxmlWorkloads();
std::vector<WorkloadEntry> libxml2Workloads();
std::vector<WorkloadEntry> expatWorkloads();
std::vector<WorkloadEntry> xercesWorkloads();
std::vector<WorkloadEntry> pugixmlWorkloads();

/// Every workload, ours first, in the order of the result table.
std::vector<WorkloadEntry> allWorkloads();

/// The workloads whose names start with one of the comma-separated prefixes (all for "").
std::vector<WorkloadEntry> selectWorkloads(const std::string& filter);

/// The workload named exactly name (which may be the prefix of others' names); null when
/// there is none.
std::unique_ptr<Workload> makeWorkload(const std::string& name);

/// Whether name starts with one of the comma-separated prefixes in filter ("" matches all).
bool matchesFilter(const std::string& name, const std::string& filter);

#endif
