// r250: x[n] = x[n-103] xor x[n-250], u = x / 2^32.
// SPDX-License-Identifier: MIT
//
// Source    S. Kirkpatrick, E. Stoll, J. Comp. Phys. 40 (1981) 517-526. Period 2^250 - 1 for each bit.
//           State: the last 250 words, round a ring, and the places of x[n-250] and x[n-103] in it.
// Method    The ring is laid out straight in work memory and continued there in groups of four; its end becomes the
//           ring. Raw words need no work memory: they are the sequence.
// Streams   neither leapfrog nor skip-ahead
// Proof     tests/rng/generators/sequence_test.cpp: the recurrence on the seeded table, word by word
#include <algorithm>

#include "rng/generators/entries.h"
#include "rng/generators/generators.h"
#include "rng/generators/sinks.h"

namespace orin::rng {
namespace {

constexpr std::size_t order = 250, tap = 103;

struct State {
  uint32_t ring[order];
  uint32_t oldest;  // place of x[n-250]
  uint32_t middle;  // place of x[n-103]
};
static_assert(sizeof(State) == 1024 - sizeof(StreamHeader));

void set_oldest(State& state, std::size_t place) {
  state.oldest = static_cast<uint32_t>(place % order);
  state.middle = static_cast<uint32_t>((place + order - tap) % order);
}

// The ring, oldest word first.
void unroll(const State& state, uint32_t* words) {
  const std::size_t oldest = state.oldest % order;
  std::memcpy(words, state.ring + oldest, (order - oldest) * sizeof *words);
  std::memcpy(words + order - oldest, state.ring, oldest * sizeof *words);
}
// The ring n steps on, from its 250 words, oldest first.
void roll_up(State& state, const uint32_t* words, std::size_t n) {
  const std::size_t oldest = (state.oldest + n) % order;
  std::memcpy(state.ring + oldest, words, (order - oldest) * sizeof *words);
  std::memcpy(state.ring, words + order - oldest, oldest * sizeof *words);
  set_oldest(state, oldest);
}

inline __m128i next_four(const uint32_t* x) { return _mm_xor_si128(load_words(x), load_words(x + order - tap)); }

// words[250 .. 250 + count - 1] from the 250 before them.
void extend(uint32_t* words, std::size_t count) {
  std::size_t k = 0;
  for (; k + 8 <= count; k += 8) {
    store_words(words + k + order, next_four(words + k));
    store_words(words + k + 4 + order, next_four(words + k + 4));
  }
  for (; k < count; ++k) words[k + order] = words[k] ^ words[k + order - tap];
}

// The same, with the new words sent to a sink. The last group is computed whole: up to three words more.
template <class Sink>
void extend(uint32_t* words, std::size_t count, Sink& sink) {
  Sink local = sink;
  for (; count >= 4; count -= 4, words += 4) {
    const __m128i next = next_four(words);
    store_words(words + order, next);
    local.four(next);
  }
  if (count != 0) {
    const __m128i next = next_four(words);
    store_words(words + order, next);
    local.some(next, count);
  }
  sink = local;
}

constexpr std::size_t few = 8;  // steps that are not worth unrolling the ring

// A few words, each in its place.
template <class Sink>
void step(State& state, std::size_t n, Sink& sink) {
  uint32_t words[few];
  std::size_t oldest = state.oldest % order, middle = (oldest + order - tap) % order;
  for (std::size_t i = 0; i < n; ++i) {
    words[i] = state.ring[oldest] ^= state.ring[middle];
    if (++oldest == order) oldest = 0;
    if (++middle == order) middle = 0;
  }
  set_oldest(state, oldest);
  send_words(words, n, sink);
}

struct R250 {
  static int32_t seed(void* stream, int32_t n, const uint32_t* seeds) {
    State& state = state_of<State>(stream);
    if (n >= static_cast<int32_t>(order)) {
      std::memcpy(state.ring, seeds, sizeof state.ring);
    } else {
      uint32_t s = n > 0 && seeds[0] != 0 ? seeds[0] : 1;
      for (uint32_t& word : state.ring) word = s *= 69069U;
      // 32 words that are linearly independent, bit by bit
      for (int k = 0; k < 32; ++k) {
        uint32_t& word = state.ring[3 + 7 * k];
        word = (word & (0xffffffffU >> k)) | (0x80000000U >> k);
      }
    }
    set_oldest(state, 0);
    return JUN_RNG_OK;
  }

  template <class Sink>
  static int32_t generate(void* stream, std::size_t n, Sink& sink) {
    State& state = state_of<State>(stream);
    if (n <= few) {
      step(state, n, sink);
      return JUN_RNG_OK;
    }
    constexpr std::size_t block = 1024;
    uint32_t work[order + block + 3];
    unroll(state, work);
    std::size_t rest = n;
    for (; rest > block; rest -= block) {
      extend(work, block, sink);
      std::memcpy(work, work + block, order * sizeof *work);
    }
    extend(work, rest, sink);
    roll_up(state, work + rest, n);
    return JUN_RNG_OK;
  }
};

int32_t raw_sequence(void* stream, int32_t n, uint32_t* r) {
  if (n <= static_cast<int32_t>(few)) return raw_outputs<R250>(stream, n, r);
  if (stream == nullptr || r == nullptr) return JUN_RNG_NULL_POINTER;
  State& state = state_of<State>(stream);
  const auto count = static_cast<std::size_t>(n);
  const std::size_t first = std::min(count, order);
  uint32_t work[2 * order];
  unroll(state, work);
  extend(work, first);
  std::memcpy(r, work + order, first * sizeof *r);
  if (count > order) extend(r, count - order);
  roll_up(state, count >= order ? r + count - order : work + first, count);
  return JUN_RNG_OK;
}

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_RNG_ENTRIES(R250, init_stream<R250>, uniforms<R250>, raw_sequence)
