// square_roots: elementwise x^(1/2), x^(-1/2) and x^(3/2), both precisions.
// SPDX-License-Identifier: MIT
//
// Method    x^(1/2)   the instruction of the processor, for all grades
//           x^(-1/2)  LA 1/sqrt x; HA that as y, and y + y e (1/2 + 3/8 e), e = 1 - x y^2: double cuts y to 26 bits and
//                     has e exactly by splitting x and y^2, single has it in double
//                     EP seed times polynomial, in double one step of Newton more
//           x^(3/2)   LA, EP x sqrt x; HA double with sqrt x as a pair s + (x - s^2) y/2, y the seed of x^(-1/2); HA
//                     single in double
// Bounds    x^(1/2) correctly rounded; else HA 0.52 ulp; LA relative 2^-50, 2^-21; EP relative 2^-26, 2^-11
// Budget    x^(3/2) HA double in ulp: seed 3.5 % of the pair's low part 0.02, last rounding 1/2
// Special   NaN -> NaN; negative, -inf -> NaN, status 1; x^(1/2) +-0 -> +-0, +inf -> +inf; x^(-1/2) +-0 -> +-inf,
//           status 2, +inf -> 0; x^(3/2) +-0 -> +-0, overflow -> +inf, status 3, subnormal or zero result, status 4
// Data      data/roots_data.h from tools/tables/roots.py
#include <cmath>
#include <limits>

#include "vector_math/kernels.h"
#include "vector_math/kernels/double_double.h"
#include "vector_math/kernels/log_base.h"
#include "vector_math/kernels/root_seeds.h"
#include "vector_math/simd/elementwise.h"

namespace orin::vector_math {
namespace {

using namespace simd;

template <class T>
struct Constants {
  Constant<T> one = 1, half = T(0.5), three_eighths = T(0.375);
  Constant<T> three_halves = T(1.5), p0 = T(roots_data::monic_0), p1 = T(roots_data::monic_1);
};
template <class T>
constexpr Constants<T> constants{};

template <class T>
struct Root : OneToOne<T> {
  using Limits = std::numeric_limits<T>;
  using V = typename RegisterOf<T>::type;
  static constexpr bool is_double = sizeof(T) == 8;
  static constexpr T ordinary = 1;

  // What the three have in common: NaN and negative arguments, others through `positive`.
  static Outcome<T> special(T x, auto positive) {
    if (x != x) return {{x + x}, KOR_STATUS_OK};
    if (x < 0) return {{Limits::quiet_NaN()}, KOR_STATUS_ERRDOM};
    return positive();
  }
};

template <class T>
struct Sqrt : Root<T> {
  using typename Root<T>::V;
  static constexpr const char* name = Root<T>::is_double ? "vdSqrt" : "vsSqrt";

  static ORIN_INLINE Vec4i special_lanes(Vec4i words) { return words; }  // the sign bits
  static ORIN_INLINE V fast(V x) { return sqrt(x); }
  static Outcome<T> special(T x) {
    return Root<T>::special(x, [&]() -> Outcome<T> { return {{x + x}, KOR_STATUS_OK}; });  // -0
  }
};

template <class T, Grade grade>
struct InvSqrt : Root<T> {
  using typename Root<T>::V;
  using typename Root<T>::Limits;
  using Root<T>::is_double;
  static constexpr const char* name = is_double ? "vdInvSqrt" : "vsInvSqrt";

  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    if constexpr (is_double && grade == Grade::ha)
      return outside<0x07b00000, 0x783fffff>(words);  // 2^-900, 2^901
    else
      return not_positive_normal<T>(words);
  }
  static ORIN_INLINE Vec2d corrected(Vec2d y, Vec2d e) {
    const auto& c = in_memory(constants<double>);
    return y + (y * e) * (c.half + e * c.three_eighths);
  }
  static ORIN_INLINE V fast(V x) {
    const auto& c = in_memory(constants<T>);
    if constexpr (grade == Grade::ep) {
      const V seed = root_seeds::monic_inverse_square_root(x);
      const V z = (x * seed) * seed;
      const V y = seed * (c.p0 + z * (c.p1 + z));
      if constexpr (!is_double) return y;
      return y * (c.three_halves - ((x * c.half) * y) * y);
    } else if constexpr (grade == Grade::la) {
      return c.one / sqrt(x);
    } else if constexpr (is_double) {
      const Vec2d y = split(c.one / sqrt(x)).high;
      const DoubleDouble square = split(y * y), parts = split(x);
      return corrected(y, (((c.one - parts.high * square.high) - parts.high * square.low) - parts.low * square.high) -
                              parts.low * square.low);
    } else {
      const TwoVec2d y = widen(c.one / sqrt(x)), wide = widen(x);
      const Vec2d one = in_memory(constants<double>).one;
      return narrow(
          {corrected(y.low, one - (wide.low * y.low) * y.low), corrected(y.high, one - (wide.high * y.high) * y.high)});
    }
  }
  static Outcome<T> special(T x) {
    return Root<T>::special(x, [&]() -> Outcome<T> {
      if (x == 0) return {{std::copysign(Limits::infinity(), x)}, KOR_STATUS_SING};
      if (x > Limits::max()) return {{T(0)}, KOR_STATUS_OK};
      constexpr T scale = is_double ? T(0x1p300) : T(0x1p24);
      const T up = x < 1 ? scale : 1 / scale;
      return {{first_lane(fast(V(x * (up * up)))) * up}, KOR_STATUS_OK};
    });
  }
};

template <class T, Grade grade>
struct Pow3o2 : Root<T> {
  using typename Root<T>::V;
  using typename Root<T>::Limits;
  using Root<T>::is_double;
  static constexpr const char* name = is_double ? "vdPow3o2" : "vsPow3o2";

  // Between them nothing leaves the range, low parts included.
  static ORIN_INLINE Vec4i special_lanes(Vec4i words) {
    if constexpr (is_double)
      return outside<0x1a700000, 0x6a8fffff>(words);  // 2^-600, 2^682
    else
      return outside<0x16000000, 0x69ffffff>(words);  // 2^-83, 2^85
  }
  static ORIN_INLINE Vec2d wide(Vec2d x) {
    const Vec2d s = sqrt(x);
    const DoubleDouble root = split(s), parts = split(x);
    const Vec2d remainder = (x - root.high * root.high) - root.low * (s + root.high);
    const Vec2d root_rest = remainder * (root_seeds::inverse_square_root(x) * in_memory(constants<double>).half);
    const Vec2d high = parts.high * root.high;  // exact, as the two of the next line
    const Vec2d middle = parts.high * root.low + parts.low * root.high;
    return high + (middle + (parts.low * root.low + x * root_rest));
  }
  static ORIN_INLINE V fast(V x) {
    if constexpr (grade != Grade::ha) {
      return x * sqrt(x);
    } else if constexpr (is_double) {
      return wide(x);
    } else {
      const TwoVec2d both = widen(x);
      return narrow({both.low * sqrt(both.low), both.high * sqrt(both.high)});
    }
  }
  static Outcome<T> special(T x) {
    return Root<T>::special(x, [&]() -> Outcome<T> {
      if (x == 0 || x > Limits::max()) return {{x + x}, KOR_STATUS_OK};  // 0, also of an x flushed
      constexpr T scale = is_double ? T(0x1p300) : T(0x1p36);
      // The scale is the square root of what x is multiplied by; the last product rounds once more below the normal
      // numbers. High accuracy for all grades: they agree on where a status begins.
      const bool small = x < 1;
      const T up = small ? scale : 1 / scale, down = small ? 1 / scale : scale;
      const T scaled = first_lane(Pow3o2<T, Grade::ha>::fast(V(x * up * up)));
      if (!small && scaled > Limits::max() * up * up * up) return {{Limits::infinity()}, KOR_STATUS_OVERFLOW};
      const bool subnormal = small && scaled < Limits::min() * scale * scale * scale;
      return {{scaled * down * down * down}, subnormal ? KOR_STATUS_UNDERFLOW : KOR_STATUS_OK};
    });
  }
};

}  // namespace

#define ORIN_SQUARE_ROOT(name, F, T)                                                                            \
  void ORIN_CALL name##_la(std::int32_t n, const T* a, T* r) { elementwise<F<T, Grade::la>>({}, n, {a}, {r}); } \
  void ORIN_CALL name##_ha(std::int32_t n, const T* a, T* r) { elementwise<F<T, Grade::ha>>({}, n, {a}, {r}); }
ORIN_SQUARE_ROOT(inv_sqrt_s, InvSqrt, float)
ORIN_SQUARE_ROOT(inv_sqrt_d, InvSqrt, double)
ORIN_SQUARE_ROOT(pow3o2_s, Pow3o2, float)
ORIN_SQUARE_ROOT(pow3o2_d, Pow3o2, double)
#undef ORIN_SQUARE_ROOT
void ORIN_CALL inv_sqrt_s_ep(std::int32_t n, const float* a, float* r) {
  elementwise<InvSqrt<float, Grade::ep>>({}, n, {a}, {r});
}
void ORIN_CALL inv_sqrt_d_ep(std::int32_t n, const double* a, double* r) {
  elementwise<InvSqrt<double, Grade::ep>>({}, n, {a}, {r});
}
void ORIN_CALL sqrt_s(std::int32_t n, const float* a, float* r) { elementwise<Sqrt<float>>({}, n, {a}, {r}); }
void ORIN_CALL sqrt_d(std::int32_t n, const double* a, double* r) { elementwise<Sqrt<double>>({}, n, {a}, {r}); }

}  // namespace orin::vector_math
