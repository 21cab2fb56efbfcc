// log_core_d.h: the logarithm of doubles, shared by every function that takes one.
// SPDX-License-Identifier: MIT
//
// Method    x = 2^k m, 3/4 <= m < 3/2; a = m rounded to a multiple of 1/256; c near 1/a, of nine bits
//           HA  r = m c - 1 exactly;  log x = (k log 2 - log c) + r + r^2 q(r), the sum in brackets as a pair,
//               its high part exact
//           LA  r = (m - a)/a;  log x = (k log 2 + log a) + (r + r^2 q(r))
//           EP  the bits of x, a piecewise linear log2, in steps of 1/256: n is the nearest one, of 2^k m;  r = m c - 1,
//               c the inverse of the m of j = n mod 256;  log x = (n log 2/256 - (log c + j log 2/256)) + r p(r)
//               of 1 + v  r = v c 2^-k + (c 2^-k - 1)
//           Next to 1 a = c = 1 and the brackets vanish: there the result is as good as r + r^2 q(r).
// Arguments positive and normal; a pair x + rest where named so. `scaled`: x stands for x 2^-scaled. v from 2^-53 - 1 to
//           2^1000.
// Budget    HA    in ulp: r^2 q 2^-8, low parts 2^-8, last rounding 1/2
//           pair  relative: polynomial 2^-74, its rounding 2^-70
//           LA    in 2^-53: m - a times 1/a 2, sum in brackets 2, last two 2;   EP polynomial 2^-30
// Data      data/log_d_data.h from tools/tables/log_d.py
// Source    P. T. P. Tang, Table-driven implementation of the logarithm function, ACM TOMS 16 (1990), 378-400
#ifndef ORIN_VECTOR_MATH_KERNELS_LOG_CORE_D_H
#define ORIN_VECTOR_MATH_KERNELS_LOG_CORE_D_H

#include "vector_math/data/log_d_data.h"
#include "vector_math/grade.h"
#include "vector_math/kernels/double_double.h"
#include "vector_math/kernels/log_base.h"
#include "vector_math/simd/table.h"

namespace orin::vector_math::log_d {

using namespace simd;
namespace data = log_d_data;

constexpr std::int64_t exponent_bias = 1536;  // keeps k + bias positive for all k
constexpr std::int64_t bits_of_three_quarters = INT64_C(0x3fe8000000000000);

// The constants of one grade and base stand in one record, reached through one pointer.
struct Reduction {
  Constant<std::int64_t> to_k = (exponent_bias << 52) - bits_of_three_quarters;
  Constant<std::int64_t> two_to_52 = INT64_C(0x4330000000000000);
  Constant<std::int64_t> fraction = INT64_C(0x000fffffffffffff);
  Constant<std::int64_t> exponent = ~INT64_C(0x000fffffffffffff);
  Constant<std::int64_t> three_quarters = bits_of_three_quarters;
  Constant<std::int64_t> to_inverse = (exponent_bias + 1023 - 4096) * (INT64_C(1) << 52);  // modulo 2^64
  Constant<double> k_offset = 0x1p52 + static_cast<double>(exponent_bias);
  Constant<double> to_step = 0x1.8p44 - 0.75;  // m + to_step: m rounded to a multiple of 1/256, (a - 3/4) 256 as bits
};
struct HighAccuracy : Reduction {
  Constant<double> two_high, two_low;          // log 2
  Constant<double> inverse_high, inverse_low;  // log e
  Constant<double> q0, q1, q2, q3, q4, q5;
};
struct LowAccuracy : Reduction {
  Constant<double> two, q0, q1, q2, q3, q4;
};
struct Enhanced {
  static constexpr int bias_of_inverse =
      64;  // the table has the inverses times 2^64, so that k + 64 is taken from them
  static constexpr std::int64_t half_cell = INT64_C(1) << 43;
  static constexpr std::int64_t to_n(std::int64_t bias) { return (bias << 52) - bits_of_three_quarters + half_cell; }
  static constexpr double offset_of_n(std::int64_t bias) { return 0x1p52 + static_cast<double>(256 * bias + 128); }
  Constant<double> step, p0, p1, p2;
  Constant<std::int64_t> to_n_any = to_n(exponent_bias), to_n_above = to_n(bias_of_inverse);
  Constant<std::int64_t> two_to_52 = INT64_C(0x4330000000000000);
  Constant<std::int64_t> fraction = INT64_C(0x000fffffffffffff);
  Constant<std::int64_t> exponent = ~INT64_C(0x000fffffffffffff);
  Constant<std::int64_t> to_m = bits_of_three_quarters - half_cell - (INT64_C(1) << 52) * bias_of_inverse;
  Constant<std::int64_t> to_scale = (INT64_C(1) << 52) * (exponent_bias - bias_of_inverse);
  Constant<double> offset_any = offset_of_n(exponent_bias), offset_above = offset_of_n(bias_of_inverse), one = 1.0;
};
struct Pair : Reduction {
  Constant<double> two_high = data::two_high, two_low = data::two_low, half = 0.5;
  Constant<double> to_2_30 = 0x1.8p22;  // x + to_2_30: x rounded to a multiple of 2^-30
  Constant<double> p0 = data::pair_0, p1 = data::pair_1, p2 = data::pair_2, p3 = data::pair_3, p4 = data::pair_4,
                   p5 = data::pair_5;
};
struct Medium : Reduction {
  Constant<double> two = data::two, q0 = data::mid_0, q1 = data::mid_1, q2 = data::mid_2;
};
inline constexpr Pair pair_constants{};
inline constexpr Medium medium_constants{};

template <Base base>
struct Constants;
template <>
struct Constants<Base::e> {
  static constexpr const double* logarithms = data::logarithms;
  static constexpr const double* short_pairs = data::short_pairs;
  static constexpr const double* ep_pairs = data::ep_pairs;
  static constexpr HighAccuracy ha{{},         data::two_high, data::two_low, 1.0,        0.0,       -0.5,
                                   data::ha_0, data::ha_1,     data::ha_2,    data::ha_3, data::ha_4};
  static constexpr LowAccuracy la{{}, data::two, data::la_0, data::la_1, data::la_2, data::la_3, data::la_4};
  static constexpr Enhanced ep{data::ep_step, 1.0, data::ep_0, data::ep_1};
};
template <>
struct Constants<Base::ten> {
  static constexpr const double* logarithms = data::logarithms10;
  static constexpr const double* short_pairs = data::short_pairs10;
  static constexpr const double* ep_pairs = data::ep_pairs10;
  static constexpr HighAccuracy ha{{},
                                   data::two_high10,
                                   data::two_low10,
                                   data::inverse_ln10_high,
                                   data::inverse_ln10_low,
                                   data::ha10_0,
                                   data::ha10_1,
                                   data::ha10_2,
                                   data::ha10_3,
                                   data::ha10_4,
                                   data::ha10_5};
  static constexpr LowAccuracy la{{},           data::two10,  data::la10_0, data::la10_1,
                                  data::la10_2, data::la10_3, data::la10_4};
  static constexpr Enhanced ep{data::ep_step10, data::ep10_0, data::ep10_1, data::ep10_2};
};

// x = 2^k m, f = m - a, j = 256 (a - 3/4).
struct Reduced {
  Vec2d k, f;
  LaneIndices<8, 2> j;
  Vec2l biased;  // k + exponent_bias above the fraction

  // 2^-k, for k up to 1023.
  ORIN_INLINE Vec2d inverse_power(const Reduction& c) const { return from_bits(c.to_inverse - (biased & c.exponent)); }
};

template <int scaled>
ORIN_INLINE Reduced reduce(const Reduction& c, Vec2d x) {
  const Vec2l biased = bits(x) + c.to_k;
  Vec2d k = from_bits(shift_right<52>(biased) | c.two_to_52) - c.k_offset;
  if constexpr (scaled != 0) k = k - double{scaled};
  const Vec2d m = from_bits((biased & c.fraction) + c.three_quarters);
  const Vec2d step = m + c.to_step;
  return {k, m - (step - c.to_step), low_bits<8>(bits(step)), biased};
}

// r = m c - 1 exactly; r_rest, what the rest adds to it, 2^-k c rest.
struct ExactRatio {
  Vec2d r, r_rest;
};
template <bool has_rest>
ORIN_INLINE ExactRatio exact_ratio(const Reduction& c, const Reduced& x, Vec2d rest) {
  const auto [inverse, product_less_1] = look_up_pairs(data::inverses, x.j);
  const Vec2d r = x.f * inverse + product_less_1;
  if constexpr (!has_rest) return {r, r};
  return {r, rest * x.inverse_power(c) * inverse};
}

template <Base base, bool has_rest, int scaled>
ORIN_INLINE Vec2d high_accuracy(Vec2d x, Vec2d rest) {
  const auto& c = in_memory(Constants<base>::ha);
  const Reduced reduced = reduce<scaled>(c, x);
  const auto [r, r_rest] = exact_ratio<has_rest>(c, reduced, rest);
  const auto [log_high, log_low] = look_up_pairs(Constants<base>::logarithms, reduced.j);
  const Vec2d high = reduced.k * c.two_high + log_high;  // exact
  Vec2d low = reduced.k * c.two_low + log_low;
  const Vec2d r2 = r * r;
  const Vec2d q = (c.q0 + r * c.q1) + r2 * ((c.q2 + r * c.q3) + r2 * (c.q4 + r * c.q5));
  Vec2d head = r;
  if constexpr (base == Base::ten) {
    const DoubleDouble parts = split(r);
    head = parts.high * c.inverse_high;  // exact
    low = low + (parts.low * c.inverse_high + r * c.inverse_low);
  }
  if constexpr (has_rest) low = low + (r_rest - r_rest * (r - r2));  // r_rest/(1 + r)
  const DoubleDouble sum = fast_two_sum(high, head);
  return sum.high + (sum.low + (low + r2 * q));
}

template <Base base, bool has_rest, int scaled>
ORIN_INLINE Vec2d short_form(const auto& constants, auto q_of, Vec2d x, Vec2d rest) {
  const auto& c = in_memory(constants);
  const Reduced reduced = reduce<scaled>(c, x);
  const auto [inverse, log] = look_up_pairs(Constants<base>::short_pairs, reduced.j);
  Vec2d f = reduced.f;
  if constexpr (has_rest) f = f + rest * reduced.inverse_power(c);
  const Vec2d r = f * inverse;
  const Vec2d r2 = r * r;
  return (reduced.k * c.two + log) + (r + r2 * q_of(c, r, r2));
}

// n in steps, as a number and below the bias in the bits; the inverse times 2^64.
struct Cell {
  Vec2l biased;
  Vec2d n, inverse, log;

  ORIN_INLINE Cell(const Enhanced& c, const double* pairs, Vec2l biased_, const Constant<double>& offset)
      : biased(biased_) {
    const Vec2l steps = shift_right<44>(biased);
    n = from_bits(steps | c.two_to_52) - offset;
    const auto [first, second] = look_up_pairs(pairs, low_bits<8>(steps));
    inverse = first;
    log = second;
  }
  // log 2^k m c, from r = m c - 1.
  ORIN_INLINE Vec2d logarithm(const Enhanced& c, Vec2d r) const {
    return (n * c.step + log) + r * (c.p0 + r * (c.p1 + r * c.p2));
  }
};
template <Base base, bool has_rest, int scaled>
ORIN_INLINE Vec2d enhanced(Vec2d x, Vec2d rest) {
  const auto& c = in_memory(Constants<base>::ep);
  Cell cell(c, Constants<base>::ep_pairs, bits(x) + c.to_n_any, c.offset_any);
  if constexpr (scaled != 0) cell.n = cell.n - 256.0 * scaled;
  Vec2d r = from_bits((cell.biased & c.fraction) + c.to_m) * cell.inverse - c.one;
  if constexpr (has_rest) r = r + rest * from_bits((bits(cell.inverse) + c.to_scale) - (cell.biased & c.exponent));
  return cell.logarithm(c, r);
}

template <Grade grade, Base base, bool has_rest, int scaled>
ORIN_INLINE Vec2d evaluate(Vec2d x, Vec2d rest) {
  if constexpr (grade == Grade::ha) {
    return high_accuracy<base, has_rest, scaled>(x, rest);
  } else if constexpr (grade == Grade::la) {
    const auto q = [](const auto& c, Vec2d r, Vec2d r2) __attribute__((always_inline)) {
      return (c.q0 + r * c.q1) + r2 * ((c.q2 + r * c.q3) + r2 * c.q4);
    };
    return short_form<base, has_rest, scaled>(Constants<base>::la, q, x, rest);
  } else {
    return enhanced<base, has_rest, scaled>(x, rest);
  }
}

// log x.
template <Grade grade, Base base = Base::e, int scaled = 0>
ORIN_INLINE Vec2d logarithm(Vec2d x) {
  return evaluate<grade, base, false, scaled>(x, x);
}

// log(x + rest), |rest| below 2^-40 x, x below 2^1023.
template <Grade grade, Base base = Base::e>
ORIN_INLINE Vec2d logarithm(Vec2d x, Vec2d rest) {
  return evaluate<grade, base, true, 0>(x, rest);
}

// log(1 + v).
template <Grade grade>
ORIN_INLINE Vec2d logarithm_of_one_plus(Vec2d v) {
  if constexpr (grade == Grade::ep) {
    const auto& c = in_memory(Constants<Base::e>::ep);
    const Cell cell(c, data::ep_pairs, bits(c.one + v) + c.to_n_above, c.offset_above);
    const Vec2d scale = from_bits(bits(cell.inverse) - (cell.biased & c.exponent));
    return cell.logarithm(c, v * scale + (scale - c.one));
  } else {
    const OnePlus<Vec2d> u = one_plus(v);
    return logarithm<grade>(u.sum, u.rest);
  }
}

// log x to a relative 2^-39.
ORIN_INLINE Vec2d logarithm_medium(Vec2d x) {
  const auto q = [](const auto& c, Vec2d r, Vec2d) __attribute__((always_inline)) {
    return c.q0 + r * (c.q1 + r * c.q2);
  };
  return short_form<Base::e, false, 0>(medium_constants, q, x, x);
}

// log x as a pair, to 2^-69; low may reach 2^-23 of high.
template <int scaled = 0>
ORIN_INLINE DoubleDouble logarithm_pair(Vec2d x) {
  const auto& c = in_memory(pair_constants);
  const Reduced reduced = reduce<scaled>(c, x);
  const Vec2d r = exact_ratio<false>(c, reduced, x).r;
  const auto [log_high, log_low] = look_up_pairs(data::logarithms, reduced.j);
  const Vec2d high = reduced.k * c.two_high + log_high;  // exact
  const Vec2d low = reduced.k * c.two_low + log_low;
  // r^2/2 = square + square_low. As r and square are multiples of 2^-61 below 2^-8, their difference is exact.
  const Vec2d r_high = (r + c.to_2_30) - c.to_2_30;
  const Vec2d r_low = r - r_high;
  const Vec2d square = r_high * (r_high * c.half);
  const Vec2d square_low = (r_low * c.half) * (r + r_high);
  const Vec2d r2 = r * r;
  const Vec2d cubic = (c.p0 + r * c.p1) + r2 * ((c.p2 + r * c.p3) + r2 * (c.p4 + r * c.p5));
  const DoubleDouble sum = fast_two_sum(high, r - square);
  return {sum.high, sum.low + ((low - square_low) + (r * r2) * cubic)};
}

// log(x + rest), rest within half a spacing of x, as a pair, to 2^-62.
template <int scaled>
ORIN_INLINE DoubleDouble logarithm_pair(Vec2d x, Vec2d rest) {
  const auto& c = in_memory(pair_constants);
  const Reduced reduced = reduce<scaled>(c, x);
  const Vec2d r = exact_ratio<false>(c, reduced, x).r;
  const auto [log_high, log_low] = look_up_pairs(data::logarithms, reduced.j);
  const Vec2d high = reduced.k * c.two_high + log_high;  // exact
  const Vec2d low = reduced.k * c.two_low + log_low;
  const Vec2d r2 = r * r;
  const Vec2d cubic = (c.p0 + r * c.p1) + r2 * ((c.p2 + r * c.p3) + r2 * (c.p4 + r * c.p5));
  const DoubleDouble sum = fast_two_sum(high, r);
  return fast_two_sum(sum.high, sum.low + ((low + rest / x) + r2 * (r * cubic - c.half)));
}

}  // namespace orin::vector_math::log_d

namespace orin::vector_math {
using log_d::logarithm;
using log_d::logarithm_of_one_plus;
}  // namespace orin::vector_math

#endif
