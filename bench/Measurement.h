#ifndef QZXML_BENCH_MEASUREMENT_H
#define QZXML_BENCH_MEASUREMENT_H

#include <cstdint>
#include <string>

#include "Workload.h"

/// What one workload did on one document.
struct Measurement {
    double seconds = 0;          ///< median CPU time of the timed passes
    std::uint64_t checksum = 0;  ///< what the warm-up pass returned
    long peakKiB = -1;           ///< peak extra heap of one pass; -1 when not measured
};

/// One warm-up pass, then passes timed passes; returns the median CPU time of this thread
/// (other processes on a shared machine then cost us little), and the warm-up's checksum.
Measurement timePasses(Workload& workload, int passes);

/// Runs memoryProgram WORKLOAD FILE in a child process, which reports the peak heap growth
/// of one pass; returns it in KiB, or -1 when the child fails.
long measurePeakKiB(const std::string& memoryProgram, const std::string& workload,
                    const std::string& path);

/// The file name of a program installed beside the running one.
std::string siblingProgram(const std::string& name);

#endif
