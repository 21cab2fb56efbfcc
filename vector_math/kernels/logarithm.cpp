// logarithm: elementwise log x and log10 x, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    log_core_d.h, log_core_s.h
// Bounds    HA 0.51 ulp double, below 1 single; LA relative 2^-50, 2^-21; EP relative 2^-26, 2^-11
// Special   NaN -> NaN, +inf -> +inf, no status; negative, -inf -> NaN, status 1; +-0 -> -inf, status 2;
//           subnormal arguments as normal ones
#include <cmath>
#include <limits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/log_core_d.h"
#include "vector_math/kernels/log_core_s.h"
#include "vector_math/simd/elementwise.h"

namespace orin::vector_math {
namespace {

using namespace simd;

template <class T, Grade grade, Base base>
struct Logarithm : OneToOne<T> {
  using Limits = std::numeric_limits<T>;
  using V = typename RegisterOf<T>::type;
  static constexpr const char* name =
      sizeof(T) == 8 ? (base == Base::e ? "vdLn" : "vdLog10") : (base == Base::e ? "vsLn" : "vsLog10");
  static constexpr T ordinary = 1;

  static ORIN_INLINE Vec4i special_lanes(Vec4i words) { return not_positive_normal<T>(words); }
  static ORIN_INLINE V fast(V x) { return logarithm<grade, base>(x); }

  static Outcome<T> special(T x) {
    if (x != x || x > Limits::max()) return {{x + x}, KOR_STATUS_OK};
    if (x == 0) return {{-Limits::infinity()}, KOR_STATUS_SING};
    if (x < 0) return {{Limits::quiet_NaN()}, KOR_STATUS_ERRDOM};
    constexpr int up = Limits::digits;  // enough for every subnormal
    return {{first_lane(logarithm<grade, base, up>(V(x * static_cast<T>(INT64_C(1) << up))))}, KOR_STATUS_OK};
  }
};

}  // namespace

#define ORIN_LOGARITHM(name, T, grade, base)                              \
  void ORIN_CALL name##_##grade(std::int32_t n, const T* a, T* r) {       \
    elementwise<Logarithm<T, Grade::grade, Base::base>>({}, n, {a}, {r}); \
  }
ORIN_LOGARITHM(ln_s, float, la, e)
ORIN_LOGARITHM(ln_s, float, ha, e)
ORIN_LOGARITHM(ln_s, float, ep, e)
ORIN_LOGARITHM(ln_d, double, la, e)
ORIN_LOGARITHM(ln_d, double, ha, e)
ORIN_LOGARITHM(ln_d, double, ep, e)
ORIN_LOGARITHM(log10_s, float, la, ten)
ORIN_LOGARITHM(log10_s, float, ha, ten)
ORIN_LOGARITHM(log10_s, float, ep, ten)
ORIN_LOGARITHM(log10_d, double, la, ten)
ORIN_LOGARITHM(log10_d, double, ha, ten)
ORIN_LOGARITHM(log10_d, double, ep, ten)
#undef ORIN_LOGARITHM

}  // namespace orin::vector_math
