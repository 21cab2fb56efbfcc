// complex_arithmetic: elementwise a + b, a - b, a b, a conj(b), conj(a) and |a|, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    a + b, a - b, conj(a) part by part, one kernel for all grades
//           a b   LA, EP the formula;  HA double complex_products.h, single the formula in double
//           |a|   hypot_core.h, by the formula in all grades
// Bounds    a + b, a - b each part correctly rounded; conj exact; a b HA each part 1.45 ulp, single 0.51, LA 4 ulp of the
//           modulus; |a| 1.5 ulp
// Special   no statuses. a b: C Annex G, an infinite factor makes the product infinite; HA: finite factors whose
//           products overflow are scaled
#include <cmath>
#include <limits>
#include <type_traits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/complex_products.h"
#include "vector_math/kernels/hypot_core.h"
#include "vector_math/simd/ordered.h"

namespace orin::vector_math {
namespace {

using namespace simd;

template <class T>
constexpr bool is_double = sizeof(T) == 8;

template <class T>
struct ComplexAdd : TwoToOne<ComplexOf<T>> {
  static constexpr const char* name = is_double<T> ? "vzAdd" : "vcAdd";
  static constexpr bool together = true;
  template <class V>
  static ORIN_INLINE Stored<V> fast(Stored<V> a, Stored<V> b) {
    return {sum(a.first, b.first), sum(a.second, b.second)};
  }
};

template <class T>
struct ComplexSub : TwoToOne<ComplexOf<T>> {
  static constexpr const char* name = is_double<T> ? "vzSub" : "vcSub";
  static constexpr bool together = true;
  template <class V>
  static ORIN_INLINE Stored<V> fast(Stored<V> a, Stored<V> b) {
    return {a.first - b.first, a.second - b.second};
  }
};

// The sign bits of the imaginary parts as they lie in memory.
template <class T>
constexpr T conjugation[4] = {0, -T(0), 0, -T(0)};

template <class T>
struct Conj : OneToOne<ComplexOf<T>> {
  static constexpr const char* name = is_double<T> ? "vzConj" : "vcConj";
  static constexpr bool together = true;
  template <class V>
  static ORIN_INLINE Stored<V> fast(Stored<V> a) {
    static constexpr Constant<T> one = 1;
    const V signs = V::load(conjugation<T>), factor = in_memory(one);
    // An operation, for subnormal parts to be flushed where the mode asks.
    return {product(a.first, factor) ^ signs, product(a.second, factor) ^ signs};
  }
};

// --- Products --------------------------------------------------------------------------------------------------------

// C Annex G for factors that are not finite: one with an infinite part is an infinity, whose product with anything but
// zero and NaN is infinite.
template <class T, class Z = ComplexOf<T>>
Z product_of_specials(Z a, Z b) {
  constexpr T infinity = std::numeric_limits<T>::infinity();
  const auto formula = [](Z x, Z y) -> Z { return {x.re * y.re - x.im * y.im, x.im * y.re + x.re * y.im}; };
  Z result = formula(a, b);
  if (result.re != result.re && result.im != result.im && (is_infinite(a) || is_infinite(b))) {
    result = formula(boxed(a), boxed(b));
    result = {infinity * result.re, infinity * result.im};
  }
  return with_plain_nan(result);
}

template <class T, bool conjugate>
struct ComplexProduct : TwoToOne<ComplexOf<T>> {
  using Z = ComplexOf<T>;
  static constexpr const char* name =
      conjugate ? (is_double<T> ? "vzMulByConj" : "vcMulByConj") : (is_double<T> ? "vzMul" : "vcMul");
  static constexpr Z ordinary{1, 0};
};

// In double no product of finite floats leaves the range.
template <bool conjugate>
struct ComplexMulInDouble : ComplexProduct<float, conjugate> {
  static constexpr bool computes_in_double = true, nan_is_special = true;
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_lanes(Complex<Vec4i>, Complex<Vec4i>) { return 0; }
  static ORIN_INLINE Complex<Vec2d> fast(Complex<Vec2d> a, Complex<Vec2d> b) {
    if constexpr (conjugate) return {a.re * b.re + a.im * b.im, a.im * b.re - a.re * b.im};
    return plain_product(a, b);
  }
  static Outcome<KorComplex8> special(KorComplex8 a, KorComplex8 b) {
    return {{product_of_specials<float>(a, conjugate ? KorComplex8{b.re, -b.im} : b)}, KOR_STATUS_OK};
  }
};

template <class T, bool conjugate, bool accurate>
struct ComplexMul : ComplexProduct<T, conjugate> {
  using Z = ComplexOf<T>;
  using V = typename RegisterOf<T>::type;
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_lanes(Complex<Vec4i>, Complex<Vec4i>) { return 0; }
  static ORIN_INLINE Vec4i special_results(Complex<Vec4i> w) {
    static constexpr Constant<std::int32_t> largest = is_double<T> ? 0x7fefffff : 0x7f7fffff;
    const auto& limit = in_memory(largest);
    return (magnitude(w.re) > limit) | (magnitude(w.im) > limit);
  }
  static ORIN_INLINE Complex<V> fast(Complex<V> a, Complex<V> b) {
    static constexpr Constant<T> minus_zero = -T(0);
    if constexpr (conjugate) b.im = b.im ^ V(in_memory(minus_zero));
    if constexpr (accurate)
      return accurate_product(a, b);
    else
      return plain_product(a, b);
  }
  // A result that is not finite.
  static Outcome<Z> special(Z a, Z b) {
    if constexpr (conjugate) b.im = -b.im;
    for (const T part : {a.re, a.im, b.re, b.im})
      if (!is_finite(part)) return {{product_of_specials<T>(a, b)}, KOR_STATUS_OK};
    // Products may overflow where their difference does not.
    if constexpr (!is_double<T>) {
      const Complex<Vec2d> wide = plain_product<Vec2d>({double{a.re}, double{a.im}}, {double{b.re}, double{b.im}});
      return {{{static_cast<T>(first_lane(wide.re)), static_cast<T>(first_lane(wide.im))}}, KOR_STATUS_OK};
    } else {
      const auto product = [](Z x, Z y) {
        return first_element<Z>(accurate_product(Complex<V>{x.re, x.im}, Complex<V>{y.re, y.im}));
      };
      Z result = product(a, b);
      // The parts concerned are large: the scale loses nothing.
      constexpr T up = 0x1p520, down = 0x1p-520;
      const Z scaled = product({a.re * down, a.im * down}, {b.re * down, b.im * down});
      if (!is_finite(result.re)) result.re = scaled.re * up * up;
      if (!is_finite(result.im)) result.im = scaled.im * up * up;
      return {{result}, KOR_STATUS_OK};
    }
  }
};

// --- Modulus ---------------------------------------------------------------------------------------------------------

template <class T>
struct ComplexAbs : OneToOther<ComplexOf<T>, T> {
  using Z = ComplexOf<T>;
  using V = typename RegisterOf<T>::type;
  using Core = std::conditional_t<is_double<T>, Length<T, false>, WidePlainLength>;
  static constexpr const char* name = is_double<T> ? "vzAbs" : "vcAbs";
  static constexpr Z ordinary{1, 0};
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_lanes(Complex<Vec4i> w) { return Core::special_lanes(w.re, w.im); }
  static ORIN_INLINE V fast(Complex<V> z) { return Core::fast(z.re, z.im); }
  static Outcome<T> special(Z z) { return {{Core::special(z.re, z.im).value[0]}, KOR_STATUS_OK}; }
};

struct ComplexAbsSingle : ComplexAbs<float> {
  static ORIN_INLINE Vec4i beyond_fast(Complex<Vec4i> w) { return Core::beyond_fast(w.re, w.im); }
  static ORIN_INLINE Vec4f wide(Complex<Vec4f> z) { return Core::wide(z.re, z.im); }
};

}  // namespace

#define ORIN_COMPLEX_UNARY(name, Z, ...) \
  void ORIN_CALL name(std::int32_t n, const Z* a, Z* r) { elementwise<__VA_ARGS__>({}, n, {a}, {r}); }
#define ORIN_COMPLEX_BINARY(name, Z, ...) \
  void ORIN_CALL name(std::int32_t n, const Z* a, const Z* b, Z* r) { elementwise<__VA_ARGS__>({}, n, {a, b}, {r}); }
ORIN_COMPLEX_BINARY(add_c, KorComplex8, ComplexAdd<float>)
ORIN_COMPLEX_BINARY(add_z, KorComplex16, ComplexAdd<double>)
ORIN_COMPLEX_BINARY(sub_c, KorComplex8, ComplexSub<float>)
ORIN_COMPLEX_BINARY(sub_z, KorComplex16, ComplexSub<double>)
ORIN_COMPLEX_UNARY(conj_c, KorComplex8, Conj<float>)
ORIN_COMPLEX_UNARY(conj_z, KorComplex16, Conj<double>)
ORIN_COMPLEX_BINARY(mul_c_la, KorComplex8, ComplexMul<float, false, false>)
ORIN_COMPLEX_BINARY(mul_c_ha, KorComplex8, ComplexMulInDouble<false>)
ORIN_COMPLEX_BINARY(mul_z_la, KorComplex16, ComplexMul<double, false, false>)
ORIN_COMPLEX_BINARY(mul_z_ha, KorComplex16, ComplexMul<double, false, true>)
ORIN_COMPLEX_BINARY(mul_by_conj_c_la, KorComplex8, ComplexMul<float, true, false>)
ORIN_COMPLEX_BINARY(mul_by_conj_c_ha, KorComplex8, ComplexMulInDouble<true>)
ORIN_COMPLEX_BINARY(mul_by_conj_z_la, KorComplex16, ComplexMul<double, true, false>)
ORIN_COMPLEX_BINARY(mul_by_conj_z_ha, KorComplex16, ComplexMul<double, true, true>)
#undef ORIN_COMPLEX_UNARY
#define ORIN_COMPLEX_ABS(name, T, F) \
  void ORIN_CALL name(std::int32_t n, const ComplexOf<T>* a, T* r) { elementwise<F>({}, n, {a}, {r}); }
ORIN_COMPLEX_ABS(abs_c, float, ComplexAbsSingle)
ORIN_COMPLEX_ABS(abs_z, double, ComplexAbs<double>)
#undef ORIN_COMPLEX_ABS
#undef ORIN_COMPLEX_BINARY

}  // namespace orin::vector_math
