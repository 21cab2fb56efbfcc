// complex.h: complex elements in the elementwise loop.
// SPDX-License-Identifier: MIT
//
// A function over complex elements is a record as simd/elementwise.h asks, with these types:
//   Element, Result        KorComplex8 or KorComplex16; one of the two may be the real type: OneToOther
//   fast                   takes and gives Complex<V>, real and imaginary parts in registers of their own
//   special_lanes          takes Complex<Vec4i>, the high words of the four real and of the four imaginary parts
//   special                takes and gives elements
// A function that does not look at the parts, as a sum, says so:
//   together               fast takes and gives Stored<V>: the registers as they lie in memory, re im re im
// A function that computes single precision in double says so, too:
//   computes_in_double     fast takes and gives Complex<Vec2d>, the results to be rounded; high words are those of doubles
//   tests_singles          special_lanes takes the words of the arguments as they are, in single precision
#ifndef ORIN_VECTOR_MATH_SIMD_COMPLEX_H
#define ORIN_VECTOR_MATH_SIMD_COMPLEX_H

#include "vector_math/simd/elementwise.h"

namespace orin::vector_math::simd {

template <class V>
struct Complex {
  V re, im;
};
template <class V>
struct Stored {
  V first, second;
};

template <class T>
struct ElementOf;  // the complex type of a real one
template <>
struct ElementOf<float> {
  using type = KorComplex8;
};
template <>
struct ElementOf<double> {
  using type = KorComplex16;
};
template <class T>
using ComplexOf = typename ElementOf<T>::type;

// Two registers as they lie in memory, and their parts; shuffles both ways.
// Integer shuffles, for which many processors have one port more.
ORIN_INLINE Vec2d low_lanes(Vec2d a, Vec2d b) { return from_bits(Vec2l(_mm_unpacklo_epi64(bits(a).raw, bits(b).raw))); }
ORIN_INLINE Vec2d high_lanes(Vec2d a, Vec2d b) {
  return from_bits(Vec2l(_mm_unpackhi_epi64(bits(a).raw, bits(b).raw)));
}
ORIN_INLINE Complex<Vec2d> apart(Stored<Vec2d> z) {
  return {low_lanes(z.first, z.second), high_lanes(z.first, z.second)};
}
ORIN_INLINE Stored<Vec2d> together(Complex<Vec2d> z) { return {low_lanes(z.re, z.im), high_lanes(z.re, z.im)}; }
ORIN_INLINE Complex<Vec4f> apart(Stored<Vec4f> z) {
  return {_mm_shuffle_ps(z.first.raw, z.second.raw, _MM_SHUFFLE(2, 0, 2, 0)),
          _mm_shuffle_ps(z.first.raw, z.second.raw, _MM_SHUFFLE(3, 1, 3, 1))};
}
ORIN_INLINE Stored<Vec4f> together(Complex<Vec4f> z) {
  return {_mm_unpacklo_ps(z.re.raw, z.im.raw), _mm_unpackhi_ps(z.re.raw, z.im.raw)};
}

ORIN_INLINE Complex<Vec4i> high_words(Complex<Vec2d> low, Complex<Vec2d> high) {
  return {high_words(low.re, high.re), high_words(low.im, high.im)};
}

// The larger of the two parts' magnitudes, as high words.
ORIN_INLINE Vec4i larger_magnitude(Complex<Vec4i> z) {
  const Vec4i re = magnitude(z.re), im = magnitude(z.im);
  return select(re > im, re, im);
}

// The elements with a part that is NaN.
ORIN_INLINE Vec4i nan_lanes(Complex<Vec2d> low, Complex<Vec2d> high) {
  return high_words(Vec2d(_mm_cmpunord_pd(low.re.raw, low.im.raw)), Vec2d(_mm_cmpunord_pd(high.re.raw, high.im.raw)));
}

// The first `count` of four elements at `from`, more than three of them meaning four, then paddings.
template <>
struct Together<KorComplex16> {
  static constexpr int registers = 2;
  Stored<Vec2d> low, high;

  static ORIN_INLINE Together load(const KorComplex16* from, std::int32_t count, KorComplex16 padding) {
    if (count >= 4) [[likely]]
      return {{Vec2d::load(&from[0].re), Vec2d::load(&from[1].re)},
              {Vec2d::load(&from[2].re), Vec2d::load(&from[3].re)}};
    const Vec2d paddings = _mm_set_pd(padding.im, padding.re);
    const Vec2d first = Vec2d::load(&from[0].re);
    if (count == 1) return {{first, paddings}, {paddings, paddings}};
    const Vec2d second = Vec2d::load(&from[1].re);
    if (count == 2) return {{first, second}, {paddings, paddings}};
    return {{first, second}, {Vec2d::load(&from[2].re), paddings}};
  }
  ORIN_INLINE void store(KorComplex16* to, std::int32_t count) const {
    low.first.store(&to[0].re);
    if (count > 1) low.second.store(&to[1].re);
    if (count > 2) high.first.store(&to[2].re);
    if (count > 3) high.second.store(&to[3].re);
  }
};
template <>
struct Together<KorComplex8> {
  static constexpr int registers = 1;
  Stored<Vec4f> low;

  static ORIN_INLINE Together load(const KorComplex8* from, std::int32_t count, KorComplex8 padding) {
    if (count >= 4) [[likely]]
      return {{Vec4f::load(&from[0].re), Vec4f::load(&from[2].re)}};
    const auto* at = reinterpret_cast<const __m64*>(from);
    const __m128 paddings = _mm_set_ps(padding.im, padding.re, padding.im, padding.re);
    const __m128 first = _mm_loadl_pi(paddings, at);
    if (count == 1) return {{first, paddings}};
    const __m128 two = _mm_loadh_pi(first, at + 1);
    if (count == 2) return {{two, paddings}};
    return {{two, _mm_loadl_pi(paddings, at + 2)}};
  }
  ORIN_INLINE void store(KorComplex8* to, std::int32_t count) const {
    auto* at = reinterpret_cast<__m64*>(to);
    if (count == 1) return _mm_storel_pi(at, low.first.raw);
    low.first.store(&to[0].re);
    if (count > 3) [[likely]]
      low.second.store(&to[2].re);
    else if (count == 3)
      _mm_storel_pi(at + 2, low.second.raw);
  }
};

template <>
struct Group<KorComplex16> {
  static constexpr int registers = 2;
  Complex<Vec2d> low, high;

  static ORIN_INLINE Group load(const KorComplex16* from, std::int32_t count, KorComplex16 padding) {
    const auto z = Together<KorComplex16>::load(from, count, padding);
    return {apart(z.low), apart(z.high)};
  }
  ORIN_INLINE void store(KorComplex16* to, std::int32_t count) const {
    Together<KorComplex16>{together(low), together(high)}.store(to, count);
  }
  ORIN_INLINE Complex<Vec4i> words() const { return high_words(low, high); }
  ORIN_INLINE Vec4i nan_lanes() const { return simd::nan_lanes(low, high); }
};
template <>
struct Group<KorComplex8> {
  static constexpr int registers = 1;
  Complex<Vec4f> low;

  static ORIN_INLINE Group load(const KorComplex8* from, std::int32_t count, KorComplex8 padding) {
    return {apart(Together<KorComplex8>::load(from, count, padding).low)};
  }
  ORIN_INLINE void store(KorComplex8* to, std::int32_t count) const {
    Together<KorComplex8>{together(low)}.store(to, count);
  }
  ORIN_INLINE Complex<Vec4i> words() const { return {bits(low.re), bits(low.im)}; }
  ORIN_INLINE Vec4i nan_lanes() const { return bits(Vec4f(_mm_cmpunord_ps(low.re.raw, low.im.raw))); }
};

template <>
struct Widened<KorComplex8> {
  static constexpr int registers = 2;
  Complex<Vec2d> low, high;
  Complex<Vec4i> singles;  // of arguments

  static ORIN_INLINE Widened load(const KorComplex8* from, std::int32_t count, KorComplex8 padding) {
    const Complex<Vec4f> z = Group<KorComplex8>::load(from, count, padding).low;
    const TwoVec2d re = widen_through_memory(z.re), im = widen_through_memory(z.im);
    return {{re.low, im.low}, {re.high, im.high}, {bits(z.re), bits(z.im)}};
  }
  ORIN_INLINE void store(KorComplex8* to, std::int32_t count) const {
    Together<KorComplex8>{narrowed()}.store(to, count);
  }
  ORIN_INLINE Complex<Vec4i> words() const { return high_words(low, high); }
  ORIN_INLINE Vec4i nan_lanes() const { return simd::nan_lanes(low, high); }
  ORIN_INLINE bool has_nan() const {
    const Stored<Vec4f> z = narrowed();
    return _mm_movemask_ps(_mm_cmpunord_ps(z.first.raw, z.second.raw)) != 0;
  }

 private:
  ORIN_INLINE Stored<Vec4f> narrowed() const {
    return {_mm_unpacklo_ps(_mm_cvtpd_ps(low.re.raw), _mm_cvtpd_ps(low.im.raw)),
            _mm_unpacklo_ps(_mm_cvtpd_ps(high.re.raw), _mm_cvtpd_ps(high.im.raw))};
  }
};

}  // namespace orin::vector_math::simd

#endif
