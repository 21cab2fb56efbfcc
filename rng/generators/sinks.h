// sinks: from what a generator produces to the numbers that its caller asked for.
// SPDX-License-Identifier: MIT
//
// Use       A generator's loop is written once, over a sink that takes its values group after group:
//               word sinks   four(words), some(words, count): 32-bit words w; raw words, or uniforms with u = w / 2^32
//               real sinks   two(u), one(u): values u in [0, 1]; uniforms only
// Method    A word becomes a double without rounding: as the low half of a double of magnitude 2^20 it counts in units
//           of 2^-32, and 2^20 is subtracted. As a float it is the sum of its halves, taken from 2^7 and 2^-9 alike,
//           and rounded once. The result is a + (b - a) u; one that rounds to b becomes the value below b.
// Tails     some() runs the code of the full group, so a value depends on the generator's state alone.
#ifndef ORIN_RNG_GENERATORS_SINKS_H
#define ORIN_RNG_GENERATORS_SINKS_H

#include <emmintrin.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

#include "orin/rng.h"
#include "rng/half_open.h"

namespace orin::rng {

inline __m128i load_words(const uint32_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline void store_words(uint32_t* p, __m128i v) { _mm_storeu_si128(reinterpret_cast<__m128i*>(p), v); }
inline __m128i splat_word(uint32_t w) { return _mm_set1_epi32(static_cast<int>(w)); }
inline __m128i splat_double_word(uint64_t w) {
  return _mm_set_epi32(static_cast<int>(w >> 32), static_cast<int>(w), static_cast<int>(w >> 32), static_cast<int>(w));
}

// The first count < 4 words, the others zero.
inline __m128i load_some_words(const uint32_t* p, std::size_t count) {
  uint32_t group[4] = {};
  std::memcpy(group, p, count * sizeof *p);
  return load_words(group);
}

// [a, b); without the bound above where it would make no sense (a >= b, NaN).
template <class T>
struct Interval {
  T a, width, last;

  Interval(T from, T to)
      : a(from), width(to - from), last(from < to ? value_below(to) : std::numeric_limits<T>::infinity()) {}
  bool is_unit() const { return a == 0 && width == 1; }
};

// 4-byte alignment is all that a caller's array promises.
inline void store(double* r, __m128d v) { _mm_storeu_pd(r, v); }
inline void store(float* r, __m128 v) { _mm_storeu_ps(r, v); }

class RawSink {
 public:
  explicit RawSink(uint32_t* r) : r_(r) {}
  void four(__m128i words) {
    store_words(r_, words);
    r_ += 4;
  }
  void some(__m128i words, std::size_t count) {
    uint32_t group[4];
    store_words(group, words);
    std::memcpy(r_, group, count * sizeof *r_);
    r_ += count;
  }

 private:
  uint32_t* r_;
};

// The unit interval needs no scaling, and in double precision no bound: u is exact.
template <class T, bool Unit>
class WordSink;

template <bool Unit>
class WordSink<double, Unit> {
 public:
  WordSink(double* r, const Interval<double>& to)
      : r_(r), a_(_mm_set1_pd(to.a)), width_(_mm_set1_pd(to.width)), last_(_mm_set1_pd(to.last)) {}
  void four(__m128i words) {
    const __m128i magnitude = splat_word(0x41300000);  // upper half of 2^20
    store(r_, map(_mm_unpacklo_epi32(words, magnitude)));
    store(r_ + 2, map(_mm_unpackhi_epi32(words, magnitude)));
    r_ += 4;
  }
  void some(__m128i words, std::size_t count) {
    double group[4];
    WordSink spare = *this;
    spare.r_ = group;
    spare.four(words);
    std::memcpy(r_, group, count * sizeof *r_);
    r_ += count;
  }

 private:
  __m128d map(__m128i shifted) const {
    const __m128d u = _mm_sub_pd(_mm_castsi128_pd(shifted), _mm_set1_pd(0x1p20));
    return Unit ? u : _mm_min_pd(_mm_add_pd(a_, _mm_mul_pd(width_, u)), last_);
  }

  double* r_;
  __m128d a_, width_, last_;
};

template <bool Unit>
class WordSink<float, Unit> {
 public:
  WordSink(float* r, const Interval<float>& to)
      : r_(r), a_(_mm_set1_ps(to.a)), width_(_mm_set1_ps(to.width)), last_(_mm_set1_ps(to.last)) {}
  void four(__m128i words) {
    store(r_, map(words));
    r_ += 4;
  }
  void some(__m128i words, std::size_t count) {
    float group[4];
    store(group, map(words));
    std::memcpy(r_, group, count * sizeof *r_);
    r_ += count;
  }

 private:
  __m128 map(__m128i words) const {
    const __m128i high = _mm_or_si128(_mm_srli_epi32(words, 16), splat_word(0x43000000));  // 2^7 + h 2^-16
    const __m128i low =
        _mm_or_si128(_mm_and_si128(words, splat_word(0xffff)), splat_word(0x3b000000));  // 2^-9 + l 2^-32
    const __m128 u =
        _mm_add_ps(_mm_sub_ps(_mm_castsi128_ps(high), _mm_set1_ps(0x1p7f + 0x1p-9f)), _mm_castsi128_ps(low));
    return _mm_min_ps(Unit ? u : _mm_add_ps(a_, _mm_mul_ps(width_, u)), last_);
  }

  float* r_;
  __m128 a_, width_, last_;
};

template <class T, bool Unit>
class RealSink;

template <bool Unit>
class RealSink<double, Unit> {
 public:
  RealSink(double* r, const Interval<double>& to)
      : r_(r), a_(_mm_set1_pd(to.a)), width_(_mm_set1_pd(to.width)), last_(_mm_set1_pd(to.last)) {}
  void two(__m128d u) {
    store(r_, map(u));
    r_ += 2;
  }
  void one(__m128d u) { _mm_store_sd(r_++, map(u)); }
  RealSink at(std::size_t offset) const {
    RealSink moved = *this;
    moved.r_ += offset;
    return moved;
  }

 private:
  __m128d map(__m128d u) const { return _mm_min_pd(Unit ? u : _mm_add_pd(a_, _mm_mul_pd(width_, u)), last_); }

  double* r_;
  __m128d a_, width_, last_;
};

template <bool Unit>
class RealSink<float, Unit> {
 public:
  RealSink(float* r, const Interval<float>& to)
      : r_(r), a_(_mm_set1_pd(to.a)), width_(_mm_set1_pd(to.width)), last_(_mm_set1_ps(to.last)) {}
  void two(__m128d u) {
    _mm_storel_pi(reinterpret_cast<__m64*>(r_), map(u));
    r_ += 2;
  }
  void one(__m128d u) { _mm_store_ss(r_++, map(u)); }
  RealSink at(std::size_t offset) const {
    RealSink moved = *this;
    moved.r_ += offset;
    return moved;
  }

 private:
  __m128 map(__m128d u) const {
    return _mm_min_ps(_mm_cvtpd_ps(Unit ? u : _mm_add_pd(a_, _mm_mul_pd(width_, u))), last_);
  }

  float* r_;
  __m128d a_, width_;
  __m128 last_;
};

// Sends n words through a transformation of four words into a sink. The loop works on a copy of the sink, which the
// compiler keeps in registers.
template <class Sink, class Transform>
void send_words(const uint32_t* words, std::size_t n, Sink& sink, Transform transform) {
  Sink local = sink;
  for (; n >= 4; n -= 4, words += 4) local.four(transform(load_words(words)));
  if (n != 0) local.some(transform(load_some_words(words, n)), n);
  sink = local;
}
template <class Sink>
void send_words(const uint32_t* words, std::size_t n, Sink& sink) {
  send_words(words, n, sink, [](__m128i w) { return w; });
}

// The bodies of a family's generating functions: Family::generate (stream, n > 0, sink) returns a status.
template <class Family, template <class, bool> class Sink, class T>
int32_t uniforms(void* stream, int32_t n, T* r, T a, T b) {
  if (n <= 0) return JUN_RNG_OK;
  if (stream == nullptr || r == nullptr) return JUN_RNG_NULL_POINTER;
  const Interval<T> to(a, b);
  if (to.is_unit()) {
    Sink<T, true> sink(r, to);
    return Family::generate(stream, static_cast<std::size_t>(n), sink);
  }
  Sink<T, false> sink(r, to);
  return Family::generate(stream, static_cast<std::size_t>(n), sink);
}
template <class Family, class Sink = RawSink, std::size_t ValuesPerOutput = 1>
int32_t raw_words(void* stream, int32_t n, uint32_t* r) {
  if (n <= 0) return JUN_RNG_OK;
  if (stream == nullptr || r == nullptr) return JUN_RNG_NULL_POINTER;
  Sink sink(r);
  return Family::generate(stream, static_cast<std::size_t>(n) * ValuesPerOutput, sink);
}

}  // namespace orin::rng

#endif
