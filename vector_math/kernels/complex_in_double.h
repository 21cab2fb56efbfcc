// complex_in_double.h: complex functions of one argument that single precision computes in double.
// SPDX-License-Identifier: MIT
//
// A function is a record F with
//   name_c, name_z            the names in reports
//   of<grade>(z)              the value of a register of ordinary arguments, in double
//   special_lanes<T>(m, z)    mask of the special arguments of precision T, from the high words m of the larger parts'
//                             magnitudes and z of all parts
//   special<grade>(z)         the Outcome of one special argument
//   ordinary                  both parts of an argument that `of` takes silently
// The double EP grade is good for every grade in single precision: 2^-26 is an eighth of its ulp.
#ifndef ORIN_VECTOR_MATH_KERNELS_COMPLEX_IN_DOUBLE_H
#define ORIN_VECTOR_MATH_KERNELS_COMPLEX_IN_DOUBLE_H

#include <cmath>
#include <limits>

#include "vector_math/kernels/log_base.h"
#include "vector_math/simd/complex.h"

namespace orin::vector_math {

using ComplexD = simd::Complex<simd::Vec2d>;

template <class F, class T, Grade grade>
struct ComplexInDouble : simd::OneToOne<simd::ComplexOf<T>> {
  using V = typename simd::RegisterOf<T>::type;
  using Z = simd::ComplexOf<T>;
  static constexpr const char* name = sizeof(T) == 8 ? F::name_z : F::name_c;
  static constexpr Z ordinary{T(F::ordinary), T(F::ordinary)};
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE simd::Vec4i special_lanes(simd::Complex<simd::Vec4i> z) {
    return F::template special_lanes<T>(larger_magnitude(z), z);
  }
  static ORIN_INLINE simd::Complex<V> fast(simd::Complex<V> z) {
    if constexpr (sizeof(T) == 8) {
      return F::template of<grade>(z);
    } else {
      const auto [low, high] = widened(z);
      return narrowed({F::template of<grade>(low), F::template of<grade>(high)});
    }
  }
  static ORIN_INLINE simd::Two<ComplexD> widened(simd::Complex<V> z) {
    const simd::TwoVec2d re = widen(z.re), im = widen(z.im);
    return {{re.low, im.low}, {re.high, im.high}};
  }
  static ORIN_INLINE simd::Complex<V> narrowed(const simd::Two<ComplexD>& z) {
    return {simd::narrow({z.first.re, z.second.re}), simd::narrow({z.first.im, z.second.im})};
  }
  static simd::Outcome<Z> special(Z z) {
    const simd::Outcome<KorComplex16> outcome = F::template special<grade>(KorComplex16{z.re, z.im});
    return {{{static_cast<T>(outcome.value[0].re), static_cast<T>(outcome.value[0].im)}}, outcome.status};
  }
};

// F has, in the place of `of`, Half, first_half<grade, T>(z) and second_half<grade>(half), and special<grade, T>(z); high
// words are those of doubles in both precisions.
template <class F, class T, Grade grade>
struct ComplexInHalves : simd::OneToOne<simd::ComplexOf<T>> {
  using Z = simd::ComplexOf<T>;
  using Half = typename F::Half;
  static constexpr const char* name = sizeof(T) == 8 ? F::name_z : F::name_c;
  static constexpr Z ordinary{T(F::ordinary), T(F::ordinary)};
  static constexpr bool computes_in_double = sizeof(T) == 4;
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE simd::Vec4i special_lanes(simd::Complex<simd::Vec4i> z) {
    return F::template special_lanes<T>(larger_magnitude(z), z);
  }
  static ORIN_INLINE ComplexD fast(ComplexD z) { return second_half(first_half(z)); }
  static ORIN_INLINE Half first_half(ComplexD z) { return F::template first_half<grade, T>(z); }
  static ORIN_INLINE ComplexD second_half(const Half& half) { return F::template second_half<grade>(half); }
  static simd::Outcome<Z> special(Z z) {
    const simd::Outcome<KorComplex16> outcome = F::template special<grade, T>(KorComplex16{z.re, z.im});
    return {{{static_cast<T>(outcome.value[0].re), static_cast<T>(outcome.value[0].im)}}, outcome.status};
  }
};

// The kernels of a function: double in three grades, single in one.
#define ORIN_COMPLEX_KERNELS(name, Frame, F)                                           \
  void ORIN_CALL name##_c(std::int32_t n, const KorComplex8* a, KorComplex8* r) {      \
    elementwise<Frame<F, float, Grade::ep>>({}, n, {a}, {r});                          \
  }                                                                                    \
  void ORIN_CALL name##_z_la(std::int32_t n, const KorComplex16* a, KorComplex16* r) { \
    elementwise<Frame<F, double, Grade::la>>({}, n, {a}, {r});                         \
  }                                                                                    \
  void ORIN_CALL name##_z_ha(std::int32_t n, const KorComplex16* a, KorComplex16* r) { \
    elementwise<Frame<F, double, Grade::ha>>({}, n, {a}, {r});                         \
  }                                                                                    \
  void ORIN_CALL name##_z_ep(std::int32_t n, const KorComplex16* a, KorComplex16* r) { \
    elementwise<Frame<F, double, Grade::ep>>({}, n, {a}, {r});                         \
  }
#define ORIN_COMPLEX_IN_DOUBLE(name, F) ORIN_COMPLEX_KERNELS(name, ComplexInDouble, F)
#define ORIN_COMPLEX_IN_HALVES(name, F) ORIN_COMPLEX_KERNELS(name, ComplexInHalves, F)

// Silent for NaN.
inline bool is_infinite(double x) { return __builtin_isgreater(std::fabs(x), std::numeric_limits<double>::max()); }
inline bool is_nan(double x) { return x != x; }
inline constexpr double infinite = std::numeric_limits<double>::infinity();
inline constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

}  // namespace orin::vector_math

#endif
