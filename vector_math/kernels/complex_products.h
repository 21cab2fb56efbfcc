// complex_products.h: products of complex numbers whose parts are accurate, and what products and quotients make of
// special elements.
// SPDX-License-Identifier: MIT
//
// Method    double, with exact products of leading halves p: (p1 + e1) - (p2 + e2) = (p1 - p2) + (e1 - e2), where p1 - p2
//           is exact if it cancels, and e to 2^-52 of itself. A part below 2^-20 of the other is made of rounded products p
//           with exact e
// Bounds    each part 1.45 ulp, while no product leaves the range and no low part underflows
// Source    C.-P. Jeannerod, N. Louvet, J.-M. Muller, Further analysis of Kahan's algorithm for the accurate computation
//           of 2 x 2 determinants, Math. Comp. 82 (2013); T. J. Dekker (1971) for the products
#ifndef ORIN_VECTOR_MATH_KERNELS_COMPLEX_PRODUCTS_H
#define ORIN_VECTOR_MATH_KERNELS_COMPLEX_PRODUCTS_H

#include <cmath>
#include <limits>

#include "vector_math/kernels/double_double.h"
#include "vector_math/simd/complex.h"

namespace orin::vector_math {

using namespace simd;

// A factor and its two halves.
struct Factor : DoubleDouble {
  Vec2d whole;
  explicit ORIN_INLINE Factor(Vec2d x) : DoubleDouble(split(x)), whole(x) {}
  ORIN_INLINE Factor(Vec2d x, DoubleDouble halves) : DoubleDouble(halves), whole(x) {}
};
// The product of two factors of even halves and what its rounding took, exactly.
ORIN_INLINE DoubleDouble product_pair(const Factor& a, const Factor& b) {
  const Vec2d rounded = a.whole * b.whole;
  return {rounded, ((a.high * b.high - rounded) + a.high * b.low + a.low * b.high) + a.low * b.low};
}

// a conj(b) is written with the signs of b.im turned.
template <class V>
ORIN_INLINE Complex<V> plain_product(Complex<V> a, Complex<V> b) {
  return {a.re * b.re - a.im * b.im, a.im * b.re + a.re * b.im};
}
// The parts of a complex number.
struct Factors {
  Factor re, im;
  explicit ORIN_INLINE Factors(Complex<Vec2d> a) : re(a.re), im(a.im) {}
};
ORIN_INLINE Complex<Vec2d> product_by_pairs(const Factors& a, const Factors& b) {
  // The largest numbers would round to infinity.
  static constexpr struct { Constant<double> least = -0x1.ffffff8p1023, largest = 0x1.ffffff8p1023; } halves{};
  const auto evenly = [](const Factor& x) __attribute__((always_inline)) {
    const auto& c = in_memory(halves);
    const Vec2d high = min(max(split_evenly(x.whole).high, c.least), c.largest);
    return Factor(x.whole, DoubleDouble{high, x.whole - high});
  };
  const Factor x = evenly(a.re), y = evenly(a.im), u = evenly(b.re), v = evenly(b.im);
  const DoubleDouble xu = product_pair(x, u), yv = product_pair(y, v);
  const DoubleDouble yu = product_pair(y, u), xv = product_pair(x, v);
  return {(xu.high - yv.high) + (xu.low - yv.low), (yu.high + xv.high) + (yu.low + xv.low)};
}
// a b less the product of the leading halves, which is exact.
ORIN_INLINE Vec2d rest_of_product(const Factor& a, const Factor& b) { return a.high * b.low + a.low * b.whole; }
ORIN_INLINE Complex<Vec2d> accurate_product(const Factors& a, const Factors& b) {
  static constexpr Constant<double> visible = 0x1p-20;
  const auto& [x, y] = a;
  const auto& [u, v] = b;
  const Vec2d re = (x.high * u.high - y.high * v.high) + (rest_of_product(x, u) - rest_of_product(y, v));
  const Vec2d im = (y.high * u.high + x.high * v.high) + (rest_of_product(y, u) + rest_of_product(x, v));
  // The errors of the rests are 2^-77 of the modulus.
  const Vec2d lost = min(abs(re), abs(im)) < max(abs(re), abs(im)) * in_memory(visible);
  if (lane_bits(lost) == 0) [[likely]]
    return {re, im};
  const Complex<Vec2d> again = product_by_pairs(a, b);
  return {select(lost, again.re, re), select(lost, again.im, im)};
}
ORIN_INLINE Complex<Vec2d> accurate_product(Complex<Vec2d> a, Complex<Vec2d> b) {
  return accurate_product(Factors(a), Factors(b));
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
