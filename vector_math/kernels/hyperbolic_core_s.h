// hyperbolic_core_s.h: sinh, cosh and e^x - 1 of floats with ordinary results, LA and EP.
// SPDX-License-Identifier: MIT
//
// Method    x = n ln2 + r, |r| <= ln2/2;  with A = (2^n - 2^-n)/2, B = (2^n + 2^-n)/2:
//           sinh x = A cosh r + B sinh r,  cosh x = B cosh r + A sinh r;  e^x - 1 = (2^n - 1) + 2^n (e^r - 1)
//           EP has r/ln2 = x/ln2 - n in the place of r
// Arguments of sinh and cosh from 0 to 88, of e^x - 1 up to 88 on both sides.
// Budget    LA  in 2^-24: r 1, sinh r 1, products and sums 3, twice as heavy at n = 1;  EP  polynomials 2^-13.2
// Data      data/hyperbolic_data.h from tools/tables/hyperbolic.py
#ifndef ORIN_VECTOR_MATH_KERNELS_HYPERBOLIC_CORE_S_H
#define ORIN_VECTOR_MATH_KERNELS_HYPERBOLIC_CORE_S_H

#include "vector_math/data/hyperbolic_data.h"
#include "vector_math/grade.h"
#include "vector_math/simd/registers.h"

namespace orin::vector_math::hyperbolic_s {

using namespace simd;
namespace data = hyperbolic_data;

inline constexpr struct {
  Constant<float> inverse = 0x1.715476p+0f;       // 1/ln2, nearest
  Constant<float> to_integer = 0x1.8p23f;         // x + to_integer: x rounded to an integer, in the low bits
  Constant<float> largest = 0x1.8p23f + 60;       // 2^-60 is nothing beside 2^60
  Constant<std::int32_t> half_bits = 0x3f000000;  // of 1/2
  Constant<std::int32_t> one_bits = 0x3f800000;
  Constant<float> one = 1.0f, half = 0.5f;
  Constant<float> ln2_high = data::ln2_high, ln2_low = data::ln2_low;
  Constant<float> s0 = data::sinh_la_s_0, s1 = data::sinh_la_s_1, c0 = data::cosh_la_s_0, c1 = data::cosh_la_s_1;
  Constant<float> e0 = data::expm1_la_s_0, e1 = data::expm1_la_s_1, e2 = data::expm1_la_s_2, e3 = data::expm1_la_s_3,
                  e4 = data::expm1_la_s_4;
  Constant<float> ep_s0 = data::sinh_ep_s_0, ep_s1 = data::sinh_ep_s_1, ep_c0 = data::cosh_ep_s_0;
  Constant<float> ep_e0 = data::expm1_ep_s_0, ep_e1 = data::expm1_ep_s_1, ep_e2 = data::expm1_ep_s_2,
                  ep_e3 = data::expm1_ep_s_3;
} constants{};

// x = n ln2 + r, t = n + to_integer; of EP r/ln2.
struct Reduced {
  Vec4f t, r;
};
template <Grade grade>
ORIN_INLINE Reduced reduce(const auto& c, Vec4f x) {
  const Vec4f quotient = x * c.inverse;
  const Vec4f t = quotient + c.to_integer;
  const Vec4f n = t - c.to_integer;
  if constexpr (grade == Grade::ep) return {t, quotient - n};
  return {t, (x - n * c.ln2_high) - n * c.ln2_low};
}

// A and B, cosh r - 1 and sinh r.
struct Parts {
  Vec4f a, b, less_one, sine;
};
template <Grade grade>
ORIN_INLINE Parts parts(Vec4f x) {
  const auto& c = in_memory(constants);
  const auto [t, r] = reduce<grade>(c, x);
  const Vec4f power = from_bits(c.half_bits + shift_left<23>(bits(t)));
  const Vec4f inverse = from_bits(c.half_bits - shift_left<23>(bits(min(t, c.largest))));
  const Vec4f r2 = r * r;
  if constexpr (grade == Grade::la)
    return {power - inverse, power + inverse, r2 * (c.c0 + r2 * c.c1), r + (r * r2) * (c.s0 + r2 * c.s1)};
  else
    return {power - inverse, power + inverse, r2 * c.ep_c0, r * (c.ep_s0 + r2 * c.ep_s1)};
}

template <Grade grade>
ORIN_INLINE Vec4f hyperbolic_sine(Vec4f x) {
  const Parts p = parts<grade>(x);
  return p.a + (p.a * p.less_one + p.b * p.sine);
}
template <Grade grade>
ORIN_INLINE Vec4f hyperbolic_cosine(Vec4f x) {
  const Parts p = parts<grade>(x);
  return p.b + (p.b * p.less_one + p.a * p.sine);
}

// e^x - 1; +0 for -0.
template <Grade grade>
ORIN_INLINE Vec4f exponential_less_one(Vec4f x) {
  const auto& c = in_memory(constants);
  const auto [t, r] = reduce<grade>(c, x);
  const Vec4f power = from_bits(c.one_bits + shift_left<23>(bits(t)));
  const Vec4f r2 = r * r;
  Vec4f p;
  if constexpr (grade == Grade::la)
    p = r + r2 * ((c.e0 + r * c.e1) + r2 * ((c.e2 + r * c.e3) + r2 * c.e4));
  else
    p = r * ((c.ep_e0 + r * c.ep_e1) + r2 * (c.ep_e2 + r * c.ep_e3));
  return (power - c.one) + power * p;
}

}  // namespace orin::vector_math::hyperbolic_s

#endif
