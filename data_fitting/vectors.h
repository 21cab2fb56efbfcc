// vectors: two doubles or four floats under one vocabulary, so that a loop over sites is written once.
// SPDX-License-Identifier: MIT
#ifndef ORIN_DATA_FITTING_VECTORS_H
#define ORIN_DATA_FITTING_VECTORS_H

#include <emmintrin.h>

#include <cstdint>

#include "data_fitting/task.h"

namespace orin::data_fitting {

struct Vec2 {
  static constexpr Index lanes = 2;
  __m128d v;

  static Vec2 load(const double* p) { return {_mm_loadu_pd(p)}; }
  static Vec2 all(double value) { return {_mm_set1_pd(value)}; }
  static Vec2 gather(const double* p, const Index* at) { return {_mm_loadh_pd(_mm_load_sd(p + at[0]), p + at[1])}; }
  void store(double* p) const { _mm_storeu_pd(p, v); }
  void scatter(double* p, Index stride) const {
    _mm_storel_pd(p, v);
    _mm_storeh_pd(p + stride, v);
  }

  friend Vec2 operator+(Vec2 a, Vec2 b) { return {_mm_add_pd(a.v, b.v)}; }
  friend Vec2 operator-(Vec2 a, Vec2 b) { return {_mm_sub_pd(a.v, b.v)}; }
  friend Vec2 operator*(Vec2 a, Vec2 b) { return {_mm_mul_pd(a.v, b.v)}; }
  friend Vec2 operator|(Vec2 a, Vec2 b) { return {_mm_or_pd(a.v, b.v)}; }
  friend Vec2 equal(Vec2 a, Vec2 b) { return {_mm_cmpeq_pd(a.v, b.v)}; }

  // A bit for every lane: its sign, or an order.
  unsigned signs() const { return static_cast<unsigned>(_mm_movemask_pd(v)); }
  unsigned not_greater(Vec2 bound) const { return static_cast<unsigned>(_mm_movemask_pd(_mm_cmple_pd(v, bound.v))); }
  unsigned less(Vec2 bound) const { return static_cast<unsigned>(_mm_movemask_pd(_mm_cmplt_pd(v, bound.v))); }
};

struct Vec4 {
  static constexpr Index lanes = 4;
  __m128 v;

  static Vec4 load(const float* p) { return {_mm_loadu_ps(p)}; }
  static Vec4 all(float value) { return {_mm_set1_ps(value)}; }
  static Vec4 gather(const float* p, const Index* at) { return {_mm_set_ps(p[at[3]], p[at[2]], p[at[1]], p[at[0]])}; }
  void store(float* p) const { _mm_storeu_ps(p, v); }
  void scatter(float* p, Index stride) const {
    alignas(16) float lane[lanes];
    _mm_store_ps(lane, v);
    for (Index i = 0; i < lanes; ++i) p[i * stride] = lane[i];
  }

  friend Vec4 operator+(Vec4 a, Vec4 b) { return {_mm_add_ps(a.v, b.v)}; }
  friend Vec4 operator-(Vec4 a, Vec4 b) { return {_mm_sub_ps(a.v, b.v)}; }
  friend Vec4 operator*(Vec4 a, Vec4 b) { return {_mm_mul_ps(a.v, b.v)}; }
  friend Vec4 operator|(Vec4 a, Vec4 b) { return {_mm_or_ps(a.v, b.v)}; }
  friend Vec4 equal(Vec4 a, Vec4 b) { return {_mm_cmpeq_ps(a.v, b.v)}; }

  unsigned signs() const { return static_cast<unsigned>(_mm_movemask_ps(v)); }
  unsigned not_greater(Vec4 bound) const { return static_cast<unsigned>(_mm_movemask_ps(_mm_cmple_ps(v, bound.v))); }
  unsigned less(Vec4 bound) const { return static_cast<unsigned>(_mm_movemask_ps(_mm_cmplt_ps(v, bound.v))); }
};

template <class T>
struct VectorOf {
  using type = Vec2;
};
template <>
struct VectorOf<float> {
  using type = Vec4;
};
template <class T>
using Vec = typename VectorOf<T>::type;

// Four cells.
inline void store_cells(__m128i cells, int32_t* out) { _mm_storeu_si128(reinterpret_cast<__m128i*>(out), cells); }

// A cell is not negative, so that zeros extend it.
inline void store_cells(__m128i cells, int64_t* out) {
  const __m128i zero = _mm_setzero_si128();
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi32(cells, zero));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 2), _mm_unpackhi_epi32(cells, zero));
}

// Asks for what a pass over sites reads after some hundred nanoseconds; there need not be anything.
template <Index sites, class T>
void fetch_ahead(const T* site) {
  constexpr std::uintptr_t line = 64, distance = 2048;
  const auto first = reinterpret_cast<std::uintptr_t>(site) + distance;
  for (std::uintptr_t at = first; at < first + sites * sizeof(T); at += line)
    _mm_prefetch(reinterpret_cast<const char*>(at), _MM_HINT_T0);
}

}  // namespace orin::data_fitting

#endif
