#ifndef QZXMLSIMD_H
#define QZXMLSIMD_H

// The scans take sixteen bytes a step where the compiler targets SSE2 (every x86-64 build),
// unless the build asks for the byte-at-a-time paths alone (-DQZXML_SIMD=OFF), as the
// sanitizer build in CI does so that both paths run the whole test suite.
#if defined(__SSE2__) && !defined(QZXML_SCALAR_ONLY)
#define QZXML_SSE2 1
#include <emmintrin.h>
#endif

#endif
