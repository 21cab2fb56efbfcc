// complex_power: elementwise z^w, w a vector or one number, both precisions.
// SPDX-License-Identifier: MIT
//
// Method    z^w = e^(w log z), log z = L + i t, w log z = E + i F, the result e^E (cos F + i sin F)
//           HA  L, t, E and F as pairs: L by log_core_d.h from |z|^2 as a pair; t by octant_angle.h, r with its rest;
//               products as in pow_core_d.h; cos F and sin F from the table of sincos_core_d.h, rounded once
//           EP  L, t in LA, the exponential and the sine to 2^-31;  LA is HA
//           single precision: HA in double by EP; EP in floats where |w| < 32 and |z| is within 2^+-12, or 8 and 2^+-31,
//           and |F| < 248
// Bounds    in ulp of the modulus: HA 2 (single 1), EP 2^-26, 2^-11, while |w log z| < 1700; beyond, the error grows
//           with |F|
// Budget    HA  in 2^-53 of the modulus: exponent 1700 2^-63, e^E 1, each part of cos F + i sin F 1, products 1
//           EP in floats: L, t 2^-21 of |log z|, times |w log z| < 263 2^-13; exponential 2^-12.7
// Special   z^0 = 1; 0^w = 0 for Re w > 0, infinite with status 2 for w real and negative; arguments that are not
//           finite, and other powers of 0, by C Annex G in e^(w log z): a part that has no limit is NaN, status 1;
//           overflow of a part, status 3; a modulus below normal numbers, status 4
// Data      data/log_d_data.h, data/octants_data.h, data/atan_data.h, data/pow_d_data.h, data/sincos_d_data.h
#include <cfloat>

#include "vector_math/kernels.h"
#include "vector_math/kernels/complex_in_floats.h"
#include "vector_math/kernels/exp_core_s.h"
#include "vector_math/kernels/modulus_log.h"
#include "vector_math/kernels/octant_angle.h"
#include "vector_math/kernels/point_angle.h"
#include "vector_math/kernels/pow_core_d.h"
#include "vector_math/kernels/sincos_core_d.h"
#include "vector_math/kernels/sincos_core_s.h"

namespace orin::vector_math {
namespace {

using namespace simd;

constexpr struct {
  Constant<double> zero = 0.0, half = 0.5, minus_zero = -0.0;
  Constant<double> limit = 708.0;       // e^+-708 is normal
  Constant<double> far_angle = 0x1p20;  // the reduction of angles ends here
} constants{};

// The angle of (x, y), y >= 0 as it is and x of any sign, to 2^-62 of itself.
ORIN_INLINE DoubleDouble angle_pair(Vec2d y, Vec2d x) {
  const auto p = octant_angle::place_of(y, x);
  const Vec2d numerator = octant_angle::exact_numerator(p);
  const Vec2d product = p.c * p.smaller;
  const DoubleDouble denominator = fast_two_sum(p.larger, product);
  const Vec2d r = numerator / denominator.high;
  const DoubleDouble n = split(p.smaller), q = split(r), d = split(denominator.high);
  const Vec2d d_rest = d.low + (denominator.low + ((p.c * n.high - product) + p.c * n.low));
  const Vec2d remainder = (numerator - q.high * d.high) - (q.high * d_rest + q.low * denominator.high);
  const Vec2d rest = octant_angle::bend(r) + remainder / denominator.high;
  const DoubleDouble sum = fast_two_sum(p.arc, r ^ p.sign);
  return fast_two_sum(sum.high, sum.low + (p.arc_rest + (rest ^ p.sign)));
}

// log z for z 2^`scaled` in the place of z.
struct Logarithm {
  DoubleDouble modulus, angle;
};
template <Grade grade, int scaled = 0, class T = double>
ORIN_INLINE Logarithm logarithm_of(ComplexD z) {
  if constexpr (grade == Grade::ep) {
    const Vec2d none = 0.0;
    return {{modulus_log<Grade::la, Base::e, T>(z.re, z.im), none},
            {PointAngle<double, Grade::la>::fast(z.im, z.re), none}};
  }
  const auto& k = in_memory(constants);
  const DoubleDouble square = modulus_squared_medium(z.re, z.im);
  const DoubleDouble log = log_d::logarithm_pair<2 * scaled>(square.high, square.low);
  const DoubleDouble modulus = {log.high * k.half, log.low * k.half};
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
ORIN_INLINE Vec2d rest_of_product(const Halves& a, const Halves& b) {
  return a.parts.low * b.parts.high + a.whole * b.parts.low;
}
ORIN_INLINE DoubleDouble sum_of_products(const Halves& a, const Halves& b, const Halves& c, const Halves& d) {
  const DoubleDouble main = two_sum(a.parts.high * b.parts.high, c.parts.high * d.parts.high);
  return fast_two_sum(main.high, main.low + (rest_of_product(a, b) + rest_of_product(c, d)));
}
// a b - c d.
ORIN_INLINE DoubleDouble difference_of_products(const Halves& a, const Halves& b, const Halves& c, const Halves& d) {
  const DoubleDouble main = two_difference(a.parts.high * b.parts.high, c.parts.high * d.parts.high);
  return fast_two_sum(main.high, main.low + (rest_of_product(a, b) - rest_of_product(c, d)));
}

// The exponent w log z = real + i imaginary.
struct Exponent {
  DoubleDouble real, imaginary;
};
template <Grade grade>
ORIN_INLINE Exponent exponent(const Logarithm& log, ComplexD w) {
  if constexpr (grade == Grade::ha) {
    const Halves c(w.re), d(w.im), l(log.modulus), t(log.angle);
    return {difference_of_products(c, l, d, t), sum_of_products(c, t, d, l)};
  } else {
    const Vec2d l = log.modulus.high, t = log.angle.high, none = 0.0;
    return {{w.re * l - w.im * t, none}, {w.re * t + w.im * l, none}};
  }
}

// Cosine and sine of an angle as a pair, to 0.6 ulp of 1 in HA, as in sincos_core_d.h in EP.
template <Grade grade>
ORIN_INLINE ComplexD direction(DoubleDouble turn) {
  const sincos_d::Angle angle = sincos_d::reduce<grade>(turn.high);
  if constexpr (grade != Grade::ha) {
    const auto [sine, cosine] = sincos_d::sine_and_cosine<grade>(angle);
    return {cosine, sine};
  } else {
    const auto& c = in_memory(sincos_d::constants<Grade::ha>);
    const auto j = low_bits<7>(angle.n);
    const auto [sine_high, sine_low] = look_up_pairs<4>(sincos_d::data::ha_table, j);
    const auto [cosine_high, cosine_low] = look_up_pairs<4>(sincos_d::data::ha_table + 2, j);
    const Vec2d sine = sine_high + sine_low, cosine = cosine_high + cosine_low;
    const Vec2d r = angle.high + (angle.low + turn.low);
    const Vec2d r2 = r * r;
    const Vec2d s = r + (r * r2) * (c.s0 + r2 * (c.s1 + r2 * c.s2));
    const Vec2d bend = r2 * (c.c0 + r2 * (c.c1 + r2 * c.c2));
    return {cosine_high + (cosine_low + (cosine * bend - sine * s)),
            sine_high + (sine_low + (cosine * s + sine * bend))};
  }
}

// z^w, and the lanes where it may not be in the range of normal numbers: there it is any finite value.
struct Marked {
  ComplexD value;
  Vec2d beyond;
};
template <Grade grade>
ORIN_INLINE Marked power(const Logarithm& log, ComplexD w) {
  const auto& k = in_memory(constants);
  const Exponent e = exponent<grade>(log, w);
  const Vec2d beyond = (abs(e.real.high) >= k.limit) | (abs(e.imaginary.high) >= k.far_angle);
  // An odd exponent must not meet the products. Its low part may: below 2^45 they stay far from overflow.
  const Vec2d real = and_not(beyond, e.real.high);
  Vec2d size;
  if constexpr (grade == Grade::ha) {
    const pow_d::Power p = pow_d::power({real, e.real.low});
    size = from_bits(bits(p.value) + shift_left<52>(p.k));
  } else {
    size = pow_d::power_medium(real);
  }
  const ComplexD unit = direction<grade>({and_not(beyond, e.imaginary.high), e.imaginary.low});
  return {{size * unit.re, size * unit.im}, beyond};
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
  if (size < 0x1p-400) return wide_power<T>(exponent<Grade::ha>(logarithm_of<Grade::ha, 600>(times(0x1p600)), factor));
  if (size >= 0x1p400)
    return wide_power<T>(exponent<Grade::ha>(logarithm_of<Grade::ha, -700>(times(0x1p-700)), factor));
  return wide_power<T>(exponent<Grade::ha>(logarithm_of<Grade::ha>(times(1)), factor));
}

// What powers of both kinds share. The fast path takes z within 2^-400 .. 2^400 and |w| below 2^60, and marks results
// that may leave the normal numbers by a NaN.
template <class T, Grade grade>
struct Power {
  using Z = ComplexOf<T>;
  struct Half {
    Logarithm log;
    ComplexD w;
  };
  static constexpr Z ordinary{1, 1};
  static constexpr bool computes_in_double = sizeof(T) == 4, nan_is_special = true;
  static constexpr int groups_per_step = 1;

  // In the high words of doubles.
  static ORIN_INLINE Vec4i special_base(Complex<Vec4i> z) {
    if constexpr (sizeof(T) == 8)
      return outside<0x26f00000, 0x58efffff>(larger_magnitude(z));
    else
      return outside<0x38100000, 0x47efffff>(larger_magnitude(z));
  }
  static ORIN_INLINE Vec4i special_exponent(Complex<Vec4i> w) {
    // Not both parts 0, for which special knows all bases.
    if constexpr (sizeof(T) == 8)
      return outside<0x00100000, 0x43afffff>(larger_magnitude(w));
    else
      return outside<0x38100000, 0x43afffff>(larger_magnitude(w));
  }
  static ORIN_INLINE Half first_half(ComplexD z, ComplexD w) { return {logarithm_of<grade, 0, T>(z), w}; }
  static ORIN_INLINE ComplexD second_half(const Half& half) {
    const auto [value, beyond] = power<grade>(half.log, half.w);
    if constexpr (sizeof(T) == 8) return {value.re | beyond, value.im};
    // Out of the range of float's normal numbers: a NaN, too.
    static constexpr struct { Constant<double> least = 0x1p-125, largest = 0x1p127; } range{};
    const auto& c = in_memory(range);
    const Vec2d size = max(abs(value.re), abs(value.im));
    const Vec2d odd = beyond | (size < c.least) | (size >= c.largest);
    return {and_not(odd, value.re) | odd, and_not(odd, value.im)};
  }
  static Outcome<Z> special_of(Z z, Z w) {
    const auto outcome = special_power<T>(KorComplex16{z.re, z.im}, KorComplex16{w.re, w.im});
    return {{{static_cast<T>(outcome.value[0].re), static_cast<T>(outcome.value[0].im)}}, outcome.status};
  }
};

// EP of single precision: the fast path in floats, elsewhere in double.
struct PowerInFloats {
  using Z = KorComplex8;
  using InDouble = Power<float, Grade::ep>;
  struct Half {
    Vec4f modulus, angle;
    ComplexS w;
  };
  using FarHalf = Two<InDouble::Half>;
  static constexpr Z ordinary{1, 1};
  static constexpr bool nan_is_special = true;
  static constexpr int groups_per_step = 1;

  static ORIN_INLINE Vec4i special_base(Complex<Vec4i> z) {
    return outside<0x00800000, 0x7f7fffff>(larger_magnitude(z));  // normal numbers
  }
  static ORIN_INLINE Vec4i special_exponent(Complex<Vec4i> w) {
    return outside<0x00800000, 0x5d7fffff>(larger_magnitude(w));  // below 2^60
  }
  // |w log z| is below 2^8 or little above.
  static ORIN_INLINE Vec4i beyond(Complex<Vec4i> z, Complex<Vec4i> w) {
    const Vec4i base = larger_magnitude(z.re, z.im), exponent = larger_magnitude(w.re, w.im);
    const Vec4i moderate =
        outside<0x39800000, 0x457fffff>(base) | outside<0x00800000, 0x41ffffff>(exponent);  // 2^+-12, 32
    const Vec4i small = outside<0x30000000, 0x4effffff>(base) | outside<0x00800000, 0x40ffffff>(exponent);  // 2^+-31, 8
    return moderate & small;
  }
  static ORIN_INLINE Half first_half(ComplexS z, ComplexS w) {
    return {modulus_log<Grade::la, Base::e, float>(z.re, z.im), PointAngle<float, Grade::la>::fast(z.im, z.re), w};
  }
  // A result that may be out of the range of normal numbers, or its angle out of that of the reduction: a NaN.
  static ORIN_INLINE ComplexS second_half(const Half& half) {
    static constexpr struct { Constant<float> size = 87.0f, angle = 248.0f; } limits{};
    const auto& c = in_memory(limits);
    const auto& [l, t, w] = half;
    const Vec4f real = w.re * l - w.im * t, imaginary = w.re * t + w.im * l;
    const Vec4f odd = (abs(real) >= c.size) | (abs(imaginary) >= c.angle);
    const Vec4f size = exp_s::Power<Grade::ep>::of<0>(and_not(odd, real));
    const auto [sine, cosine] =
        sincos_s::sine_and_cosine<Grade::ep>(sincos_s::QuarterTurns<Grade::ep>::reduce(imaginary));
    return {size * cosine | odd, size * sine};
  }
  static ORIN_INLINE FarHalf far_first_half(ComplexS z, ComplexS w) {
    const auto [z_low, z_high] = widened(z);
    const auto [w_low, w_high] = widened(w);
    return {InDouble::first_half(z_low, w_low), InDouble::first_half(z_high, w_high)};
  }
  static ORIN_INLINE ComplexS far_second_half(const FarHalf& half) {
    return narrowed({InDouble::second_half(half.first), InDouble::second_half(half.second)});
  }
  static ORIN_INLINE ComplexS near_or_far(Vec4f far, ComplexS z, ComplexS w) {
    const ComplexS one{ordinary.re, ordinary.im};
    const ComplexS near = second_half(first_half(select(far, one, z), select(far, one, w)));
    return select(far, far_second_half(far_first_half(z, w)), near);
  }
  static Outcome<Z> special_of(Z z, Z w) { return InDouble::special_of(z, w); }
};

template <class T, class Common>
struct PowerOfVectors : TwoToOne<ComplexOf<T>>, Common {
  using Common::groups_per_step;
  using typename Common::Z;
  static constexpr const char* name = sizeof(T) == 8 ? "vzPow" : "vcPow";

  static ORIN_INLINE Vec4i special_lanes(Complex<Vec4i> z, Complex<Vec4i> w) {
    return Common::special_base(z) | Common::special_exponent(w);
  }
  template <class V>
  static ORIN_INLINE Complex<V> fast(Complex<V> z, Complex<V> w) {
    return Common::second_half(Common::first_half(z, w));
  }
  static Outcome<Z> special(Z z, Z w) { return Common::special_of(z, w); }
};
struct PowerOfVectorsInFloats : PowerOfVectors<float, PowerInFloats> {
  static ORIN_INLINE Vec4i beyond_fast(Complex<Vec4i> z, Complex<Vec4i> w) { return beyond(z, w); }
  static ORIN_INLINE ComplexS wide(ComplexS z, ComplexS w) {
    return near_or_far(from_bits(beyond_fast({bits(z.re), bits(z.im)}, {bits(w.re), bits(w.im)})), z, w);
  }
};

template <class T, class Common>
struct PowerOfScalar : OneToOne<ComplexOf<T>>, Common {
  using Common::groups_per_step;
  using typename Common::Z;
  static constexpr const char* name = sizeof(T) == 8 ? "vzPowx" : "vcPowx";
  static constexpr T least = sizeof(T) == 8 ? T(DBL_MIN) : T(FLT_MIN), limit = sizeof(T) == 8 ? T(0x1p60) : T(0x1p60f);

  explicit PowerOfScalar(Z exponent) : w(exponent) {}

  Z w;
  // Where w is odd every lane is special; 1 + i then stands in.
  bool is_ordinary =
      (std::fabs(w.re) >= least || std::fabs(w.im) >= least) && std::fabs(w.re) < limit && std::fabs(w.im) < limit;
  Z ordinary_w = is_ordinary ? w : Z{1, 1};

  ORIN_INLINE Vec4i special_lanes(Complex<Vec4i> z) const { return Common::special_base(z) | (is_ordinary ? 0 : -1); }
  template <class V>
  ORIN_INLINE typename Common::Half first_half(Complex<V> z) const {
    return Common::first_half(z, Complex<V>{V(ordinary_w.re), V(ordinary_w.im)});
  }
  template <class V>
  ORIN_INLINE Complex<V> fast(Complex<V> z) const {
    return Common::second_half(first_half(z));
  }
  Outcome<Z> special(Z z) const { return Common::special_of(z, w); }
};
struct PowerOfScalarInFloats : PowerOfScalar<float, PowerInFloats> {
  using PowerOfScalar::PowerOfScalar;
  ORIN_INLINE Vec4i beyond_fast(Complex<Vec4i> z) const {
    const Vec4i word_re = bits(Vec4f(w.re)), word_im = bits(Vec4f(w.im));
    return beyond(z, {word_re, word_im});
  }
  ORIN_INLINE FarHalf far_first_half(ComplexS z) const {
    return PowerInFloats::far_first_half(z, ComplexS{ordinary_w.re, ordinary_w.im});
  }
  ORIN_INLINE ComplexS wide(ComplexS z) const {
    const ComplexS exponent{ordinary_w.re, ordinary_w.im};
    return near_or_far(from_bits(beyond_fast({bits(z.re), bits(z.im)})), z, exponent);
  }
};

template <class T, Grade grade>
struct InDouble {
  using Vectors = PowerOfVectors<T, Power<T, grade>>;
  using Scalar = PowerOfScalar<T, Power<T, grade>>;
};
struct InFloats {
  using Vectors = PowerOfVectorsInFloats;
  using Scalar = PowerOfScalarInFloats;
};

}  // namespace

#define ORIN_COMPLEX_POWER(suffix, Z, ...)                                    \
  void ORIN_CALL pow_##suffix(std::int32_t n, const Z* a, const Z* b, Z* r) { \
    elementwise<__VA_ARGS__::Vectors>({}, n, {a, b}, {r});                    \
  }                                                                           \
  void ORIN_CALL powx_##suffix(std::int32_t n, const Z* a, Z b, Z* r) {       \
    elementwise(__VA_ARGS__::Scalar(b), n, {a}, {r});                         \
  }
ORIN_COMPLEX_POWER(c_ha, KorComplex8, InDouble<float, Grade::ep>)
ORIN_COMPLEX_POWER(c_ep, KorComplex8, InFloats)
ORIN_COMPLEX_POWER(z_ha, KorComplex16, InDouble<double, Grade::ha>)
ORIN_COMPLEX_POWER(z_ep, KorComplex16, InDouble<double, Grade::ep>)
#undef ORIN_COMPLEX_POWER

}  // namespace orin::vector_math
