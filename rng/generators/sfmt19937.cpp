// sfmt19937: the SIMD-oriented Mersenne twister, its period a multiple of 2^19937 - 1, u = y / 2^32.
// SPDX-License-Identifier: MIT
//
// Source    M. Saito, M. Matsumoto, MCQMC 2006 (2008) 607-622.
//           State: 156 quads of four words and the count of words delivered.
//               w[i] = w[i-156] ^ (w[i-156] << 8) ^ ((w[i-34] >> 11) & mask) ^ (w[i-2] >> 8) ^ (w[i-1] << 18)
//           Shifts by 8 move the whole quad, the others each word. A new block replaces the old one in place.
// Outputs   a uniform takes one word, a raw output the next four
// Streams   neither leapfrog nor skip-ahead
// Proof     tests/rng/generators/known_answers_test.cpp: the authors' outputs for both seedings
#include <algorithm>

#include "rng/generators/entries.h"
#include "rng/generators/generators.h"
#include "rng/generators/sinks.h"

namespace orin::rng {
namespace {

constexpr std::size_t quads = 156, words = 4 * quads, middle = 122;

struct State {
  uint32_t block[words];
  uint32_t delivered;  // of the block's words
  uint32_t reserved[5];
};
static_assert(sizeof(State) == 2536 - sizeof(StreamHeader));

// The period is certified when the parity of the seeded words under this check is odd.
constexpr uint32_t parity_check[4] = {0x00000001U, 0, 0, 0x13c9e684U};

void certify_period(uint32_t* x) {
  uint32_t inner = 0;
  for (int i = 0; i < 4; ++i) inner ^= x[i] & parity_check[i];
  for (int shift = 16; shift > 0; shift /= 2) inner ^= inner >> shift;
  if ((inner & 1) == 0) x[0] ^= 1;  // the lowest bit of the check
}

void seed_with_word(uint32_t* x, uint32_t s) {
  x[0] = s;
  for (uint32_t i = 1; i < words; ++i) x[i] = 1812433253U * (x[i - 1] ^ (x[i - 1] >> 30)) + i;
}

void seed_with_array(uint32_t* x, std::size_t n, const uint32_t* seeds) {
  constexpr std::size_t lag = 11, centre = (words - lag) / 2;
  std::fill_n(x, words, 0x8b8b8b8bU);
  std::size_t i = 0;
  const auto add = [&](uint32_t term) {
    const uint32_t mixed = x[i] ^ x[(i + centre) % words] ^ x[(i + words - 1) % words];
    const uint32_t r = (mixed ^ (mixed >> 27)) * 1664525U;
    x[(i + centre) % words] += r;
    x[(i + centre + lag) % words] += r + term;
    x[i] = r + term;
    i = (i + 1) % words;
  };
  const auto subtract = [&] {
    const uint32_t mixed = x[i] + x[(i + centre) % words] + x[(i + words - 1) % words];
    const uint32_t r = (mixed ^ (mixed >> 27)) * 1566083941U;
    const auto term = static_cast<uint32_t>(i);
    x[(i + centre) % words] ^= r;
    x[(i + centre + lag) % words] ^= r - term;
    x[i] = r - term;
    i = (i + 1) % words;
  };
  add(static_cast<uint32_t>(n));
  for (std::size_t j = 0; j < std::max(n, words - 1); ++j) add((j < n ? seeds[j] : 0) + static_cast<uint32_t>(i));
  for (std::size_t j = 0; j < words; ++j) subtract();
}

// States stand at multiples of 16 bytes.
__m128i quad(const uint32_t* words_of_state) {
  return _mm_load_si128(reinterpret_cast<const __m128i*>(words_of_state));
}

// Computes the next block and sends it, quad by quad.
template <class Sink>
void next_block(uint32_t* x, Sink& sink) {
  const __m128i mask = _mm_set_epi32(static_cast<int>(0xbffffff6), static_cast<int>(0xbffaffff),
                                     static_cast<int>(0xddfecb7f), static_cast<int>(0xdfffffef));
  __m128i before = load_words(x + 4 * (quads - 2)), last = load_words(x + 4 * (quads - 1));
  Sink local = sink;
  const auto step = [&](uint32_t* oldest, const uint32_t* other) {
    const __m128i a = quad(oldest);
    __m128i next = _mm_xor_si128(a, _mm_slli_si128(a, 1));
    next = _mm_xor_si128(next, _mm_and_si128(_mm_srli_epi32(quad(other), 11), mask));
    next = _mm_xor_si128(next, _mm_srli_si128(before, 1));
    next = _mm_xor_si128(next, _mm_slli_epi32(last, 18));
    _mm_store_si128(reinterpret_cast<__m128i*>(oldest), next);
    local.four(next);
    before = last;
    last = next;
  };
  for (std::size_t i = 0; i < quads - middle; ++i) step(x + 4 * i, x + 4 * (i + middle));
  for (std::size_t i = quads - middle; i < quads; ++i) step(x + 4 * i, x + 4 * (i + middle - quads));
  sink = local;
}

struct NoSink {
  void four(__m128i) const {}
};

struct Sfmt19937 {
  static int32_t seed(void* stream, int32_t n, const uint32_t* seeds) {
    State& state = state_of<State>(stream);
    if (n >= 2) {
      seed_with_array(state.block, static_cast<std::size_t>(n), seeds);
    } else {
      seed_with_word(state.block, n == 1 ? seeds[0] : 1);
    }
    certify_period(state.block);
    state.delivered = words;
    std::fill_n(state.reserved, 5, 0);
    return JUN_RNG_OK;
  }

  template <class Sink>
  static int32_t generate(void* stream, std::size_t n, Sink& sink) {
    State& state = state_of<State>(stream);
    const auto send_ready = [&] {
      const std::size_t delivered = std::min<std::size_t>(state.delivered, words);
      const std::size_t ready = std::min(n, words - delivered);
      send_words(state.block + delivered, ready, sink);
      state.delivered = static_cast<uint32_t>(delivered + ready);
      n -= ready;
    };
    send_ready();
    for (; n >= words; n -= words) next_block(state.block, sink);
    if (n != 0) {
      NoSink none;
      next_block(state.block, none);
      state.delivered = 0;
      send_ready();
    }
    return JUN_RNG_OK;
  }
};

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_RNG_ENTRIES(SFMT19937, init_stream<Sfmt19937>, uniforms<Sfmt19937>, (raw_outputs<Sfmt19937, RawWords, 4>))
