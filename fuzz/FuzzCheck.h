#ifndef QZXML_FUZZCHECK_H
#define QZXML_FUZZCHECK_H

#include <cstdio>
#include <cstdlib>

// A broken invariant aborts, which libFuzzer reports like a crash and saves the input for.
inline void fuzzCheck(bool holds, const char* invariant) {
    if (holds) return;
    std::fprintf(stderr, "invariant broken: %s\n", invariant);
    std::abort();
}

#endif
