// gamma_core_s.h: log Gamma of floats by table, for the coarser grades.
// SPDX-License-Identifier: MIT
//
// Method    as the table of gamma_core_d.h, in float
// Budget    in 2^-24 of the larger of result and c0: rounding of c0 1/2, c1 t 1, sum 1/2; polynomial LA 2^-23.5, EP
//           2^-16.8 of the result
// Data      data/gamma_s_data.h from tools/tables/gamma_s.py
#ifndef ORIN_VECTOR_MATH_KERNELS_GAMMA_CORE_S_H
#define ORIN_VECTOR_MATH_KERNELS_GAMMA_CORE_S_H

#include "vector_math/data/gamma_s_data.h"
#include "vector_math/grade.h"
#include "vector_math/kernels/log_base.h"
#include "vector_math/simd/table.h"

namespace orin::vector_math::gamma_s {

using namespace simd;
namespace data = gamma_s_data;

constexpr std::int32_t spacing = 1 << 19;  // of the bits of centres
constexpr std::int32_t bits_of_least = 0x3d000000;

inline constexpr struct {
  Constant<std::int32_t> half_spacing = spacing / 2, leading = -spacing;
  Constant<std::int32_t> to_index = spacing / 2 - bits_of_least;
} constants{};

// Coefficients 2k and 2k + 1 of each lane's row.
template <int length>
ORIN_INLINE TwoVec4f coefficients(const float* table, LaneIndices<8, 4> row, int k) {
  const auto two = [&](int i, int j) __attribute__((always_inline)) {
    const auto pair = [&](int lane) __attribute__((always_inline)) {
      return reinterpret_cast<const __m64*>(table + length * row.of[lane] + 2 * k);
    };
    return _mm_loadh_pi(_mm_loadl_pi(_mm_setzero_ps(), pair(i)), pair(j));
  };
  const __m128 low = two(0, 1);
  const __m128 high = two(2, 3);
  return {_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)), _mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1))};
}

// log Gamma(x), 2^-5 <= x < 2^8.
template <Grade grade>
ORIN_INLINE Vec4f log_gamma(Vec4f x) {
  const auto& c = in_memory(constants);
  const auto row = low_bits<8>(shift_right<19>(bits(x) + c.to_index));
  const Vec4f t = x - from_bits((bits(x) + c.half_spacing) & c.leading);
  if constexpr (grade == Grade::la) {
    const auto [c0, c1] = coefficients<6>(data::la_rows, row, 0);
    const auto [c2, c3] = coefficients<6>(data::la_rows, row, 1);
    const Vec4f c4 = coefficients<6>(data::la_rows, row, 2).first;
    return c0 + t * (c1 + t * ((c2 + t * c3) + (t * t) * c4));
  } else {
    static_assert(grade == Grade::ep);
    const auto [c0, c1] = coefficients<4>(data::ep_rows, row, 0);
    const auto [c2, c3] = coefficients<4>(data::ep_rows, row, 1);
    return (c0 + t * c1) + (t * t) * (c2 + t * c3);
  }
}

// Of four floats those that are negative, of magnitude first..last and no integers.
template <std::int32_t first, std::int32_t last>
ORIN_INLINE Vec4i negative_fractions(Vec4i words) {
  static_assert(last < 0x4a800000);
  static constexpr Constant<float> half = 0.5f, to_integer = 0x1.8p23f;
  const Vec4i excluded = outside<first, last>(magnitude(words)) | (words > Vec4i(-1));
  const Vec4f size = select(from_bits(excluded), in_memory(half), abs(from_bits(words)));
  const Vec4f n = (size + in_memory(to_integer)) - in_memory(to_integer);
  return select(excluded | bits(size == n), Vec4i(0), Vec4i(-1));
}

}  // namespace orin::vector_math::gamma_s

#endif
