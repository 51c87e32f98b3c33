#ifndef QZXMLSIMD_H
#define QZXMLSIMD_H

// The scans take sixteen bytes a step on x86-64 (which always has SSE2; the character checks
// take thirty-two with AVX2 where the processor has it), unless the build asks for the
// byte-at-a-time paths alone (-DQZXML_SIMD=OFF), as the sanitizer build in CI does so that
// both paths run the whole test suite.
#if defined(__x86_64__) && !defined(QZXML_SCALAR_ONLY)
#define QZXML_SSE2 1
#include <emmintrin.h>
#endif

#endif
