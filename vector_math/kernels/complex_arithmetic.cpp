// complex_arithmetic: elementwise a + b, a - b, a b, a conj(b) and conj(a), both precisions.
// SPDX-License-Identifier: MIT
//
// Method    a + b, a - b, conj(a) part by part, one kernel for all grades
//           a b   LA, EP the formula;  HA single in double, where the products are exact;  HA double with products as
//           pairs: (p1 + e1) - (p2 + e2) = (p1 - p2) + (e1 - e2), where p1 - p2 is exact if it cancels
// Bounds    a + b, a - b each part correctly rounded; conj exact; a b HA each part 1 ulp, LA 4 ulp of the modulus
// Special   no statuses. a b: C Annex G, an infinite factor makes the product infinite; HA: finite factors whose
//           products overflow are scaled
// Source    C.-P. Jeannerod, N. Louvet, J.-M. Muller, Further analysis of Kahan's algorithm for the accurate computation
//           of 2 x 2 determinants, Math. Comp. 82 (2013); T. J. Dekker (1971) for the products
#include <cmath>
#include <limits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/double_double.h"
#include "vector_math/simd/complex.h"
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

// A factor and its two halves; a product of two such and what its rounding took.
struct Factor : DoubleDouble {
  Vec2d whole;
  explicit ORIN_INLINE Factor(Vec2d x) : DoubleDouble(split(x)), whole(x) {}
};
ORIN_INLINE DoubleDouble product_pair(const Factor& a, const Factor& b) {
  const Vec2d rounded = a.whole * b.whole;
  return {rounded, ((a.high * b.high - rounded) + a.high * b.low + a.low * b.high) + a.low * b.low};
}

// a conj(b) is written with the signs of b.im turned.
template <class V>
ORIN_INLINE Complex<V> plain_product(Complex<V> a, Complex<V> b) {
  return {a.re * b.re - a.im * b.im, a.im * b.re + a.re * b.im};
}
ORIN_INLINE Complex<Vec2d> accurate_product(Complex<Vec2d> a, Complex<Vec2d> b) {
  const Factor x(a.re), y(a.im), u(b.re), v(b.im);
  const DoubleDouble xu = product_pair(x, u), yv = product_pair(y, v);
  const DoubleDouble yu = product_pair(y, u), xv = product_pair(x, v);
  return {(xu.high - yv.high) + (xu.low - yv.low), (yu.high + xv.high) + (yu.low + xv.low)};
}
ORIN_INLINE Complex<Vec4f> accurate_product(Complex<Vec4f> a, Complex<Vec4f> b) {
  const TwoVec2d x = widen(a.re), y = widen(a.im), u = widen(b.re), v = widen(b.im);
  const Complex<Vec2d> low = plain_product<Vec2d>({x.low, y.low}, {u.low, v.low});
  const Complex<Vec2d> high = plain_product<Vec2d>({x.high, y.high}, {u.high, v.high});
  return {narrow({low.re, high.re}), narrow({low.im, high.im})};
}

template <class Z>
ORIN_INLINE Z first_element(auto z) {
  return {first_lane(z.re), first_lane(z.im)};
}

// C Annex G for factors that are not finite: one with an infinite part is an infinity, whose product with anything but
// zero and NaN is infinite.
template <class T, class Z = ComplexOf<T>>
Z product_of_specials(Z a, Z b) {
  constexpr T infinity = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN();
  const auto is_infinite = [](Z z) { return std::fabs(z.re) == infinity || std::fabs(z.im) == infinity; };
  const auto formula = [](Z x, Z y) -> Z { return {x.re * y.re - x.im * y.im, x.im * y.re + x.re * y.im}; };
  Z result = formula(a, b);
  if (result.re != result.re && result.im != result.im && (is_infinite(a) || is_infinite(b))) {
    // The infinite parts become +-1, other parts of an infinite factor 0, NaN of the other factor too.
    const auto box = [&](T part, bool infinite) {
      if (infinite) return std::copysign(T(std::fabs(part) == infinity ? 1 : 0), part);
      return part != part ? std::copysign(T(0), part) : part;
    };
    const bool infinite_a = is_infinite(a), infinite_b = is_infinite(b);
    result = formula({box(a.re, infinite_a), box(a.im, infinite_a)}, {box(b.re, infinite_b), box(b.im, infinite_b)});
    result = {infinity * result.re, infinity * result.im};
  }
  return {result.re != result.re ? nan : result.re, result.im != result.im ? nan : result.im};
}

template <class T, bool conjugate, bool accurate>
struct ComplexMul : TwoToOne<ComplexOf<T>> {
  using Z = ComplexOf<T>;
  using V = typename RegisterOf<T>::type;
  static constexpr const char* name =
      conjugate ? (is_double<T> ? "vzMulByConj" : "vcMulByConj") : (is_double<T> ? "vzMul" : "vcMul");
  static constexpr Z ordinary{1, 0};
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
    constexpr T largest = std::numeric_limits<T>::max();
    if constexpr (conjugate) b.im = -b.im;
    for (const T part : {a.re, a.im, b.re, b.im})
      if (part != part || std::fabs(part) > largest) return {{product_of_specials<T>(a, b)}, KOR_STATUS_OK};
    const auto product = [](Z x, Z y) {
      return first_element<Z>(accurate_product(Complex<V>{x.re, x.im}, Complex<V>{y.re, y.im}));
    };
    Z result = product(a, b);
    if constexpr (is_double<T>) {
      // Products may overflow where their difference does not. The parts concerned are large: the scale loses nothing.
      constexpr T up = 0x1p520, down = 0x1p-520;
      const Z scaled = product({a.re * down, a.im * down}, {b.re * down, b.im * down});
      const auto finite = [](T x) { return x == x && std::fabs(x) <= largest; };
      if (!finite(result.re)) result.re = scaled.re * up * up;
      if (!finite(result.im)) result.im = scaled.im * up * up;
    }
    return {{result}, KOR_STATUS_OK};
  }
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
ORIN_COMPLEX_BINARY(mul_c_ha, KorComplex8, ComplexMul<float, false, true>)
ORIN_COMPLEX_BINARY(mul_z_la, KorComplex16, ComplexMul<double, false, false>)
ORIN_COMPLEX_BINARY(mul_z_ha, KorComplex16, ComplexMul<double, false, true>)
ORIN_COMPLEX_BINARY(mul_by_conj_c_la, KorComplex8, ComplexMul<float, true, false>)
ORIN_COMPLEX_BINARY(mul_by_conj_c_ha, KorComplex8, ComplexMul<float, true, true>)
ORIN_COMPLEX_BINARY(mul_by_conj_z_la, KorComplex16, ComplexMul<double, true, false>)
ORIN_COMPLEX_BINARY(mul_by_conj_z_ha, KorComplex16, ComplexMul<double, true, true>)
#undef ORIN_COMPLEX_UNARY
#undef ORIN_COMPLEX_BINARY

}  // namespace orin::vector_math
