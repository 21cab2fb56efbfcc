// simd.h: the few vector verbs of the statistics kernels, for two doubles or four floats.
// SPDX-License-Identifier: MIT
#ifndef ORIN_SUMMARY_STATS_SIMD_H
#define ORIN_SUMMARY_STATS_SIMD_H

#include <emmintrin.h>

#include <cstdint>

namespace orin::summary_stats {

// Asks for what a loop over `at` and following will read some lines later, past the end of the values too.
inline void prefetch(const void* at) {
  constexpr std::uintptr_t ahead = 4096;
  _mm_prefetch(reinterpret_cast<const char*>(reinterpret_cast<std::uintptr_t>(at) + ahead), _MM_HINT_T0);
}

template <class T>
struct Simd;

template <>
struct Simd<double> {
  using Vector = __m128d;
  static constexpr int lanes = 2;
  static Vector load(const double* p) { return _mm_loadu_pd(p); }  // any address
  static void store(double* p, Vector v) { _mm_storeu_pd(p, v); }
  static Vector splat(double x) { return _mm_set1_pd(x); }
  // The second operand where either is NaN, and of two zeros.
  static Vector min(Vector a, Vector b) { return _mm_min_pd(a, b); }
  static Vector max(Vector a, Vector b) { return _mm_max_pd(a, b); }
};

template <>
struct Simd<float> {
  using Vector = __m128;
  static constexpr int lanes = 4;
  static Vector load(const float* p) { return _mm_loadu_ps(p); }
  static void store(float* p, Vector v) { _mm_storeu_ps(p, v); }
  static Vector splat(float x) { return _mm_set1_ps(x); }
  static Vector min(Vector a, Vector b) { return _mm_min_ps(a, b); }
  static Vector max(Vector a, Vector b) { return _mm_max_ps(a, b); }
};

}  // namespace orin::summary_stats

#endif
