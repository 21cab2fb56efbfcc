// wh: 273 sets of four multiplicative generators xi' = ai xi mod mi, u = fractional part of the sum of xi / mi.
// SPDX-License-Identifier: MIT
//
// Source    B. A. Wichmann, I. D. Hill, Applied Statistics 31 (1982) 188-190; N. M. Maclaren, Applied Statistics 38
//           (1989) 351-359.
//           State: x1 .. x4, a1 .. a4; the moduli are those of the stream's identifier. Delivers, then advances.
// Data      rng/data/wh_parameters.h. Period: the least common multiple of the mi - 1, above 2^92.
// Method    Two outputs in two lanes, four in flight, stepped by ai^4. Moduli have 24 bits, so that a product p is
//           exact in a double and p / mi is off by less than 2^-27, while its fraction is a multiple of 1/mi > 2^-24:
//           p / mi - 1/2 + 2^-26 rounds to the quotient q, and p - q mi is the residue.
// Uniforms  1 / mi = h + l, h a multiple of 2^-51: the xi h and their sum, below 4, are exact in doubles. Its fraction,
//           exact, and the sum of the xi l, off by less than 2^-76, round once. A float takes the fraction of the plain
//           sum of the xi (1 / mi), off by less than 2^-49, unless that is near 0 or 1.
// Streams   skip n: xi ai^n. Leapfrog k of s: xi ai^k, then ai <- ai^s, for each i.
// Proof     tests/rng/generators/sequence_test.cpp: 64-bit arithmetic; known_answers_test.cpp: the rules of the sets
#include "rng/data/wh_parameters.h"
#include "rng/generators/entries.h"
#include "rng/generators/generators.h"
#include "rng/generators/sinks.h"

namespace orin::rng {
namespace {

struct State {
  uint32_t x[4];
  uint32_t a[4];
};
static_assert(sizeof(State) == 48 - sizeof(StreamHeader));

uint32_t product(uint32_t x, uint32_t y, uint32_t m) { return static_cast<uint32_t>(uint64_t{x} * y % m); }

struct Modulus {                     // the same in both lanes
  __m128d m, reciprocal, high, low;  // reciprocal = high + low, low not negative

  Modulus() = default;
  explicit Modulus(uint32_t value) : m(_mm_set1_pd(value)) {
    const __m128d one = splat(1.0), shifter = splat(3.0);  // 3 + h has the lowest bit 2^-51
    reciprocal = _mm_div_pd(one, m);
    high = _mm_sub_pd(_mm_add_pd(_mm_sub_pd(reciprocal, splat(0x1p-52)), shifter), shifter);
    low = _mm_div_pd(_mm_sub_pd(one, _mm_mul_pd(m, high)), m);
  }
  __m128d product(__m128d x, __m128d y) const {
    const __m128d shifter = splat(0x1.8p52);
    const __m128d p = _mm_mul_pd(x, y);
    const __m128d below = _mm_add_pd(_mm_mul_pd(p, reciprocal), splat(-0.5 + 0x1p-26));
    const __m128d q = _mm_sub_pd(_mm_add_pd(below, shifter), shifter);
    return _mm_sub_pd(p, _mm_mul_pd(q, m));
  }
};

struct Group {  // components of four outputs
  __m128d front[4], back[4];
  const Modulus* m;
};

struct Raw : Sink<Raw, uint32_t, 4> {
  using Sink::Sink;
  static void put(uint32_t* r, const Group& x) {
    put_two(r, x.front);
    put_two(r + 8, x.back);
  }

 private:
  static void put_two(uint32_t* r, const __m128d x[4]) {
    const __m128i low = _mm_unpacklo_epi32(_mm_cvttpd_epi32(x[0]), _mm_cvttpd_epi32(x[1]));
    const __m128i high = _mm_unpacklo_epi32(_mm_cvttpd_epi32(x[2]), _mm_cvttpd_epi32(x[3]));
    store_words(r, _mm_unpacklo_epi64(low, high));
    store_words(r + 4, _mm_unpackhi_epi64(low, high));
  }
};

// x[0] f[0] + .. + x[3] f[3], f a member of the moduli
__m128d sum_of_products(const __m128d x[4], const Modulus m[4], __m128d Modulus::*f) {
  __m128d sum = _mm_mul_pd(x[0], m[0].*f);
  for (int i = 1; i < 4; ++i) sum = _mm_add_pd(sum, _mm_mul_pd(x[i], m[i].*f));
  return sum;
}

__m128d fraction(__m128d sum) { return _mm_sub_pd(sum, _mm_cvtepi32_pd(_mm_cvttpd_epi32(sum))); }

// The fraction of the sum of quotients, save that the low parts may make it 1 or a little more.
__m128d nearly_fraction(const __m128d x[4], const Modulus m[4]) {
  return _mm_add_pd(fraction(sum_of_products(x, m, &Modulus::high)), sum_of_products(x, m, &Modulus::low));
}

// Where the low parts make a whole of the fraction, it goes; where they only round to one, the value below is left.
[[gnu::noinline]] __m128d whole_fraction(const __m128d x[4], const Modulus m[4]) {
  const __m128d high = fraction(sum_of_products(x, m, &Modulus::high)), low = sum_of_products(x, m, &Modulus::low);
  const __m128d beyond = _mm_add_pd(_mm_sub_pd(high, splat(1.0)), low);
  const __m128d is_beyond = _mm_cmpge_pd(beyond, splat(0.0));
  const __m128d below = _mm_min_pd(_mm_add_pd(high, low), splat(1 - 0x1p-53));
  return _mm_or_pd(_mm_and_pd(is_beyond, beyond), _mm_andnot_pd(is_beyond, below));
}

template <class T, bool Unit>
class Uniforms;

template <bool Unit>
class Uniforms<double, Unit> : public Sink<Uniforms<double, Unit>, double> {
 public:
  Uniforms(double* r, const Interval<double>& to) : Sink<Uniforms, double>(r), map_(to) {}
  void put(double* r, const Group& x) const {
    __m128d front = nearly_fraction(x.front, x.m), back = nearly_fraction(x.back, x.m);
    if (_mm_movemask_pd(_mm_cmpge_pd(_mm_max_pd(front, back), splat(1.0))) != 0) [[unlikely]] {
      front = whole_fraction(x.front, x.m);
      back = whole_fraction(x.back, x.m);
    }
    _mm_storeu_pd(r, map_(front));
    _mm_storeu_pd(r + 2, map_(back));
  }

 private:
  Map<double, Unit> map_;
};

template <bool Unit>
class Uniforms<float, Unit> : public Sink<Uniforms<float, Unit>, float> {
 public:
  Uniforms(float* r, const Interval<float>& to) : Sink<Uniforms, float>(r), map_(to) {}
  void put(float* r, const Group& x) const {
    const auto plain = [&](const __m128d* part) { return fraction(sum_of_products(part, x.m, &Modulus::reciprocal)); };
    __m128 u = floats(plain(x.front), plain(x.back));
    const __m128 near_0 = _mm_cmplt_ps(u, splat(0x1p-20f)), near_1 = _mm_cmpge_ps(u, splat(1.0f));
    if (_mm_movemask_ps(_mm_or_ps(near_0, near_1)) != 0) [[unlikely]]
      u = floats(whole_fraction(x.front, x.m), whole_fraction(x.back, x.m));
    _mm_storeu_ps(r, map_(u));
  }

 private:
  static __m128 floats(__m128d front, __m128d back) { return _mm_movelh_ps(_mm_cvtpd_ps(front), _mm_cvtpd_ps(back)); }

  Map<float, Unit> map_;
};

struct Wh {
  static int32_t seed(void* stream, int32_t n, const uint32_t* seeds) {
    State& state = state_of<State>(stream);
    const int32_t set = sub_stream_of(stream);
    for (int i = 0; i < 4; ++i) {
      state.x[i] = i < n ? seeds[i] % wh_moduli[set][i] : 1;
      if (state.x[i] == 0) state.x[i] = 1;
      state.a[i] = wh_multipliers[set][i];
    }
    return JUN_RNG_OK;
  }

  static int32_t leapfrog(void* stream, int32_t count, uint32_t k) {
    State& state = state_of<State>(stream);
    const uint32_t* m = wh_moduli[sub_stream_of(stream)];
    skip(stream, k);
    for (int i = 0; i < 4; ++i) state.a[i] = __juniPowMod(state.a[i], static_cast<uint64_t>(int64_t{count}), m[i]);
    return JUN_RNG_OK;
  }

  static int32_t skip(void* stream, uint64_t n) {
    State& state = state_of<State>(stream);
    const uint32_t* m = wh_moduli[sub_stream_of(stream)];
    for (int i = 0; i < 4; ++i) state.x[i] = product(state.x[i], __juniPowMod(state.a[i], n, m[i]), m[i]);
    return JUN_RNG_OK;
  }

  template <class Sink>
  static int32_t generate(void* stream, std::size_t n, Sink& sink) {
    State& state = state_of<State>(stream);
    const uint32_t* moduli = wh_moduli[sub_stream_of(stream)];
    Modulus m[4];
    for (int i = 0; i < 4; ++i) m[i] = Modulus(moduli[i]);
    Group x;
    x.m = m;
    Sink local = sink;
    if (n >= 12) {
      __m128d step[4];
      for (int i = 0; i < 4; ++i) {
        const uint32_t a2 = product(state.a[i], state.a[i], moduli[i]);
        x.front[i] = _mm_set_pd(product(state.x[i], state.a[i], moduli[i]), state.x[i]);
        x.back[i] = m[i].product(x.front[i], _mm_set1_pd(a2));
        step[i] = _mm_set1_pd(product(a2, a2, moduli[i]));
      }
      for (; n >= 4; n -= 4) {
        local.four(x);
        for (int i = 0; i < 4; ++i) {
          x.front[i] = m[i].product(x.front[i], step[i]);
          x.back[i] = m[i].product(x.back[i], step[i]);
        }
      }
      for (int i = 0; i < 4; ++i) state.x[i] = static_cast<uint32_t>(_mm_cvttsd_si32(x.front[i]));
    }
    struct Components {
      double of[4];
    };
    const auto next = [&] {
      Components now;
      for (int i = 0; i < 4; ++i) {
        now.of[i] = state.x[i];
        state.x[i] = product(state.x[i], state.a[i], moduli[i]);
      }
      return now;
    };
    send_each(n, local, next, [&](const Components* c) {
      for (int i = 0; i < 4; ++i) {
        x.front[i] = _mm_set_pd(c[1].of[i], c[0].of[i]);
        x.back[i] = _mm_set_pd(c[3].of[i], c[2].of[i]);
      }
      return x;
    });
    sink = local;
    return JUN_RNG_OK;
  }
};

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_RNG_ENTRIES(WH, init_stream<Wh>, (uniforms<Wh, Uniforms>), (raw_outputs<Wh, Raw>))
