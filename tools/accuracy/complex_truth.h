// complex_truth.h: the exact value of a complex function at a point, and the distance of a result from it.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TOOLS_ACCURACY_COMPLEX_TRUTH_H
#define ORIN_TOOLS_ACCURACY_COMPLEX_TRUTH_H

#include <mpc.h>

#include <bit>
#include <cmath>
#include <limits>

#include "tools/accuracy/truth.h"
#include "vector_math/complex_catalog.h"

namespace accuracy {

// A function of MPC, of one argument or of two; one that gives a real number.
struct MpcFunction {
  using Unary = int(mpc_t, mpc_srcptr, mpc_rnd_t);
  using Binary = int(mpc_t, mpc_srcptr, mpc_srcptr, mpc_rnd_t);
  using ToReal = int(mpfr_t, mpc_srcptr, mpfr_rnd_t);
  Unary* unary = nullptr;
  Binary* binary = nullptr;
  ToReal* to_real = nullptr;

  MpcFunction(Unary* function) : unary(function) {}
  MpcFunction(Binary* function) : binary(function) {}
  MpcFunction(ToReal* function) : to_real(function) {}
};

// The truth of a row of the catalog.
MpcFunction complex_truth_of(const orin::vector_math::ComplexPromise& promise);

// The nearest T; infinite beyond the largest number and half a spacing.
template <class T>
T nearest(mpfr_srcptr x) {
  if (mpfr_regular_p(x) != 0 && mpfr_get_exp(x) > std::numeric_limits<T>::max_exponent)
    return mpfr_sgn(x) < 0 ? -std::numeric_limits<T>::infinity() : std::numeric_limits<T>::infinity();
  if constexpr (sizeof(T) == 8)
    return mpfr_get_d(x, MPFR_RNDN);
  else
    return mpfr_get_flt(x, MPFR_RNDN);
}
// Exponent of the spacing of T at x.
template <class T>
long spacing_of(mpfr_srcptr x) {
  if (mpfr_regular_p(x) == 0) return lowest_spacing<T>;
  return std::max<long>(mpfr_get_exp(x) - std::numeric_limits<T>::digits, lowest_spacing<T>);
}

// One exact value, to 160 bits.
template <class T>
class ComplexTruth {
 public:
  using Function = orin::vector_math::ComplexFunction<T>;
  using Z = typename Function::Z;

  explicit ComplexTruth(const Function& function) : row_(function), function_(complex_truth_of(*function.promise)) {
    for (mpc_ptr each : {&a_[0], &b_[0], &value_[0]}) mpc_init2(each, 160);
    mpfr_inits2(160, scratch_, other_, nullptr);
  }
  ~ComplexTruth() {
    for (mpc_ptr each : {&a_[0], &b_[0], &value_[0]}) mpc_clear(each);
    mpfr_clears(scratch_, other_, nullptr);
  }
  ComplexTruth(const ComplexTruth&) = delete;
  ComplexTruth& operator=(const ComplexTruth&) = delete;

  void set(Z a, Z b) {
    mpc_set_d_d(a_, static_cast<double>(a.re), static_cast<double>(a.im), MPC_RNDNN);
    mpc_set_d_d(b_, static_cast<double>(b.re), static_cast<double>(b.im), MPC_RNDNN);
    if (function_.unary != nullptr) {
      function_.unary(value_, a_, MPC_RNDNN);
    } else if (function_.binary != nullptr) {
      function_.binary(value_, a_, b_, MPC_RNDNN);
    } else {
      function_.to_real(mpc_realref(value_), a_, MPFR_RNDN);
      mpfr_set_zero(mpc_imagref(value_), 1);
    }
  }

  Z rounded() const { return {nearest<T>(mpc_realref(value_)), nearest<T>(mpc_imagref(value_))}; }
  bool is_finite() const { return std::isfinite(rounded().re) && std::isfinite(rounded().im); }
  bool is_number() const { return mpfr_nan_p(mpc_realref(value_)) == 0 && mpfr_nan_p(mpc_imagref(value_)) == 0; }

  // (value - y) of one part in ulp of that part of the value.
  double excess(bool imaginary, T y) {
    mpfr_srcptr part = imaginary ? mpc_imagref(value_) : mpc_realref(value_);
    mpfr_set_d(scratch_, static_cast<double>(y), MPFR_RNDN);
    mpfr_sub(scratch_, part, scratch_, MPFR_RNDN);
    mpfr_mul_2si(scratch_, scratch_, -spacing_of<T>(part), MPFR_RNDN);
    return mpfr_get_d(scratch_, MPFR_RNDN);
  }
  // The larger error of the two parts, each in its own ulp.
  double error_of_parts(Z y) { return std::max(std::fabs(excess(false, y.re)), std::fabs(excess(true, y.im))); }
  // |value - y| in ulp of |value|.
  double error(Z y) {
    mpfr_set_d(scratch_, static_cast<double>(y.re), MPFR_RNDN);
    mpfr_sub(scratch_, mpc_realref(value_), scratch_, MPFR_RNDN);
    mpfr_set_d(other_, static_cast<double>(y.im), MPFR_RNDN);
    mpfr_sub(other_, mpc_imagref(value_), other_, MPFR_RNDN);
    mpfr_hypot(scratch_, scratch_, other_, MPFR_RNDN);
    mpc_abs(other_, value_, MPFR_RNDN);
    mpfr_mul_2si(scratch_, scratch_, -spacing_of<T>(other_), MPFR_RNDN);
    return mpfr_get_d(scratch_, MPFR_RNDN);
  }

  // The status that a kernel must report at finite arguments.
  int status() {
    if (row_.promise->is_silent) return KOR_STATUS_OK;
    if (!is_number()) return KOR_STATUS_ERRDOM;
    if (mpfr_inf_p(mpc_realref(value_)) != 0 || mpfr_inf_p(mpc_imagref(value_)) != 0) return KOR_STATUS_SING;
    if (!is_finite()) return KOR_STATUS_OVERFLOW;
    return row_.promise->reports_underflow && is_below_normal() ? KOR_STATUS_UNDERFLOW : KOR_STATUS_OK;
  }

 private:
  // Whether the modulus is, and not 0.
  bool is_below_normal() {
    mpc_abs(other_, value_, MPFR_RNDN);
    return mpfr_zero_p(other_) == 0 && mpfr_get_exp(other_) < std::numeric_limits<T>::min_exponent;
  }

  const Function& row_;
  MpcFunction function_;
  mpc_t a_, b_, value_;
  mpfr_t scratch_, other_;
};

}  // namespace accuracy

#endif
