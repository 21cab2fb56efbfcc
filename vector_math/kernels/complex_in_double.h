// complex_in_double.h: complex functions of one argument, in double; HA of single precision is computed there, too.
// SPDX-License-Identifier: MIT
//
// A function is a record F with
//   name_c, name_z            the names in reports
//   Half<V>, first_half<grade, T>(z), second_half<grade>(half)
//                             the value of a register V of ordinary arguments of precision T, as simd/elementwise.h has
//                             it, in double
//   special_lanes<T>(m, z)    mask of the special arguments of precision T, from the high words, of doubles, m of the
//                             larger parts' magnitudes and z of all parts
//   special<grade, T>(z)      the Outcome of one special argument
//   ordinary                  both parts of an argument that `fast` takes silently
// The double EP grade is good for HA in single precision: 2^-26 is an eighth of its ulp.
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
  using Z = simd::ComplexOf<T>;
  using Half = typename F::template Half<simd::Vec2d>;
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

// One kernel of a function; single precision in HA is Grade::ep.
#define ORIN_COMPLEX_IN_DOUBLE_KERNEL(name, F, T, grade)                        \
  void ORIN_CALL name(std::int32_t n, const ComplexOf<T>* a, ComplexOf<T>* r) { \
    elementwise<ComplexInDouble<F, T, grade>>({}, n, {a}, {r});                 \
  }

// The elements with a part above `largest`, and those next to a pole or branch point: from the words of the larger part
// and of z, which has these on the real axis.
template <std::int32_t largest, std::int32_t one, std::int32_t little>
ORIN_INLINE simd::Vec4i outside_or_polar(simd::Vec4i larger, simd::Complex<simd::Vec4i> z) {
  static constexpr struct { simd::Constant<std::int32_t> last = largest, pole = one, least = little; } words{};
  const auto& c = simd::in_memory(words);
  return (larger > c.last) | ((magnitude(z.re) == c.pole) & (magnitude(z.im) < c.least));
}

// Silent for NaN.
inline bool is_infinite(double x) { return __builtin_isgreater(std::fabs(x), std::numeric_limits<double>::max()); }
inline bool is_nan(double x) { return x != x; }
inline constexpr double infinite = std::numeric_limits<double>::infinity();
inline constexpr double not_a_number = std::numeric_limits<double>::quiet_NaN();

}  // namespace orin::vector_math

#endif
