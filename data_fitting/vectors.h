// vectors: what loops over sites and cells do with registers of either precision, beyond simd/vec.h.
// SPDX-License-Identifier: MIT
#ifndef ORIN_DATA_FITTING_VECTORS_H
#define ORIN_DATA_FITTING_VECTORS_H

#include <cstdint>

#include "data_fitting/task.h"
#include "simd/prefetch.h"
#include "simd/vec.h"

namespace orin::data_fitting {

template <class T>
using Vec = simd::Register<T>;

inline simd::Vec2d gather(const double* p, const Index* at) { return _mm_loadh_pd(_mm_load_sd(p + at[0]), p + at[1]); }
inline simd::Vec4f gather(const float* p, const Index* at) {
  return _mm_set_ps(p[at[3]], p[at[2]], p[at[1]], p[at[0]]);
}
inline void scatter(simd::Vec2d v, double* p, Index stride) {
  _mm_storel_pd(p, v.raw);
  _mm_storeh_pd(p + stride, v.raw);
}
inline void scatter(simd::Vec4f v, float* p, Index stride) {
  float lane[simd::Vec4f::lanes];
  v.store(lane);
  for (Index i = 0; i < simd::Vec4f::lanes; ++i) p[i * stride] = lane[i];
}

// Four cells.
inline void store_cells(__m128i cells, int32_t* out) { _mm_storeu_si128(reinterpret_cast<__m128i*>(out), cells); }

// A cell is not negative, so that zeros extend it.
inline void store_cells(__m128i cells, int64_t* out) {
  const __m128i zero = _mm_setzero_si128();
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_unpacklo_epi32(cells, zero));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 2), _mm_unpackhi_epi32(cells, zero));
}

// What a pass over sites reads after some hundred nanoseconds.
template <Index sites, class T>
void fetch_ahead(const T* site) {
  simd::prefetch<2048, sites * sizeof(T)>(site);
}

}  // namespace orin::data_fitting

#endif
