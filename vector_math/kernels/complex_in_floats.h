// complex_in_floats.h: complex functions of one argument that LA and EP of single precision compute in floats.
// SPDX-License-Identifier: MIT
//
// A function is a record F as complex_in_double.h has it, whose halves take registers of floats, too, and has also
//   special_floats(m, z)    mask of the special arguments, from the larger parts' magnitudes m and all parts z as words
//   beyond_floats(m, z)     mask of the arguments that the halves must not see in floats, special ones among them; of m
//                           it has only the upper halves
// What neither takes is computed in double, as in HA.
#ifndef ORIN_VECTOR_MATH_KERNELS_COMPLEX_IN_FLOATS_H
#define ORIN_VECTOR_MATH_KERNELS_COMPLEX_IN_FLOATS_H

#include "vector_math/kernels/complex_in_double.h"

namespace orin::vector_math {

using ComplexS = simd::Complex<simd::Vec4f>;

ORIN_INLINE simd::Two<ComplexD> widened(ComplexS z) {
  const simd::TwoVec2d re = widen(z.re), im = widen(z.im);
  return {{re.low, im.low}, {re.high, im.high}};
}
ORIN_INLINE ComplexS narrowed(const simd::Two<ComplexD>& z) {
  return {simd::narrow({z.first.re, z.second.re}), simd::narrow({z.first.im, z.second.im})};
}
ORIN_INLINE ComplexS select(simd::Vec4f mask, ComplexS a, ComplexS b) {
  return {simd::select(mask, a.re, b.re), simd::select(mask, a.im, b.im)};
}

template <class F, Grade grade>
struct ComplexInFloats : simd::OneToOne<KorComplex8> {
  using InDouble = ComplexInDouble<F, float, Grade::ep>;
  using Half = typename F::template Half<simd::Vec4f>;
  using FarHalf = simd::Two<typename InDouble::Half>;
  static constexpr const char* name = InDouble::name;
  static constexpr KorComplex8 ordinary = InDouble::ordinary;
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE simd::Vec4i special_lanes(simd::Complex<simd::Vec4i> z) {
    return F::special_floats(larger_magnitude(z), z);
  }
  static ORIN_INLINE simd::Vec4i beyond_fast(simd::Complex<simd::Vec4i> z) {
    return F::beyond_floats(larger_magnitude(z.re, z.im), z);
  }
  static ORIN_INLINE ComplexS fast(ComplexS z) { return second_half(first_half(z)); }
  static ORIN_INLINE Half first_half(ComplexS z) { return F::template first_half<grade, float>(z); }
  static ORIN_INLINE ComplexS second_half(const Half& half) { return F::template second_half<grade>(half); }
  static ORIN_INLINE FarHalf far_first_half(ComplexS z) {
    const auto [low, high] = widened(z);
    return {InDouble::first_half(low), InDouble::first_half(high)};
  }
  static ORIN_INLINE ComplexS far_second_half(const FarHalf& half) {
    return narrowed({InDouble::second_half(half.first), InDouble::second_half(half.second)});
  }
  static ORIN_INLINE ComplexS wide(ComplexS z) {
    const simd::Vec4f beyond = from_bits(beyond_fast({bits(z.re), bits(z.im)}));
    const ComplexS near = fast(select(beyond, {ordinary.re, ordinary.im}, z));
    return select(beyond, far_second_half(far_first_half(z)), near);
  }
  static simd::Outcome<KorComplex8> special(KorComplex8 z) { return InDouble::special(z); }
};

// The kernels of a function, in all grades and both precisions; and of one that in double has no HA but LA.
#define ORIN_COMPLEX_IN_FLOATS_KERNEL(name, F, grade)                         \
  void ORIN_CALL name(std::int32_t n, const KorComplex8* a, KorComplex8* r) { \
    elementwise<ComplexInFloats<F, grade>>({}, n, {a}, {r});                  \
  }
#define ORIN_COMPLEX_IN_FLOATS(name, F)      \
  ORIN_COMPLEX_IN_FLOATS_WITHOUT_HA(name, F) \
  ORIN_COMPLEX_IN_DOUBLE_KERNEL(name##_z_ha, F, double, Grade::ha)
#define ORIN_COMPLEX_IN_FLOATS_WITHOUT_HA(name, F)                 \
  ORIN_COMPLEX_IN_FLOATS_KERNEL(name##_c_la, F, Grade::la)         \
  ORIN_COMPLEX_IN_FLOATS_KERNEL(name##_c_ep, F, Grade::ep)         \
  ORIN_COMPLEX_IN_DOUBLE_KERNEL(name##_c_ha, F, float, Grade::ep)  \
  ORIN_COMPLEX_IN_DOUBLE_KERNEL(name##_z_la, F, double, Grade::la) \
  ORIN_COMPLEX_IN_DOUBLE_KERNEL(name##_z_ep, F, double, Grade::ep)

}  // namespace orin::vector_math

#endif
