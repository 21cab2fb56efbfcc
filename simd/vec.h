// vec.h: SSE2 registers as values: Vec2d, Vec4f and their integer companions Vec2l, Vec4i.
// SPDX-License-Identifier: MIT
//
// Every verb works lane by lane and is one or two instructions of SSE2; nothing wider is used on any target.
// Comparisons give masks (all bits of a lane set or clear) of the type compared, to be used with select and any.
// A number stands for the register that holds it in every lane: x * 2.0.
// `mutable`: GCC 12 keeps constants of a class without such a member in memory, where they come out of a function.
#ifndef ORIN_SIMD_VEC_H
#define ORIN_SIMD_VEC_H

#include <emmintrin.h>

#include <cstdint>
#include <cstring>

#define ORIN_INLINE inline __attribute__((always_inline))

namespace orin::simd {

// Four 32-bit integers.
struct Vec4i {
  using Element = std::int32_t;
  mutable __m128i raw;

  Vec4i() = default;
  ORIN_INLINE Vec4i(__m128i value) : raw(value) {}
  ORIN_INLINE Vec4i(std::int32_t value) : raw(_mm_set1_epi32(value)) {}
};

ORIN_INLINE Vec4i operator+(Vec4i a, Vec4i b) { return _mm_add_epi32(a.raw, b.raw); }
ORIN_INLINE Vec4i operator-(Vec4i a, Vec4i b) { return _mm_sub_epi32(a.raw, b.raw); }
ORIN_INLINE Vec4i operator&(Vec4i a, Vec4i b) { return _mm_and_si128(a.raw, b.raw); }
ORIN_INLINE Vec4i operator|(Vec4i a, Vec4i b) { return _mm_or_si128(a.raw, b.raw); }
ORIN_INLINE Vec4i operator^(Vec4i a, Vec4i b) { return _mm_xor_si128(a.raw, b.raw); }
ORIN_INLINE Vec4i operator>(Vec4i a, Vec4i b) { return _mm_cmpgt_epi32(a.raw, b.raw); }
ORIN_INLINE Vec4i operator<(Vec4i a, Vec4i b) { return _mm_cmplt_epi32(a.raw, b.raw); }
ORIN_INLINE Vec4i operator==(Vec4i a, Vec4i b) { return _mm_cmpeq_epi32(a.raw, b.raw); }
template <int count>
ORIN_INLINE Vec4i shift_left(Vec4i a) {
  return _mm_slli_epi32(a.raw, count);
}
template <int count>
ORIN_INLINE Vec4i shift_right(Vec4i a) {
  return _mm_srli_epi32(a.raw, count);
}
template <int count>
ORIN_INLINE Vec4i shift_right_signed(Vec4i a) {
  return _mm_srai_epi32(a.raw, count);
}
// a where the mask is set, b elsewhere.
ORIN_INLINE Vec4i select(Vec4i mask, Vec4i a, Vec4i b) {
  return _mm_or_si128(_mm_and_si128(mask.raw, a.raw), _mm_andnot_si128(mask.raw, b.raw));
}
// The larger of the upper halves of each lane, as signed numbers; the lower halves are of no use.
ORIN_INLINE Vec4i larger_upper_halves(Vec4i a, Vec4i b) { return _mm_max_epi16(a.raw, b.raw); }
// Bit k is the top bit of lane k.
ORIN_INLINE unsigned lane_bits(Vec4i mask) {
  return static_cast<unsigned>(_mm_movemask_ps(_mm_castsi128_ps(mask.raw)));
}

// Two 64-bit integers.
struct Vec2l {
  using Element = std::int64_t;
  mutable __m128i raw;

  Vec2l() = default;
  ORIN_INLINE Vec2l(__m128i value) : raw(value) {}
  ORIN_INLINE Vec2l(std::int64_t value) : raw(_mm_set1_epi64x(value)) {}
};

ORIN_INLINE Vec2l operator+(Vec2l a, Vec2l b) { return _mm_add_epi64(a.raw, b.raw); }
ORIN_INLINE Vec2l operator-(Vec2l a, Vec2l b) { return _mm_sub_epi64(a.raw, b.raw); }
ORIN_INLINE Vec2l operator&(Vec2l a, Vec2l b) { return _mm_and_si128(a.raw, b.raw); }
ORIN_INLINE Vec2l operator|(Vec2l a, Vec2l b) { return _mm_or_si128(a.raw, b.raw); }
ORIN_INLINE Vec2l operator^(Vec2l a, Vec2l b) { return _mm_xor_si128(a.raw, b.raw); }
template <int count>
ORIN_INLINE Vec2l shift_left(Vec2l a) {
  return _mm_slli_epi64(a.raw, count);
}
template <int count>
ORIN_INLINE Vec2l shift_right(Vec2l a) {
  return _mm_srli_epi64(a.raw, count);
}
// The products of the low words, unsigned.
ORIN_INLINE Vec2l multiply_low_words(Vec2l a, Vec2l b) { return _mm_mul_epu32(a.raw, b.raw); }

// Two doubles.
struct Vec2d {
  using Element = double;
  using Integer = Vec2l;
  static constexpr int lanes = 2;
  mutable __m128d raw;

  Vec2d() = default;
  ORIN_INLINE Vec2d(__m128d value) : raw(value) {}
  ORIN_INLINE Vec2d(double value) : raw(_mm_set1_pd(value)) {}
  static ORIN_INLINE Vec2d load(const double* from) { return _mm_loadu_pd(from); }
  ORIN_INLINE void store(double* to) const { _mm_storeu_pd(to, raw); }
};

ORIN_INLINE Vec2d operator+(Vec2d a, Vec2d b) { return _mm_add_pd(a.raw, b.raw); }
ORIN_INLINE Vec2d operator-(Vec2d a, Vec2d b) { return _mm_sub_pd(a.raw, b.raw); }
ORIN_INLINE Vec2d operator*(Vec2d a, Vec2d b) { return _mm_mul_pd(a.raw, b.raw); }
ORIN_INLINE Vec2d operator/(Vec2d a, Vec2d b) { return _mm_div_pd(a.raw, b.raw); }
ORIN_INLINE Vec2d operator&(Vec2d a, Vec2d b) { return _mm_and_pd(a.raw, b.raw); }
ORIN_INLINE Vec2d operator|(Vec2d a, Vec2d b) { return _mm_or_pd(a.raw, b.raw); }
ORIN_INLINE Vec2d operator^(Vec2d a, Vec2d b) { return _mm_xor_pd(a.raw, b.raw); }
ORIN_INLINE Vec2d operator<(Vec2d a, Vec2d b) { return _mm_cmplt_pd(a.raw, b.raw); }
ORIN_INLINE Vec2d operator<=(Vec2d a, Vec2d b) { return _mm_cmple_pd(a.raw, b.raw); }
ORIN_INLINE Vec2d operator>(Vec2d a, Vec2d b) { return _mm_cmpgt_pd(a.raw, b.raw); }
ORIN_INLINE Vec2d operator>=(Vec2d a, Vec2d b) { return _mm_cmpge_pd(a.raw, b.raw); }
ORIN_INLINE Vec2d operator==(Vec2d a, Vec2d b) { return _mm_cmpeq_pd(a.raw, b.raw); }
ORIN_INLINE Vec2d sqrt(Vec2d a) { return _mm_sqrt_pd(a.raw); }
// The second operand where either is NaN.
ORIN_INLINE Vec2d min(Vec2d a, Vec2d b) { return _mm_min_pd(a.raw, b.raw); }
ORIN_INLINE Vec2d max(Vec2d a, Vec2d b) { return _mm_max_pd(a.raw, b.raw); }
ORIN_INLINE Vec2d select(Vec2d mask, Vec2d a, Vec2d b) {
  return _mm_or_pd(_mm_and_pd(mask.raw, a.raw), _mm_andnot_pd(mask.raw, b.raw));
}
// a where the mask is clear, 0 elsewhere.
ORIN_INLINE Vec2d and_not(Vec2d mask, Vec2d a) { return _mm_andnot_pd(mask.raw, a.raw); }
ORIN_INLINE unsigned lane_bits(Vec2d mask) { return static_cast<unsigned>(_mm_movemask_pd(mask.raw)); }
ORIN_INLINE Vec2l bits(Vec2d a) { return _mm_castpd_si128(a.raw); }
ORIN_INLINE Vec2d from_bits(Vec2l a) { return _mm_castsi128_pd(a.raw); }
ORIN_INLINE double first_lane(Vec2d a) { return _mm_cvtsd_f64(a.raw); }

// Four floats.
struct Vec4f {
  using Element = float;
  using Integer = Vec4i;
  static constexpr int lanes = 4;
  mutable __m128 raw;

  Vec4f() = default;
  ORIN_INLINE Vec4f(__m128 value) : raw(value) {}
  ORIN_INLINE Vec4f(float value) : raw(_mm_set1_ps(value)) {}
  static ORIN_INLINE Vec4f load(const float* from) { return _mm_loadu_ps(from); }
  ORIN_INLINE void store(float* to) const { _mm_storeu_ps(to, raw); }
};

ORIN_INLINE Vec4f operator+(Vec4f a, Vec4f b) { return _mm_add_ps(a.raw, b.raw); }
ORIN_INLINE Vec4f operator-(Vec4f a, Vec4f b) { return _mm_sub_ps(a.raw, b.raw); }
ORIN_INLINE Vec4f operator*(Vec4f a, Vec4f b) { return _mm_mul_ps(a.raw, b.raw); }
ORIN_INLINE Vec4f operator/(Vec4f a, Vec4f b) { return _mm_div_ps(a.raw, b.raw); }
ORIN_INLINE Vec4f operator&(Vec4f a, Vec4f b) { return _mm_and_ps(a.raw, b.raw); }
ORIN_INLINE Vec4f operator|(Vec4f a, Vec4f b) { return _mm_or_ps(a.raw, b.raw); }
ORIN_INLINE Vec4f operator^(Vec4f a, Vec4f b) { return _mm_xor_ps(a.raw, b.raw); }
ORIN_INLINE Vec4f operator<(Vec4f a, Vec4f b) { return _mm_cmplt_ps(a.raw, b.raw); }
ORIN_INLINE Vec4f operator<=(Vec4f a, Vec4f b) { return _mm_cmple_ps(a.raw, b.raw); }
ORIN_INLINE Vec4f operator>(Vec4f a, Vec4f b) { return _mm_cmpgt_ps(a.raw, b.raw); }
ORIN_INLINE Vec4f operator>=(Vec4f a, Vec4f b) { return _mm_cmpge_ps(a.raw, b.raw); }
ORIN_INLINE Vec4f operator==(Vec4f a, Vec4f b) { return _mm_cmpeq_ps(a.raw, b.raw); }
ORIN_INLINE Vec4f sqrt(Vec4f a) { return _mm_sqrt_ps(a.raw); }
ORIN_INLINE Vec4f min(Vec4f a, Vec4f b) { return _mm_min_ps(a.raw, b.raw); }
ORIN_INLINE Vec4f max(Vec4f a, Vec4f b) { return _mm_max_ps(a.raw, b.raw); }
ORIN_INLINE Vec4f select(Vec4f mask, Vec4f a, Vec4f b) {
  return _mm_or_ps(_mm_and_ps(mask.raw, a.raw), _mm_andnot_ps(mask.raw, b.raw));
}
ORIN_INLINE Vec4f and_not(Vec4f mask, Vec4f a) { return _mm_andnot_ps(mask.raw, a.raw); }
ORIN_INLINE unsigned lane_bits(Vec4f mask) { return static_cast<unsigned>(_mm_movemask_ps(mask.raw)); }
ORIN_INLINE Vec4i bits(Vec4f a) { return _mm_castps_si128(a.raw); }
ORIN_INLINE Vec4f from_bits(Vec4i a) { return _mm_castsi128_ps(a.raw); }
ORIN_INLINE float first_lane(Vec4f a) { return _mm_cvtss_f32(a.raw); }

// Integers as floats, rounded, and floats as integers, rounded or cut.
ORIN_INLINE Vec4f to_float(Vec4i a) { return _mm_cvtepi32_ps(a.raw); }
ORIN_INLINE Vec4i to_int(Vec4f a) { return _mm_cvtps_epi32(a.raw); }
ORIN_INLINE Vec4i to_int_cut(Vec4f a) { return _mm_cvttps_epi32(a.raw); }

// Between the two precisions: a Vec4f as two Vec2d, exactly, and back, rounded.
struct TwoVec2d {
  Vec2d low, high;
};
ORIN_INLINE TwoVec2d widen(Vec4f a) { return {_mm_cvtps_pd(a.raw), _mm_cvtps_pd(_mm_movehl_ps(a.raw, a.raw))}; }
// Two floats of memory: the one form of the conversion that needs no shuffle, which a compiler would not choose.
ORIN_INLINE Vec2d load_widened(const float* from) {
  __m128d result;
  asm("cvtps2pd %1, %0" : "=x"(result) : "m"(*reinterpret_cast<const __m64*>(from)));
  return result;
}
// A Vec4f where shuffles are short.
ORIN_INLINE TwoVec2d widen_through_memory(Vec4f a) {
  alignas(16) float memory[4];
  _mm_store_ps(memory, a.raw);
  return {load_widened(memory), load_widened(memory + 2)};
}
ORIN_INLINE Vec4f narrow(TwoVec2d a) { return _mm_movelh_ps(_mm_cvtpd_ps(a.low.raw), _mm_cvtpd_ps(a.high.raw)); }

// Integers as doubles, exactly.
ORIN_INLINE TwoVec2d to_double(Vec4i a) {
  return {_mm_cvtepi32_pd(a.raw), _mm_cvtepi32_pd(_mm_shuffle_epi32(a.raw, _MM_SHUFFLE(3, 2, 3, 2)))};
}

// The low words of four 64-bit integers, in order.
ORIN_INLINE Vec4i low_words(Vec2l low, Vec2l high) {
  return _mm_castps_si128(
      _mm_shuffle_ps(_mm_castsi128_ps(low.raw), _mm_castsi128_ps(high.raw), _MM_SHUFFLE(2, 0, 2, 0)));
}

// The high words of four doubles, in order.
ORIN_INLINE Vec4i high_words(Vec2d low, Vec2d high) {
  return _mm_castps_si128(_mm_shuffle_ps(_mm_castpd_ps(low.raw), _mm_castpd_ps(high.raw), _MM_SHUFFLE(3, 1, 3, 1)));
}

// A constant as a kernel keeps it: one register's worth of memory, used as the operand of an instruction.
template <class T>
struct RegisterOf;
template <>
struct RegisterOf<double> {
  using type = Vec2d;
};
template <>
struct RegisterOf<float> {
  using type = Vec4f;
};
template <>
struct RegisterOf<std::int64_t> {
  using type = Vec2l;
};
template <>
struct RegisterOf<std::int32_t> {
  using type = Vec4i;
};
template <class T>
using Register = typename RegisterOf<T>::type;

template <class T>
struct alignas(16) Constant {
  using Register = typename RegisterOf<T>::type;
  T lane[16 / sizeof(T)];

  constexpr Constant(T value) : lane() {
    for (T& each : lane) each = value;
  }
  ORIN_INLINE operator Register() const {
    decltype(Register::raw) raw;
    std::memcpy(&raw, __builtin_assume_aligned(lane, 16), sizeof raw);
    return raw;
  }
};
// The record of constants behind `record`, which the compiler then reads from memory: left to itself it would rebuild
// each constant from one lane, again and again, in slots that the arithmetic needs.
template <class Record>
ORIN_INLINE const Record& in_memory(const Record& record) {
  const Record* place = &record;
  asm("" : "+r"(place));
  return *place;
}

ORIN_INLINE Vec2d abs(Vec2d a) {
  static constexpr Constant<std::int64_t> all_but_sign = INT64_C(0x7fffffffffffffff);
  return a & from_bits(in_memory(all_but_sign));
}
ORIN_INLINE Vec4i magnitude(Vec4i a) {  // of a float's bits, of the high word of a double
  static constexpr Constant<std::int32_t> all_but_sign = 0x7fffffff;
  return a & in_memory(all_but_sign);
}
// The larger of two magnitudes in its upper 16 bits; the lower ones are of either.
ORIN_INLINE Vec4i larger_magnitude(Vec4i a, Vec4i b) { return larger_upper_halves(magnitude(a), magnitude(b)); }
ORIN_INLINE Vec4f abs(Vec4f a) { return from_bits(magnitude(bits(a))); }

// Element access that asks for no alignment.
template <class T>
ORIN_INLINE T load_element(const T* from) {
  T value;
  std::memcpy(&value, from, sizeof value);
  return value;
}
template <class T>
ORIN_INLINE void store_element(T* to, T value) {
  std::memcpy(to, &value, sizeof value);
}

}  // namespace orin::simd

#endif
