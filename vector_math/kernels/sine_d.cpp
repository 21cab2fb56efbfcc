// sine_d: elementwise sin x, cos x and both, double.
// SPDX-License-Identifier: MIT
//
// Method    sincos_core_d.h
// Bounds    HA 0.51 ulp, LA relative 2^-50, EP relative 2^-26, for every finite argument
// Special   NaN -> NaN, no status; +-inf -> NaN, status 1; sin +-0 = +-0
#include <limits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/sincos_core_d.h"

namespace orin::vector_math {
namespace {

using namespace simd;

// Each function as a reduction below 2^20, one for every finite argument, and what it makes of the angle.
template <Grade grade>
struct Reduction {
  static ORIN_INLINE sincos_d::Angle reduce(Vec2d x) { return sincos_d::reduce<grade>(x); }
  static ORIN_INLINE sincos_d::Angle reduce_any(Vec2d x) { return sincos_d::reduce_any<grade>(x); }
};

template <Grade grade>
struct Sine : Reduction<grade> {
  static ORIN_INLINE Vec2d of(const sincos_d::Angle& angle) { return sincos_d::sine<grade>(angle); }
};

template <Grade grade>
struct Cosine : Reduction<grade> {
  static ORIN_INLINE Vec2d of(const sincos_d::Angle& angle) { return sincos_d::cosine<grade>(angle); }
};

template <Grade grade>
struct SineAndCosine : Reduction<grade> {
  static ORIN_INLINE Two<Vec2d> of(const sincos_d::Angle& angle) { return sincos_d::sine_and_cosine<grade>(angle); }
};

constexpr char sin_name[] = "vdSin";
constexpr char cos_name[] = "vdCos";
constexpr char sincos_name[] = "vdSinCos";

template <class F, int results, const char* name_>
struct Trigonometric : Shape<double, 1, results> {
  static constexpr const char* name = name_;
  static constexpr double ordinary = 0;

  static ORIN_INLINE Vec4i beyond_fast(Vec4i words) {
    static constexpr Constant<std::int32_t> last = sincos_d::reduce_to_word;
    return magnitude(words) > in_memory(last);
  }
  static ORIN_INLINE auto fast(Vec2d x) { return F::of(F::reduce(x)); }
  static ORIN_INLINE auto wide(Vec2d x) { return F::of(F::reduce_any(x)); }

  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    static constexpr Constant<std::int32_t> last = 0x7fefffff;
    return magnitude(words) > in_memory(last);
  }
  static Outcome<double, results> special(double x) {
    Outcome<double, results> outcome;
    const bool is_nan = x != x;
    for (double& value : outcome.value) value = is_nan ? x + x : std::numeric_limits<double>::quiet_NaN();
    outcome.status = is_nan ? KOR_STATUS_OK : KOR_STATUS_ERRDOM;
    return outcome;
  }
};

}  // namespace

#define ORIN_ONE_RESULT(name, F, grade)                                           \
  void ORIN_CALL name##_d_##grade(std::int32_t n, const double* a, double* r) {   \
    elementwise<Trigonometric<F<Grade::grade>, 1, name##_name>>({}, n, {a}, {r}); \
  }
ORIN_ONE_RESULT(sin, Sine, la)
ORIN_ONE_RESULT(sin, Sine, ha)
ORIN_ONE_RESULT(sin, Sine, ep)
ORIN_ONE_RESULT(cos, Cosine, la)
ORIN_ONE_RESULT(cos, Cosine, ha)
ORIN_ONE_RESULT(cos, Cosine, ep)
#undef ORIN_ONE_RESULT

#define ORIN_TWO_RESULTS(name, F, grade)                                                     \
  void ORIN_CALL name##_d_##grade(std::int32_t n, const double* a, double* r1, double* r2) { \
    elementwise<Trigonometric<F<Grade::grade>, 2, name##_name>>({}, n, {a}, {r1, r2});       \
  }
ORIN_TWO_RESULTS(sincos, SineAndCosine, la)
ORIN_TWO_RESULTS(sincos, SineAndCosine, ha)
ORIN_TWO_RESULTS(sincos, SineAndCosine, ep)
#undef ORIN_TWO_RESULTS

}  // namespace orin::vector_math
