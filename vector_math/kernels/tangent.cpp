// tangent: elementwise tan x, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    x = n a + r as in sincos_core_d.h, t = tan r
//           LA, EP  tan x = (T + t)/(1 - T t), T = tan n a from a table, a large number at the pole
//           HA      tan x = (S + C t)/(C - S t), S/C = T, the larger of the two 1: no entry is large, and one product is
//                   exact. S, C and t as pairs, both products of high parts exact. The quotient is cut to 26 bits; what is
//                   left of the dividend then is exact, and divided it completes the quotient.
//           single  LA, EP as in sincos_core_s.h; HA in doubles of grade EP
// Bounds    HA 0.51 ulp; LA relative 2^-50, 2^-21; EP relative 2^-26, 2^-11; for every finite argument
// Budget    HA  in ulp: lower parts 2^-8, rounding 1/2
//           LA  in 2^-53: t 1 1/2, T 1, dividend 1, divisor 1, quotient 1;   EP polynomial 2^-34.8
// Special   NaN -> NaN, no status; +-inf -> NaN, status 1; tan +-0 = +-0. No number is a pole.
// Data      data/tangent_d_data.h from tools/tables/tangent_d.py
#include "vector_math/data/tangent_d_data.h"
#include "vector_math/kernels/trigonometric.h"

namespace orin::vector_math {
namespace {

using namespace simd;
namespace data = tangent_d_data;

constexpr struct {
  Constant<double> one = 1.0, t0 = data::ha_0, t1 = data::ha_1, t2 = data::ha_2, t3 = data::ha_3;
} ha_constants{};
struct LowAccuracy {
  Constant<double> one = 1.0, t0 = data::la_0, t1 = data::la_1;
};
struct Enhanced {
  Constant<double> one = 1.0, t0 = data::ep_0;
};
template <Grade grade>
inline constexpr LowAccuracy constants{};
template <>
inline constexpr Enhanced constants<Grade::ep>{};

struct OneTangent {
  static constexpr int results = 1;
  static constexpr const char* name_s = "vsTan";
  static constexpr const char* name_d = "vdTan";
};

template <Grade grade>
struct Tangent : OneTangent {
  using Reduction = sincos_s::QuarterTurns<grade>;
  static ORIN_INLINE Vec4f of(const sincos_s::Angle& angle) { return sincos_s::tangent<grade>(angle); }

  static ORIN_INLINE Vec2d of(const sincos_d::Angle& angle) {
    const Vec2d table = look_up(data::tangents, low_bits<8>(angle.n));
    const Vec2d r = angle.high;
    const Vec2d r2 = r * r;
    const auto& k = in_memory(constants<grade>);
    Vec2d t;
    if constexpr (grade == Grade::la)
      t = r + r * (r2 * (k.t0 + r2 * k.t1));
    else
      t = r * (k.one + r2 * k.t0);
    return (table + t) / (k.one - table * t);
  }
};

template <>
struct Tangent<Grade::ha> : OneTangent {
  // a/b for pairs high - low, low up to 2^-10 of high, as one number; 0/b keeps its sign.
  static ORIN_INLINE Vec2d quotient(DoubleDouble a, DoubleDouble b) {
    const auto& k = in_memory(ha_constants);
    const Vec2d inverse = k.one / (b.high - b.low);
    const DoubleDouble q = split(a.high * inverse);
    const DoubleDouble divisor = split(b.high);
    const Vec2d remainder = a.high - q.high * divisor.high;  // exact
    const Vec2d excess = q.high * (divisor.low - b.low) + (a.low - remainder);
    return q.high - excess * inverse;
  }

  static ORIN_INLINE Vec2d of(const sincos_d::Angle& angle) {
    const auto& k = in_memory(ha_constants);
    const auto j = low_bits<6>(angle.n);
    const auto [s, s_low] = look_up_pairs<4>(data::ha_table, j);
    const auto [c, c_low] = look_up_pairs<4>(data::ha_table + 2, j);
    const Vec2d r = angle.high;
    const Vec2d r2 = r * r;
    const DoubleDouble parts = split(r);
    const Vec2d t = parts.high;
    const Vec2d t_low = (parts.low + angle.low) + (r * r2) * ((k.t0 + r2 * k.t1) + (r2 * r2) * (k.t2 + r2 * k.t3));

    const Vec2d up = c * t;  // exact, as down
    const Vec2d sum = s + up;
    const Vec2d sum_rest = (s_low + c_low * t) + (c + c_low) * t_low;
    const Vec2d down = s * t;
    const Vec2d difference = c - down;
    const Vec2d difference_rest = (c_low - s_low * t) - (s + s_low) * t_low;
    return quotient({sum, ((sum - s) - up) - sum_rest}, {difference, ((difference - c) + down) - difference_rest});
  }
};

}  // namespace

#define ORIN_TANGENT(name, T, grade)                                       \
  void ORIN_CALL name##_##grade(std::int32_t n, const T* a, T* r) {        \
    elementwise<Trigonometric<Tangent, T, Grade::grade>>({}, n, {a}, {r}); \
  }
ORIN_TANGENT(tan_s, float, la)
ORIN_TANGENT(tan_s, float, ha)
ORIN_TANGENT(tan_s, float, ep)
ORIN_TANGENT(tan_d, double, la)
ORIN_TANGENT(tan_d, double, ha)
ORIN_TANGENT(tan_d, double, ep)
#undef ORIN_TANGENT

}  // namespace orin::vector_math
