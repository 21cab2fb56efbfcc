// pow_d: elementwise x^y, double, y a vector or one number.
// SPDX-License-Identifier: MIT
//
// Method    pow_core_d.h; results that it does not give are computed again one by one, scaled in two steps
// Bounds    HA 0.52 ulp, subnormal results 0.76; EP relative 2^-26, as HA where |y log x| is above 708; LA is HA
// Special   C Annex F; negative to a fraction -> NaN, status 1; +-0 to a negative -> inf, status 2; overflow -> inf,
//           status 3; subnormal or zero out of finite non-zero arguments, status 4
#include <cfloat>
#include <cmath>

#include "vector_math/kernels.h"
#include "vector_math/kernels/pow_core_d.h"
#include "vector_math/kernels/power.h"

namespace orin::vector_math {
namespace {

using namespace simd;

// 2^k for k of normal powers.
double power_of_two(int k) { return __builtin_bit_cast(double, static_cast<std::int64_t>(k + 1023) << 52); }

// x^y for finite positive x != 1 and finite y != 0, also where the result leaves the normal range.
WidePower<double> wide_power(double x, double y) {
  constexpr double enough = 0x1p64;  // beyond, the result is out of range whatever x
  const double bounded_y = y > enough ? enough : y < -enough ? -enough : y;
  DoubleDouble e = x < DBL_MIN ? pow_d::exponent<54>(x * 0x1p54, bounded_y) : pow_d::exponent(x, bounded_y);
  const double main = first_lane(e.high);
  if (main > 711) return {HUGE_VAL, false};
  if (main < -746) return {0.0, true};
  const pow_d::Power result = pow_d::power(e);
  const int k = static_cast<int>(static_cast<std::int16_t>(_mm_cvtsi128_si32(result.k.raw)));
  // Two steps: the second alone rounds a subnormal result, and nothing overflows that is not infinite.
  if (k > 0) {
    const double half = first_lane(result.value) * power_of_two(k - 1);
    return {half > DBL_MAX / 2 ? HUGE_VAL : half * 2, false};
  }
  const double in_least_normals = first_lane(result.value) * power_of_two(k + 1022);
  return {in_least_normals * DBL_MIN, in_least_normals < 1};
}

template <Grade grade>
struct Core {
  using Element = double;
  static constexpr double limit = 0x1p61;  // below it the exponent is finite whatever the lane computes

  static ORIN_INLINE Vec2d power(Vec2d x, Vec2d y) { return pow_d::power_function<grade>(x, y); }
  static WidePower<double> wide(double x, double y) { return wide_power(x, y); }
};

}  // namespace

void ORIN_CALL pow_d_ha(std::int32_t n, const double* a, const double* b, double* r) {
  elementwise<PowerOfVectors<Core<Grade::ha>>>({}, n, {a, b}, {r});
}
void ORIN_CALL pow_d_ep(std::int32_t n, const double* a, const double* b, double* r) {
  elementwise<PowerOfVectors<Core<Grade::ep>>>({}, n, {a, b}, {r});
}
void ORIN_CALL powx_d_ha(std::int32_t n, const double* a, double b, double* r) {
  elementwise<PowerOfScalar<Core<Grade::ha>>>({{}, b}, n, {a}, {r});
}
void ORIN_CALL powx_d_ep(std::int32_t n, const double* a, double b, double* r) {
  elementwise<PowerOfScalar<Core<Grade::ep>>>({{}, b}, n, {a}, {r});
}

}  // namespace orin::vector_math
