// piecewise.h: functions by one polynomial for each cell of their axis: cells, rows of coefficients, evaluation.
// SPDX-License-Identifier: MIT
//
// Method    the cell of an argument and the row of coefficients that belongs to it are found lane by lane through memory;
//           the polynomial is in t, the distance from the cell's centre. It is evaluated by pairs, c + c' t together with
//           t^2 times the rest, so that few registers are busy and the chain of dependent operations is half as long.
// Data      tables made by means of tools/tables/piecewise.py
#ifndef ORIN_VECTOR_MATH_KERNELS_PIECEWISE_H
#define ORIN_VECTOR_MATH_KERNELS_PIECEWISE_H

#include <cstddef>
#include <limits>
#include <type_traits>

#include "vector_math/kernels/double_double.h"
#include "vector_math/simd/table.h"

namespace orin::vector_math::simd {

template <class V>
using CellIndices = LaneIndices<32, V::lanes>;

// The argument's cell: its centre and its number, from 0 on.
template <class V>
struct Cell {
  V centre;
  CellIndices<V> number;
};

// Centres are the multiples of 1/steps, from 0 on; for 0 <= x, far below 2^16/steps.
template <int steps, class V>
ORIN_INLINE Cell<V> nearest_multiple(V x) {
  using T = typename V::Element;
  static constexpr Constant<T> to_step = (sizeof(T) == 8 ? T(0x1.8p52) : T(0x1.8p23)) / steps;
  const V step = x + in_memory(to_step);
  return {step - in_memory(to_step), low_bits<16>(bits(step))};
}

// Centres are the numbers with 1 + log2(per_octave) significant bits, from 2^first on: `per_octave` of them from a power
// of two to the next.
template <int per_octave, int first, class T>
struct LeadingBits {
  using Bits = std::conditional_t<sizeof(T) == 8, std::int64_t, std::int32_t>;
  static constexpr int fraction = std::numeric_limits<T>::digits - 1;
  static constexpr int shift = fraction - __builtin_ctz(per_octave);
  static constexpr Bits unit = Bits{1} << shift;
  static constexpr Bits first_centre = Bits{std::numeric_limits<T>::max_exponent - 1 + first} << fraction;
};
template <int per_octave, int first, class V>
ORIN_INLINE Cell<V> leading_bits(V x) {
  using L = LeadingBits<per_octave, first, typename V::Element>;
  static constexpr struct {
    Constant<typename L::Bits> half = L::unit / 2, leading = -L::unit, origin = L::first_centre;
  } constants{};
  const auto& c = in_memory(constants);
  const auto rounded = bits(x) + c.half;
  return {from_bits(rounded & c.leading), low_bits<32>(shift_right<L::shift>(rounded - c.origin))};
}
// The number alone.
template <int per_octave, int first, class V>
ORIN_INLINE CellIndices<V> leading_bits_number(V x) {
  using L = LeadingBits<per_octave, first, typename V::Element>;
  static constexpr Constant<typename L::Bits> origin = L::first_centre - L::unit / 2;
  return low_bits<32>(shift_right<L::shift>(bits(x) - in_memory(origin)));
}

// Rows of `count` coefficients.
template <int count, class T>
struct RowTable {
  static_assert(count % 2 == 0);
  const T* coefficients;
};

template <int count, class V>
struct Rows {
  const typename V::Element* of[V::lanes];

  ORIN_INLINE Rows(RowTable<count, typename V::Element> table, CellIndices<V> number) {
    for (int lane = 0; lane < V::lanes; ++lane) of[lane] = table.coefficients + count * std::size_t{number.of[lane]};
  }
};

// Coefficients 2k and 2k + 1 of each lane.
template <int k, int count>
ORIN_INLINE PairsOfVec2d pair(const Rows<count, Vec2d>& rows) {
  const __m128d low = _mm_load_pd(rows.of[0] + 2 * k);
  const __m128d high = _mm_load_pd(rows.of[1] + 2 * k);
  return {_mm_unpacklo_pd(low, high), _mm_unpackhi_pd(low, high)};
}

// Pairs from to last: c_2from + c_(2from + 1) t + .. up to t^(2(last - from) + 1).
template <int from, int last, int count>
ORIN_INLINE Vec2d sum_of_pairs(const Rows<count, Vec2d>& rows, Vec2d t, Vec2d t2) {
  const auto [c, c_next] = pair<from>(rows);
  if constexpr (from == last)
    return c + t * c_next;
  else
    return (c + t * c_next) + t2 * sum_of_pairs<from + 1, last>(rows, t, t2);
}

// c0 + c1 t + .. with all coefficients of the row.
template <int count>
ORIN_INLINE Vec2d polynomial(RowTable<count, double> table, CellIndices<Vec2d> number, Vec2d t) {
  return sum_of_pairs<0, count / 2 - 1>(Rows<count, Vec2d>(table, number), t, t * t);
}
ORIN_INLINE Vec4f polynomial(RowTable<2, float> table, CellIndices<Vec4f> number, Vec4f t) {
  const Rows<2, Vec4f> rows(table, number);
  const auto two = [&](int i, int j) __attribute__((always_inline)) {
    const auto at = [&](int lane) { return reinterpret_cast<const __m64*>(rows.of[lane]); };
    return _mm_loadh_pi(_mm_loadl_pi(_mm_setzero_ps(), at(i)), at(j));
  };
  const __m128 low = two(0, 1), high = two(2, 3);
  const Vec4f c0 = _mm_shuffle_ps(low, high, _MM_SHUFFLE(2, 0, 2, 0));
  const Vec4f c1 = _mm_shuffle_ps(low, high, _MM_SHUFFLE(3, 1, 3, 1));
  return c0 + t * c1;
}
ORIN_INLINE Vec4f polynomial(RowTable<4, float> table, CellIndices<Vec4f> number, Vec4f t) {
  const Rows<4, Vec4f> rows(table, number);
  const __m128 a = _mm_load_ps(rows.of[0]), b = _mm_load_ps(rows.of[1]);
  const __m128 c = _mm_load_ps(rows.of[2]), d = _mm_load_ps(rows.of[3]);
  const __m128 ab_low = _mm_unpacklo_ps(a, b), cd_low = _mm_unpacklo_ps(c, d);
  const __m128 ab_high = _mm_unpackhi_ps(a, b), cd_high = _mm_unpackhi_ps(c, d);
  const Vec4f c0 = _mm_movelh_ps(ab_low, cd_low), c1 = _mm_movehl_ps(cd_low, ab_low);
  const Vec4f c2 = _mm_movelh_ps(ab_high, cd_high), c3 = _mm_movehl_ps(cd_high, ab_high);
  return (c0 + t * c1) + (t * t) * (c2 + t * c3);
}

// The same polynomial of rows [c0 c1] .. [c6 c7] [rest of c0, of c1], with little more than the error of one rounding, or
// plainly. The rest of c1 counts from its leading 26 bits; c0 is 0 or larger than c1 t.
ORIN_INLINE Vec2d accurate_polynomial(RowTable<10, double> table, CellIndices<Vec2d> number, Vec2d t) {
  const Rows<10, Vec2d> rows(table, number);
  const Vec2d t2 = t * t;
  const Vec2d tail = t2 * sum_of_pairs<1, 3>(rows, t, t2);
  const auto [c0, c1] = pair<0>(rows);
  const auto [c0_rest, c1_rest] = pair<4>(rows);
  const DoubleDouble parts = split(t);
  const Vec2d slope = split(c1).high;
  const DoubleDouble sum = fast_two_sum(c0, slope * parts.high);
  return sum.high + (sum.low + ((slope * parts.low + t * c1_rest) + (c0_rest + tail)));
}
ORIN_INLINE Vec2d plain_polynomial(RowTable<10, double> table, CellIndices<Vec2d> number, Vec2d t) {
  return sum_of_pairs<0, 3>(Rows<10, Vec2d>(table, number), t, t * t);
}

// |x| times a power of two that is 1 but for the least numbers: there the low parts of products would vanish.
struct Lifted {
  Vec2d value, inverse_factor;
};
ORIN_INLINE Lifted lift(Vec2d magnitude) {
  static constexpr struct {
    Constant<double> limit = 0x1p-960, one = 1.0;
    Constant<std::int64_t> exponent = INT64_C(128) << 52;
  } constants{};
  const auto& c = in_memory(constants);
  const Vec2l exponent = bits(magnitude < c.limit) & c.exponent;
  return {magnitude * from_bits(bits(Vec2d(c.one)) + exponent), from_bits(bits(Vec2d(c.one)) - exponent)};
}

}  // namespace orin::vector_math::simd

#endif
