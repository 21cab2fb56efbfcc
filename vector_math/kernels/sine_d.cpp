// sine_d: elementwise sin x, cos x and both, double.
// SPDX-License-Identifier: MIT
//
// Method    sincos_core_d.h
// Bounds    HA 0.51 ulp, LA relative 2^-50, EP relative 2^-26, for every finite argument
// Special   NaN -> NaN, no status; +-inf -> NaN, status 1; sin +-0 = +-0
#include "vector_math/kernels/trigonometric.h"

namespace orin::vector_math {
namespace {

using namespace simd;

template <Grade grade>
struct Sine {
  static constexpr int results = 1;
  static constexpr const char* name = "vdSin";
  static ORIN_INLINE Vec2d of(const sincos_d::Angle& angle) { return sincos_d::sine<grade>(angle); }
};

template <Grade grade>
struct Cosine {
  static constexpr int results = 1;
  static constexpr const char* name = "vdCos";
  static ORIN_INLINE Vec2d of(const sincos_d::Angle& angle) { return sincos_d::cosine<grade>(angle); }
};

template <Grade grade>
struct SineAndCosine {
  static constexpr int results = 2;
  static constexpr const char* name = "vdSinCos";
  static ORIN_INLINE Two<Vec2d> of(const sincos_d::Angle& angle) { return sincos_d::sine_and_cosine<grade>(angle); }
};

}  // namespace

#define ORIN_SINE(name, F, grade)                                                        \
  void ORIN_CALL name##_##grade(std::int32_t n, const double* a, double* r) {            \
    elementwise<Trigonometric<ByAngle<F<Grade::grade>, Grade::grade>>>({}, n, {a}, {r}); \
  }
ORIN_SINE(sin_d, Sine, la)
ORIN_SINE(sin_d, Sine, ha)
ORIN_SINE(sin_d, Sine, ep)
ORIN_SINE(cos_d, Cosine, la)
ORIN_SINE(cos_d, Cosine, ha)
ORIN_SINE(cos_d, Cosine, ep)
#undef ORIN_SINE

#define ORIN_SINE_AND_COSINE(grade)                                                                       \
  void ORIN_CALL sincos_d_##grade(std::int32_t n, const double* a, double* r1, double* r2) {              \
    elementwise<Trigonometric<ByAngle<SineAndCosine<Grade::grade>, Grade::grade>>>({}, n, {a}, {r1, r2}); \
  }
ORIN_SINE_AND_COSINE(la)
ORIN_SINE_AND_COSINE(ha)
ORIN_SINE_AND_COSINE(ep)
#undef ORIN_SINE_AND_COSINE

}  // namespace orin::vector_math
