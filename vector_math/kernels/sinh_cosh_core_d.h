// sinh_cosh_core_d.h: sinh and cosh of doubles at once, or e^x, for functions that multiply them by something.
// SPDX-License-Identifier: MIT
//
// Use       SinhCosh<grade>(x), |x| < 708: leading numbers and what these lack, apart, for the product of two such sums
//           need not round the sums first; or sinh() and cosh()
// Method    x = n ln2/128 + o + r, n = 128 k + j, e^(j ln2/128 + o)/2 = T and 1/(4 T) = T' doubles but for 2^-12 ulp
//           with A = 2^k T - 2^-k T', B = 2^k T + 2^-k T':  sinh x = A + (B sinh r + A (cosh r - 1)),
//           cosh x = B + (A sinh r + B (cosh r - 1));  n = +-1 has the point of 0, so that small x are r
//           EP  x = n ln2/64 + r, T and T' nearest
// Differs   from hyperbolic_core_d.h, which has one of the two to 0.55 ulp and pays for that with pairs
// Budget    HA  in ulp: A and B exact for |n| < 256 but at j = 64, else 1/2; what they lack 2^-4, from n = +-2 on up to
//           1/3; T and T' 0.43 where j = 64;  LA  sums 1/2 more;  EP  polynomials 2^-37
// Data      data/complex_periodic_data.h from tools/tables/complex_periodic.py
#ifndef ORIN_VECTOR_MATH_KERNELS_SINH_COSH_CORE_D_H
#define ORIN_VECTOR_MATH_KERNELS_SINH_COSH_CORE_D_H

#include "vector_math/data/complex_periodic_data.h"
#include "vector_math/grade.h"
#include "vector_math/simd/table.h"

namespace orin::vector_math::sinh_cosh_d {

using namespace simd;
namespace data = complex_periodic_data;

struct Fine {
  static constexpr int log2_size = 7;
  static constexpr const auto& powers = data::powers;
  Constant<double> inverse = 0x1.71547652b82fep+7;    // 128/ln2, nearest
  Constant<double> to_integer = 0x1.8p52;             // x + to_integer: x rounded to an integer, in the low bits
  Constant<double> step_high = 0x1.62e42fefp-8;       // ln2/128 to 32 bits: n step_high is exact
  Constant<double> step_low = 0x1.473de6af278edp-41;  // the rest
  Constant<double> s0 = data::sinh_0, s1 = data::sinh_1, c0 = data::cosh_0, c1 = data::cosh_1;
  Constant<double> whole_c0 = data::whole_cosh_0, whole_c1 = data::whole_cosh_1, whole_c2 = data::whole_cosh_2;
};
struct Coarse {
  static constexpr int log2_size = 6;
  static constexpr const auto& powers = data::ep_powers;
  Constant<double> inverse = 0x1.71547652b82fep+6, to_integer = 0x1.8p52, step = 0x1.62e42fefa39efp-7;  // of ln2/64
  Constant<double> s0 = data::ep_sinh_0, c0 = data::ep_cosh_0;
};
inline constexpr Fine constants{};
inline constexpr Coarse ep_constants{};

inline constexpr std::int32_t largest_word = 0x40861fff;  // the high word of x below 708

// x = n ln2/128 + o + r; n, which is 128 k + j, in the low bits.
struct Reduced {
  Vec2d r;
  Vec2l n;
  LaneIndices<Fine::log2_size, 2> j;
};
ORIN_INLINE Reduced reduce(const Fine& c, Vec2d x) {
  const Vec2d t = x * c.inverse + c.to_integer;
  const Vec2d n = t - c.to_integer;
  const auto j = low_bits<Fine::log2_size>(bits(t));
  return {(x - n * c.step_high) - (n * c.step_low + look_up(data::power_offsets, j)), bits(t), j};
}
// k as an exponent.
template <int log2_size>
ORIN_INLINE Vec2l exponent(Vec2l n) {
  return shift_left<52>(shift_right<log2_size>(n));
}

// sinh r - r and cosh r - 1.
struct Bends {
  Vec2d sinh, cosh;
};
template <bool whole>
ORIN_INLINE Bends bends(const Fine& c, Vec2d r) {
  const Vec2d r2 = r * r;
  if constexpr (whole) return {(r * r2) * (c.s0 + r2 * c.s1), r2 * (c.whole_c0 + r2 * (c.whole_c1 + r2 * c.whole_c2))};
  return {(r * r2) * (c.s0 + r2 * c.s1), r2 * (c.c0 + r2 * c.c1)};
}

// sinh x = a_rest - minus_a, where that is a zero with the sign of x; cosh x = b + b_rest.
// With `whole`, for x >= 0, cosh x is off by 2^-62 at most below 1, before b and b_rest are added, and b is off as a is.
template <Grade grade, bool whole = false>
struct SinhCosh {
  Vec2d minus_a, b, a_rest, b_rest;

  explicit ORIN_INLINE SinhCosh(Vec2d x) {
    if constexpr (grade == Grade::ep) {
      const auto& c = in_memory(ep_constants);
      const Vec2d t = x * c.inverse + c.to_integer;
      const Vec2d r = x - (t - c.to_integer) * c.step;
      const Vec2d r2 = r * r;
      set<Coarse>(bits(t), low_bits<Coarse::log2_size>(bits(t)), r + (r * r2) * c.s0, r2 * c.c0);
    } else {
      const auto& c = in_memory(constants);
      const auto [r, n, j] = reduce(c, x);
      const auto [sinh, cosh] = bends<whole>(c, r);
      set<Fine>(n, j, r + sinh, cosh);
      if constexpr (whole) b_rest = b_rest + look_up(data::cosh_lacks, j);
    }
  }
  ORIN_INLINE Vec2d sinh() const { return a_rest - minus_a; }
  ORIN_INLINE Vec2d cosh() const { return b + b_rest; }

 private:
  template <class Table>
  ORIN_INLINE void set(Vec2l n, LaneIndices<Table::log2_size, 2> j, Vec2d sine, Vec2d bend) {
    const auto [power, inverse] = look_up_pairs(Table::powers, j);
    const Vec2l k = exponent<Table::log2_size>(n);
    const Vec2d up = from_bits(bits(power) + k), down = from_bits(bits(inverse) - k);
    minus_a = down - up;
    if constexpr (whole)
      b = (down + down) - minus_a;
    else
      b = up + down;
    a_rest = b * sine - minus_a * bend;
    b_rest = b * bend - minus_a * sine;
    if constexpr (whole) b_rest = b_rest + ((down + down) - (b + minus_a));
  }
};

}  // namespace orin::vector_math::sinh_cosh_d

#endif
