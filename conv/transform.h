// transform.h: the power-of-two transform under the convolution engine.
// SPDX-License-Identifier: MIT
//
// Method    A sequence of m complex numbers is a polynomial modulo t^m - i. A block modulo t^n - e^(2 pi i theta)
//           splits into four modulo t^(n/4) - e^(2 pi i (theta/4 + {0, 1/2, 1/4, 3/4})): with w = e^(2 pi i theta/4)
//           and the quarters a0..a3 of its coefficients,
//
//             b0 = (a0 + w^2 a2) + (w a1 + w^3 a3)      b2 = (a0 - w^2 a2) + i (w a1 - w^3 a3)
//             b1 = (a0 + w^2 a2) - (w a1 + w^3 a3)      b3 = (a0 - w^2 a2) - i (w a1 - w^3 a3).
//
//           Polynomials are multiplied block by block, in whatever order the splitting leaves them, and the splitting
//           is undone by its inverse: no digit reversal anywhere. The last blocks keep 2 or 4 coefficients and are
//           multiplied as polynomials, which costs no more than the passes that it replaces and saves their factors.
// Real data A real polynomial modulo t^2m + 1 = (t^m - i)(t^m + i) is known from its residue modulo t^m - i, which is
//           coefficient j + i times coefficient j + m. So real sequences of length 2m cost one complex transform of
//           length m and no pass of their own: the halves are loaded as real and imaginary parts ("right-angle
//           convolution").
// Layout    The first pass leaves its four blocks in the lanes of the vectors, so all later passes run the same
//           arithmetic in every lane: no shuffle, no short loop. A group is a vector of real and one of imaginary
//           parts. Singles: one vector of four blocks; doubles: two vectors of two blocks, one after the other.
// Cache     Blocks larger than the first-level cache's share are split depth first, both operands together, and each
//           small block is transformed, multiplied and transformed back while it is in cache.
// Bounds    A butterfly pass is bound by the adders and multipliers: 34 operations and 16 loads and stores for four
//           groups, all values in the sixteen registers of x86-64; the 32-bit build reads factors from memory.
// Accuracy  error relative to the norm of the exact result below 10 log2(m) u; docs/conv.md has what is measured.
// Source    R. E. Crandall and B. Fagin, "Discrete weighted transforms and large-integer arithmetic", Math. Comp. 62
//           (1994); D. J. Bernstein, "Multidigit multiplication for mathematicians" (2001).
#ifndef ORIN_CONV_TRANSFORM_H
#define ORIN_CONV_TRANSFORM_H

#include <cstddef>

#include "conv/twiddles.h"

namespace orin::conv {

// A sequence that a transform reads, zero beyond its count, and the place its product goes to: the first `added`
// elements are added to what stands there, the others up to `count` are stored. Parts: 1 real, 2 interleaved complex.
template <class T, int Parts>
struct Input {
  const T* data;
  std::size_t count;
};

template <class T, int Parts>
struct Output {
  T* data;
  std::size_t count;
  std::size_t added;
};

template <class T>
class Transform {
 public:
  using Block = TwiddleBlock<T>;

  // `points` complex coefficients, a power of two from 64 on.
  explicit Transform(std::size_t points);

  std::size_t points() const { return points_; }
  std::size_t twiddle_blocks() const { return Twiddles<T>::generated_count(levels_); }
  void prepare(Block* memory) { twiddles_.generate(memory, levels_); }

  // First pass of the splitting, from a sequence to `points` complex coefficients at `work`.
  template <int Parts>
  void load(const Input<T, Parts>& input, T* work) const;

  // The passes that remain after `load`, for an operand that is kept.
  void forward(T* work) const;

  // work := the loaded operand at `work` times the one at `other`, ready for `unload`. The first form takes `other` as
  // `load` leaves it and overwrites it, the second as `forward` does.
  void multiply_loaded(T* work, T* other) const;
  void multiply_kept(T* work, const T* other) const;

  // Last pass back, with the scaling, to a sequence.
  template <int Parts>
  void unload(const T* work, const Output<T, Parts>& output) const;

 private:
  template <class Other>
  void multiply(T* work, Other* other) const;
  template <class Other>
  void multiply_block(unsigned level, std::size_t block, std::size_t length, T* work, Other* other) const;
  template <class Other>
  void multiply_last(std::size_t block, std::size_t length, T* work, Other* other) const;
  void forward_block(unsigned level, std::size_t block, std::size_t length, T* work) const;

  std::size_t points_;
  std::size_t last_length_;  // coefficients of a last block: 2 or 4
  unsigned levels_;          // passes after the first
  Twiddles<T> twiddles_;
};

extern template class Transform<float>;
extern template class Transform<double>;

}  // namespace orin::conv

#endif
