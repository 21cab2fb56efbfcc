// sine: elementwise sin x, cos x and both, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    sincos_core_d.h, sincos_core_s.h; HA single in doubles of grade EP
// Bounds    HA 0.51 ulp; LA relative 2^-50, 2^-21; EP relative 2^-26, 2^-11; for every finite argument
// Special   NaN -> NaN, no status; +-inf -> NaN, status 1; sin +-0 = +-0
#include "vector_math/kernels/trigonometric.h"

namespace orin::vector_math {
namespace {

using namespace simd;

template <Grade grade>
struct Sine {
  static constexpr int results = 1;
  static constexpr const char* name_s = "vsSin";
  static constexpr const char* name_d = "vdSin";
  using Reduction = sincos_s::HalfTurns<grade, 0>;
  static ORIN_INLINE Vec2d of(const sincos_d::Angle& angle) { return sincos_d::sine<grade>(angle); }
  static ORIN_INLINE Vec4f of(const sincos_s::Angle& angle) { return sincos_s::sine<grade>(angle); }
};

template <Grade grade>
struct Cosine {
  static constexpr int results = 1;
  static constexpr const char* name_s = "vsCos";
  static constexpr const char* name_d = "vdCos";
  using Reduction = sincos_s::HalfTurns<grade, 1>;
  static ORIN_INLINE Vec2d of(const sincos_d::Angle& angle) { return sincos_d::cosine<grade>(angle); }
  static ORIN_INLINE Vec4f of(const sincos_s::Angle& angle) { return sincos_s::cosine<grade>(angle); }
};

template <Grade grade>
struct SineAndCosine {
  static constexpr int results = 2;
  static constexpr const char* name_s = "vsSinCos";
  static constexpr const char* name_d = "vdSinCos";
  using Reduction = sincos_s::QuarterTurns<grade>;
  static ORIN_INLINE Two<Vec2d> of(const sincos_d::Angle& angle) { return sincos_d::sine_and_cosine<grade>(angle); }
  static ORIN_INLINE Two<Vec4f> of(const sincos_s::Angle& angle) { return sincos_s::sine_and_cosine<grade>(angle); }
};

}  // namespace

#define ORIN_SINE(name, F, T, grade)                                 \
  void ORIN_CALL name##_##grade(std::int32_t n, const T* a, T* r) {  \
    elementwise<Trigonometric<F, T, Grade::grade>>({}, n, {a}, {r}); \
  }
ORIN_SINE(sin_s, Sine, float, la)
ORIN_SINE(sin_s, Sine, float, ha)
ORIN_SINE(sin_s, Sine, float, ep)
ORIN_SINE(sin_d, Sine, double, la)
ORIN_SINE(sin_d, Sine, double, ha)
ORIN_SINE(sin_d, Sine, double, ep)
ORIN_SINE(cos_s, Cosine, float, la)
ORIN_SINE(cos_s, Cosine, float, ha)
ORIN_SINE(cos_s, Cosine, float, ep)
ORIN_SINE(cos_d, Cosine, double, la)
ORIN_SINE(cos_d, Cosine, double, ha)
ORIN_SINE(cos_d, Cosine, double, ep)
#undef ORIN_SINE

#define ORIN_SINE_AND_COSINE(name, T, grade)                                          \
  void ORIN_CALL name##_##grade(std::int32_t n, const T* a, T* r1, T* r2) {           \
    elementwise<Trigonometric<SineAndCosine, T, Grade::grade>>({}, n, {a}, {r1, r2}); \
  }
ORIN_SINE_AND_COSINE(sincos_s, float, la)
ORIN_SINE_AND_COSINE(sincos_s, float, ha)
ORIN_SINE_AND_COSINE(sincos_s, float, ep)
ORIN_SINE_AND_COSINE(sincos_d, double, la)
ORIN_SINE_AND_COSINE(sincos_d, double, ha)
ORIN_SINE_AND_COSINE(sincos_d, double, ep)
#undef ORIN_SINE_AND_COSINE

}  // namespace orin::vector_math
