// transform.cpp: the order of the passes between a loaded operand and a product, see transform.h.
// SPDX-License-Identifier: MIT
#include "conv/transform.h"

#include <type_traits>

#include "conv/butterflies.h"

namespace orin::conv {

namespace {

// Groups of a block that, with its counterpart and its factors, is worked on in the first-level cache.
constexpr std::size_t cached_length = 256;

}  // namespace

template <class T>
Transform<T>::Transform(std::size_t points) : points_(points), last_length_(points / 4), levels_(0) {
  while (last_length_ > 4) {
    last_length_ /= 4;
    ++levels_;
  }
}

template <class T>
void Transform<T>::forward_block(unsigned level, std::size_t block, std::size_t length, T* work) const {
  if (length <= cached_length) {
    for (std::size_t blocks = 1; length > last_length_; ++level, block *= 4, blocks *= 4, length /= 4)
      split_pass(work, blocks, length, twiddles_.level(level) + block);
    return;
  }
  split_pass(work, 1, length, twiddles_.level(level) + block);
  for (std::size_t i = 0; i < 4; ++i)
    forward_block(level + 1, 4 * block + i, length / 4, work + i * (length / 4) * group<T>);
}

template <class T>
void Transform<T>::forward(T* work) const {
  const std::size_t length = points_ / 4;
  for (std::size_t v = 0; v < Twiddles<T>::first_vectors; ++v)
    forward_block(1, v, length, work + v * length * group<T>);
}

template <class T>
template <class Other>
void Transform<T>::multiply_last(std::size_t block, std::size_t length, T* work, Other* other) const {
  // `block` is the first of the blocks of the last level, whose quarters are the last blocks.
  const TwiddleBlock<T>* twiddle = twiddles_.level(levels_) + block;
  const std::size_t parents = length / (4 * last_length_);
  if (last_length_ == 4)
    multiply_polynomials_below<4>(work, other, parents, twiddle);
  else
    multiply_polynomials_below<2>(work, other, parents, twiddle);
}

template <class T>
template <class Other>
void Transform<T>::multiply_block(unsigned level, std::size_t block, std::size_t length, T* work, Other* other) const {
  constexpr bool kept = std::is_const_v<Other>;
  if (length <= cached_length) {
    std::size_t blocks = 1, size = length;
    for (; level <= levels_; ++level, block *= 4, blocks *= 4, size /= 4) {
      split_pass(work, blocks, size, twiddles_.level(level) + block);
      if constexpr (!kept) split_pass(other, blocks, size, twiddles_.level(level) + block);
    }
    multiply_last(block / 4, length, work, other);
    while (size < length) {
      --level, block /= 4, blocks /= 4, size *= 4;
      join_pass(work, blocks, size, twiddles_.level(level) + block);
    }
    return;
  }
  const TwiddleBlock<T>* twiddle = twiddles_.level(level) + block;
  split_pass(work, 1, length, twiddle);
  if constexpr (!kept) split_pass(other, 1, length, twiddle);
  for (std::size_t i = 0; i < 4; ++i) {
    const std::size_t offset = i * (length / 4) * group<T>;
    multiply_block(level + 1, 4 * block + i, length / 4, work + offset, other + offset);
  }
  join_pass(work, 1, length, twiddle);
}

template <class T>
template <class Other>
void Transform<T>::multiply(T* work, Other* other) const {
  const std::size_t length = points_ / 4;
  for (std::size_t v = 0; v < Twiddles<T>::first_vectors; ++v)
    multiply_block(1, v, length, work + v * length * group<T>, other + v * length * group<T>);
}

template <class T>
void Transform<T>::multiply_loaded(T* work, T* other) const {
  multiply(work, other);
}

template <class T>
void Transform<T>::multiply_kept(T* work, const T* other) const {
  multiply(work, other);
}

template class Transform<float>;
template class Transform<double>;

}  // namespace orin::conv
