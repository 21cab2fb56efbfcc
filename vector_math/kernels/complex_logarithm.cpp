// complex_logarithm: elementwise log z and log10 z, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    log |z| + i arg z by modulus_log.h, point_angle.h; of base 10 the angle times 1/ln 10
//           single precision: LA and EP in floats, HA and |z| beyond 2^+-62 in double by the EP grade
// Bounds    in ulp of the modulus: HA log 2.1, log10 2.8, whose base adds roundings; LA 8; EP 2^-26, 2^-11
// Budget    HA  in units of rounding: logarithm 2 1/2, angle as in octant_angle.h 2; 1/ln 10 and its products 1 1/2
// Special   C Annex G; 0 -> -inf + i arg, status 2
#include "vector_math/kernels.h"
#include "vector_math/kernels/complex_in_floats.h"
#include "vector_math/kernels/modulus_log.h"
#include "vector_math/kernels/point_angle.h"

namespace orin::vector_math {
namespace {

using namespace simd;

struct HalfOfLogarithm {
  Vec2d modulus;  // its logarithm
  ComplexD z;
};

template <Base base>
struct ComplexLogarithm {
  // In floats the first half is the whole: the two parts hardly wait for each other.
  template <class V>
  using Half = std::conditional_t<std::is_same_v<V, Vec2d>, HalfOfLogarithm, Complex<V>>;
  static constexpr const char* name_c = base == Base::e ? "vcLn" : "vcLog10";
  static constexpr const char* name_z = base == Base::e ? "vzLn" : "vzLog10";
  static constexpr double ordinary = 1;

  template <class T>
  static ORIN_INLINE Vec4i special_lanes(Vec4i larger, Complex<Vec4i>) {
    if constexpr (sizeof(T) == 8)
      return outside<0x23d00000, 0x58efffff>(larger);  // 2^-450, 2^400
    else
      return outside<0x38100000, 0x47efffff>(larger);  // normal floats
  }

  static ORIN_INLINE Vec4i special_floats(Vec4i larger, Complex<Vec4i>) {
    return outside<0x00800000, 0x7f7fffff>(larger);  // normal numbers
  }
  static ORIN_INLINE Vec4i beyond_floats(Vec4i larger, Complex<Vec4i>) {
    return outside<0x20800000, 0x5e7fffff>(larger);  // 2^-62, 2^62
  }

  template <class V>
  static ORIN_INLINE V in_base(V log) {
    if constexpr (base == Base::e) return log;
    using T = typename V::Element;
    static constexpr Constant<T> inverse_ln10 = T(0x1.bcb7b1526e50ep-2);
    return log * in_memory(inverse_ln10);
  }
  template <Grade grade, class T>
  static ORIN_INLINE HalfOfLogarithm first_half(ComplexD z) {
    return {modulus_log<grade, base, T>(z.re, z.im), z};
  }
  template <Grade grade>
  static ORIN_INLINE ComplexD second_half(const HalfOfLogarithm& half) {
    const auto& [modulus, z] = half;
    const Angle<Vec2d> angle = PointAngle<double, grade>::medium_in_parts(z.im, z.re);
    return {modulus, with_sign_of(in_base(angle.high) + in_base(angle.low), z.im)};
  }
  template <Grade grade, class T>
  static ORIN_INLINE ComplexS first_half(ComplexS z) {
    return {modulus_log<grade, base, T>(z.re, z.im), in_base(PointAngle<T, grade>::fast(z.im, z.re))};
  }
  template <Grade grade>
  static ORIN_INLINE ComplexS second_half(ComplexS value) {
    return value;
  }
  template <Grade grade, class T>
  static Outcome<KorComplex16> special(KorComplex16 z) {
    const double angle = first_lane(in_base(Vec2d(PointAngle<double, grade>::special(z.im, z.re))));
    if (z.re == 0 && z.im == 0) return {{{-infinite, angle}}, KOR_STATUS_SING};
    if (is_infinite(z.re) || is_infinite(z.im)) return {{{infinite, angle}}, KOR_STATUS_OK};
    if (is_nan(z.re) || is_nan(z.im)) return {{{angle, angle}}, KOR_STATUS_OK};
    return {{{first_lane(in_base(Vec2d(far_modulus_log<grade>(z.re, z.im)))), angle}}, KOR_STATUS_OK};
  }
};

}  // namespace

ORIN_COMPLEX_IN_FLOATS(ln, ComplexLogarithm<Base::e>)
ORIN_COMPLEX_IN_FLOATS(log10, ComplexLogarithm<Base::ten>)

}  // namespace orin::vector_math
