// mrg32k3a: two recurrences of order 3, z = (x1 - x2) mod m1, u = z / m1, m1 = 2^32 - 209.
// SPDX-License-Identifier: MIT
//
// Source    P. L'Ecuyer, Operations Research 47 (1999) 159-164. Period (m1^3 - 1)(m2^3 - 1)/2.
//               x1[n] = (1403580 x1[n-2] - 810728 x1[n-3]) mod m1
//               x2[n] = (527612 x2[n-1] - 1370589 x2[n-3]) mod m2,    m2 = 2^32 - 22853
//           State: x1[n-3], x1[n-2], x1[n-1], then x2 likewise. Advances, then delivers.
// Method    A long run is cut into eight stretches, whose starts are found by jumps; eight lanes walk along them at
//           once, in doubles. The coefficients are so small that a step stays below 2^53 and is exact; residues are
//           kept between -m/2 and m/2, which saves a comparison, and made nonnegative on delivery.
// Jumps     by e steps: the matrices of the recurrences to the powers 2^k, from a table made at compile time
// Streams   skip n: a jump. No leapfrog.
// Proof     tests/rng/generators/sequence_test.cpp: 64-bit arithmetic, value by value; jumps_test.cpp: matrix powers
#include <algorithm>

#include "rng/generators/entries.h"
#include "rng/generators/generators.h"
#include "rng/generators/sinks.h"

namespace orin::rng {
namespace {

struct State {
  uint32_t x1[3];  // oldest first
  uint32_t x2[3];
};
static_assert(sizeof(State) == 40 - sizeof(StreamHeader));

// x[n] = (plus x[n - plus_lag] - minus x[n-3]) mod 2^32 - excess
struct Recurrence {
  uint32_t plus, plus_lag, minus, excess;

  constexpr uint32_t modulus() const { return 0U - excess; }
  // 2^32 = excess (mod m). Two folds bring any 64-bit number below 2m.
  constexpr uint64_t fold(uint64_t p) const { return (p >> 32) * excess + (p & 0xffffffff); }
  constexpr uint32_t residue(uint64_t p) const {
    p = fold(fold(p));
    return static_cast<uint32_t>(p >= modulus() ? p - modulus() : p);
  }
  constexpr uint32_t next(const uint32_t x[3]) const {
    return residue(uint64_t{plus} * x[3 - plus_lag] + uint64_t{minus} * (modulus() - x[0]));
  }
};
constexpr Recurrence recurrence1{1403580, 2, 810728, 209};
constexpr Recurrence recurrence2{527612, 1, 1370589, 22853};

struct Matrix {
  uint32_t at[3][3];
};

constexpr Matrix product(const Matrix& a, const Matrix& b, const Recurrence& r) {
  Matrix c{};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      uint64_t sum = 0;
      for (int k = 0; k < 3; ++k) sum += r.fold(uint64_t{a.at[i][k]} * b.at[k][j]);
      c.at[i][j] = r.residue(sum);
    }
  return c;
}

struct Powers {
  Matrix of[64];  // of[k]: 2^k steps
};

constexpr Powers powers(const Recurrence& r) {
  Powers p{};
  p.of[0] = {{{0, 1, 0}, {0, 0, 1}, {r.modulus() - r.minus, 0, 0}}};
  p.of[0].at[2][3 - r.plus_lag] = r.plus;
  for (int k = 1; k < 64; ++k) p.of[k] = product(p.of[k - 1], p.of[k - 1], r);
  return p;
}
constexpr Powers powers1 = powers(recurrence1), powers2 = powers(recurrence2);

void apply(const Matrix& a, uint32_t x[3], const Recurrence& r) {
  uint32_t y[3];
  for (int i = 0; i < 3; ++i) {
    uint64_t sum = 0;
    for (int k = 0; k < 3; ++k) sum += r.fold(uint64_t{a.at[i][k]} * x[k]);
    y[i] = r.residue(sum);
  }
  std::copy_n(y, 3, x);
}

void jump_power(State& state, int k) {  // 2^k steps
  apply(powers1.of[k], state.x1, recurrence1);
  apply(powers2.of[k], state.x2, recurrence2);
}

void jump(State& state, uint64_t steps) {
  for (int k = 0; steps != 0; ++k, steps >>= 1)
    if (steps & 1) jump_power(state, k);
}

uint32_t advance(State& state) {
  const uint32_t x1 = recurrence1.next(state.x1), x2 = recurrence2.next(state.x2);
  state.x1[0] = state.x1[1], state.x1[1] = state.x1[2], state.x1[2] = x1;
  state.x2[0] = state.x2[1], state.x2[1] = state.x2[2], state.x2[2] = x2;
  return x1 < x2 ? x1 - x2 + recurrence1.modulus() : x1 - x2;
}

// One recurrence in two lanes, residues between -m/2 and m/2 (and, at the start, 0 and m).
class LaneRecurrence {
 public:
  explicit LaneRecurrence(const Recurrence& r)
      : plus_(_mm_set1_pd(r.plus)),
        minus_(_mm_set1_pd(r.minus)),
        modulus_(_mm_set1_pd(r.modulus())),
        reciprocal_(splat(1.0 / r.modulus())) {}
  __m128d next(__m128d plus_value, __m128d oldest) const {
    const __m128d shifter = splat(0x1.8p52);
    const __m128d p = _mm_sub_pd(_mm_mul_pd(plus_, plus_value), _mm_mul_pd(minus_, oldest));
    const __m128d q = _mm_sub_pd(_mm_add_pd(_mm_mul_pd(p, reciprocal_), shifter), shifter);
    return _mm_sub_pd(p, _mm_mul_pd(q, modulus_));
  }

 private:
  __m128d plus_, minus_, modulus_, reciprocal_;
};

constexpr std::size_t pairs = 4, lanes = 2 * pairs;
constexpr std::size_t most_run = 32;  // steps of all lanes between two deliveries

// z of two steps in two lanes each, as words, from signed residues. As integers biased by 2^31 they compare as if
// without a sign; 2^32 = excess (mod m) makes a wrapped one right.
__m128i outputs(const __m128d x1[2], const __m128d x2[2]) {
  const auto nonnegative = [](const __m128d x[2], const Recurrence& r) {
    const __m128d shifter = splat(0x1.8p52 + 0x1p31);
    const __m128i biased = low_words(_mm_add_pd(x[0], shifter), _mm_add_pd(x[1], shifter));
    return _mm_sub_epi32(biased, _mm_andnot_si128(_mm_srai_epi32(biased, 31), splat_word(r.excess)));
  };
  const __m128i y1 = nonnegative(x1, recurrence1), y2 = nonnegative(x2, recurrence2);
  const __m128i wrapped = _mm_cmpgt_epi32(y2, y1);
  return _mm_sub_epi32(_mm_sub_epi32(y1, y2), _mm_and_si128(wrapped, splat_word(recurrence1.excess)));
}

template <class T, bool Unit>
class Uniforms;

template <bool Unit>
class Uniforms<double, Unit> : public Sink<Uniforms<double, Unit>, double> {
 public:
  Uniforms(double* r, const Interval<double>& to) : Sink<Uniforms, double>(r), map_(to) {}
  void put(double* r, __m128i z) const {
    const auto u = [](__m128d value) {
      // z / m = z 2^-32 + z (2^32 / m - 1) 2^-32: the first product is exact, so the quotient comes out rounded once.
      constexpr double rest = (0x1p32 - recurrence1.modulus()) / recurrence1.modulus() * 0x1p-32;
      return _mm_add_pd(_mm_mul_pd(value, splat(0x1p-32)), _mm_mul_pd(value, splat(rest)));
    };
    _mm_storeu_pd(r, map_(u(WordDoubles<0>::front(z))));
    _mm_storeu_pd(r + 2, map_(u(WordDoubles<0>::back(z))));
  }

 private:
  Map<double, Unit> map_;
};

template <bool Unit>
class Uniforms<float, Unit> : public Sink<Uniforms<float, Unit>, float> {
 public:
  Uniforms(float* r, const Interval<float>& to) : Sink<Uniforms, float>(r), map_(to) {}
  void put(float* r, __m128i z) const {
    const auto u = [](__m128d value) { return _mm_cvtpd_ps(_mm_mul_pd(value, splat(1.0 / recurrence1.modulus()))); };
    _mm_storeu_ps(r, map_(_mm_movelh_ps(u(WordDoubles<0>::front(z)), u(WordDoubles<0>::back(z)))));
  }

 private:
  Map<float, Unit> map_;
};

// The states at the beginnings of the stretches: halves, then quarters, then eighths.
void start_lanes(State start[lanes], int log2_stretch) {
  for (int level = 2; level >= 0; --level) {
    const std::size_t step = std::size_t{1} << level;
    for (std::size_t lane = 0; lane < lanes; lane += 2 * step) {
      start[lane + step] = start[lane];
      jump_power(start[lane + step], level + log2_stretch);
    }
  }
}

// The value of the last lane.
uint32_t last_lane(__m128d residue, const Recurrence& r) {
  const int32_t x = _mm_cvttsd_si32(_mm_unpackhi_pd(residue, residue));
  return static_cast<uint32_t>(x) - (x < 0 ? r.excess : 0);
}

// lanes * stretch outputs, stretch = 2^log2_stretch, at least 4.
template <class Sink>
void generate_stretches(State& state, int log2_stretch, Sink& sink) {
  const std::size_t stretch = std::size_t{1} << log2_stretch;
  const std::size_t run = std::min(stretch, most_run);
  const LaneRecurrence first(recurrence1), second(recurrence2);
  State start[lanes] = {state};
  start_lanes(start, log2_stretch);
  __m128d x1[pairs][3 + most_run], x2[pairs][3 + most_run];  // in time order; the newest three become the first
  for (std::size_t p = 0; p < pairs; ++p)
    for (std::size_t i = 0; i < 3; ++i) {
      x1[p][i] = _mm_set_pd(start[2 * p + 1].x1[i], start[2 * p].x1[i]);
      x2[p][i] = _mm_set_pd(start[2 * p + 1].x2[i], start[2 * p].x2[i]);
    }
  for (std::size_t done = 0; done < stretch; done += run) {
    for (std::size_t k = 0; k < run; ++k)
      for (std::size_t p = 0; p < pairs; ++p) {
        x1[p][k + 3] = first.next(x1[p][k + 1], x1[p][k]);
        x2[p][k + 3] = second.next(x2[p][k + 2], x2[p][k]);
      }
    for (std::size_t p = 0; p < pairs; ++p) {
      Sink even = sink.at(2 * p * stretch + done), odd = sink.at((2 * p + 1) * stretch + done);
      for (std::size_t k = 3; k < 3 + run; k += 4) {
        const __m128i front = outputs(&x1[p][k], &x2[p][k]), back = outputs(&x1[p][k + 2], &x2[p][k + 2]);
        even.four(low_words(_mm_castsi128_pd(front), _mm_castsi128_pd(back)));
        odd.four(high_words(front, back));
      }
      std::copy_n(&x1[p][run], 3, &x1[p][0]);
      std::copy_n(&x2[p][run], 3, &x2[p][0]);
    }
  }
  for (std::size_t i = 0; i < 3; ++i) {
    state.x1[i] = last_lane(x1[pairs - 1][i], recurrence1);
    state.x2[i] = last_lane(x2[pairs - 1][i], recurrence2);
  }
  sink = sink.at(lanes * stretch);
}

// From seeds[first] on.
void seed_component(uint32_t x[3], int32_t first, int32_t n, const uint32_t* seeds, uint32_t modulus) {
  for (int32_t i = 0; i < 3; ++i) x[i] = first + i < n ? seeds[first + i] % modulus : 1;
  if ((x[0] | x[1] | x[2]) == 0) x[0] = 1;
}

struct Mrg32k3a {
  static int32_t seed(void* stream, int32_t n, const uint32_t* seeds) {
    State& state = state_of<State>(stream);
    seed_component(state.x1, 0, n, seeds, recurrence1.modulus());
    seed_component(state.x2, 3, n, seeds, recurrence2.modulus());
    return JUN_RNG_OK;
  }

  static int32_t skip(void* stream, uint64_t n) {
    jump(state_of<State>(stream), n);
    return JUN_RNG_OK;
  }

  template <class Sink>
  static int32_t generate(void* stream, std::size_t n, Sink& sink) {
    State& state = state_of<State>(stream);
    for (int log2_stretch = 10; log2_stretch >= 3; --log2_stretch)
      for (; n >= lanes << log2_stretch; n -= lanes << log2_stretch) generate_stretches(state, log2_stretch, sink);
    send_each(
        n, sink, [&] { return advance(state); }, load_words);
    return JUN_RNG_OK;
  }
};

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_RNG_ENTRIES(MRG32K3A, init_stream<Mrg32k3a>, (uniforms<Mrg32k3a, Uniforms>), raw_outputs<Mrg32k3a>)
