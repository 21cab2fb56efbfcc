// complex_products.h: products of complex numbers whose parts are accurate, and what products and quotients make of
// special elements.
// SPDX-License-Identifier: MIT
//
// Method    double, with exact products of leading halves p: (p1 + e1) - (p2 + e2) = (p1 - p2) + (e1 - e2), where p1 - p2
//           is exact if it cancels, and e to 2^-52 of itself. A part below 2^-20 of the other is made of rounded products p
//           with exact e, unless a factor has a part that is 0
// Bounds    each part 1.45 ulp, while no product leaves the range and no low part underflows
// Source    C.-P. Jeannerod, N. Louvet, J.-M. Muller, Further analysis of Kahan's algorithm for the accurate computation
//           of 2 x 2 determinants, Math. Comp. 82 (2013); T. J. Dekker (1971) for the products
#ifndef ORIN_VECTOR_MATH_KERNELS_COMPLEX_PRODUCTS_H
#define ORIN_VECTOR_MATH_KERNELS_COMPLEX_PRODUCTS_H

#include <cmath>
#include <limits>

#include "vector_math/kernels/double_double.h"
#include "vector_math/kernels/log_base.h"
#include "vector_math/simd/complex.h"

namespace orin::vector_math {

using namespace simd;

// A factor and its two halves.
struct Factor : DoubleDouble {
  Vec2d whole;
  explicit ORIN_INLINE Factor(Vec2d x) : DoubleDouble(split(x)), whole(x) {}
  ORIN_INLINE Factor(Vec2d x, DoubleDouble halves) : DoubleDouble(halves), whole(x) {}
};
// a b in two: the product of the leading halves, which is exact, and the rest.
ORIN_INLINE DoubleDouble product_in_two(const Factor& a, const Factor& b) {
  return {a.high * b.high, a.high * b.low + a.low * b.whole};
}
// a b of factors with even halves, rounded, and what the rounding took, exactly.
ORIN_INLINE DoubleDouble product_pair(const Factor& a, const Factor& b) {
  const Vec2d rounded = a.whole * b.whole;
  return {rounded, ((a.high * b.high - rounded) + a.high * b.low + a.low * b.high) + a.low * b.low};
}
// The parts of a complex number.
struct Factors {
  Factor re, im;
  explicit ORIN_INLINE Factors(Complex<Vec2d> a) : re(a.re), im(a.im) {}
};

template <bool plus, class V>
ORIN_INLINE V sum_or_difference(V p, V q) {
  if constexpr (plus)
    return p + q;
  else
    return p - q;
}
template <bool plus>
ORIN_INLINE Vec2d sum_or_difference(DoubleDouble p, DoubleDouble q) {
  return sum_or_difference<plus>(p.high, q.high) + sum_or_difference<plus>(p.low, q.low);
}

// a b, or a conj(b).
template <bool conjugate, class V>
ORIN_INLINE Complex<V> plain_product(Complex<V> a, Complex<V> b) {
  return {sum_or_difference<conjugate>(a.re * b.re, a.im * b.im),
          sum_or_difference<!conjugate>(a.im * b.re, a.re * b.im)};
}
// The same, where no part cancels: the errors of the rests are 2^-77 of the modulus.
template <bool conjugate>
ORIN_INLINE Complex<Vec2d> product_by_halves(const Factors& a, const Factors& b) {
  return {sum_or_difference<conjugate>(product_in_two(a.re, b.re), product_in_two(a.im, b.im)),
          sum_or_difference<!conjugate>(product_in_two(a.im, b.re), product_in_two(a.re, b.im))};
}
// The same, where one does.
template <bool conjugate>
ORIN_INLINE Complex<Vec2d> product_by_pairs(const Factors& a, const Factors& b) {
  // The largest numbers would round to infinity.
  static constexpr struct { Constant<double> least = -0x1.ffffff8p1023, largest = 0x1.ffffff8p1023; } halves{};
  const auto evenly = [](const Factor& x) __attribute__((always_inline)) {
    const auto& c = in_memory(halves);
    const Vec2d high = min(max(split_evenly(x.whole).high, c.least), c.largest);
    return Factor(x.whole, DoubleDouble{high, x.whole - high});
  };
  const Factor x = evenly(a.re), y = evenly(a.im), u = evenly(b.re), v = evenly(b.im);
  return {sum_or_difference<conjugate>(product_pair(x, u), product_pair(y, v)),
          sum_or_difference<!conjugate>(product_pair(y, u), product_pair(x, v))};
}
// The products by halves, or their quotients by a real number, that may have lost a part: a part is below 2^-19 of the
// other, or one is too large for that to show, infinite or NaN.
ORIN_INLINE Vec4i may_have_lost_parts(Complex<Vec4i> w) {
  static constexpr Constant<std::int32_t> largest = 0x7cffffff;
  constexpr std::int32_t apart = 19 << 20;
  const Vec4i re = magnitude(w.re), im = magnitude(w.im);
  return outside<-apart, apart>(re - im) | (re > in_memory(largest));
}
template <bool conjugate>
ORIN_INLINE Complex<Vec2d> accurate_product(const Factors& a, const Factors& b) {
  // Below the least part low parts underflow.
  static constexpr struct { Constant<double> visible = 0x1p-20, least = 0x1p-1000, zero = 0; } constants{};
  const auto& c = in_memory(constants);
  const Complex<Vec2d> quick = product_by_halves<conjugate>(a, b);
  const Vec2d larger = max(abs(quick.re), abs(quick.im)), smaller = min(abs(quick.re), abs(quick.im));
  // Beside a zero nothing cancels.
  const Vec2d single =
      ((a.re.whole == c.zero) | (a.im.whole == c.zero)) | ((b.re.whole == c.zero) | (b.im.whole == c.zero));
  const Vec2d lost = and_not(single, (smaller < larger * c.visible) & (larger >= c.least));
  if (lane_bits(lost) == 0) return quick;
  const Complex<Vec2d> again = product_by_pairs<conjugate>(a, b);
  return {select(lost, again.re, quick.re), select(lost, again.im, quick.im)};
}

template <class Z>
ORIN_INLINE Z first_element(auto z) {
  return {first_lane(z.re), first_lane(z.im)};
}

// --- Special elements ------------------------------------------------------------------------------------------------

template <class T>
bool is_finite(T x) {
  return x == x && std::fabs(x) <= std::numeric_limits<T>::max();
}
template <class Z>
bool is_infinite(Z z) {  // also beside NaN
  using T = decltype(Z::re);
  constexpr T infinity = std::numeric_limits<T>::infinity();
  return std::fabs(z.re) == infinity || std::fabs(z.im) == infinity;
}
template <class Z>
bool is_nan(Z z) {  // either part
  return z.re != z.re || z.im != z.im;
}
// Of an infinity the infinite parts as +-1 and the others as +-0; of another number NaN parts as +-0.
template <class Z>
Z boxed(Z z) {
  using T = decltype(Z::re);
  const bool infinite = is_infinite(z);
  const auto part = [&](T x) {
    if (infinite) return std::copysign(T(std::fabs(x) == std::numeric_limits<T>::infinity() ? 1 : 0), x);
    return x != x ? std::copysign(T(0), x) : x;
  };
  return {part(z.re), part(z.im)};
}
// One NaN for all: compilers differ in which of two they pass on.
template <class Z>
Z with_plain_nan(Z z) {
  using T = decltype(Z::re);
  constexpr T nan = std::numeric_limits<T>::quiet_NaN();
  return {z.re != z.re ? nan : z.re, z.im != z.im ? nan : z.im};
}

}  // namespace orin::vector_math

#endif
