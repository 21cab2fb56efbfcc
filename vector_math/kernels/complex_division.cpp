// complex_division: elementwise a/b of complex numbers, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    a conj(b)/|b|^2. LA, EP the formula in their own precision; HA single in double; HA double the numerator by
//           complex_products.h, |b|^2 with exact squares of leading halves. Where the larger part of a or b is beyond
//           2^+-400 (single 2^+-62, LA and EP 2^+-30) both are scaled by powers of two, one by one
// Bounds    each part HA 3.6 ulp double, 0.51 single; LA 6 ulp of the modulus; EP the same
// Budget    HA double in units of rounding: numerator 2, |b|^2 and quotient 1 each
// Special   C Annex G. b = 0: a finite and not 0 -> infinite, status 2; a = 0 -> NaN, status 1; a infinite -> infinite.
//           Both infinite -> NaN, status 1; finite/infinite -> 0, infinite/finite -> infinite, NaN else, no status.
//           Overflow of finite arguments, of one part or both, status 3
// Source    M. Baudin, R. L. Smith, A robust complex division in Scilab (2012), for the need of scaling
#include <cmath>
#include <limits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/complex_products.h"
#include "vector_math/kernels/log_base.h"

namespace orin::vector_math {
namespace {

template <class V>
ORIN_INLINE Complex<V> plain_quotient(Complex<V> a, Complex<V> b) {
  const Complex<V> product = plain_product<true>(a, b);
  const V square = b.re * b.re + b.im * b.im;
  return {product.re / square, product.im / square};
}
// One division, whose error vanishes when the parts are rounded to single precision.
ORIN_INLINE Complex<Vec2d> quotient_for_single(Complex<Vec2d> a, Complex<Vec2d> b) {
  static constexpr Constant<double> one = 1;
  const Complex<Vec2d> product = plain_product<true>(a, b);
  const Vec2d inverse = Vec2d(in_memory(one)) / (b.re * b.re + b.im * b.im);
  return {product.re * inverse, product.im * inverse};
}
template <auto product_of>
ORIN_INLINE Complex<Vec2d> quotient_by(Complex<Vec2d> a, Complex<Vec2d> b) {
  const Factors factors(b);
  const auto& [u, v] = factors;
  const Vec2d u2 = u.high * u.high, v2 = v.high * v.high;
  const DoubleDouble squares = fast_two_sum(max(u2, v2), min(u2, v2));
  const Vec2d rest = u.low * (u.whole + u.high) + v.low * (v.whole + v.high);
  const Vec2d square = squares.high + (squares.low + rest);
  const Complex<Vec2d> product = product_of(Factors(a), factors);
  return {product.re / square, product.im / square};
}

// 2^k, k of a normal number.
inline double power_of_two(int k) { return __builtin_bit_cast(double, static_cast<std::int64_t>(k + 1023) << 52); }
// The exponent of a finite x that is not 0.
inline int exponent_of(double x) {
  const auto field = [](double y) { return static_cast<int>(__builtin_bit_cast(std::uint64_t, y) >> 52 & 0x7ff); };
  return std::fabs(x) < std::numeric_limits<double>::min() ? field(x * 0x1p60) - 1083 : field(x) - 1023;
}
// x 2^k for any k that two exponents may differ by. The last product alone rounds.
inline double scaled(double x, int k) {
  const int third = k / 3;
  return x * power_of_two(third) * power_of_two(third) * power_of_two(k - 2 * third);
}

template <class T, bool accurate>
struct ComplexDiv : TwoToOne<ComplexOf<T>> {
  using Z = ComplexOf<T>;
  using Limits = std::numeric_limits<T>;
  static constexpr bool is_double = sizeof(T) == 8;
  static constexpr bool computes_in_double = !is_double && accurate;  // then no intermediate leaves the range
  static constexpr bool tests_singles = computes_in_double;
  static constexpr const char* name = is_double ? "vzDiv" : "vcDiv";
  static constexpr Z ordinary{1, 0};
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_lanes(Complex<Vec4i> a, Complex<Vec4i> b) {
    const Vec4i x = larger_magnitude(a.re, a.im), y = larger_magnitude(b.re, b.im);
    if constexpr (is_double) {
      return outside<0x26f00000, 0x58efffff>(x, y);  // 2^-400, 2^400
    } else if constexpr (computes_in_double) {
      // No quotient leaves the range of single precision where b is at least 2^-62 and both are below 2^62.
      static constexpr struct { Constant<std::int32_t> least = 0x20800000, largest = 0x5e7fffff; } limits{};
      const auto& c = in_memory(limits);
      return (larger_upper_halves(x, y) > c.largest) | (y < c.least);
    } else {
      return outside<0x30800000, 0x4e7fffff>(x, y);  // 2^-30, 2^30
    }
  }
  template <class W>
  static ORIN_INLINE Complex<W> fast(Complex<W> a, Complex<W> b) {
    if constexpr (computes_in_double)
      return quotient_for_single(a, b);
    else
      return plain_quotient(a, b);
  }

  static Outcome<Z> special(Z a, Z b) {
    if (is_nan(a) || is_nan(b) || is_infinite(a) || is_infinite(b)) return of_specials(a, b);
    if (b.re == 0 && b.im == 0) return over_zero(a, b);
    if (a.re == 0 && a.im == 0) return zeros(a, b);
    return of_finite(a, b);
  }

 private:
  static constexpr T infinity = Limits::infinity(), nan = Limits::quiet_NaN();

  // An infinity with the sign of b.re for each part of a that is not 0.
  static Outcome<Z> over_zero(Z a, Z b) {
    const auto part = [&](T x) {
      return x == 0 || x != x ? nan : std::signbit(x) == std::signbit(b.re) ? infinity : -infinity;
    };
    const std::int32_t status = is_nan(a) || is_infinite(a) ? KOR_STATUS_OK
                                : a.re == 0 && a.im == 0    ? KOR_STATUS_ERRDOM
                                                            : KOR_STATUS_SING;
    return {{{part(a.re), part(a.im)}}, status};
  }
  // The signs of the formula.
  static Outcome<Z> zeros(Z a, Z b) {
    return {{{a.re * b.re + a.im * b.im, a.im * b.re - a.re * b.im}}, KOR_STATUS_OK};
  }
  static Outcome<Z> of_specials(Z a, Z b) {
    const bool a_infinite = is_infinite(a), b_infinite = is_infinite(b);
    if (b.re == 0 && b.im == 0) return over_zero(a, b);
    if (a_infinite && !b_infinite && !is_nan(b)) {
      const Z x = boxed(a);
      const auto part = [](T value) { return value == 0 ? nan : value > 0 ? infinity : -infinity; };
      // Each sign as the formula has it; magnitudes as large as they may be do not overflow when halved.
      const Z y{b.re / 2, b.im / 2};
      return {{{part(x.re * y.re + x.im * y.im), part(x.im * y.re - x.re * y.im)}}, KOR_STATUS_OK};
    }
    if (b_infinite && !a_infinite && !is_nan(a)) {
      const Z y = boxed(b), x{a.re / 2, a.im / 2};
      return {{{(x.re * y.re + x.im * y.im) * 0, (x.im * y.re - x.re * y.im) * 0}}, KOR_STATUS_OK};
    }
    return {{{nan, nan}}, is_nan(a) || is_nan(b) ? KOR_STATUS_OK : KOR_STATUS_ERRDOM};
  }

  // With the exponents taken out, put back into the result.
  static Outcome<Z> of_finite(Z a, Z b) {
    const auto widest = [](Z z) { return static_cast<double>(std::max(std::fabs(z.re), std::fabs(z.im))); };
    const int k_a = exponent_of(widest(a)), k_b = exponent_of(widest(b));
    const auto reduced = [](Z z, int k) -> Complex<Vec2d> {
      return {scaled(static_cast<double>(z.re), -k), scaled(static_cast<double>(z.im), -k)};
    };
    Complex<Vec2d> quotient;
    if constexpr (is_double)
      quotient = quotient_by<accurate_product<true>>(reduced(a, k_a), reduced(b, k_b));
    else
      quotient = quotient_for_single(reduced(a, k_a), reduced(b, k_b));
    bool overflows = false;
    const auto part = [&](Vec2d q) {
      const double x = first_lane(q);
      // What rounds to an infinity, when k is taken back; a part of 2^-60 and less does not even for single precision.
      constexpr double limit = is_double ? std::numeric_limits<double>::max() : 0x1.fffffefffffffp+127;
      const int k = k_a - k_b;
      if (k > 60 && std::fabs(x) > scaled(limit, -k)) {
        overflows = true;
        return x > 0 ? infinity : -infinity;
      }
      return static_cast<T>(scaled(x, k));
    };
    const Z result{part(quotient.re), part(quotient.im)};
    return {{result}, overflows ? KOR_STATUS_OVERFLOW : KOR_STATUS_OK};
  }
};

struct ComplexDivByHalves : ComplexDiv<double, true> {
  static ORIN_INLINE Vec4i doubtful_results(Complex<Vec4i> w) { return may_have_lost_parts(w); }
  static ORIN_INLINE Complex<Vec2d> fast(Complex<Vec2d> a, Complex<Vec2d> b) {
    return quotient_by<product_by_halves<true>>(a, b);
  }
  static ORIN_INLINE Complex<Vec2d> careful(Complex<Vec2d> a, Complex<Vec2d> b) {
    return quotient_by<accurate_product<true>>(a, b);
  }
};

}  // namespace

#define ORIN_COMPLEX_DIV(name, Z, ...) \
  void ORIN_CALL name(std::int32_t n, const Z* a, const Z* b, Z* r) { elementwise<__VA_ARGS__>({}, n, {a, b}, {r}); }
ORIN_COMPLEX_DIV(div_c_la, KorComplex8, ComplexDiv<float, false>)
ORIN_COMPLEX_DIV(div_c_ha, KorComplex8, ComplexDiv<float, true>)
ORIN_COMPLEX_DIV(div_z_la, KorComplex16, ComplexDiv<double, false>)
ORIN_COMPLEX_DIV(div_z_ha, KorComplex16, ComplexDivByHalves)
#undef ORIN_COMPLEX_DIV

}  // namespace orin::vector_math
