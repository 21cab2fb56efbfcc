// mcg59: x' = a x mod 2^59, u = x / 2^59, the value before the step is delivered.
// SPDX-License-Identifier: MIT
//
// Source    multiplier 13^13, modulus 2^59. State: x, a. Period 2^57 for odd x.
// Method    y = 2^5 x is stepped modulo 2^64, so that nothing needs masking: six values in flight, stepped by a^6. A
//           64-bit product modulo 2^64 is the product of the low halves and the low halves of the cross products.
// Uniforms  The halves of y become doubles of magnitudes 2^20 and 2^-12 without rounding; their sum rounds x / 2^59
//           once.
// Streams   skip n: x a^n. Leapfrog k of s: x a^k, then a <- a^s, since x[k + i s] = x[k] (a^s)^i.
// Proof     tests/rng/generators/sequence_test.cpp: 64-bit arithmetic, value by value; jumps_test.cpp
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
  explicit Factor(uint64_t a) : whole(splat_double_word(a)), high(_mm_srli_epi64(whole, 32)) {}
};

__m128i product(__m128i y, const Factor& a) {
  const __m128i cross = _mm_add_epi64(_mm_mul_epu32(y, a.high), _mm_mul_epu32(_mm_srli_epi64(y, 32), a.whole));
  return _mm_add_epi64(_mm_mul_epu32(y, a.whole), _mm_slli_epi64(cross, 32));
}

// Sinks of y values.
class RawPairs {
 public:
  explicit RawPairs(uint32_t* r) : r_(r) {}
  void two(__m128i y) {
    store_words(r_, _mm_srli_epi64(y, spare_bits));
    r_ += 4;
  }
  void one(__m128i y) {
    _mm_storel_epi64(reinterpret_cast<__m128i*>(r_), _mm_srli_epi64(y, spare_bits));
    r_ += 2;
  }

 private:
  uint32_t* r_;
};

template <class T, bool Unit>
class Pairs {
 public:
  Pairs(T* r, const Interval<T>& to) : sink_(r, to) {}
  void two(__m128i y) { sink_.two(u(y)); }
  void one(__m128i y) { sink_.one(u(y)); }

 private:
  static __m128d u(__m128i y) {
    const __m128i low_bits = _mm_set_epi32(0, -1, 0, -1);
    const __m128i high = _mm_or_si128(_mm_srli_epi64(y, 32), _mm_castpd_si128(_mm_set1_pd(0x1p20)));
    const __m128i low = _mm_or_si128(_mm_and_si128(y, low_bits), _mm_castpd_si128(_mm_set1_pd(0x1p-12)));
    return _mm_add_pd(_mm_sub_pd(_mm_castsi128_pd(high), _mm_set1_pd(0x1p20)),
                      _mm_sub_pd(_mm_castsi128_pd(low), _mm_set1_pd(0x1p-12)));
  }

  RealSink<T, Unit> sink_;
};

struct Mcg59 {
  template <class Sink>
  static int32_t generate(void* stream, std::size_t n, Sink& sink) {
    State& state = state_of<State>(stream);
    if (n >= 12) {
      const uint64_t a2 = state.a * state.a, y = state.x << spare_bits, y2 = y * a2, y4 = y2 * a2;
      const auto pair = [&](uint64_t first) {
        const uint64_t lanes[2] = {first, first * state.a};
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(lanes));
      };
      const Factor step(a2 * a2 * a2);
      __m128i y0 = pair(y), y1 = pair(y2), y2_3 = pair(y4);
      Sink local = sink;
      for (; n >= 6; n -= 6) {
        local.two(y0);
        local.two(y1);
        local.two(y2_3);
        y0 = product(y0, step);
        y1 = product(y1, step);
        y2_3 = product(y2_3, step);
      }
      sink = local;
      uint64_t first;
      _mm_storel_epi64(reinterpret_cast<__m128i*>(&first), y0);
      state.x = first >> spare_bits;
    }
    for (; n != 0; --n) {
      const uint64_t y = state.x << spare_bits;
      sink.one(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(&y)));
      state.x = state.x * state.a & mask;
    }
    return JUN_RNG_OK;
  }
};

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_BEGIN_DECLS

ORIN_API int32_t ORIN_CALL __junBRngMCG59InitStream(int32_t method, void* stream, int32_t n, const uint32_t* params) {
  State& state = state_of<State>(stream);
  switch (method) {
    case JUN_RNG_SEED:
      state.x = n > 0 ? params[0] : 1;
      if (n > 1) state.x |= uint64_t{params[1] & 0x7ffffff} << 32;
      if (state.x == 0) state.x = 1;
      state.a = multiplier;
      return JUN_RNG_OK;
    case JUN_RNG_LEAPFROG:
      state.x = state.x * __juniPowMod2P59(state.a, params[0]) & mask;
      state.a = __juniPowMod2P59(state.a, static_cast<uint64_t>(int64_t{n}));
      return JUN_RNG_OK;
    case JUN_RNG_SKIP_AHEAD:
      state.x = state.x * __juniPowMod2P59(state.a, skip_count(params)) & mask;
      return JUN_RNG_OK;
    default:
      return JUN_RNG_BAD_METHOD;
  }
}

ORIN_API int32_t ORIN_CALL __junsBRngMCG59(void* stream, int32_t n, float* r, float a, float b) {
  return uniforms<Mcg59, Pairs>(stream, n, r, a, b);
}

ORIN_API int32_t ORIN_CALL __jundBRngMCG59(void* stream, int32_t n, double* r, double a, double b) {
  return uniforms<Mcg59, Pairs>(stream, n, r, a, b);
}

ORIN_API int32_t ORIN_CALL __juniBRngMCG59(void* stream, int32_t n, uint32_t* r) {
  return raw_words<Mcg59, RawPairs>(stream, n, r);
}

ORIN_END_DECLS
