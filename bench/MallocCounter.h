#ifndef QZXML_BENCH_MALLOCCOUNTER_H
#define QZXML_BENCH_MALLOCCOUNTER_H

#include <cstdint>

/// Heap accounting of a program linked with MallocCounter.cpp, which takes over malloc and
/// its relatives for the whole process, the peer libraries included. Sizes are the usable
/// sizes of the blocks, so they include the allocator's rounding.
namespace MallocCounter {

/// Bytes in blocks allocated and not yet freed.
std::int64_t live();
/// The highest live() since the last resetPeak().
std::int64_t peak();
/// Makes peak() start again from live().
void resetPeak();

}  // namespace MallocCounter

#endif
