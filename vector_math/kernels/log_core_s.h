// log_core_s.h: the logarithm of floats, shared by every function that takes one.
// SPDX-License-Identifier: MIT
//
// Method    HA  x = 2^k (1 + f), |f| <= 1/3;  log x = k l + f + (k l' - f^2/2 + f^3 P(f)), l + l' = log 2, k l exact,
//               the first sum as a pair
//           LA  x = 2^k (1 + f), sqrt 1/2 <= 1 + f <= sqrt 2;  log x = k log 2 + (f + f^2 p(f))
//           EP  the same range;  log x = k log 2 + f p(f)
//               of 1 + v  f = v 2^-k + (2^-k - 1);  of a fraction of the logarithm  the constants divided
//           The square f^2/2 is exact for the leading bits of f and joins the pair; base 10 has that pair times 1/ln 10
// Arguments positive and normal; a pair x + rest where named so. `scaled`: x stands for x 2^-scaled.
// Budget    HA  in ulp: low parts 1/16, polynomial 1/16, last rounding 1/2
//           LA  in 2^-24: polynomial 1.1, its product 1/2, products and sums 2.5;   EP polynomial 2^-11.4
//           Fractions, whose EP is bounded in ulp: polynomial 2^-14.2
// Data      data/log_s_data.h from tools/tables/log_s.py
#ifndef ORIN_VECTOR_MATH_KERNELS_LOG_CORE_S_H
#define ORIN_VECTOR_MATH_KERNELS_LOG_CORE_S_H

#include "vector_math/data/log_s_data.h"
#include "vector_math/grade.h"
#include "vector_math/kernels/log_base.h"

namespace orin::vector_math::log_s {

using namespace simd;
namespace data = log_s_data;

constexpr std::int32_t bits_of_two_thirds = 0x3f2aaaab;
constexpr std::int32_t bits_of_root_half = 0x3f3504f3;

// The constants of one grade and base stand in one record, reached through one pointer.
struct Reduction {
  Constant<std::int32_t> least;  // bits of the least 1 + f
  Constant<std::int32_t> fraction = 0x007fffff;
  Constant<std::int32_t> exponent = ~0x007fffff;
  Constant<std::int32_t> bits_of_one = 0x3f800000;
  Constant<float> one = 1.0f;
};
struct HighAccuracy : Reduction {
  Constant<float> two_high, two_low;                   // log 2
  Constant<float> inverse_high, inverse_low, inverse;  // log e
  Constant<float> p0, p1, p2, p3, p4, p5, p6, p7, p8;
  Constant<float> half = 0.5f;
  Constant<float> to_2_12 = 0x1.8p11f;      // f + to_2_12: f rounded to a multiple of 2^-12
  Constant<std::int32_t> leading = ~0xfff;  // the first 12 bits of a float
};
struct LowAccuracy : Reduction {
  Constant<float> two, inverse, p0, p1, p2, p3, p4, p5, p6, p7;
};
struct Enhanced : Reduction {
  Constant<float> two, p0, p1, p2, p3;
};
struct EnhancedPart : Reduction {  // EP of a fraction, as complex logarithms have it for a part
  Constant<float> two, p0, p1, p2, p3, p4;
};

template <Base base>
struct Constants;
template <>
struct Constants<Base::e> {
  static constexpr HighAccuracy ha{
      {bits_of_two_thirds}, data::two_high, data::two_low, 1.0f,       0.0f,       1.0f,       data::ha_0, data::ha_1,
      data::ha_2,           data::ha_3,     data::ha_4,    data::ha_5, data::ha_6, data::ha_7, data::ha_8};
  static constexpr LowAccuracy la{{bits_of_root_half}, data::two,  1.0f,       data::la_0, data::la_1, data::la_2,
                                  data::la_3,          data::la_4, data::la_5, data::la_6, data::la_7};
  static constexpr Enhanced ep{{bits_of_root_half}, data::two, data::ep_0, data::ep_1, data::ep_2, data::ep_3};
  static constexpr EnhancedPart part{{bits_of_root_half}, data::two,    data::part_0, data::part_1,
                                     data::part_2,        data::part_3, data::part_4};
};
template <>
struct Constants<Base::ten> {
  static constexpr HighAccuracy ha{{bits_of_two_thirds},
                                   data::two_high10,
                                   data::two_low10,
                                   data::inverse_ln10_high,
                                   data::inverse_ln10_low,
                                   data::inverse_ln10,
                                   data::ha_0,
                                   data::ha_1,
                                   data::ha_2,
                                   data::ha_3,
                                   data::ha_4,
                                   data::ha_5,
                                   data::ha_6,
                                   data::ha_7,
                                   data::ha_8};
  static constexpr LowAccuracy la{{bits_of_root_half}, data::two10,  data::inverse_ln10, data::la10_0,
                                  data::la10_1,        data::la10_2, data::la10_3,       data::la10_4,
                                  data::la10_5,        data::la10_6, data::la10_7};
  static constexpr Enhanced ep{{bits_of_root_half}, data::two10,  data::ep10_0,
                               data::ep10_1,        data::ep10_2, data::ep10_3};
  static constexpr EnhancedPart part{{bits_of_root_half}, data::two10,    data::part10_0, data::part10_1,
                                     data::part10_2,      data::part10_3, data::part10_4};
};

// The constants of a fraction of the logarithm.
template <class Record>
constexpr Record divided(Record c, float by) {
  const auto divide = [by](auto&... each) { ((each = each.lane[0] / by), ...); };
  divide(c.two, c.p0, c.p1, c.p2, c.p3, c.p4);
  if constexpr (requires { c.inverse; }) divide(c.inverse, c.p5, c.p6, c.p7);
  return c;
}
template <Grade grade, Base base, int by>
inline constexpr auto fraction = divided(Constants<base>::part, by);
template <Base base, int by>
inline constexpr auto fraction<Grade::la, base, by> = divided(Constants<base>::la, by);

// x + rest = 2^k (1 + f + low), low within half a spacing of f.
struct Reduced {
  Vec4f k, f, low;
};
template <bool has_rest, int scaled>
ORIN_INLINE Reduced reduce(const Reduction& c, Vec4f x, Vec4f rest) {
  const Vec4i distance = bits(x) - c.least;
  Vec4i k = shift_right_signed<23>(distance);
  const Vec4f f = from_bits((distance & c.fraction) + c.least) - c.one;
  Reduced reduced{to_float(scaled != 0 ? k - Vec4i(scaled) : k), f, f};
  if constexpr (has_rest) {
    const Vec4f scaled_rest = rest * from_bits(c.bits_of_one - (distance & c.exponent));
    reduced.f = f + scaled_rest;
    reduced.low = scaled_rest - (reduced.f - f);
  }
  return reduced;
}

// log(2^k (1 + f)) in LA and EP; with a factor other than 1 among the constants where it has one.
template <Grade grade, bool has_factor>
ORIN_INLINE Vec4f short_form(const auto& c, Vec4f k, Vec4f f) {
  const Vec4f f2 = f * f;
  if constexpr (grade == Grade::la) {
    const Vec4f p =
        ((c.p0 + f * c.p1) + f2 * (c.p2 + f * c.p3)) + (f2 * f2) * ((c.p4 + f * c.p5) + f2 * (c.p6 + f * c.p7));
    const Vec4f first = has_factor ? f * c.inverse : f;
    return k * c.two + (first + f2 * p);
  } else {
    Vec4f last = c.p2 + f * c.p3;
    if constexpr (requires { c.p4; }) last = last + f2 * c.p4;
    return k * c.two + f * ((c.p0 + f * c.p1) + f2 * last);
  }
}
template <Grade grade, Base base>
ORIN_INLINE const auto& constants_of() {
  if constexpr (grade == Grade::la)
    return in_memory(Constants<base>::la);
  else
    return in_memory(Constants<base>::ep);
}

template <Grade grade, Base base, bool has_rest, int scaled>
ORIN_INLINE Vec4f evaluate(Vec4f x, Vec4f rest) {
  if constexpr (grade == Grade::ha) {
    const auto& c = in_memory(Constants<base>::ha);
    const auto [k, f, rest_low] = reduce<has_rest, scaled>(c, x, rest);
    const Vec4f f2 = f * f;
    const Vec4f p = ((c.p0 + f * c.p1) + f2 * (c.p2 + f * c.p3)) +
                    (f2 * f2) * (((c.p4 + f * c.p5) + f2 * (c.p6 + f * c.p7)) + (f2 * f2) * c.p8);
    // Without a rest f and the square of f_high over 2 are multiples of 2^-25 below 1/2: their difference is exact.
    const Vec4f f_high = (f + c.to_2_12) - c.to_2_12;
    const Vec4f square = f_high * (f_high * c.half);
    Vec4f head = f - square;
    Vec4f low = (f2 * f) * p - (f - f_high) * ((f + f_high) * c.half);
    if constexpr (has_rest) low = low + ((rest_low - rest_low * f) + ((f - head) - square));
    if constexpr (base == Base::ten) {
      const Vec4f all = head;
      head = all & from_bits(c.leading);
      low = low * c.inverse + ((all - head) * c.inverse_high + all * c.inverse_low);
      head = head * c.inverse_high;  // exact
    }
    const Vec4f main = k * c.two_high;  // exact
    const Vec4f sum = main + head;
    return sum + (((main - sum) + head) + (low + k * c.two_low));
  } else {
    const auto& c = constants_of<grade, base>();
    const auto [k, f, rest_low] = reduce<has_rest, scaled>(c, x, rest);
    return short_form<grade, base == Base::ten>(c, k, f);
  }
}

// log x.
template <Grade grade, Base base = Base::e, int scaled = 0>
ORIN_INLINE Vec4f logarithm(Vec4f x) {
  return evaluate<grade, base, false, scaled>(x, x);
}

// log(x + rest), |rest| at most a few units of x's last place, x below 2^126.
template <Grade grade>
ORIN_INLINE Vec4f logarithm(Vec4f x, Vec4f rest) {
  return evaluate<grade, Base::e, true, 0>(x, rest);
}

// log(1 + v), v up to 2^126: f = v 2^-k + (2^-k - 1) in LA and EP.
template <Grade grade>
ORIN_INLINE Vec4f logarithm_of_one_plus(Vec4f v) {
  if constexpr (grade == Grade::ha) {
    const OnePlus<Vec4f> u = one_plus(v);
    return logarithm<grade>(u.sum, u.rest);
  } else {
    const auto& c = constants_of<grade, Base::e>();
    const Vec4i distance = bits(c.one + v) - c.least;
    const Vec4f scale = from_bits(c.bits_of_one - (distance & c.exponent));
    return short_form<grade, false>(c, to_float(shift_right_signed<23>(distance)), v * scale + (scale - c.one));
  }
}

// log(one + v)/by, the sum within 2^-125 .. 2^126; `where` clears the lanes of a number that have 0 as one.
template <Grade grade, Base base, int by>
ORIN_INLINE Vec4f fraction_of_logarithm(Vec4f v, auto where) {
  const auto& c = in_memory(fraction<grade, base, by>);
  const Vec4i distance = bits(where(c.one) + v) - c.least;
  const Vec4f scale = from_bits(c.bits_of_one - (distance & c.exponent));
  const Vec4f f = v * scale + (where(scale) - c.one);
  constexpr bool has_factor = by != 1 || base == Base::ten;
  return short_form<grade, has_factor>(c, to_float(shift_right_signed<23>(distance)), f);
}
// log(mask + v)/by, a set lane of the mask being 1.
template <Grade grade, Base base, int by>
ORIN_INLINE Vec4f fraction_of_logarithm(Vec4f mask, Vec4f v) {
  return fraction_of_logarithm<grade, base, by>(
      v, [&](Vec4f a) __attribute__((always_inline)) { return a & mask; });
}
// log(1 + v)/by.
template <Grade grade, int by>
ORIN_INLINE Vec4f fraction_of_logarithm_of_one_plus(Vec4f v) {
  return fraction_of_logarithm<grade, Base::e, by>(
      v, [](Vec4f a) __attribute__((always_inline)) { return a; });
}

}  // namespace orin::vector_math::log_s

namespace orin::vector_math {
using log_s::fraction_of_logarithm;
using log_s::fraction_of_logarithm_of_one_plus;
using log_s::logarithm;
using log_s::logarithm_of_one_plus;
}  // namespace orin::vector_math

#endif
