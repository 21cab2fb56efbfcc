// mcg31m1: x' = a x mod (2^31 - 1), u = x / (2^31 - 1), the value before the step is delivered.
// SPDX-License-Identifier: MIT
//
// Source    P. L'Ecuyer, Math. Comp. 68 (1999) 249-260, multiplier 1132489760. State: x, a. Period 2^31 - 2.
// Method    Eight values in flight, stepped by a^8. 2^31 = 1 (mod m), so the two halves of a product add up to a value
//           below 2^32, and the halves of that one to the residue: it is not 0 and not m, because neither factor is.
// Uniforms  double: a + ((b - a) (1/m)) x, each operation rounded, no bound: it may round to b.
//           float: x / m = (x + x / m) 2^-31, rounded once. The halves h and l of x are floats without rounding; l takes
//           3/4 h 2^-31 along, which stays between 0 and 1 where x has more bits than a float and so tells the sum on
//           which side of x the quotient lies, and is lost where x is a float.
// Streams   skip n: x a^n. Leapfrog k of s: x a^k, then a <- a^s, since x[k + i s] = x[k] (a^s)^i.
// Proof     tests/rng/generators/sequence_test.cpp: 64-bit arithmetic, value by value; jumps_test.cpp
#include <utility>

#include "rng/generators/entries.h"
#include "rng/generators/generators.h"
#include "rng/generators/sinks.h"

namespace orin::rng {
namespace {

constexpr uint32_t modulus = 0x7fffffff;
constexpr uint32_t multiplier = 1132489760;
constexpr double reciprocal = 4.656612875245797e-10;  // 1 / (2^31 - 1), nearest

struct State {
  uint32_t x;
  uint32_t a;
};
static_assert(sizeof(State) == 24 - sizeof(StreamHeader));

uint32_t product(uint32_t x, uint32_t y) {
  const uint64_t p = uint64_t{x} * y;
  const auto s = static_cast<uint32_t>((p & modulus) + (p >> 31));
  return s >= modulus ? s - modulus : s;
}

// Four products with one factor.
__m128i product(__m128i x, __m128i y) {
  const __m128i low_bits = _mm_set_epi32(0, modulus, 0, modulus);
  const auto halves = [&](__m128i p) { return _mm_add_epi64(_mm_and_si128(p, low_bits), _mm_srli_epi64(p, 31)); };
  const __m128i even = halves(_mm_mul_epu32(x, y));
  const __m128i odd = halves(_mm_mul_epu32(_mm_srli_epi64(x, 32), y));
  const __m128i s = _mm_or_si128(even, _mm_slli_epi64(odd, 32));
  return _mm_add_epi32(_mm_and_si128(s, splat_word(modulus)), _mm_srli_epi32(s, 31));
}

struct Mcg31m1 {
  static int32_t seed(void* stream, int32_t n, const uint32_t* seeds) {
    const uint32_t x = n > 0 ? seeds[0] % modulus : 1;
    state_of<State>(stream) = {x != 0 ? x : 1, multiplier};
    return JUN_RNG_OK;
  }

  static int32_t leapfrog(void* stream, int32_t count, uint32_t k) {
    State& state = state_of<State>(stream);
    skip(stream, k);
    state.a = __juniPowMod2P31M1(state.a, static_cast<uint64_t>(int64_t{count}));
    return JUN_RNG_OK;
  }

  static int32_t skip(void* stream, uint64_t n) {
    State& state = state_of<State>(stream);
    state.x = product(state.x, __juniPowMod2P31M1(state.a, n));
    return JUN_RNG_OK;
  }

  template <class Sink>
  static int32_t generate(void* stream, std::size_t n, Sink& sink) {
    State& state = state_of<State>(stream);
    Sink local = sink;
    if (n >= 16) {
      uint32_t lane[8] = {state.x};
      for (int i = 1; i < 8; ++i) lane[i] = product(lane[i - 1], state.a);
      const uint32_t a2 = product(state.a, state.a), a4 = product(a2, a2);
      const __m128i step = splat_word(product(a4, a4));
      __m128i x0 = load_words(lane), x1 = load_words(lane + 4);
      for (; n >= 8; n -= 8) {
        local.four(x0);
        local.four(x1);
        x0 = product(x0, step);
        x1 = product(x1, step);
      }
      state.x = static_cast<uint32_t>(_mm_cvtsi128_si32(x0));
    }
    send_each(
        n, local, [&] { return std::exchange(state.x, product(state.x, state.a)); }, load_words);
    sink = local;
    return JUN_RNG_OK;
  }
};

template <class T, bool Unit>
class Uniforms;

// The formula has no bound and no unit interval.
template <bool Unit>
class Uniforms<double, Unit> : public Sink<Uniforms<double, Unit>, double> {
 public:
  Uniforms(double* r, const Interval<double>& to)
      : Sink<Uniforms, double>(r), a_(splat(to.a)), scale_(splat(to.width * reciprocal)) {}
  void put(double* r, __m128i x) const {
    _mm_storeu_pd(r, map(WordDoubles<0>::front(x)));
    _mm_storeu_pd(r + 2, map(WordDoubles<0>::back(x)));
  }

 private:
  __m128d map(__m128d x) const { return _mm_add_pd(a_, _mm_mul_pd(scale_, x)); }

  __m128d a_, scale_;
};

template <bool Unit>
class Uniforms<float, Unit> : public Sink<Uniforms<float, Unit>, float> {
 public:
  Uniforms(float* r, const Interval<float>& to) : Sink<Uniforms, float>(r), map_(to) {}
  void put(float* r, __m128i x) const { _mm_storeu_ps(r, map_(quotients(x))); }

 private:
  static __m128 quotients(__m128i x) {
    const __m128 high = _mm_cvtepi32_ps(_mm_and_si128(x, splat_word(0x7fff0000)));
    const __m128 low = _mm_cvtepi32_ps(_mm_and_si128(x, splat_word(0xffff)));
    const __m128 sum = _mm_add_ps(high, _mm_add_ps(low, _mm_mul_ps(high, splat(0.75f * 0x1p-31f))));
    return _mm_mul_ps(sum, splat(0x1p-31f));
  }

  Map<float, Unit> map_;
};

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_RNG_ENTRIES(MCG31M1, init_stream<Mcg31m1>, (uniforms<Mcg31m1, Uniforms>), raw_outputs<Mcg31m1>)
