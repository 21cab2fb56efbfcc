// simd.h: the few SSE2 verbs that the convolution kernels are written in, the same for both precisions.
// SPDX-License-Identifier: MIT
//
// A vector is the compiler's own 128-bit type, so that + - * read as algebra: two doubles or four floats.
#ifndef ORIN_CONV_SIMD_H
#define ORIN_CONV_SIMD_H

#include <emmintrin.h>

#include <cstddef>
#include <utility>

namespace orin::conv {

template <class T>
struct Simd;

template <>
struct Simd<double> {
  using Vector = __m128d;
  static constexpr std::size_t lanes = 2;

  static Vector zero() { return _mm_setzero_pd(); }
  static Vector splat(double x) { return _mm_set1_pd(x); }
  template <int lane>
  static Vector splat_lane(Vector v) {
    return _mm_shuffle_pd(v, v, 3 * lane);
  }
  static Vector load(const double* p) { return _mm_load_pd(p); }
  static Vector load_any(const double* p) { return _mm_loadu_pd(p); }
  static void store(double* p, Vector v) { _mm_store_pd(p, v); }
  static void store_any(double* p, Vector v) { _mm_storeu_pd(p, v); }
  static Vector either(Vector a, Vector b) { return _mm_or_pd(a, b); }
  // All bits of the lanes that are infinite or NaN; whether a lane has its sign bit.
  static Vector not_finite(Vector v) { return _mm_cmpunord_pd(v - v, v - v); }
  static bool any(Vector mask) { return _mm_movemask_pd(mask) != 0; }

  // (a0 a1) (b0 b1) -> (a0 b0) (a1 b1): interleaves, and undoes its own work.
  static void interleave(Vector& a, Vector& b) {
    const Vector low = _mm_unpacklo_pd(a, b);
    b = _mm_unpackhi_pd(a, b);
    a = low;
  }
  static void deinterleave(Vector& a, Vector& b) { interleave(a, b); }

  // The elements of `Parts` lanes each in opposite order.
  template <std::size_t Parts>
  static Vector reversed(Vector v) {
    return Parts == 1 ? _mm_shuffle_pd(v, v, 1) : v;
  }

  // re, im, re, im ... -> -im, re, -im, re ...: one complex number times i.
  static Vector times_i(Vector v) { return _mm_xor_pd(_mm_shuffle_pd(v, v, 1), _mm_set_pd(0.0, -0.0)); }
};

template <>
struct Simd<float> {
  using Vector = __m128;
  static constexpr std::size_t lanes = 4;

  static Vector zero() { return _mm_setzero_ps(); }
  static Vector splat(float x) { return _mm_set1_ps(x); }
  template <int lane>
  static Vector splat_lane(Vector v) {
    return _mm_shuffle_ps(v, v, 0x55 * lane);
  }
  static Vector load(const float* p) { return _mm_load_ps(p); }
  static Vector load_any(const float* p) { return _mm_loadu_ps(p); }
  static void store(float* p, Vector v) { _mm_store_ps(p, v); }
  static void store_any(float* p, Vector v) { _mm_storeu_ps(p, v); }
  static Vector either(Vector a, Vector b) { return _mm_or_ps(a, b); }
  // All bits of the lanes that are infinite or NaN; whether a lane has its sign bit.
  static Vector not_finite(Vector v) { return _mm_cmpunord_ps(v - v, v - v); }
  static bool any(Vector mask) { return _mm_movemask_ps(mask) != 0; }

  // (a0 a1 a2 a3) (b0 b1 b2 b3) -> (a0 b0 a1 b1) (a2 b2 a3 b3)
  static void interleave(Vector& a, Vector& b) {
    const Vector low = _mm_unpacklo_ps(a, b);
    b = _mm_unpackhi_ps(a, b);
    a = low;
  }
  // (a0 b0 a1 b1) (a2 b2 a3 b3) -> (a0 a1 a2 a3) (b0 b1 b2 b3)
  static void deinterleave(Vector& a, Vector& b) {
    const Vector even = _mm_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0));
    b = _mm_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1));
    a = even;
  }

  template <std::size_t Parts>
  static Vector reversed(Vector v) {
    return Parts == 1 ? _mm_shuffle_ps(v, v, _MM_SHUFFLE(0, 1, 2, 3)) : _mm_shuffle_ps(v, v, _MM_SHUFFLE(1, 0, 3, 2));
  }

  static Vector times_i(Vector v) {
    return _mm_xor_ps(_mm_shuffle_ps(v, v, _MM_SHUFFLE(2, 3, 0, 1)), _mm_set_ps(0.0F, -0.0F, 0.0F, -0.0F));
  }
};

// Calls f(0), f(1) ... f(Count - 1) with compile-time indices: a loop that is unrolled for certain, so that small local
// arrays of vectors live in registers.
template <std::size_t Count, class F>
[[gnu::always_inline]] inline void unrolled(F&& f) {
  [&]<std::size_t... I>(std::index_sequence<I...>) __attribute__((always_inline)) {
    (f(std::integral_constant<std::size_t, I>{}), ...);
  }
  (std::make_index_sequence<Count>{});
}

}  // namespace orin::conv

#endif
