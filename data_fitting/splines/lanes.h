// lanes: two doubles, or the odd one left over, in one vocabulary, so that a loop over cells is written once.
// SPDX-License-Identifier: MIT
#ifndef ORIN_DATA_FITTING_SPLINES_LANES_H
#define ORIN_DATA_FITTING_SPLINES_LANES_H

#include <emmintrin.h>

#include "data_fitting/task.h"

namespace orin::data_fitting {

struct Pair {
  __m128d v;

  static Pair load(const double* p) { return {_mm_loadu_pd(p)}; }
  static Pair load(const float* p) {
    return {_mm_cvtps_pd(_mm_castsi128_ps(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(p))))};
  }
  static Pair both(double value) { return {_mm_set1_pd(value)}; }
  static Pair of(double low, double high) { return {_mm_set_pd(high, low)}; }
  void store(double* p) const { _mm_storeu_pd(p, v); }
  double low() const { return _mm_cvtsd_f64(v); }
  double high() const { return _mm_cvtsd_f64(_mm_unpackhi_pd(v, v)); }

  friend Pair operator+(Pair a, Pair b) { return {_mm_add_pd(a.v, b.v)}; }
  friend Pair operator-(Pair a, Pair b) { return {_mm_sub_pd(a.v, b.v)}; }
  friend Pair operator*(Pair a, Pair b) { return {_mm_mul_pd(a.v, b.v)}; }
  friend Pair operator/(Pair a, Pair b) { return {_mm_div_pd(a.v, b.v)}; }
  friend Pair magnitude(Pair a) { return {_mm_andnot_pd(_mm_set1_pd(-0.0), a.v)}; }
  // a where `test` is not zero, b where it is
  friend Pair if_nonzero(Pair test, Pair a, Pair b) {
    const __m128d zero = _mm_cmpeq_pd(test.v, _mm_setzero_pd());
    return {_mm_or_pd(_mm_andnot_pd(zero, a.v), _mm_and_pd(zero, b.v))};
  }
};

struct Single {
  double v;

  template <class T>
  static Single load(const T* p) {
    return {static_cast<double>(*p)};
  }
  static Single both(double value) { return {value}; }
  void store(double* p) const { *p = v; }

  friend Single operator+(Single a, Single b) { return {a.v + b.v}; }
  friend Single operator-(Single a, Single b) { return {a.v - b.v}; }
  friend Single operator*(Single a, Single b) { return {a.v * b.v}; }
  friend Single operator/(Single a, Single b) { return {a.v / b.v}; }
  friend Single magnitude(Single a) { return {a.v < 0 ? -a.v : a.v}; }
  friend Single if_nonzero(Single test, Single a, Single b) { return test.v != 0 ? a : b; }
};

// Calls body(lanes, i) for i in [begin, end) two by two, and once more for an odd one; `lanes` tells the type alone.
template <class Body>
void for_lanes(Index begin, Index end, Body body) {
  Index i = begin;
  for (; i + 2 <= end; i += 2) body(Pair{}, i);
  if (i < end) body(Single{}, i);
}

// --- Coefficients of one or two cells, interleaved, in the caller's precision ----------------------------------------

inline void store_cubic(double* out, Pair c0, Pair c1, Pair c2, Pair c3) {
  _mm_storeu_pd(out, _mm_unpacklo_pd(c0.v, c1.v));
  _mm_storeu_pd(out + 2, _mm_unpacklo_pd(c2.v, c3.v));
  _mm_storeu_pd(out + 4, _mm_unpackhi_pd(c0.v, c1.v));
  _mm_storeu_pd(out + 6, _mm_unpackhi_pd(c2.v, c3.v));
}

inline void store_cubic(float* out, Pair c0, Pair c1, Pair c2, Pair c3) {
  const __m128 even = _mm_movelh_ps(_mm_cvtpd_ps(c0.v), _mm_cvtpd_ps(c2.v));
  const __m128 odd = _mm_movelh_ps(_mm_cvtpd_ps(c1.v), _mm_cvtpd_ps(c3.v));
  const __m128 lower = _mm_unpacklo_ps(even, odd), upper = _mm_unpackhi_ps(even, odd);
  _mm_storeu_ps(out, _mm_movelh_ps(lower, upper));
  _mm_storeu_ps(out + 4, _mm_movehl_ps(upper, lower));
}

template <class T>
void store_cubic(T* out, Single c0, Single c1, Single c2, Single c3) {
  out[0] = static_cast<T>(c0.v);
  out[1] = static_cast<T>(c1.v);
  out[2] = static_cast<T>(c2.v);
  out[3] = static_cast<T>(c3.v);
}

template <class T>
void store_quadratic(T* out, Single c0, Single c1, Single c2) {
  out[0] = static_cast<T>(c0.v);
  out[1] = static_cast<T>(c1.v);
  out[2] = static_cast<T>(c2.v);
}

template <class T>
void store_quadratic(T* out, Pair c0, Pair c1, Pair c2) {
  store_quadratic(out, Single{c0.low()}, Single{c1.low()}, Single{c2.low()});
  store_quadratic(out + 3, Single{c0.high()}, Single{c1.high()}, Single{c2.high()});
}

}  // namespace orin::data_fitting

#endif
