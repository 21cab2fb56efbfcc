// gamma_core_s.h: log Gamma of floats by table, for the coarser grades.
// SPDX-License-Identifier: MIT
//
// Method    as the table of gamma_core_d.h, in float
// Budget    in 2^-24 of the larger of result and c0: rounding of c0 1/2, c1 t 1, sum 1/2; polynomial LA 2^-23.4, EP
//           2^-12.8 of the result
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

constexpr std::int32_t bits_of_least = 0x3d000000;

// Centres have so many bits behind the leading one.
template <int fraction_bits>
struct Grid {
  static constexpr std::int32_t spacing = 1 << (23 - fraction_bits);  // of the bits of centres
  Constant<std::int32_t> half_spacing = spacing / 2, leading = -spacing, to_index = spacing / 2 - bits_of_least;
};
template <int fraction_bits>
inline constexpr Grid<fraction_bits> grid{};

// The rows of a table of pairs of coefficients, one for each lane.
template <int length>
class Rows {
  static_assert(length % 2 == 0);

 public:
  ORIN_INLINE Rows(const float* table, LaneIndices<32, 4> index) : table_(table) {
    for (int lane = 0; lane < 4; ++lane) index_[lane] = static_cast<Index>(index.of[lane]);
  }
  // Coefficients 2k and 2k + 1.
  ORIN_INLINE TwoVec4f pair(int k) const {
    const __m128 low = two(0, 1, k), high = two(2, 3, k);
    return {_mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0)), _mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1))};
  }

 private:
  ORIN_INLINE const void* place(int lane, int k) const { return table_ + length * index_[lane] + 2 * k; }
  ORIN_INLINE __m128 two(int i, int j, int k) const {
    const __m128i first = _mm_loadl_epi64(static_cast<const __m128i*>(place(i, k)));
    return _mm_loadh_pi(_mm_castsi128_ps(first), static_cast<const __m64*>(place(j, k)));
  }

  const float* table_;
  // As measured: addresses of rows of 16 bytes come cheaper from indices of 32 bits.
  using Index = std::conditional_t<length == 4, std::uint32_t, std::size_t>;
  Index index_[4];
};

// log Gamma(x), 2^-5 <= x < 2^10.
template <Grade grade>
ORIN_INLINE Vec4f log_gamma(Vec4f x) {
  static_assert(grade != Grade::ha);
  constexpr int fraction_bits = grade == Grade::la ? 4 : 5;
  const auto& c = in_memory(grid<fraction_bits>);
  const auto index = low_bits<32>(shift_right<23 - fraction_bits>(bits(x) + c.to_index));
  const Vec4f t = x - from_bits((bits(x) + c.half_spacing) & c.leading);
  if constexpr (grade == Grade::la) {
    const Rows<6> row(data::la_rows, index);
    const auto [c0, c1] = row.pair(0);
    const auto [c2, c3] = row.pair(1);
    const Vec4f c4 = row.pair(2).first;
    return c0 + t * (c1 + t * ((c2 + t * c3) + (t * t) * c4));
  } else {
    const Rows<4> row(data::ep_rows, index);
    const auto [c0, c1] = row.pair(0);
    return c0 + t * (c1 + t * row.pair(1).first);
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
