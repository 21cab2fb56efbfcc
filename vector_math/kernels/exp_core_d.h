// exp_core_d.h: e^x 2^extra in double, shared by every function that takes an exponential.
// SPDX-License-Identifier: MIT
//
// Method    HA  x = n ln2/64 + r, n = 64 k + j;    e^x = 2^k (T + T p(r)), T = 2^(j/64) as a pair, p of degree 5
//           LA  x = n ln2/1024 + r, n = 1024 k + j;  e^x = 2^k T q(r), q a monic cubic, T = 2^(j/1024) / 6
//           EP  x 256/ln2 = n + 512 u, n = 256 k + j;  e^x = 2^k T (w^2 + b), w = u + 369/512, T near 2^(j/256)
// Bounds    HA 0.55 ulp; LA relative 2^-50, EP 2^-26; e^0 = 1
// Budget    HA  in ulp: polynomial 2^-6; roundings of r, p, T p and T p + T low 2^-8 each, of the result 1/2
//           LA  in 2^-53: polynomial 0.9, r 2, q 2, table 1, product 1
//           EP  polynomial 2^-30, x 256/ln2 2^-43
// Data      data/exp_d_data.h from tools/tables/exp_d.py
// Source    P. T. P. Tang, Table-driven implementation of the exponential function, ACM TOMS 15 (1989), 144-157
#ifndef ORIN_VECTOR_MATH_KERNELS_EXP_CORE_D_H
#define ORIN_VECTOR_MATH_KERNELS_EXP_CORE_D_H

#include "vector_math/data/exp_d_data.h"
#include "vector_math/grade.h"
#include "vector_math/simd/table.h"

namespace orin::vector_math::exp_d {

using namespace simd;
namespace data = exp_d_data;

inline constexpr struct {
  Constant<std::int32_t> largest_word = 0x4086232a;   // |x| below 708.396
  Constant<double> inverse = 0x1.71547652b82fep+6;    // 64/ln2, nearest
  Constant<double> to_integer = 0x1.8p52;             // x + to_integer: x rounded to an integer, in the low bits
  Constant<double> step_high = 0x1.62e42fefp-7;       // ln2/64 to 32 bits: n step_high is exact
  Constant<double> step_low = 0x1.473de6af278edp-40;  // the rest
  Constant<double> c2 = 0x1.fffffffffd97cp-2, c3 = 0x1.55555555542a1p-3;  // p = r + r^2 (c2 + c3 r + ..)
  Constant<double> c4 = 0x1.555574bc3a1bep-5, c5 = 0x1.1111276409c2cp-7;
} ha_constants{};

inline constexpr struct {
  Constant<std::int32_t> largest_word = 0x40860fff;  // |x| below 706: 2^k T stays normal although T is near 1/6
  Constant<double> inverse = 0x1.71547652b82fep+10;  // 1024/ln2, nearest
  Constant<double> to_integer = 0x1.8p52;
  Constant<double> step_high = 0x1.62e42ffp-11;        // ln2/1024 to 32 bits: n step_high is exact
  Constant<double> step_low = -0x1.718432a1b0e26p-45;  // the rest
  Constant<double> q0 = data::la_0, q1 = data::la_1, q2 = data::la_2;
} la_constants{};

inline constexpr struct {
  Constant<std::int32_t> largest_word = 0x40860fff;
  Constant<double> inverse = 0x1.71547652b82fep-1;  // 256/ln2 in units of 2^-9
  Constant<double> to_step = 0x1.8p43;              // x + to_step: x rounded to a multiple of 2^-9
  Constant<double> to_step_shifted = 0x1.8p43 + data::ep_shift;
  Constant<double> b = data::ep_0;
} ep_constants{};

// e^x 2^extra by grade, for a result that is a normal number.
template <Grade grade>
struct Power;

template <>
struct Power<Grade::ha> {
  static constexpr const auto& constants = ha_constants;

  template <int extra>
  static ORIN_INLINE Vec2d of(Vec2d x) {
    const auto& k = in_memory(constants);
    const Vec2d t = x * k.inverse + k.to_integer;
    const Vec2d n = t - k.to_integer;
    const Vec2d r = (x - n * k.step_high) - n * k.step_low;
    const Vec2d p = r + r * r * (k.c2 + r * (k.c3 + r * (k.c4 + r * k.c5)));
    const auto j = low_bits<6>(bits(t));
    const Vec2d high = look_up<2>(data::ha_pairs, j);
    const Vec2d low = look_up<2>(data::ha_pairs + 1, j);
    const Vec2d v = ((high + low) * p + low) + high;
    // 2^k is added in the exponent: v lies within [1/2, 2) and the result is normal, so nothing is rounded.
    Vec2l exponent = shift_right<6>(bits(t));
    if constexpr (extra != 0) exponent = exponent + Vec2l(std::int64_t{extra});
    return from_bits(bits(v) + shift_left<52>(exponent));
  }
};

template <>
struct Power<Grade::la> {
  static constexpr const auto& constants = la_constants;
  static constexpr PowersOfTwo<Vec2d, 10> powers{data::la_powers};

  template <int extra>
  static ORIN_INLINE Vec2d of(Vec2d x) {
    const auto& k = in_memory(constants);
    const Vec2d t = x * k.inverse + k.to_integer;
    const Vec2d n = t - k.to_integer;
    const Vec2d r = (x - n * k.step_high) - n * k.step_low;
    const Vec2d q = ((r + k.q2) * r + k.q1) * r + k.q0;
    return powers.of<extra>(bits(t)) * q;
  }
};

template <>
struct Power<Grade::ep> {
  static constexpr const auto& constants = ep_constants;
  static constexpr PowersOfTwo<Vec2d, 8> powers{data::ep_powers};

  template <int extra>
  static ORIN_INLINE Vec2d of(Vec2d x) {
    const auto& k = in_memory(constants);
    const Vec2d y = x * k.inverse;
    const Vec2d t = y + k.to_step;
    const Vec2d w = y - (t - k.to_step_shifted);
    return powers.of<extra>(bits(t)) * (w * w + k.b);
  }
};

}  // namespace orin::vector_math::exp_d

#endif
