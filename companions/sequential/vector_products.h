// vector_products: matrix times vector and the symmetric update with one vector.
// SPDX-License-Identifier: MIT
//
// Method    Four columns at a time over strips of rows that stay in the first-level cache; vectors with an increment
//           are gathered strip by strip into a buffer on the stack, so that no call needs memory.
// Rounding  A x: an element gets its products in order of the columns. A' x: four (float: eight) interleaved partial
//           sums per strip of 512. Neither depends on the leading dimension, the increments or the alignment.
// Bound by  reading the matrix once.
#ifndef ORIN_COMPANIONS_SEQUENTIAL_VECTOR_PRODUCTS_H
#define ORIN_COMPANIONS_SEQUENTIAL_VECTOR_PRODUCTS_H

#include "packets.h"

#include <algorithm>

namespace orin::sequential {

inline constexpr Index strip_length = 512;

// x[from], ... for a strip: in place where the elements lie side by side, otherwise gathered into `buffer`.
template <class T>
const T* strip_of(VectorView<const T> x, Index from, Index count, T* buffer) noexcept {
  if (x.step == 1) return &x[from];
  for (Index i = 0; i < count; ++i) buffer[i] = x[from + i];
  return buffer;
}

// y += alpha A x
template <class T>
void add_columns(Index rows, Index columns, T alpha, const T* a, Index leading, VectorView<const T> x,
                 VectorView<T> y) noexcept {
  T buffer[strip_length];
  for (Index i0 = 0; i0 < rows; i0 += strip_length) {
    const Index count = std::min(strip_length, rows - i0);
    T* const sums = y.step == 1 ? &y[i0] : buffer;
    if (y.step != 1) strip_of<T>(y, i0, count, buffer);
    Index j = 0;
    for (; j + 4 <= columns; j += 4) {
      const T* const top = a + i0 + j * leading;
      const T factors[] = {alpha * x[j], alpha * x[j + 1], alpha * x[j + 2], alpha * x[j + 3]};
      const T* const four[] = {top, top + leading, top + 2 * leading, top + 3 * leading};
      add_scaled<4>(count, factors, four, sums);
    }
    for (; j < columns; ++j) add_scaled(count, alpha * x[j], a + i0 + j * leading, sums);
    for (Index i = 0; sums == buffer && i < count; ++i) y[i0 + i] = buffer[i];
  }
}

// y += alpha A' x
template <class T>
void add_dots(Index rows, Index columns, T alpha, const T* a, Index leading, VectorView<const T> x,
              VectorView<T> y) noexcept {
  T buffer[strip_length];
  for (Index i0 = 0; i0 < rows; i0 += strip_length) {
    const Index count = std::min(strip_length, rows - i0);
    const T* const strip = strip_of(x, i0, count, buffer);
    Index j = 0;
    for (; j + 4 <= columns; j += 4) {
      const T* const top = a + i0 + j * leading;
      const T* const four[] = {top, top + leading, top + 2 * leading, top + 3 * leading};
      T sums[4];
      dot<4>(count, four, strip, sums);
      for (Index c = 0; c < 4; ++c) y[j + c] += alpha * sums[c];
    }
    for (; j < columns; ++j) y[j] += alpha * dot(count, a + i0 + j * leading, strip);
  }
}

// The named triangle of A += alpha x x'
template <class T>
void add_outer_square(bool lower, Index order, T alpha, VectorView<const T> x, T* a, Index leading) noexcept {
  T buffer[strip_length];
  for (Index i0 = 0; i0 < order; i0 += strip_length) {
    const Index end = std::min(i0 + strip_length, order);
    const T* const strip = strip_of(x, i0, end - i0, buffer);
    for (Index j = lower ? 0 : i0; j < (lower ? end : order); ++j) {  // rows [from, to) of column j lie in the triangle
      const Index from = lower ? std::max(i0, j) : i0, to = lower ? end : std::min(end, j + 1);
      add_scaled(to - from, alpha * x[j], strip + (from - i0), a + from + j * leading);
    }
  }
}

}  // namespace orin::sequential

#endif
