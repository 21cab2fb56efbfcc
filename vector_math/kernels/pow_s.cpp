// pow_s: elementwise x^y, single precision, y a vector or one number.
// SPDX-License-Identifier: MIT
//
// Method    x = 2^k m, 3/4 <= m < 3/2, a = m rounded to a multiple of 1/128
//           HA  in double: e = y (k/2 + log2(a)/2 + log2(1 + (m - a)/a)/2), then 2^(2e) by
//               2e = n/256 + 2u, 2^(n/256) near T (w^2 + b), w = u + 369/512
//           EP  in float: log2 x = k + f p(f), sqrt 1/2 <= 1 + f <= sqrt 2; 2^e by a cubic
// Bounds    HA 0.52 ulp, EP relative 2^-11, as HA where the result is beyond 2^+-126; LA is HA
// Budget    HA  logarithm 2^-35 times 88, exponential 2^-31;  EP logarithm 2^-19 times 88, exponential 2^-12.6
// Special   C Annex F; negative to a fraction -> NaN, status 1; +-0 to a negative -> inf, status 2; overflow -> inf,
//           status 3; subnormal or zero out of finite non-zero arguments, status 4; these powers are taken in double
// Data      data/pow_s_data.h from tools/tables/pow_s.py, data/pow_d_data.h
#include <cfloat>
#include <cmath>

#include "vector_math/data/pow_s_data.h"
#include "vector_math/kernels.h"
#include "vector_math/kernels/pow_core_d.h"
#include "vector_math/kernels/power.h"

namespace orin::vector_math {
namespace {

using namespace simd;
namespace data = pow_s_data;

constexpr struct {
  Constant<std::int32_t> three_quarters = 0x3f400000;
  Constant<std::int32_t> fraction = 0x007fffff;
  Constant<float> to_step = 0x1.8p16f - 0.75f;  // m + to_step: m rounded to 1/128, (a - 3/4) 128 in the low bits
  Constant<double> half = 0.5;
  Constant<double> q0 = data::q0, q1 = data::q1, q2 = data::q2;
  Constant<double> limit = 63.0;          // 2^+-126 is normal
  Constant<double> to_step_d = 0x1.8p43;  // e + to_step_d: e rounded to a multiple of 2^-9
  Constant<double> to_step_shifted = 0x1.8p43 + pow_d_data::ep_shift;
  Constant<double> b = pow_d_data::ep_b;
} ha_constants{};

constexpr struct {
  Constant<std::int32_t> root_half = 0x3f3504f3;
  Constant<std::int32_t> fraction = 0x007fffff;
  Constant<float> one = 1.0f;
  Constant<float> p0 = data::ep_0, p1 = data::ep_1, p2 = data::ep_2, p3 = data::ep_3, p4 = data::ep_4, p5 = data::ep_5,
                  p6 = data::ep_6;
  Constant<float> limit = 126.0f;
  Constant<float> to_integer = 0x1.8p23f;
  Constant<float> q1 = data::power_1, q2 = data::power_2, q3 = data::power_3;
} ep_constants{};

// One half of the register: the power, and whether it is beyond the limit.
struct Half {
  Vec2d value, beyond;
};
ORIN_INLINE Half half_power(Vec2d k, Vec2d f, LaneIndices<8, 2> j, Vec2d y) {
  const auto& c = in_memory(ha_constants);
  const auto [inverse, log] = look_up_pairs(data::logarithms, j);
  const Vec2d r = f * inverse;
  const Vec2d log_x = (k * c.half + log) + (r + (r * r) * (c.q0 + r * (c.q1 + r * c.q2)));
  const Vec2d exponent = y * log_x;
  const Vec2d beyond = abs(exponent) >= c.limit;
  const Vec2d e = and_not(beyond, exponent);  // an odd power must not meet the narrowing
  const Vec2d t = e + c.to_step_d;
  const Vec2d w = e - (t - c.to_step_shifted);
  return {pow_d::ep_powers.of(bits(t)) * (w * w + c.b), beyond};
}

template <Grade grade>
ORIN_INLINE Vec4f power_function(Vec4f x, Vec4f y) {
  if constexpr (grade == Grade::ep) {
    const auto& c = in_memory(ep_constants);
    const Vec4i distance = bits(x) - c.root_half;
    const Vec4f k = to_float(shift_right_signed<23>(distance));
    const Vec4f f = from_bits((distance & c.fraction) + c.root_half) - c.one;
    const Vec4f f2 = f * f;
    const Vec4f p = (c.p0 + f * c.p1) + f2 * ((c.p2 + f * c.p3) + f2 * ((c.p4 + f * c.p5) + f2 * c.p6));
    const Vec4f e = y * (k + f * p);
    const Vec4f t = e + c.to_integer;
    const Vec4f u = e - (t - c.to_integer);
    const Vec4f q = (c.one + u * c.q1) + (u * u) * (c.q2 + u * c.q3);
    return from_bits(bits(q) + shift_left<23>(bits(t))) | (abs(e) >= c.limit);
  } else {
    const auto& c = in_memory(ha_constants);
    const Vec4i distance = bits(x) - c.three_quarters;
    const Vec4i k = shift_right_signed<23>(distance);
    const Vec4f m = from_bits((distance & c.fraction) + c.three_quarters);
    const Vec4f step = m + c.to_step;
    const TwoVec2d ks = to_double(k);
    const TwoVec2d fs = widen(m - (step - c.to_step));
    const TwoVec2d ys = widen(y);
    const auto j = low_bits<8>(bits(step));
    const Half low = half_power(ks.low, fs.low, {j.of[0], j.of[1]}, ys.low);
    const Half high = half_power(ks.high, fs.high, {j.of[2], j.of[3]}, ys.high);
    return narrow({low.value, high.value}) | from_bits(high_words(low.beyond, high.beyond));
  }
}

WidePower<float> wide_power(float x, float y) {
  constexpr float enough = 0x1p40f;  // beyond, the result is out of range whatever x
  const float bounded_y = y > enough ? enough : y < -enough ? -enough : y;
  const double log = first_lane(log_d::logarithm_medium(Vec2d(double{x})));
  const double e = log * double{bounded_y};
  if (e > 89) return {HUGE_VALF, false};
  if (e < -105) return {0.0f, true};
  const double power = first_lane(pow_d::power_function<Grade::ha>(Vec2d(double{x}), Vec2d(double{bounded_y})));
  return {power >= 0x1.ffffffp127 ? HUGE_VALF : static_cast<float>(power), power < double{FLT_MIN}};
}

template <Grade grade>
struct Core {
  using Element = float;
  static constexpr float limit = 0x1p32f;  // below it the exponent is finite whatever the lane computes

  static ORIN_INLINE Vec4f power(Vec4f x, Vec4f y) { return power_function<grade>(x, y); }
  static WidePower<float> wide(float x, float y) { return wide_power(x, y); }
};

}  // namespace

void ORIN_CALL pow_s_ha(std::int32_t n, const float* a, const float* b, float* r) {
  elementwise<PowerOfVectors<Core<Grade::ha>>>({}, n, {a, b}, {r});
}
void ORIN_CALL pow_s_ep(std::int32_t n, const float* a, const float* b, float* r) {
  elementwise<PowerOfVectors<Core<Grade::ep>>>({}, n, {a, b}, {r});
}
void ORIN_CALL powx_s_ha(std::int32_t n, const float* a, float b, float* r) {
  elementwise<PowerOfScalar<Core<Grade::ha>>>({{}, b}, n, {a}, {r});
}
void ORIN_CALL powx_s_ep(std::int32_t n, const float* a, float b, float* r) {
  elementwise<PowerOfScalar<Core<Grade::ep>>>({{}, b}, n, {a}, {r});
}

}  // namespace orin::vector_math
