// truth.h: the exact value of a function at a point, and the distance of a result from it.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TOOLS_ACCURACY_TRUTH_H
#define ORIN_TOOLS_ACCURACY_TRUTH_H

#include <mpfr.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "vector_math/catalog.h"

namespace accuracy {

// A function of MPFR, of one argument or of two.
struct MpfrFunction {
  using Unary = int(mpfr_t, mpfr_srcptr, mpfr_rnd_t);
  using Binary = int(mpfr_t, mpfr_srcptr, mpfr_srcptr, mpfr_rnd_t);
  Unary* unary = nullptr;
  Binary* binary = nullptr;

  MpfrFunction(Unary* function) : unary(function) {}
  MpfrFunction(Binary* function) : binary(function) {}
};

// Truths that MPFR lacks, with its conventions.
inline int normal_distribution(mpfr_t value, mpfr_srcptr x, mpfr_rnd_t mode) {
  mpfr_t z, root;
  mpfr_inits2(mpfr_get_prec(value) + 64, z, root, nullptr);
  mpfr_sqrt_ui(root, 2, MPFR_RNDN);
  mpfr_div(z, x, root, MPFR_RNDN);
  mpfr_neg(z, z, MPFR_RNDN);
  mpfr_erfc(z, z, MPFR_RNDN);
  const int inexact = mpfr_div_2ui(value, z, 1, mode);
  mpfr_clears(z, root, nullptr);
  return inexact;
}

// x with erfc(x) = v, for 0 <= v <= 1, u = 1 - v given too, exactly: one step of Halley's method from `start`, good to
// 2^-50, through erf where v is large and through erfc elsewhere.
inline int inverse_of_complement(mpfr_t value, mpfr_srcptr v, mpfr_srcptr u, long double start, mpfr_rnd_t mode) {
  if (mpfr_zero_p(v)) {
    mpfr_set_inf(value, 1);
    mpfr_set_divby0();
    return 0;
  }
  if (mpfr_zero_p(u)) return mpfr_set_zero(value, 1), 0;
  mpfr_t x, step, slope;
  mpfr_inits2(mpfr_get_prec(value) + 64, x, step, slope, nullptr);
  mpfr_set_ld(x, start, MPFR_RNDN);
  for (int round = 0; round < 2; ++round) {
    if (mpfr_cmp_d(v, 0.5) > 0) {
      mpfr_erf(step, x, MPFR_RNDN);
      mpfr_sub(step, step, u, MPFR_RNDN);
    } else {
      mpfr_erfc(step, x, MPFR_RNDN);
      mpfr_sub(step, v, step, MPFR_RNDN);
    }
    mpfr_const_pi(slope, MPFR_RNDN);
    mpfr_sqrt(slope, slope, MPFR_RNDN);
    mpfr_div_2ui(slope, slope, 1, MPFR_RNDN);
    mpfr_mul(step, step, slope, MPFR_RNDN);
    mpfr_sqr(slope, x, MPFR_RNDN);
    mpfr_exp(slope, slope, MPFR_RNDN);
    mpfr_mul(step, step, slope, MPFR_RNDN);
    mpfr_mul(slope, x, step, MPFR_RNDN);
    mpfr_add_ui(slope, slope, 1, MPFR_RNDN);
    mpfr_div(step, step, slope, MPFR_RNDN);
    mpfr_sub(x, x, step, MPFR_RNDN);
  }
  const int inexact = mpfr_set(value, x, mode);
  mpfr_clears(x, step, slope, nullptr);
  return inexact;
}
// The same for 0 <= v <= 2, and NaN elsewhere; v and u are taken over.
inline int inverse_of_complement_or_nan(mpfr_t value, mpfr_t v, mpfr_t u, mpfr_rnd_t mode) {
  int inexact = 0;
  if (mpfr_nan_p(v) || mpfr_sgn(v) < 0 || mpfr_cmp_ui(v, 2) > 0) {
    mpfr_set_nan(value);
  } else {
    const bool negative = mpfr_sgn(u) < 0;
    if (negative) {
      mpfr_neg(u, u, MPFR_RNDN);
      mpfr_ui_sub(v, 2, v, MPFR_RNDN);
    }
    const long double start = orin::vector_math::reference_function::inverse_of_complement(mpfr_get_ld(v, MPFR_RNDN),
                                                                                           mpfr_get_ld(u, MPFR_RNDN));
    inexact = inverse_of_complement(value, v, u, start, mode);
    if (negative) inexact = mpfr_neg(value, value, MPFR_RNDN);
  }
  mpfr_clears(v, u, nullptr);
  return inexact;
}
inline int inverse_erf(mpfr_t value, mpfr_srcptr x, mpfr_rnd_t mode) {
  mpfr_t v, u;
  mpfr_inits2(1200, v, u, nullptr);
  mpfr_set(u, x, MPFR_RNDN);
  mpfr_ui_sub(v, 1, x, MPFR_RNDN);
  const bool zero = mpfr_zero_p(x) != 0;
  const int inexact = inverse_of_complement_or_nan(value, v, u, mode);
  return zero ? mpfr_set(value, x, mode) : inexact;
}
inline int inverse_erfc(mpfr_t value, mpfr_srcptr x, mpfr_rnd_t mode) {
  mpfr_t v, u;
  mpfr_inits2(1200, v, u, nullptr);
  mpfr_set(v, x, MPFR_RNDN);
  mpfr_ui_sub(u, 1, x, MPFR_RNDN);
  return inverse_of_complement_or_nan(value, v, u, mode);
}
inline int normal_quantile(mpfr_t value, mpfr_srcptr x, mpfr_rnd_t mode) {
  mpfr_t v, u, root;
  mpfr_inits2(1200, v, u, nullptr);
  mpfr_init2(root, mpfr_get_prec(value));
  mpfr_mul_2ui(v, x, 1, MPFR_RNDN);
  mpfr_ui_sub(v, 2, v, MPFR_RNDN);
  mpfr_ui_sub(u, 1, v, MPFR_RNDN);
  inverse_of_complement_or_nan(value, v, u, mode);
  mpfr_sqrt_ui(root, 2, MPFR_RNDN);
  const int inexact = mpfr_mul(value, value, root, mode);
  mpfr_clear(root);
  return inexact;
}
// The logarithm of the magnitude: mpfr_lngamma has none where the function is negative.
inline int mpfr_log_abs_gamma(mpfr_t value, mpfr_srcptr x, mpfr_rnd_t rounding) {
  int sign;
  return mpfr_lgamma(value, &sign, x, rounding);
}

// The truth of a row of the catalog.
MpfrFunction truth_of(const orin::vector_math::Promise& promise);

template <class T>
using BitsOf = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
// The type of quick references: enough bits beyond T that an error is known to a thousandth of an ulp.
template <class T>
using Wide = std::conditional_t<sizeof(T) == 8, long double, double>;

// Where the spacing of T stops to shrink.
template <class T>
inline constexpr int lowest_spacing = std::numeric_limits<T>::min_exponent - std::numeric_limits<T>::digits;

// The numbers in order as integers, so that neighbours differ by one.
template <class T>
std::int64_t ordinal(T x) {
  const auto magnitude = static_cast<std::int64_t>(std::bit_cast<BitsOf<T>>(std::fabs(x)));
  return std::signbit(x) ? -magnitude : magnitude;
}
template <class T>
T from_ordinal(std::int64_t k) {
  const T magnitude = std::bit_cast<T>(static_cast<BitsOf<T>>(k < 0 ? -k : k));
  return k < 0 ? -magnitude : magnitude;
}

// The arguments of one evaluation; the second is 0 for a function of one.
template <class T>
struct Point {
  T a, b = 0;
};

// One exact value, to 140 bits.
class Truth {
 public:
  explicit Truth(const orin::vector_math::Promise& promise) : function_(truth_of(promise)) {
    mpfr_inits2(140, a_, b_, value_, scratch_, nullptr);
  }
  ~Truth() { mpfr_clears(a_, b_, value_, scratch_, nullptr); }
  Truth(const Truth&) = delete;
  Truth& operator=(const Truth&) = delete;

  template <class T>
  void set(Point<T> x) {
    mpfr_set_d(a_, static_cast<double>(x.a), MPFR_RNDN);
    mpfr_set_d(b_, static_cast<double>(x.b), MPFR_RNDN);
    mpfr_clear_flags();
    if (function_.unary != nullptr)
      function_.unary(value_, a_, MPFR_RNDN);
    else
      function_.binary(value_, a_, b_, MPFR_RNDN);
    pole_ = mpfr_divby0_p() != 0;
    vanished_ = mpfr_underflow_p() != 0;
  }

  // The nearest T; infinite beyond the largest number and half a spacing.
  template <class T>
  T rounded() const {
    if (mpfr_nan_p(value_)) return std::numeric_limits<T>::quiet_NaN();
    if (!mpfr_regular_p(value_)) return static_cast<T>(mpfr_get_d(value_, MPFR_RNDN));
    if (mpfr_get_exp(value_) > std::numeric_limits<T>::max_exponent)
      return mpfr_sgn(value_) < 0 ? -std::numeric_limits<T>::infinity() : std::numeric_limits<T>::infinity();
    if constexpr (sizeof(T) == 8)
      return mpfr_get_d(value_, MPFR_RNDN);
    else
      return mpfr_get_flt(value_, MPFR_RNDN);
  }

  // (value - x) in ulp of the value; 0 where both are the same infinity or NaN, infinite where only one is.
  template <class T>
  double excess_over(T x) {
    if (mpfr_nan_p(value_) || std::isnan(x))
      return (mpfr_nan_p(value_) != 0) == std::isnan(x) ? 0 : std::numeric_limits<double>::infinity();
    const T nearest = rounded<T>();
    if (std::isinf(nearest) || std::isinf(x)) return nearest == x ? 0 : std::numeric_limits<double>::infinity();
    mpfr_set_d(scratch_, static_cast<double>(x), MPFR_RNDN);
    mpfr_sub(scratch_, value_, scratch_, MPFR_RNDN);
    mpfr_mul_2si(scratch_, scratch_, -spacing<T>(), MPFR_RNDN);
    return mpfr_get_d(scratch_, MPFR_RNDN);
  }
  // |value - x| / |value| where the value is a normal number, else 0.
  template <class T>
  double relative_error(T x) {
    if (!is_normal<T>() || !std::isfinite(x)) return 0;
    mpfr_set_d(scratch_, static_cast<double>(x), MPFR_RNDN);
    mpfr_sub(scratch_, value_, scratch_, MPFR_RNDN);
    mpfr_div(scratch_, scratch_, value_, MPFR_RNDN);
    return std::fabs(mpfr_get_d(scratch_, MPFR_RNDN));
  }
  template <class T>
  bool is_normal() const {
    return mpfr_regular_p(value_) != 0 && mpfr_get_exp(value_) >= std::numeric_limits<T>::min_exponent &&
           std::isfinite(rounded<T>());
  }

  // The status that a kernel must report at the arguments.
  template <class T>
  int status(const orin::vector_math::Promise& promise) const {
    if (promise.reports_nothing) return KOR_STATUS_OK;
    if (mpfr_nan_p(a_) || mpfr_nan_p(b_)) return KOR_STATUS_OK;
    if (mpfr_nan_p(value_)) return KOR_STATUS_ERRDOM;
    if (mpfr_inf_p(a_) || mpfr_inf_p(b_)) return KOR_STATUS_OK;
    if (pole_) return KOR_STATUS_SING;
    if (std::isinf(rounded<T>())) return KOR_STATUS_OVERFLOW;
    if (promise.reports_underflow && (mpfr_zero_p(value_) == 0 || vanished_) && !is_normal<T>())
      return KOR_STATUS_UNDERFLOW;
    return KOR_STATUS_OK;
  }

 private:
  // Exponent of the spacing of T at the value.
  template <class T>
  long spacing() const {
    if (!mpfr_regular_p(value_)) return lowest_spacing<T>;
    return std::max<long>(mpfr_get_exp(value_) - std::numeric_limits<T>::digits, lowest_spacing<T>);
  }

  MpfrFunction function_;
  mpfr_t a_, b_, value_, scratch_;
  bool pole_ = false, vanished_ = false;  // vanished: below the range of MPFR itself, not an exact zero
};

}  // namespace accuracy

#endif
