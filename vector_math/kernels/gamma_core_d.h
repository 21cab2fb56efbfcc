// gamma_core_d.h: log |Gamma| of doubles, shared by the gamma functions.
// SPDX-License-Identifier: MIT
//
// Method    2^-5 <= x < 2^10: c, x rounded to six significant bits (LA and EP: five), t = x - c;
//           log Gamma(x) = c0 + c1 t + c2 t^2 + .., the coefficients from the row of c. Next to the zeros 1 and 2 c0
//           vanishes: nothing cancels there.
//           HA  c0 a pair; c1 of 26 bits times the leading bits of t exactly; the sum as a pair
//           x >= 2^10: Stirling's series, x (log x - 1) - (log x)/2 + log(2 pi)/2 + 1/(12 x) - 1/(360 x^3)
//           x < 0: Gamma(x) = -+pi/(y sin(pi y) Gamma(y)), y = -x = n + t, |t| <= 1/2:
//           log |Gamma(x)| = -(log(y |t|) + log(sin(pi t)/(pi t)) + log Gamma(y)), the second from a table as above
// Budget    absolute: pair 2^-63 and x 2^-64 (roundings of t^2 c2); EP 2^-29.7 |log Gamma|, at most 2^-32
// Data      data/gamma_d_data.h from tools/tables/gamma_d.py
// Source    NIST Digital Library of Mathematical Functions, 5.5.3 (reflection), 5.7.3 (series), 5.11.1 (Stirling);
//           D. E. G. Hare, Computing the principal branch of log-Gamma, J. Algorithms 25 (1997), 221-236
#ifndef ORIN_VECTOR_MATH_KERNELS_GAMMA_CORE_D_H
#define ORIN_VECTOR_MATH_KERNELS_GAMMA_CORE_D_H

#include "vector_math/data/gamma_d_data.h"
#include "vector_math/kernels/log_core_d.h"

namespace orin::vector_math::gamma_d {

using namespace simd;
namespace data = gamma_d_data;

constexpr double least_in_table = 0x1p-5, end_of_table = 0x1p10;
constexpr std::int64_t bits_of_least = INT64_C(0x3fa0000000000000);

// Centres have so many bits behind the leading one.
template <int fraction_bits>
struct Grid {
  static constexpr std::int64_t spacing = INT64_C(1) << (52 - fraction_bits);  // of the bits of centres
  Constant<std::int64_t> half_spacing = spacing / 2, leading = -spacing, to_index = spacing / 2 - bits_of_least;
};
template <int fraction_bits>
inline constexpr Grid<fraction_bits> grid{};

inline constexpr struct {
  Constant<double> least = least_in_table, end = end_of_table, one = 1.0;
  Constant<double> to_64ths = 0x1.8p46;  // x + to_64ths: x rounded to a multiple of 1/64, 64 x in the low bits
  Constant<double> to_integer = 0x1p52;  // for x >= 0
  Constant<double> half = 0.5, half_log_two_pi = data::half_log_two_pi;
  Constant<double> stirling_1 = 0x1.5555555555555p-4, stirling_3 = -0x1.6c16c16c16c17p-9;  // 1/12, -1/360
} constants{};

// The rows of a table of pairs of coefficients, one for each lane.
template <int length>
class Rows {
  static_assert(length % 2 == 0);

 public:
  template <int count>
  ORIN_INLINE Rows(const double* table, LaneIndices<count, 2> index)
      : first_(table + length * index.of[0]), second_(table + length * index.of[1]) {}
  // Coefficients 2k and 2k + 1.
  ORIN_INLINE PairsOfVec2d pair(int k) const {
    const __m128d low = _mm_load_pd(first_ + 2 * k);
    const __m128d high = _mm_load_pd(second_ + 2 * k);
    return {_mm_unpacklo_pd(low, high), _mm_unpackhi_pd(low, high)};
  }

 private:
  const double *first_, *second_;
};

// The row of x in a table of log Gamma, and the centre of its interval.
struct Place {
  LaneIndices<32, 2> row;
  Vec2d center;
};
template <int fraction_bits>
ORIN_INLINE Place place(Vec2d x) {
  const auto& c = in_memory(grid<fraction_bits>);
  return {low_bits<32>(shift_right<52 - fraction_bits>(bits(x) + c.to_index)),
          from_bits((bits(x) + c.half_spacing) & c.leading)};
}

// c0 + c1 t + c2 t^2 + .. as a pair. It is t that is split, not the argument: next to a centre the argument's leading
// bits say little of t.
ORIN_INLINE DoubleDouble evaluate(Rows<12> row, Vec2d t) {
  const auto [c0, c0_low] = row.pair(0);
  const auto [c1, c1_low] = row.pair(1);
  const auto [c2, c3] = row.pair(2);
  const auto [c4, c5] = row.pair(3);
  const auto [c6, c7] = row.pair(4);
  const auto [c8, c9] = row.pair(5);
  const Vec2d t2 = t * t;
  const Vec2d q = ((c2 + t * c3) + t2 * (c4 + t * c5)) + (t2 * t2) * ((c6 + t * c7) + t2 * (c8 + t * c9));
  const DoubleDouble parts = split(t);
  const DoubleDouble sum = fast_two_sum(c0, c1 * parts.high);  // the product is exact
  return {sum.high, sum.low + (c0_low + (c1 * parts.low + t * (c1_low + t * q)))};
}

// log Gamma(x) for x of the table, as a pair; |low| may reach 1/4.
ORIN_INLINE DoubleDouble log_gamma_pair(Vec2d x) {
  const Place at = place<5>(x);
  return evaluate({data::ha_rows, at.row}, x - at.center);
}

// log Gamma(x) for x of the table: LA and EP.
ORIN_INLINE Vec2d log_gamma_la(Vec2d x) {
  const Place at = place<4>(x);
  const Rows<10> row(data::la_rows, at.row);
  const auto [c0, c1] = row.pair(0);
  const auto [c2, c3] = row.pair(1);
  const auto [c4, c5] = row.pair(2);
  const auto [c6, c7] = row.pair(3);
  const auto [c8, c9] = row.pair(4);
  const Vec2d t = x - at.center;
  const Vec2d t2 = t * t;
  const Vec2d q = ((c2 + t * c3) + t2 * (c4 + t * c5)) + (t2 * t2) * ((c6 + t * c7) + t2 * (c8 + t * c9));
  return c0 + t * (c1 + t * q);
}
ORIN_INLINE Vec2d evaluate_short(Rows<6> row, Vec2d t) {
  const auto [c0, c1] = row.pair(0);
  const auto [c2, c3] = row.pair(1);
  const auto [c4, c5] = row.pair(2);
  const Vec2d t2 = t * t;
  return (c0 + t * c1) + t2 * ((c2 + t * c3) + t2 * (c4 + t * c5));
}
ORIN_INLINE Vec2d log_gamma_ep(Vec2d x) {
  const Place at = place<4>(x);
  return evaluate_short({data::ep_rows, at.row}, x - at.center);
}

// 1/(12 x) - 1/(360 x^3): within 2^-50 of the whole series for x >= 2^10.
ORIN_INLINE Vec2d stirling_series(Vec2d x) {
  const auto& c = in_memory(constants);
  const Vec2d inverse = c.one / x;
  return inverse * (c.stirling_1 + inverse * inverse * c.stirling_3);
}

// log Gamma(x) for x >= 2^10 as a pair; 2^scaled times that for an x that stands for x 2^scaled.
template <int scaled = 0>
ORIN_INLINE DoubleDouble stirling_pair(Vec2d x) {
  const auto& c = in_memory(constants);
  const DoubleDouble log = log_d::logarithm_pair<-scaled>(x);
  const DoubleDouble less_1 = fast_two_sum(log.high, Vec2d(-1.0));
  const DoubleDouble main = two_product(x, less_1.high);
  Vec2d rest = x * (less_1.low + log.low);
  if constexpr (scaled == 0) {  // otherwise x is so large that these terms vanish
    rest = rest + (stirling_series(x) + (c.half_log_two_pi - (log.high + log.low) * c.half));
  }
  return {main.high, main.low + rest};
}
template <Grade grade>
ORIN_INLINE Vec2d stirling(Vec2d x) {
  if constexpr (grade == Grade::ha) {
    const DoubleDouble sum = stirling_pair(x);
    return sum.high + sum.low;
  } else {
    const auto& c = in_memory(constants);
    const Vec2d log = logarithm<grade>(x);
    return x * (log - c.one) + (stirling_series(x) + (c.half_log_two_pi - log * c.half));
  }
}

// y >= 0 as the nearest integer n and t = y - n; the lowest bit of the lane n_bits is that of n.
struct Nearest {
  Vec2d n, t;
  Vec2l n_bits;
};
ORIN_INLINE Nearest nearest(Vec2d y) {
  const auto& c = in_memory(constants);
  const Vec2d shifted = y + c.to_integer;
  const Vec2d n = shifted - c.to_integer;
  return {n, y - n, bits(shifted)};
}

// log(sin(pi t)/(pi t)), 0 <= t <= 1/2: as a pair, and to 2^-50.
ORIN_INLINE DoubleDouble log_sine_ratio(Vec2d t) {
  const auto& c = in_memory(constants);
  const Vec2d step = t + c.to_64ths;
  return evaluate({data::sine_rows, low_bits<8>(bits(step))}, t - (step - c.to_64ths));
}
ORIN_INLINE Vec2d log_sine_ratio_short(Vec2d t) {
  const auto& c = in_memory(constants);
  const Vec2d step = t + c.to_64ths;
  return evaluate_short({data::short_sine_rows, low_bits<8>(bits(step))}, t - (step - c.to_64ths));
}

// 0 <= y < 2^52.
ORIN_INLINE double nearest_integer(double y) { return (y + 0x1p52) - 0x1p52; }

// 0 or a negative integer.
ORIN_INLINE bool is_pole(double x) { return x <= 0 && (x <= -0x1p52 || nearest_integer(-x) == -x); }

// Of four arguments (by their high words) those that are negative, of magnitude first..last and surely no integers.
template <std::int32_t first, std::int32_t last>
ORIN_INLINE Vec4i negative_fractions(Vec4i words) {
  static_assert(first < 0x3ff00000 && last < 0x41300000);
  static constexpr struct {
    Constant<std::int32_t> one = 0x3ff00000, float_one = 0x3f800000;
    Constant<float> to_integer = 0x1.8p23f;
  } k{};
  const auto& c = in_memory(k);
  const Vec4i size = magnitude(words);
  // A magnitude cut to its high word, as a float: exactly, as long as it is below 2^20.
  const Vec4i below_1 = size < c.one;
  const Vec4i excluded = outside<first, last>(size) | (words > Vec4i(-1));
  const Vec4f cut = from_bits(c.float_one + (shift_left<3>(size - c.one) & select(below_1 | excluded, 0, Vec4i(-1))));
  const Vec4f n = (cut + c.to_integer) - c.to_integer;
  const Vec4i whole = select(below_1, Vec4i(0), bits(cut == n));
  return select(excluded | whole, Vec4i(0), Vec4i(-1));
}

// The special ones of four arguments: all but first..last and negative fractions.
template <std::int32_t first, std::int32_t last>
ORIN_INLINE Vec4i special_lanes(Vec4i words, auto negative_fractions_of) {
  const Vec4i odd = outside<first, last>(words);
  if (lane_bits(odd) == 0) [[likely]]
    return odd;
  return select(negative_fractions_of(words), Vec4i(0), odd);
}

}  // namespace orin::vector_math::gamma_d

#endif
