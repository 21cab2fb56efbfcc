// sliding.h: sliding sums, the direct method in any number of dimensions.
// SPDX-License-Identifier: MIT
//
//   out[i] = sum over k of taps[k] source[first + step i + k]        along every dimension, over the k inside both
//
// A correlation is this as it stands, a convolution with one operand reversed.
//
// Method    Outputs of a row go through registers in tiles of six or twelve vectors: each tap, spread over a vector,
//           meets that many vectors of the source, and the sums never wait for one another. Tiles form groups. For a
//           group and 128 taps at a time, taps are spread over vectors on the stack, and the piece of the source that
//           they meet is read in place or, where it is strided, crosses an end, needs conversion or is decimated,
//           gathered there with zeros beyond the ends. Both cost little beside the sums. A decimation D splits the
//           taps into D interleaved sets, each an undecimated sum over every D-th element of the source.
// Ends      Where the source begins or ends, the vectors of a tile join and leave some at a time as the taps go on: what
//           would meet zeros alone is left out.
// Odd taps  A tap that is infinite or NaN would make NaN of the zeros beyond the ends: tiles at the ends take such taps one
//           product at a time, so that an output sees the products of its sum alone.
// Complex   The parts of a tap meet interleaved elements whole: sums of re(h) v and of im(h) v apart, joined at the
//           end as first + i second; no shuffle in the loop.
// Bounds    The inner loop is bound by the adder and multiplier ports: one load, multiplication and addition for each
//           vector of terms.
// Accuracy  Each output is the plain sum of its terms in the order of k within a set: error <= n u sum |terms|.
#ifndef ORIN_CONV_SLIDING_H
#define ORIN_CONV_SLIDING_H

#include <cstdint>

#include "conv/view.h"

namespace orin::conv {

// A number per dimension; those of no dimension are left alone.
struct Positions {
  Positions() {}
  std::int64_t& operator[](int d) { return value[d]; }
  std::int64_t operator[](int d) const { return value[d]; }

  std::int64_t value[max_dims];
};

template <class P>
struct Sliding {
  using Data = typename P::Data;

  // A constructor, because compilers clear the lists of an aggregate as well.
  Sliding(const View<const Data>& some_taps, const View<const Data>& some_source, const View<Data>& some_out)
      : taps(some_taps), source(some_source), out(some_out) {}

  View<const Data> taps, source;
  View<Data> out;
  Positions first, step;  // steps are positive
  bool add = false;       // to what `out` holds
};

template <class P>
void slide(const Sliding<P>& sums);

extern template void slide<SS>(const Sliding<SS>&);
extern template void slide<SD>(const Sliding<SD>&);
extern template void slide<DD>(const Sliding<DD>&);
extern template void slide<CC>(const Sliding<CC>&);
extern template void slide<CZ>(const Sliding<CZ>&);
extern template void slide<ZZ>(const Sliding<ZZ>&);

}  // namespace orin::conv

#endif
