// twiddles.h: the factors of the transform's levels, made afresh by every call.
// SPDX-License-Identifier: MIT
//
// Block c of level l (see transform.h) multiplies by w, w^2, w^3 with w = e^(2 pi i theta / 4),
//
//   theta(l, c) = 4^-l / 4 + r(lane) / 4^(l-1) + beta(rest)                                                  in turns,
//
// where r reverses the two bits of the lane's first digit (0, 1/2, 1/4, 3/4) and beta is the bit reversal of the
// block's other digits as a fraction. Levels 1 to 3 and the 64 anchors e^(2 pi i k beta(0..63) / 4) are constants. A
// later block splits beta(rest) into that of its low six bits, the anchor A, and a rest that joins the first two terms
// in a small angle x below 0.14 rad:
//
//   w^k = A e^(ix) = A + A E,   E = cos x - 1 + i sin x from the series, both parts accurate relative to themselves.
//
// Budget, in units of the last place u: anchor 1/2, final addition 1/2, the rounding of A E 3 |E| < 0.4.
#ifndef ORIN_CONV_TWIDDLES_H
#define ORIN_CONV_TWIDDLES_H

#include <array>
#include <cstddef>

#include "conv/roots.h"
#include "conv/simd.h"

namespace orin::conv {

// w, w^2, w^3 of one vector of blocks.
template <class T>
struct alignas(16) TwiddleBlock {
  struct Factor {
    T re[Simd<T>::lanes], im[Simd<T>::lanes];
  };
  Factor power[3];
};

template <class T>
class Twiddles {
 public:
  using Block = TwiddleBlock<T>;

  // The four blocks of level 1 fill this many vectors.
  static constexpr std::size_t first_vectors = 4 / Simd<T>::lanes;

  // Blocks of memory that `generate` fills for a transform of that many levels.
  static constexpr std::size_t generated_count(unsigned levels) {
    return levels <= constant_levels ? 0 : blocks_before(levels + 1) - blocks_before(constant_levels + 1);
  }

  void generate(Block* memory, unsigned levels);

  // The blocks of a level, 1 and up.
  const Block* level(unsigned l) const {
    return l <= constant_levels ? constants.data() + blocks_before(l)
                                : generated_ + (blocks_before(l) - blocks_before(constant_levels + 1));
  }

 private:
  static constexpr unsigned constant_levels = 3;
  static constexpr std::size_t anchor_count = 64;

  static constexpr std::size_t blocks_of(unsigned l) { return first_vectors << (2 * (l - 1)); }
  static constexpr std::size_t blocks_before(unsigned l) { return (blocks_of(l) - first_vectors) / 3; }

  using Constants = std::array<Block, blocks_before(constant_levels + 1)>;
  using Anchors = std::array<Block, anchor_count>;
  static const Constants constants;
  static const Anchors anchors;

  const Block* generated_ = nullptr;
};

extern template class Twiddles<float>;
extern template class Twiddles<double>;

}  // namespace orin::conv

#endif
