// arithmetic: elementwise |a|, a + b, a - b, a b, a^2, a/b, 1/a and (scalea a + shifta)/(scaleb b + shiftb), both
// precisions.
// SPDX-License-Identifier: MIT
//
// Method    the instructions of the processor; one kernel serves all grades
// Bounds    correctly rounded; in LinearFrac each of the five operations is
// Special   |a|, a + b, a - b, a b, a^2  as IEEE 754, no statuses
//           a/b, 1/a  0/0, inf/inf -> NaN, status 1; finite/0 -> inf, status 2; finite overflow -> inf, status 3
//           LinearFrac  the same of its quotient; finite arguments whose numerator overflows, status 3
#include <cmath>
#include <limits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/log_base.h"
#include "vector_math/simd/elementwise.h"
#include "vector_math/simd/ordered.h"

namespace orin::vector_math {
namespace {

using namespace simd;

template <class T>
using Register = typename RegisterOf<T>::type;
template <class T>
constexpr bool is_double = sizeof(T) == 8;

template <class T>
struct Abs : OneToOne<T> {
  static constexpr const char* name = is_double<T> ? "vdAbs" : "vsAbs";
  static ORIN_INLINE Register<T> fast(Register<T> a) {
    // As literals both constants stay in registers: this loop has nothing else to keep there, and loads are its limit.
    const Register<T> sign(-T(0)), zero(T(0));
    return and_not(sign, a) + zero;  // an operation, for subnormal arguments to be flushed where the mode asks
  }
};

template <class T>
struct Add : TwoToOne<T> {
  static constexpr const char* name = is_double<T> ? "vdAdd" : "vsAdd";
  static ORIN_INLINE Register<T> fast(Register<T> a, Register<T> b) { return sum(a, b); }
};

template <class T>
struct Sub : TwoToOne<T> {
  static constexpr const char* name = is_double<T> ? "vdSub" : "vsSub";
  static ORIN_INLINE Register<T> fast(Register<T> a, Register<T> b) { return a - b; }
};

template <class T>
struct Mul : TwoToOne<T> {
  static constexpr const char* name = is_double<T> ? "vdMul" : "vsMul";
  static ORIN_INLINE Register<T> fast(Register<T> a, Register<T> b) { return product(a, b); }
};

template <class T>
struct Sqr : OneToOne<T> {
  static constexpr const char* name = is_double<T> ? "vdSqr" : "vsSqr";
  static ORIN_INLINE Register<T> fast(Register<T> a) { return a * a; }
};

// a/b with its status. Zero divisors and overflows are not computed: the mode decides which exceptions a status raises.
template <class T>
Outcome<T> quotient(T a, T b) {
  using Limits = std::numeric_limits<T>;
  if (a != a) return {{a + a}, KOR_STATUS_OK};
  if (b != b) return {{b + b}, KOR_STATUS_OK};
  const bool a_infinite = std::fabs(a) > Limits::max(), b_infinite = std::fabs(b) > Limits::max();
  if ((a == 0 && b == 0) || (a_infinite && b_infinite)) return {{Limits::quiet_NaN()}, KOR_STATUS_ERRDOM};
  const T infinity = std::signbit(a) == std::signbit(b) ? Limits::infinity() : -Limits::infinity();
  if (b == 0) return {{infinity}, a_infinite ? KOR_STATUS_OK : KOR_STATUS_SING};
  // Both sides are exact where it matters, and no number lies between the right one and the half spacing below it that
  // rounds to an infinity as well.
  constexpr T half_of_range = 2 / Limits::min();
  if (!a_infinite && std::fabs(b) < 1 && std::fabs(a) / 2 >= std::fabs(b) * half_of_range)
    return {{infinity}, KOR_STATUS_OVERFLOW};
  return {{a / b}, KOR_STATUS_OK};
}

template <class T>
struct Div : TwoToOne<T> {
  static constexpr const char* name = is_double<T> ? "vdDiv" : "vsDiv";
  static constexpr T ordinary = 1;

  // A divisor that is no normal number, and quotients of 2^1022 (2^126) and more. Exponents and leading digits of the
  // two differ by less than this number where the quotient is smaller. Infinite and NaN dividends need no care.
  static ORIN_INLINE Vec4i special_lanes(Vec4i a, Vec4i b) {
    static constexpr Constant<std::int32_t> largest_difference = is_double<T> ? 0x3fdfffff : 0x3effffff;
    const Vec4i divisor = magnitude(b);
    return not_positive_normal<T>(divisor) | (magnitude(a) - divisor > in_memory(largest_difference));
  }
  static ORIN_INLINE Register<T> fast(Register<T> a, Register<T> b) { return a / b; }
  static Outcome<T> special(T a, T b) { return quotient(a, b); }
};

template <class T>
struct Inv : OneToOne<T> {
  static constexpr const char* name = is_double<T> ? "vdInv" : "vsInv";
  static constexpr T ordinary = 1;

  static ORIN_INLINE Vec4i special_lanes(Vec4i a) { return not_positive_normal<T>(magnitude(a)); }
  static ORIN_INLINE Register<T> fast(Register<T> a) {
    static constexpr Constant<T> one = 1;
    return in_memory(one) / a;
  }
  static Outcome<T> special(T a) { return quotient(T(1), a); }
};

template <class T>
struct LinearFrac : TwoToOne<T> {
  static constexpr const char* name = is_double<T> ? "vdLinearFrac" : "vsLinearFrac";
  static constexpr int groups_per_step = 1;
  // Whatever the scalars, this raises no exception.
  static constexpr T ordinary = std::numeric_limits<T>::quiet_NaN();

  T scalea, shifta, scaleb, shiftb;

  static ORIN_INLINE Vec4i special_lanes(Vec4i, Vec4i) { return 0; }
  static ORIN_INLINE Vec4i special_results(Vec4i result) {
    static constexpr Constant<std::int32_t> largest = is_double<T> ? 0x7fefffff : 0x7f7fffff;
    return magnitude(result) > in_memory(largest);
  }
  ORIN_INLINE Register<T> fast(Register<T> a, Register<T> b) const {
    return (Register<T>(scalea) * a + Register<T>(shifta)) / (Register<T>(scaleb) * b + Register<T>(shiftb));
  }
  Outcome<T> special(T a, T b) const {
    const T numerator = scalea * a + shifta, denominator = scaleb * b + shiftb;
    Outcome<T> outcome = quotient(numerator, denominator);
    bool finite = true;
    for (const T x : {a, b, scalea, shifta, scaleb, shiftb}) {
      if (x != x) return {{outcome.value[0]}, KOR_STATUS_OK};
      finite &= std::fabs(x) <= std::numeric_limits<T>::max();
    }
    if (outcome.value[0] != outcome.value[0])
      outcome.status = KOR_STATUS_ERRDOM;
    else if (finite && outcome.status == KOR_STATUS_OK && std::fabs(outcome.value[0]) > std::numeric_limits<T>::max())
      outcome.status = KOR_STATUS_OVERFLOW;
    return outcome;
  }
};

}  // namespace

#define ORIN_ONE_TO_ONE(name, F)                                                                                \
  void ORIN_CALL name##_s(std::int32_t n, const float* a, float* r) { elementwise<F<float>>({}, n, {a}, {r}); } \
  void ORIN_CALL name##_d(std::int32_t n, const double* a, double* r) { elementwise<F<double>>({}, n, {a}, {r}); }
#define ORIN_TWO_TO_ONE(name, F)                                                         \
  void ORIN_CALL name##_s(std::int32_t n, const float* a, const float* b, float* r) {    \
    elementwise<F<float>>({}, n, {a, b}, {r});                                           \
  }                                                                                      \
  void ORIN_CALL name##_d(std::int32_t n, const double* a, const double* b, double* r) { \
    elementwise<F<double>>({}, n, {a, b}, {r});                                          \
  }
#define ORIN_LINEAR_FRAC(name, T)                                                                             \
  void ORIN_CALL name(std::int32_t n, const T* a, const T* b, T scalea, T shifta, T scaleb, T shiftb, T* r) { \
    elementwise<LinearFrac<T>>({{}, scalea, shifta, scaleb, shiftb}, n, {a, b}, {r});                         \
  }
ORIN_ONE_TO_ONE(abs, Abs)
ORIN_TWO_TO_ONE(add, Add)
ORIN_TWO_TO_ONE(sub, Sub)
ORIN_TWO_TO_ONE(mul, Mul)
ORIN_ONE_TO_ONE(sqr, Sqr)
ORIN_TWO_TO_ONE(div, Div)
ORIN_ONE_TO_ONE(inv, Inv)
ORIN_LINEAR_FRAC(linear_frac_s, float)
ORIN_LINEAR_FRAC(linear_frac_d, double)
#undef ORIN_ONE_TO_ONE
#undef ORIN_TWO_TO_ONE
#undef ORIN_LINEAR_FRAC

}  // namespace orin::vector_math
