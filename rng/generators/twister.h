// twister: the word recurrence of the Mersenne twisters, seeding, and output in blocks.
// SPDX-License-Identifier: MIT
//
// Method    x[k+N] = x[k+M] ^ ((high bits of x[k] | low R bits of x[k+1]) A): y A is y >> 1, exclusive-ored with the
//           twist coefficient where y is odd. A word is delivered after four shift-and-mask steps (tempering).
//           The table holds one block of N words and the count of them delivered. A block is computed from the one
//           before it in groups of four: M + 4 <= N, so that no word of a group depends on another one. Several blocks
//           are computed in a row in work memory, where no index wraps; the last one becomes the table.
// Source    M. Matsumoto, T. Nishimura, ACM TOMACS 8 (1998) 3-30; array seeding: their revision of 26 January 2002
#ifndef ORIN_RNG_GENERATORS_TWISTER_H
#define ORIN_RNG_GENERATORS_TWISTER_H

#include <algorithm>

#include "rng/generators/generators.h"
#include "rng/generators/sinks.h"

namespace orin::rng {

struct TwisterParameters {
  uint32_t twist;   // a
  uint32_t mask_b;  // tempering y ^= (y << 7) & b
  uint32_t mask_c;  // tempering y ^= (y << 15) & c
};

template <std::size_t Words>
struct TwisterTable {
  uint32_t words[Words];
  uint32_t delivered;  // of the table's words; Words: a new block is due
};

// N words, M the middle one, the low R bits of x[k] are no part of the state, first tempering shift U. Blocks: most
// that are computed in a row.
template <std::size_t N, std::size_t M, int R, int U, std::size_t Blocks>
class Twister {
  static_assert(M + 4 <= N);

 public:
  using Table = TwisterTable<N>;

  static void seed(Table& table, int32_t n, const uint32_t* seeds) {
    if (n >= 2) {
      seed_with_array(table.words, static_cast<std::size_t>(n), seeds);
    } else {
      seed_with_word(table.words, n == 1 ? seeds[0] : 1);
    }
    table.delivered = N;
  }

  template <class Sink>
  static void generate(Table& table, std::size_t n, const TwisterParameters& p, Sink& sink) {
    const Tempering tempering(p);
    const std::size_t delivered = std::min<std::size_t>(table.delivered, N);
    const std::size_t ready = std::min(n, N - delivered);
    send_words(table.words + delivered, ready, sink, tempering);
    table.delivered = static_cast<uint32_t>(delivered + ready);
    n -= ready;
    uint32_t work[(1 + Blocks) * N + 3];
    while (n != 0) {
      const std::size_t blocks = std::min(Blocks, (n + N - 1) / N);
      std::memcpy(work, table.words, sizeof table.words);
      for (std::size_t k = 0; k < blocks * N; k += 4) store_words(work + k + N, next_four(work + k, p.twist));
      const std::size_t count = std::min(n, blocks * N);
      send_words(work + N, count, sink, tempering);
      std::memcpy(table.words, work + blocks * N, sizeof table.words);
      table.delivered = static_cast<uint32_t>(count - (blocks - 1) * N);
      n -= count;
    }
  }

 private:
  class Tempering {
   public:
    explicit Tempering(const TwisterParameters& p) : b_(splat_word(p.mask_b)), c_(splat_word(p.mask_c)) {}
    FoldedWords operator()(__m128i y) const {
      y = _mm_xor_si128(y, _mm_srli_epi32(y, U));
      y = _mm_xor_si128(y, _mm_and_si128(_mm_slli_epi32(y, 7), b_));
      y = _mm_xor_si128(y, _mm_and_si128(_mm_slli_epi32(y, 15), c_));
      return {y};
    }

   private:
    __m128i b_, c_;
  };

  static __m128i next_four(const uint32_t* x, uint32_t twist) {
    const __m128i low_bits = splat_word((1U << R) - 1);
    const __m128i next = load_words(x + 1);
    const __m128i y = _mm_or_si128(_mm_andnot_si128(low_bits, load_words(x)), _mm_and_si128(low_bits, next));
    const __m128i odd = _mm_srai_epi32(_mm_slli_epi32(next, 31), 31);
    const __m128i twisted = _mm_xor_si128(_mm_srli_epi32(y, 1), _mm_and_si128(odd, splat_word(twist)));
    return _mm_xor_si128(load_words(x + M), twisted);
  }

  static void seed_with_word(uint32_t* x, uint32_t s) {
    x[0] = s;
    for (uint32_t i = 1; i < N; ++i) x[i] = 1812433253U * (x[i - 1] ^ (x[i - 1] >> 30)) + i;
  }

  static void seed_with_array(uint32_t* x, std::size_t n, const uint32_t* seeds) {
    seed_with_word(x, 19650218U);
    std::size_t i = 1, j = 0;
    const auto advance = [&] {
      if (++i == N) {
        x[0] = x[N - 1];
        i = 1;
      }
    };
    const auto mixed = [&](uint32_t factor) { return x[i] ^ ((x[i - 1] ^ (x[i - 1] >> 30)) * factor); };
    for (std::size_t k = std::max(N, n); k != 0; --k) {
      x[i] = mixed(1664525U) + seeds[j] + static_cast<uint32_t>(j);
      advance();
      if (++j == n) j = 0;
    }
    for (std::size_t k = N - 1; k != 0; --k) {
      x[i] = mixed(1566083941U) - static_cast<uint32_t>(i);
      advance();
    }
    x[0] = 0x80000000U;  // never all zero
  }
};

}  // namespace orin::rng

#endif
