#pragma once
// MYO_VECTOR_CLONES builds a function twice, for the baseline processor and
// for one with AVX2, and picks the one the processor runs when the program
// loads. Only hot kernels with wide loops carry it. The clones perform the
// same IEEE operations in the same order (no fused multiply-adds: AVX2 does
// not imply them, and contraction is off), so they give the same bits.
#if defined(__GNUC__) && !defined(__clang__) && defined(__x86_64__) && defined(__ELF__) && \
    !defined(MYO_NO_VECTOR_CLONES)
#define MYO_VECTOR_CLONES __attribute__((target_clones("avx2", "default")))
#else
#define MYO_VECTOR_CLONES
#endif
