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
ORIN_INLINE Complex<Vec2d> apart(Stored<Vec2d> z) {
  return {_mm_unpacklo_pd(z.first.raw, z.second.raw), _mm_unpackhi_pd(z.first.raw, z.second.raw)};
}
ORIN_INLINE Stored<Vec2d> together(Complex<Vec2d> z) {
  return {_mm_unpacklo_pd(z.re.raw, z.im.raw), _mm_unpackhi_pd(z.re.raw, z.im.raw)};
}
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

// Loads and stores of four complex elements, of which `count` are there. What is less than four goes by way of a copy.
template <class G, class T>
struct ComplexGroup {
  static ORIN_INLINE G load(const T* from, std::int32_t count, T padding) {
    if (count >= 4) [[likely]]
      return G::load_four(from);
    T copy[4];
    for (int k = 0; k < 4; ++k) copy[k] = k < count ? load_element(from + k) : padding;
    return G::load_four(copy);
  }
  ORIN_INLINE void store(T* to, std::int32_t count) const {
    if (count >= 4) [[likely]]
      return static_cast<const G*>(this)->store_four(to);
    T copy[4];
    static_cast<const G*>(this)->store_four(copy);
    for (int k = 0; k < count; ++k) store_element(to + k, copy[k]);
  }
};

template <>
struct Together<KorComplex16> : ComplexGroup<Together<KorComplex16>, KorComplex16> {
  static constexpr int registers = 2;
  Stored<Vec2d> low, high;

  ORIN_INLINE Together(Stored<Vec2d> low_, Stored<Vec2d> high_) : low(low_), high(high_) {}
  static ORIN_INLINE Together load_four(const KorComplex16* from) {
    return {{Vec2d::load(&from[0].re), Vec2d::load(&from[1].re)}, {Vec2d::load(&from[2].re), Vec2d::load(&from[3].re)}};
  }
  ORIN_INLINE void store_four(KorComplex16* to) const {
    low.first.store(&to[0].re);
    low.second.store(&to[1].re);
    high.first.store(&to[2].re);
    high.second.store(&to[3].re);
  }
};
template <>
struct Together<KorComplex8> : ComplexGroup<Together<KorComplex8>, KorComplex8> {
  static constexpr int registers = 1;
  Stored<Vec4f> low;

  ORIN_INLINE Together(Stored<Vec4f> low_) : low(low_) {}
  static ORIN_INLINE Together load_four(const KorComplex8* from) {
    return Stored<Vec4f>{Vec4f::load(&from[0].re), Vec4f::load(&from[2].re)};
  }
  ORIN_INLINE void store_four(KorComplex8* to) const {
    low.first.store(&to[0].re);
    low.second.store(&to[2].re);
  }
};

template <>
struct Group<KorComplex16> : ComplexGroup<Group<KorComplex16>, KorComplex16> {
  static constexpr int registers = 2;
  Complex<Vec2d> low, high;

  ORIN_INLINE Group(Complex<Vec2d> low_, Complex<Vec2d> high_) : low(low_), high(high_) {}
  static ORIN_INLINE Group load_four(const KorComplex16* from) {
    const auto z = Together<KorComplex16>::load_four(from);
    return {apart(z.low), apart(z.high)};
  }
  ORIN_INLINE void store_four(KorComplex16* to) const {
    Together<KorComplex16>(together(low), together(high)).store_four(to);
  }
  ORIN_INLINE Complex<Vec4i> words() const { return high_words(low, high); }
};
template <>
struct Group<KorComplex8> : ComplexGroup<Group<KorComplex8>, KorComplex8> {
  static constexpr int registers = 1;
  Complex<Vec4f> low;

  ORIN_INLINE Group(Complex<Vec4f> low_) : low(low_) {}
  static ORIN_INLINE Group load_four(const KorComplex8* from) {
    return apart(Together<KorComplex8>::load_four(from).low);
  }
  ORIN_INLINE void store_four(KorComplex8* to) const { Together<KorComplex8>(together(low)).store_four(to); }
  ORIN_INLINE Complex<Vec4i> words() const { return {bits(low.re), bits(low.im)}; }
};

}  // namespace orin::vector_math::simd

#endif
