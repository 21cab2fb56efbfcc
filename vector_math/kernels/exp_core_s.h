// exp_core_s.h: e^x 2^extra in single precision, shared by every function that takes an exponential.
// SPDX-License-Identifier: MIT
//
// Method    HA  x = n ln2/256 + r, n = 256 k + j;  e^x = 2^k (T + T (tail + p(r))), T (1 + tail) = 2^(j/256)
//           LA  the same reduction, shifted by 368 steps;  e^x = 2^k T (w^2 + b), w = r + 368 ln2/256
//           EP  x/ln2 = k + f;  e^x = 2^k q(f), q a cubic
// Bounds    HA 0.53 ulp; LA relative 2^-21, EP 2^-11; e^0 = 1
// Budget    HA  in ulp: reduction 2^-6, polynomial 2^-8; roundings of tail + p and its product 2^-9, of the result 1/2
//           LA  in 2^-24: w 1, its square 1/2, the sum 1, table 1, product 1
//           EP  polynomial 2^-12.7, reduction x/ln2 2^-18
// Data      data/exp_s_data.h from tools/tables/exp_s.py
// Source    P. T. P. Tang, Table-driven implementation of the exponential function, ACM TOMS 15 (1989), 144-157
#ifndef ORIN_VECTOR_MATH_KERNELS_EXP_CORE_S_H
#define ORIN_VECTOR_MATH_KERNELS_EXP_CORE_S_H

#include "vector_math/data/exp_s_data.h"
#include "vector_math/grade.h"
#include "vector_math/simd/table.h"

namespace orin::vector_math::exp_s {

using namespace simd;
namespace data = exp_s_data;

inline constexpr float to_integer = 0x1.8p23f;  // x + to_integer: x rounded to an integer, in the low bits

inline constexpr struct {
  Constant<std::int32_t> largest_word = 0x42aeac4f;  // |x| <= 87.33654
  Constant<float> inverse = 0x1.715476p+8f;          // 256/ln2, nearest
  Constant<float> to_integer = exp_s::to_integer;
  Constant<float> step_high = data::step_high, step_low = data::step_low;
  Constant<float> p1 = data::ha_1, p2 = data::ha_2;
} ha_constants{};

inline constexpr struct {
  Constant<std::int32_t> largest_word = 0x42acffff;  // |x| below 86.5: 2^k T stays normal although T is near 1/2
  Constant<float> inverse = 0x1.715476p+8f;          // 256/ln2, nearest
  Constant<float> to_integer = exp_s::to_integer;
  Constant<float> to_integer_shifted = exp_s::to_integer + 368.0f;
  Constant<float> step_high = data::step_high, step_low = data::step_low;
  Constant<float> b = data::la_0;
} la_constants{};

inline constexpr struct {
  Constant<std::int32_t> largest_word = 0x42aeac4f;  // |x| <= 87.33654
  Constant<float> inverse = 0x1.715476p+0f;          // 1/ln2, nearest
  Constant<float> to_integer = exp_s::to_integer;
  Constant<float> q0 = data::ep_0, q1 = data::ep_1, q2 = data::ep_2, q3 = data::ep_3;
} ep_constants{};

// e^x 2^extra by grade, for a result that is a normal number.
template <Grade grade>
struct Power;

template <>
struct Power<Grade::ha> {
  static constexpr const auto& constants = ha_constants;

  template <int extra>
  static ORIN_INLINE Vec4f of(Vec4f x) {
    const auto& k = in_memory(constants);
    const Vec4f t = x * k.inverse + k.to_integer;
    const Vec4f n = t - k.to_integer;
    const Vec4f r = (x - n * k.step_high) - n * k.step_low;
    const auto [power, tail] = look_up_pairs(data::ha_pairs, low_bits<8>(bits(t)));
    const Vec4f v = power + power * (tail + r * (k.p1 + r * k.p2));
    // 2^k is added in the exponent: v lies within [1/2, 2] and the result is normal, so nothing is rounded.
    Vec4i exponent = shift_right<8>(bits(t));
    if constexpr (extra != 0) exponent = exponent + Vec4i(extra);
    return from_bits(bits(v) + shift_left<23>(exponent));
  }
};

template <>
struct Power<Grade::la> {
  static constexpr const auto& constants = la_constants;
  static constexpr PowersOfTwo<Vec4f, 8> powers{data::la_powers};

  template <int extra>
  static ORIN_INLINE Vec4f of(Vec4f x) {
    const auto& k = in_memory(constants);
    const Vec4f t = x * k.inverse + k.to_integer;
    const Vec4f n = t - k.to_integer_shifted;
    const Vec4f w = (x - n * k.step_high) - n * k.step_low;
    return powers.of<extra>(bits(t)) * (w * w + k.b);
  }
};

template <>
struct Power<Grade::ep> {
  static constexpr const auto& constants = ep_constants;

  template <int extra>
  static ORIN_INLINE Vec4f of(Vec4f x) {
    const auto& k = in_memory(constants);
    const Vec4f y = x * k.inverse;
    const Vec4f t = y + k.to_integer;
    const Vec4f f = y - (t - k.to_integer);
    const Vec4f q = ((f * k.q3 + k.q2) * f + k.q1) * f + k.q0;
    Vec4i exponent = bits(t);
    if constexpr (extra != 0) exponent = exponent + Vec4i(extra);
    return from_bits(bits(q) + shift_left<23>(exponent));
  }
};

}  // namespace orin::vector_math::exp_s

#endif
