// mcg59: x' = a x mod 2^59, u = x / 2^59, the value before the step is delivered.
// SPDX-License-Identifier: MIT
//
// Source    multiplier 13^13, modulus 2^59. State: x, a. Period 2^57 for odd x.
// Method    y = 2^5 x is stepped modulo 2^64, so that nothing needs masking: eight values in flight, stepped by a^8. A
//           64-bit product modulo 2^64 is the product of the low halves and the low halves of the cross products.
// Uniforms  The halves of y become doubles of magnitudes 2^20 and 2^-12 without rounding; their sum rounds x / 2^59
//           once. A float is the sum of the leading 16 bits of y and the next 23, rounded once; the lowest of these is
//           set if a bit below is: all x of a stream have the same power of 2 as a divisor, so that this is known
//           beforehand. Below 2^-13, where a float may reach further, x / 2^59 is a double without rounding, and that is
//           rounded.
// Streams   skip n: x a^n. Leapfrog k of s: x a^k, then a <- a^s, since x[k + i s] = x[k] (a^s)^i.
// Proof     tests/rng/generators/sequence_test.cpp: 64-bit arithmetic, value by value; jumps_test.cpp
#include <utility>

#include "rng/generators/entries.h"
#include "rng/generators/generators.h"
#include "rng/generators/sinks.h"

namespace orin::rng {
namespace {

constexpr uint64_t mask = (uint64_t{1} << 59) - 1;
constexpr uint64_t multiplier = 302875106592253;  // 13^13
constexpr int spare_bits = 64 - 59;

struct State {
  uint64_t x;
  uint64_t a;
};
static_assert(sizeof(State) == 32 - sizeof(StreamHeader));

struct Factor {  // the same in both lanes
  __m128i whole, high;

  explicit Factor(uint64_t a) {
    const uint64_t lanes[2] = {a, a};
    whole = load_words(reinterpret_cast<const uint32_t*>(lanes));
    high = _mm_srli_epi64(whole, 32);
  }
};

__m128i product(__m128i y, const Factor& a) {
  const __m128i cross = _mm_add_epi64(_mm_mul_epu32(y, a.high), _mm_mul_epu32(_mm_srli_epi64(y, 32), a.whole));
  return _mm_add_epi64(_mm_mul_epu32(y, a.whole), _mm_slli_epi64(cross, 32));
}

struct Group {  // y of four outputs
  __m128i front, back;
  __m128i low_magnitude;  // 2^-16 in each float, its lowest bit set if bits below the leading 39 are

  Group(const uint64_t y[4], __m128i low_magnitude_of_stream)
      : front(_mm_loadu_si128(reinterpret_cast<const __m128i*>(y))),
        back(_mm_loadu_si128(reinterpret_cast<const __m128i*>(y + 2))),
        low_magnitude(low_magnitude_of_stream) {}
  void step(const Factor& a) {
    front = product(front, a);
    back = product(back, a);
  }
};

struct Raw : Sink<Raw, uint32_t, 2> {
  using Sink::Sink;
  static void put(uint32_t* r, const Group& y) {
    store_words(r, _mm_srli_epi64(y.front, spare_bits));
    store_words(r + 4, _mm_srli_epi64(y.back, spare_bits));
  }
};

// y / 2^64, rounded once.
__m128d unit_doubles(__m128i y) {
  const __m128i high = _mm_or_si128(_mm_srli_epi64(y, 32), _mm_castpd_si128(splat(0x1p20)));
  const __m128i low = _mm_or_si128(_mm_and_si128(y, _mm_set_epi32(0, -1, 0, -1)), _mm_castpd_si128(splat(0x1p-12)));
  return _mm_add_pd(_mm_sub_pd(_mm_castsi128_pd(high), splat(0x1p20 + 0x1p-12)), _mm_castsi128_pd(low));
}

template <class T, bool Unit>
class Uniforms;

template <bool Unit>
class Uniforms<double, Unit> : public Sink<Uniforms<double, Unit>, double> {
 public:
  Uniforms(double* r, const Interval<double>& to) : Sink<Uniforms, double>(r), map_(to) {}
  void put(double* r, const Group& y) const {
    _mm_storeu_pd(r, map_(u(y.front)));
    _mm_storeu_pd(r + 2, map_(u(y.back)));
  }

 private:
  static __m128d u(__m128i y) { return _mm_min_pd(unit_doubles(y), splat(1 - 0x1p-53)); }

  Map<double, Unit> map_;
};

template <bool Unit>
class Uniforms<float, Unit> : public Sink<Uniforms<float, Unit>, float> {
 public:
  Uniforms(float* r, const Interval<float>& to) : Sink<Uniforms, float>(r), map_(to) {}
  void put(float* r, const Group& y) const {
    const __m128i next_23 = _mm_and_si128(
        low_words(_mm_castsi128_pd(_mm_srli_epi64(y.front, 25)), _mm_castsi128_pd(_mm_srli_epi64(y.back, 25))),
        splat_word(0x7fffff));
    const __m128i leading_16 = _mm_srli_epi32(high_words(y.front, y.back), 16);
    const __m128 low = _mm_castsi128_ps(_mm_or_si128(next_23, y.low_magnitude));
    const __m128 high = _mm_castsi128_ps(_mm_or_si128(leading_16, _mm_castps_si128(splat(0x1p7f))));
    __m128 u = _mm_add_ps(_mm_sub_ps(high, splat(0x1p7f + 0x1p-16f)), low);
    const __m128 small = _mm_cmplt_ps(u, splat(0x1p-13f));
    if (_mm_movemask_ps(small) != 0) [[unlikely]] {
      const __m128 exact = _mm_movelh_ps(_mm_cvtpd_ps(unit_doubles(y.front)), _mm_cvtpd_ps(unit_doubles(y.back)));
      u = _mm_or_ps(_mm_and_ps(small, exact), _mm_andnot_ps(small, u));
    }
    _mm_storeu_ps(r, map_(u));
  }

 private:
  Map<float, Unit> map_;
};

struct Mcg59 {
  static int32_t seed(void* stream, int32_t n, const uint32_t* seeds) {
    uint64_t x = n > 0 ? seeds[0] : 1;
    if (n > 1) x |= uint64_t{seeds[1] & 0x7ffffff} << 32;
    state_of<State>(stream) = {x != 0 ? x : 1, multiplier};
    return JUN_RNG_OK;
  }

  static int32_t leapfrog(void* stream, int32_t count, uint32_t k) {
    State& state = state_of<State>(stream);
    skip(stream, k);
    state.a = __juniPowMod2P59(state.a, static_cast<uint64_t>(int64_t{count}));
    return JUN_RNG_OK;
  }

  static int32_t skip(void* stream, uint64_t n) {
    State& state = state_of<State>(stream);
    state.x = state.x * __juniPowMod2P59(state.a, n) & mask;
    return JUN_RNG_OK;
  }

  template <class Sink>
  static int32_t generate(void* stream, std::size_t n, Sink& sink) {
    State& state = state_of<State>(stream);
    const bool has_rest = state.x << (39 + spare_bits) != 0;
    const __m128i low_magnitude = _mm_or_si128(_mm_castps_si128(splat(0x1p-16f)), splat_word(has_rest ? 1 : 0));
    Sink local = sink;
    if (n >= 16) {
      uint64_t lane[8] = {state.x << spare_bits};
      for (int i = 1; i < 8; ++i) lane[i] = lane[i - 1] * state.a;
      const uint64_t a2 = state.a * state.a, a4 = a2 * a2;
      const Factor step(a4 * a4);
      Group y0(lane, low_magnitude), y1(lane + 4, low_magnitude);
      for (; n >= 8; n -= 8) {
        local.four(y0);
        local.four(y1);
        y0.step(step);
        y1.step(step);
      }
      uint64_t first;
      _mm_storel_epi64(reinterpret_cast<__m128i*>(&first), y0.front);
      state.x = first >> spare_bits;
    }
    const auto next = [&] { return std::exchange(state.x, state.x * state.a & mask) << spare_bits; };
    send_each(n, local, next, [&](const uint64_t* y) { return Group(y, low_magnitude); });
    sink = local;
    return JUN_RNG_OK;
  }
};

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_RNG_ENTRIES(MCG59, init_stream<Mcg59>, (uniforms<Mcg59, Uniforms>), (raw_outputs<Mcg59, Raw>))
