// sinks: from what a generator produces to the numbers that its caller asked for.
// SPDX-License-Identifier: MIT
//
// Use       A generator's loop is written once, over a sink that takes four outputs at a time: four(group), and
//           some(group, count) for the last ones. What a group is, words or residues, is between the family and its
//           sinks; those for 32-bit words, raw or as uniforms with u = w / 2^32, stand here.
// Double    A word becomes a double without rounding: as the low half of a double of magnitude 2^20 it counts in units
//           of 2^-32, and 2^20 is subtracted.
// Float     The halves of a word become floats without rounding: as the low bits of floats of magnitude 2^7 and 2^-9
//           they count in units of 2^-16 and 2^-32. Once the magnitudes are gone their sum rounds w / 2^32 once.
//           A word whose low 8 bits are zero is a multiple of 2^-24 and needs no halves.
// Cost      On [0, 1) a group takes four vector operations as doubles and seven as floats: one rounding of 32 bits
//           needs both halves, and 1 must be kept out. Loops bound by the vector units, the twisters' above all, fill
//           floats more slowly than doubles; bench/rng_bench.cpp tells by how much.
// Interval  The result is a + (b - a) u; one that rounds to b becomes the value below.
// Tails     some() runs the code of the full group, so a value depends on the generator's state alone.
#ifndef ORIN_RNG_GENERATORS_SINKS_H
#define ORIN_RNG_GENERATORS_SINKS_H

#include <emmintrin.h>

#include <bit>
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
inline __m128d splat(double x) { return _mm_set1_pd(x); }
inline __m128 splat(float x) { return _mm_set1_ps(x); }

// The first count < 4 words, the others zero.
inline __m128i load_some_words(const uint32_t* p, std::size_t count) {
  uint32_t group[4] = {};
  std::memcpy(group, p, count * sizeof *p);
  return load_words(group);
}

// The low words of two pairs of 64-bit lanes, the high ones.
inline __m128i low_words(__m128d front, __m128d back) {
  return _mm_castps_si128(_mm_shuffle_ps(_mm_castpd_ps(front), _mm_castpd_ps(back), _MM_SHUFFLE(2, 0, 2, 0)));
}
inline __m128i high_words(__m128i front, __m128i back) {
  return _mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(front), _mm_castsi128_ps(back), _MM_SHUFFLE(3, 1, 3, 1)));
}

// Four words w as doubles w / 2^Scale, first two and last two: the low halves of doubles of magnitude 2^(52 - Scale).
template <int Scale>
struct WordDoubles {
  static constexpr uint64_t bits = uint64_t{1023 + 52 - Scale} << 52;
  static __m128d front(__m128i words) { return without_magnitude(_mm_unpacklo_epi32(words, splat_word(bits >> 32))); }
  static __m128d back(__m128i words) { return without_magnitude(_mm_unpackhi_epi32(words, splat_word(bits >> 32))); }

 private:
  static __m128d without_magnitude(__m128i x) {
    return _mm_sub_pd(_mm_castsi128_pd(x), splat(std::bit_cast<double>(bits)));
  }
};

// [a, b); without the bound above where it would make no sense (a >= b, NaN).
template <class T>
struct Interval {
  T a, width, last;

  Interval(T from, T to)
      : a(from), width(to - from), last(from < to ? value_below(to) : std::numeric_limits<T>::infinity()) {}
  bool is_unit() const { return a == 0 && width == 1; }
};

// u to a + (b - a) u. The unit interval needs no scaling and, where u < 1 is a double, no bound.
template <class T, bool Unit>
class Map;

template <bool Unit>
class Map<double, Unit> {
 public:
  explicit Map(const Interval<double>& to) : a_(splat(to.a)), width_(splat(to.width)), last_(splat(to.last)) {}
  __m128d operator()(__m128d u) const { return Unit ? u : _mm_min_pd(_mm_add_pd(a_, _mm_mul_pd(width_, u)), last_); }

 private:
  __m128d a_, width_, last_;
};

template <bool Unit>
class Map<float, Unit> {
 public:
  explicit Map(const Interval<float>& to) : a_(splat(to.a)), width_(splat(to.width)), last_(splat(to.last)) {}
  __m128 operator()(__m128 u) const { return _mm_min_ps(Unit ? u : _mm_add_ps(a_, _mm_mul_ps(width_, u)), last_); }

 private:
  __m128 a_, width_, last_;
};

// Derived gives put(array, group): four outputs, of Elements elements each, to an array aligned to 4 bytes.
template <class Derived, class T, std::size_t Elements = 1>
class Sink {
 public:
  static constexpr bool gains_from_coarse_words = false;

  explicit Sink(T* r) : r_(r) {}
  template <class Group>
  void four(const Group& group) {
    derived().put(r_, group);
    r_ += 4 * Elements;
  }
  template <class Group>
  void some(const Group& group, std::size_t count) {
    T outputs[4 * Elements];
    derived().put(outputs, group);
    std::memcpy(r_, outputs, count * Elements * sizeof(T));
    r_ += count * Elements;
  }
  Derived at(std::size_t outputs) const {
    Derived moved = derived();
    moved.r_ += outputs * Elements;
    return moved;
  }

 private:
  const Derived& derived() const { return static_cast<const Derived&>(*this); }

  T* r_;
};

struct RawWords : Sink<RawWords, uint32_t> {
  using Sink::Sink;
  static void put(uint32_t* r, __m128i words) { store_words(r, words); }
};

template <class T, bool Unit>
class WordUniforms;

template <bool Unit>
class WordUniforms<double, Unit> : public Sink<WordUniforms<double, Unit>, double> {
 public:
  WordUniforms(double* r, const Interval<double>& to) : Sink<WordUniforms, double>(r), map_(to) {}
  void put(double* r, __m128i words) const {
    _mm_storeu_pd(r, map_(WordDoubles<32>::front(words)));
    _mm_storeu_pd(r + 2, map_(WordDoubles<32>::back(words)));
  }

 private:
  Map<double, Unit> map_;
};

// Words z ^ z >> 18, not computed yet.
struct FoldedWords {
  __m128i z;
  operator __m128i() const { return _mm_xor_si128(z, _mm_srli_epi32(z, 18)); }
};

// Words that are multiples of 2^8.
struct CoarseWords {
  __m128i w;
  operator __m128i() const { return w; }
};

// Words w to w / 2^32.
inline __m128 unit_floats(__m128i words) {
  const __m128i high = _mm_or_si128(_mm_srli_epi32(words, 16), _mm_castps_si128(splat(0x1p7f)));
  const __m128i low = _mm_or_si128(_mm_and_si128(words, splat_word(0xffff)), _mm_castps_si128(splat(0x1p-9f)));
  return _mm_add_ps(_mm_sub_ps(_mm_castsi128_ps(high), splat(0x1p7f + 0x1p-9f)), _mm_castsi128_ps(low));
}

// The same with the leading 14 and the other 18 bits in place of the halves: z >> 18 are the leading bits themselves.
inline __m128 unit_floats(FoldedWords words) {
  const __m128i leading = _mm_srli_epi32(words.z, 18);
  const __m128i high = _mm_or_si128(leading, _mm_castps_si128(splat(0x1p9f)));
  const __m128i unfolded = _mm_or_si128(_mm_and_si128(words.z, splat_word(0x3ffff)), _mm_castps_si128(splat(0x1p-9f)));
  const __m128 low = _mm_castsi128_ps(_mm_xor_si128(unfolded, leading));
  return _mm_add_ps(_mm_sub_ps(_mm_castsi128_ps(high), splat(0x1p9f + 0x1p-9f)), low);
}

inline __m128 unit_floats(CoarseWords words) {
  return _mm_mul_ps(_mm_cvtepi32_ps(_mm_srli_epi32(words.w, 8)), splat(0x1p-24f));
}

template <bool Unit>
class WordUniforms<float, Unit> : public Sink<WordUniforms<float, Unit>, float> {
 public:
  static constexpr bool gains_from_coarse_words = true;

  WordUniforms(float* r, const Interval<float>& to) : Sink<WordUniforms, float>(r), map_(to) {}
  template <class Words>
  void put(float* r, Words words) const {
    _mm_storeu_ps(r, map_(unit_floats(words)));
  }
  void put(float* r, CoarseWords words) const {
    const __m128 u = unit_floats(words);
    _mm_storeu_ps(r, Unit ? u : map_(u));  // 1 - 2^-24 is a float
  }

 private:
  Map<float, Unit> map_;
};

// The generators' arithmetic rests on rounding to nearest and on subnormal numbers: while a frame lives, neither the
// caller's modes nor its unmasked exceptions are in force.
class FloatingPointFrame {
 public:
  FloatingPointFrame() : caller_(_mm_getcsr()) {
    if (!is_default()) _mm_setcsr(defaults);
  }
  ~FloatingPointFrame() {
    if (!is_default()) _mm_setcsr(caller_);
  }
  FloatingPointFrame(const FloatingPointFrame&) = delete;
  FloatingPointFrame& operator=(const FloatingPointFrame&) = delete;

 private:
  static constexpr uint32_t defaults = 0x1f80, flags = 0x3f;  // all exceptions masked; the sticky flags do not count

  bool is_default() const { return (caller_ & ~flags) == defaults; }

  uint32_t caller_;
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

// Sends n outputs that come one by one: next() gives a value, group(values) makes a group of four of them.
template <class Sink, class Next, class MakeGroup>
void send_each(std::size_t n, Sink& sink, Next next, MakeGroup group) {
  while (n != 0) {
    decltype(next()) values[4] = {};
    std::size_t count = 0;
    for (; count < 4 && n != 0; ++count, --n) values[count] = next();
    sink.some(group(values), count);
  }
}

// The bodies of a family's generating functions: Family::generate (stream, n > 0, sink) returns a status.
template <class Family, template <class, bool> class Uniforms = WordUniforms, class T>
int32_t uniforms(void* stream, int32_t n, T* r, T a, T b) {
  if (n <= 0) return JUN_RNG_OK;
  if (stream == nullptr || r == nullptr) return JUN_RNG_NULL_POINTER;
  const FloatingPointFrame frame;
  const Interval<T> to(a, b);
  if (to.is_unit()) {
    Uniforms<T, true> sink(r, to);
    return Family::generate(stream, static_cast<std::size_t>(n), sink);
  }
  Uniforms<T, false> sink(r, to);
  return Family::generate(stream, static_cast<std::size_t>(n), sink);
}
template <class Family, class Raw = RawWords, std::size_t ValuesPerOutput = 1>
int32_t raw_outputs(void* stream, int32_t n, uint32_t* r) {
  if (n <= 0) return JUN_RNG_OK;
  if (stream == nullptr || r == nullptr) return JUN_RNG_NULL_POINTER;
  const FloatingPointFrame frame;
  Raw sink(r);
  return Family::generate(stream, static_cast<std::size_t>(n) * ValuesPerOutput, sink);
}

}  // namespace orin::rng

#endif
