// complex_power: elementwise z^w, w a vector or one number, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    z^w = e^(w log z), log z = L + i t, w log z = E + i F, the result e^E (cos F + i sin F)
//           HA  L, t, E and F as pairs: L by log_core_d.h from |z|^2 as a pair; t = atan c + atan r as in atan_core.h,
//               r = (y - c x)/(x + c y) as a pair, too; products as in pow_core_d.h
//           EP  L, t in LA, the exponential and the sine to 2^-31; single precision in double by EP; LA is HA
// Bounds    in ulp of the modulus: HA 2 (single 1), EP 2^-26, 2^-11, while |w log z| < 1700; beyond, the error grows
//           with |F|
// Special   z^0 = 1; 0^w = 0 for Re w > 0, infinite with status 2 for w real and negative; arguments that are not
//           finite, and other powers of 0, by C Annex G in e^(w log z): a part that has no limit is NaN, status 1;
//           overflow of a part, status 3; a modulus below normal numbers, status 4
// Data      data/log_d_data.h, data/atan_data.h, data/pow_d_data.h, data/sincos_d_data.h
#include <cfloat>

#include "vector_math/kernels.h"
#include "vector_math/kernels/complex_in_double.h"
#include "vector_math/kernels/modulus_log.h"
#include "vector_math/kernels/point_angle.h"
#include "vector_math/kernels/pow_core_d.h"
#include "vector_math/kernels/sincos_core_d.h"

namespace orin::vector_math {
namespace {

using namespace simd;

constexpr struct {
  Constant<double> zero = 0.0, half = 0.5, minus_zero = -0.0;
  Constant<double> limit = 708.0;       // e^+-708 is normal
  Constant<double> far_angle = 0x1p20;  // the reduction of angles ends here
} constants{};

constexpr struct { Constant<double> pi = vector_math::pi<double>, rest = vector_math::pi_rest<double>; } half_turn{};

// The angle of (x, y), y >= 0 as it is and x of any sign, to 2^-71.
ORIN_INLINE DoubleDouble angle_pair(Vec2d y, Vec2d signed_x) {
  const auto& c = in_memory(atan_core::bins<Vec2d>);
  const Vec2d x = abs(signed_x);
  const auto bin = atan_core::bin_of(c, y / max(x, c.least));
  // y - c x and x + c y as pairs: c has six bits, its products with the halves are exact.
  const DoubleDouble xs = split(x), ys = split(y);
  const DoubleDouble n1 = two_sum(y, Vec2d(c.zero) - bin.middle * xs.high);
  const DoubleDouble n2 = two_sum(n1.high, Vec2d(c.zero) - bin.middle * xs.low);
  const DoubleDouble d1 = two_sum(x, bin.middle * ys.high);
  const DoubleDouble d2 = fast_two_sum(d1.high, bin.middle * ys.low);
  const Vec2d r = n2.high / d2.high;
  const DoubleDouble back = two_product(r, d2.high);
  const Vec2d r_low = (((n2.high - back.high) - back.low) + ((n1.low + n2.low) - r * (d1.low + d2.low))) / d2.high;
  const DoubleDouble sum = fast_two_sum(bin.arc, r);
  const Vec2d low = sum.low + (r_low + atan_core::bend<Grade::ha>(c, bin, r));
  // pi less the angle where x is negative.
  const auto& k = in_memory(constants);
  const auto& turn = in_memory(half_turn);
  const Vec2d mask = signed_x < k.zero;
  const Vec2d sign = mask & k.minus_zero;
  const DoubleDouble whole = fast_two_sum(mask & turn.pi, sum.high ^ sign);
  const Vec2d high = select(mask, whole.high, sum.high);
  const Vec2d rest = select(mask, whole.low, k.zero) + ((low ^ sign) + (mask & turn.rest));
  return fast_two_sum(high, rest);
}

// log z for z 2^`scaled` in the place of z.
struct LogPair {
  DoubleDouble modulus, angle;
};
template <int scaled>
ORIN_INLINE LogPair log_pair(ComplexD z) {
  const auto& k = in_memory(constants);
  const DoubleDouble square = modulus_squared_pair(z.re, z.im);
  const DoubleDouble log = log_d::logarithm_pair<2 * scaled>(square.high);
  const Vec2d half_rest = square.low / square.high;
  const DoubleDouble modulus = two_sum(log.high * k.half, (log.low + half_rest) * k.half);
  const DoubleDouble angle = angle_pair(abs(z.im), z.re);
  const Vec2d sign = z.im & k.minus_zero;
  return {modulus, {angle.high ^ sign, angle.low ^ sign}};
}

// a b + c d, the products of leading halves exact.
struct Halves {
  DoubleDouble parts;
  Vec2d whole;
  explicit ORIN_INLINE Halves(Vec2d a) : parts(split(a)), whole(a) {}
  ORIN_INLINE Halves(DoubleDouble a) : parts(split(a.high)), whole(a.high) { parts.low = parts.low + a.low; }
};
ORIN_INLINE DoubleDouble sum_of_products(const Halves& a, const Halves& b, const Halves& c, const Halves& d) {
  const DoubleDouble main = two_sum(a.parts.high * b.parts.high, c.parts.high * d.parts.high);
  const Vec2d rest = main.low + ((a.parts.low * b.parts.high + a.whole * b.parts.low) +
                                 (c.parts.low * d.parts.high + c.whole * d.parts.low));
  return two_sum(main.high, rest);
}

// The exponent w log z = real + i imaginary.
struct Exponent {
  DoubleDouble real, imaginary;
};
template <Grade grade, int scaled = 0>
ORIN_INLINE Exponent exponent(ComplexD z, ComplexD w) {
  if constexpr (grade == Grade::ha) {
    const LogPair log = log_pair<scaled>(z);
    const Halves c(w.re), d(w.im), minus_d(w.im ^ Vec2d(in_memory(constants).minus_zero)), l(log.modulus), t(log.angle);
    return {sum_of_products(c, l, minus_d, t), sum_of_products(c, t, d, l)};
  } else {
    const Vec2d l = modulus_log<Grade::la>(z.re, z.im);
    const Vec2d t = PointAngle<double, Grade::la>::fast(z.im, z.re);
    const Vec2d none = 0.0;
    return {{w.re * l - w.im * t, none}, {w.re * t + w.im * l, none}};
  }
}

// The angle less a multiple of the table's step, its rest included.
template <Grade grade>
ORIN_INLINE sincos_d::Angle with_rest(sincos_d::Angle angle, Vec2d rest) {
  if constexpr (grade == Grade::ha) {
    const DoubleDouble sum = two_sum(angle.high, angle.low + rest);
    return {sum.high, sum.low, angle.n};
  } else {
    return angle;
  }
}

// z^w, and the lanes where it may not be in the range of normal numbers: there it is any finite value.
struct Marked {
  ComplexD value;
  Vec2d beyond;
};
template <Grade grade>
ORIN_INLINE Marked power(ComplexD z, ComplexD w) {
  const auto& k = in_memory(constants);
  const Exponent e = exponent<grade>(z, w);
  const Vec2d beyond = (abs(e.real.high) >= k.limit) | (abs(e.imaginary.high) >= k.far_angle);
  // An odd exponent must not meet the products.
  const DoubleDouble real = {and_not(beyond, e.real.high), and_not(beyond, e.real.low)};
  Vec2d size;
  if constexpr (grade == Grade::ha) {
    const pow_d::Power p = pow_d::power(real);
    size = from_bits(bits(p.value) + shift_left<52>(p.k));
  } else {
    size = pow_d::power_medium(real.high);
  }
  const auto angle =
      with_rest<grade>(sincos_d::reduce<grade>(and_not(beyond, e.imaginary.high)), and_not(beyond, e.imaginary.low));
  const auto [sine, cosine] = sincos_d::sine_and_cosine<grade>(angle);
  return {{size * cosine, size * sine}, beyond};
}

// e^e for any finite exponent.
template <class T>
Outcome<KorComplex16> wide_power(const Exponent& e) {
  // Both parts of the angle are reduced: the low one of a very large angle is large, too.
  const sincos_d::Angle main_angle = sincos_d::reduce_any<Grade::ha>(e.imaginary.high);
  const sincos_d::Angle rest = sincos_d::reduce_any<Grade::ha>(e.imaginary.low);
  const DoubleDouble sum = two_sum(main_angle.high, rest.high);
  const sincos_d::Angle angle{sum.high, sum.low + (main_angle.low + rest.low), main_angle.n + rest.n};
  const auto [sine, cosine] = sincos_d::sine_and_cosine<Grade::ha>(angle);
  const KorComplex16 direction{first_lane(cosine), first_lane(sine)};
  const double main = first_lane(e.real.high);
  // Beyond +-1500 every part but 0 is out of range.
  const bool far = std::fabs(main) > 1500;
  const DoubleDouble real = far ? DoubleDouble{Vec2d(std::copysign(1500.0, main)), Vec2d(0.0)} : e.real;
  const pow_d::Power p = pow_d::power(real);
  const double value = first_lane(p.value);
  const int k = static_cast<int>(static_cast<std::int16_t>(_mm_cvtsi128_si32(p.k.raw)));
  const auto power_of_two = [](int n) __attribute__((always_inline)) {
    return __builtin_bit_cast(double, static_cast<std::int64_t>(n + 1023) << 52);
  };
  const auto scaled = [&](double part) __attribute__((always_inline)) {
    const double too_large = std::copysign(infinite, part);
    double x = part * value;
    int left = k;
    for (; left > 1000; left -= 1000) {
      if (std::fabs(x) > 0x1p30) return too_large;
      x *= 0x1p1000;
    }
    if (left > 0 && std::fabs(x) > DBL_MAX * power_of_two(-left)) return too_large;
    // Below, one product at the end alone rounds to a subnormal; what is far below vanishes on the way.
    for (; left < -1022 - 900; left += 900) x *= 0x1p-900;
    if (left < -900) return x * power_of_two(left + 900) * 0x1p-900;
    return x * power_of_two(left);
  };
  using Limits = std::numeric_limits<T>;
  // What would round to infinity in T is it already, so that nothing overflows on the way.
  constexpr double first_infinite = sizeof(T) == 8 ? infinite : 0x1.ffffffp127;
  const auto in_range = [](double x) __attribute__((always_inline)) {
    return std::fabs(x) >= first_infinite ? std::copysign(infinite, x) : x;
  };
  const KorComplex16 result{in_range(scaled(direction.re)), in_range(scaled(direction.im))};
  const double size = std::fmax(std::fabs(result.re), std::fabs(result.im));
  if (size >= first_infinite) return {{result}, KOR_STATUS_OVERFLOW};
  // The modulus is value 2^k.
  const int above_normal = k + 1 - Limits::min_exponent;
  const bool underflow = above_normal < -1 || (above_normal < 2 && value * power_of_two(above_normal) < 1);
  return {{result}, underflow ? KOR_STATUS_UNDERFLOW : KOR_STATUS_OK};
}

// z^w for what `power` does not take. As C Annex G for e^(w log z), but w = 0 gives 1 and zero bases as real ones do.
template <class T>
Outcome<KorComplex16> special_power(KorComplex16 z, KorComplex16 w) {
  const KorComplex16 nothing{not_a_number, not_a_number};
  if (w.re == 0 && w.im == 0) return {{{1.0, 0.0}}, KOR_STATUS_OK};
  if (is_nan(z.re) || is_nan(z.im) || is_nan(w.re) || is_nan(w.im)) return {{nothing}, KOR_STATUS_OK};
  if (is_infinite(w.re) || is_infinite(w.im)) {
    // The modulus may have a limit, the angle has one where z is positive.
    const double size = std::fmax(std::fabs(z.re), std::fabs(z.im));
    const double square = size >= 2 ? 4 : size <= 0.5 ? 0.5 : z.re * z.re + z.im * z.im;
    const bool on_axis = z.im == 0 && z.re >= 0 && w.im == 0;
    if (on_axis && z.re == 1) return {{{1.0, 0.0}}, KOR_STATUS_OK};
    if (is_infinite(w.im) || square == 1) return {{nothing}, KOR_STATUS_ERRDOM};
    if ((square > 1) != (w.re > 0)) return {{{0.0, 0.0}}, KOR_STATUS_OK};
    return {{{infinite, on_axis ? 0.0 : not_a_number}}, on_axis ? KOR_STATUS_OK : KOR_STATUS_ERRDOM};
  }
  if (z.re == 0 && z.im == 0) {
    if (w.re > 0) return {{{0.0, 0.0}}, KOR_STATUS_OK};
    if (w.im == 0) return {{{infinite, 0.0}}, KOR_STATUS_SING};
    return {{{w.re < 0 ? infinite : not_a_number, not_a_number}}, KOR_STATUS_ERRDOM};
  }
  if (is_infinite(z.re) || is_infinite(z.im)) {
    if (w.re < 0) return {{{0.0, 0.0}}, KOR_STATUS_OK};
    if (w.re == 0 || w.im != 0) return {{{w.re > 0 ? infinite : not_a_number, not_a_number}}, KOR_STATUS_ERRDOM};
    // The direction of a real power; on an axis it is exact.
    const double turn = first_lane(Vec2d(PointAngle<double, Grade::ha>::special(z.im, z.re)) * Vec2d(w.re));
    const auto [sine, cosine] = sincos_d::sine_and_cosine<Grade::ha>(sincos_d::reduce_any<Grade::ha>(turn));
    const double im = first_lane(sine);
    return {{{std::copysign(infinite, first_lane(cosine)), im == 0 ? im : std::copysign(infinite, im)}}, KOR_STATUS_OK};
  }
  // Both finite: z by a power of two into the range of squares; w so that nothing overflows.
  constexpr double enough = 0x1p300;
  const auto bounded = [](double x) { return x > enough ? enough : x < -enough ? -enough : x; };
  const ComplexD factor{Vec2d(bounded(w.re)), Vec2d(bounded(w.im))};
  const double size = std::fmax(std::fabs(z.re), std::fabs(z.im));
  const auto times = [&](double scale) __attribute__((always_inline)) {
    return ComplexD{Vec2d(z.re * scale), Vec2d(z.im * scale)};
  };
  if (size < 0x1p-400) return wide_power<T>(exponent<Grade::ha, 600>(times(0x1p600), factor));
  if (size >= 0x1p400) return wide_power<T>(exponent<Grade::ha, -700>(times(0x1p-700), factor));
  return wide_power<T>(exponent<Grade::ha>(times(1), factor));
}

// What powers of both kinds share. The fast path takes z within 2^-400 .. 2^400 and |w| below 2^60, and marks results
// that may leave the normal numbers by a NaN.
template <class T, Grade grade>
struct Power {
  using Z = ComplexOf<T>;
  using V = typename RegisterOf<T>::type;
  static constexpr Z ordinary{1, 1};
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_base(Complex<Vec4i> z) {
    if constexpr (sizeof(T) == 8)
      return outside<0x26f00000, 0x58efffff>(larger_magnitude(z));
    else
      return outside<0x00800000, 0x7f7fffff>(larger_magnitude(z));
  }
  static ORIN_INLINE Vec4i special_exponent(Complex<Vec4i> w) {
    // Not both parts 0, for which special knows all bases.
    if constexpr (sizeof(T) == 8)
      return outside<0x00100000, 0x43afffff>(larger_magnitude(w));
    else
      return outside<0x00800000, 0x5d7fffff>(larger_magnitude(w));
  }
  static ORIN_INLINE Vec4i special_results(Complex<Vec4i> r) {
    static constexpr Constant<std::int32_t> largest = sizeof(T) == 8 ? 0x7fefffff : 0x7f7fffff;
    return magnitude(r.re) > in_memory(largest);
  }
  static ORIN_INLINE Complex<V> of(Complex<V> z, Complex<V> w) {
    if constexpr (sizeof(T) == 8) {
      const auto [value, beyond] = power<grade>(z, w);
      return {value.re | beyond, value.im};
    } else {
      const auto half = [](Vec2d x, Vec2d y, Vec2d u, Vec2d v) __attribute__((always_inline)) {
        const auto [value, beyond] = power<Grade::ep>(ComplexD{x, y}, ComplexD{u, v});
        // Out of the range of float's normal numbers: a NaN, too.
        static constexpr struct { Constant<double> least = 0x1p-125, largest = 0x1p127; } range{};
        const auto& c = in_memory(range);
        const Vec2d size = max(abs(value.re), abs(value.im));
        const Vec2d odd = beyond | (size < c.least) | (size >= c.largest);
        return ComplexD{and_not(odd, value.re) | odd, and_not(odd, value.im)};
      };
      const TwoVec2d x = widen(z.re), y = widen(z.im), u = widen(w.re), v = widen(w.im);
      const ComplexD low = half(x.low, y.low, u.low, v.low), high = half(x.high, y.high, u.high, v.high);
      return {simd::narrow({low.re, high.re}), simd::narrow({low.im, high.im})};
    }
  }
  static Outcome<Z> special_of(Z z, Z w) {
    const auto outcome = special_power<T>(KorComplex16{z.re, z.im}, KorComplex16{w.re, w.im});
    return {{{static_cast<T>(outcome.value[0].re), static_cast<T>(outcome.value[0].im)}}, outcome.status};
  }
};

template <class T, Grade grade>
struct PowerOfVectors : TwoToOne<ComplexOf<T>>, Power<T, grade> {
  using Common = Power<T, grade>;
  using Common::groups_per_step;
  using typename Common::V;
  using typename Common::Z;
  static constexpr const char* name = sizeof(T) == 8 ? "vzPow" : "vcPow";

  static ORIN_INLINE Vec4i special_lanes(Complex<Vec4i> z, Complex<Vec4i> w) {
    return Common::special_base(z) | Common::special_exponent(w);
  }
  static ORIN_INLINE Complex<V> fast(Complex<V> z, Complex<V> w) { return Common::of(z, w); }
  static Outcome<Z> special(Z z, Z w) { return Common::special_of(z, w); }
};

template <class T, Grade grade>
struct PowerOfScalar : OneToOne<ComplexOf<T>>, Power<T, grade> {
  using Common = Power<T, grade>;
  using Common::groups_per_step;
  using typename Common::V;
  using typename Common::Z;
  static constexpr const char* name = sizeof(T) == 8 ? "vzPowx" : "vcPowx";
  static constexpr T least = sizeof(T) == 8 ? T(DBL_MIN) : T(FLT_MIN), limit = sizeof(T) == 8 ? T(0x1p60) : T(0x1p60f);

  Z w;
  // Where w is odd every lane is special; 1 + i then stands in.
  bool is_ordinary =
      (std::fabs(w.re) >= least || std::fabs(w.im) >= least) && std::fabs(w.re) < limit && std::fabs(w.im) < limit;
  Z ordinary_w = is_ordinary ? w : Z{1, 1};

  ORIN_INLINE Vec4i special_lanes(Complex<Vec4i> z) const { return Common::special_base(z) | (is_ordinary ? 0 : -1); }
  ORIN_INLINE Complex<V> fast(Complex<V> z) const {
    return Common::of(z, Complex<V>{V(ordinary_w.re), V(ordinary_w.im)});
  }
  Outcome<Z> special(Z z) const { return Common::special_of(z, w); }
};

}  // namespace

#define ORIN_COMPLEX_POWER(suffix, T, Z, grade)                               \
  void ORIN_CALL pow_##suffix(std::int32_t n, const Z* a, const Z* b, Z* r) { \
    elementwise<PowerOfVectors<T, grade>>({}, n, {a, b}, {r});                \
  }                                                                           \
  void ORIN_CALL powx_##suffix(std::int32_t n, const Z* a, Z b, Z* r) {       \
    elementwise<PowerOfScalar<T, grade>>({{}, {}, b}, n, {a}, {r});           \
  }
ORIN_COMPLEX_POWER(c, float, KorComplex8, Grade::ep)
ORIN_COMPLEX_POWER(z_ha, double, KorComplex16, Grade::ha)
ORIN_COMPLEX_POWER(z_ep, double, KorComplex16, Grade::ep)
#undef ORIN_COMPLEX_POWER

}  // namespace orin::vector_math
