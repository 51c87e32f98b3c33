#include "ProcessSetup.h"

#include <malloc.h>
#include <sched.h>

#include <climits>

void setUpProcess() {
    // Nothing is mapped apart from the heap, so that the largest blocks are kept too.
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, INT_MAX);
    const int core = sched_getcpu();
    if (core < 0) return;
    cpu_set_t cores;
    CPU_ZERO(&cores);
    CPU_SET(core, &cores);
    sched_setaffinity(0, sizeof cores, &cores);
}
