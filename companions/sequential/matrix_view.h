// matrix_view: a caller's matrix as a pointer and two steps, so that a transpose costs nothing.
// SPDX-License-Identifier: MIT
#ifndef ORIN_COMPANIONS_SEQUENTIAL_MATRIX_VIEW_H
#define ORIN_COMPANIONS_SEQUENTIAL_MATRIX_VIEW_H

#include <cstddef>

namespace orin::sequential {

using Index = std::ptrdiff_t;

// Element (i, j) is data[i * row_step + j * column_step].
template <class T>
struct MatrixView {
  T* data;
  Index row_step;
  Index column_step;

  T& operator()(Index i, Index j) const noexcept { return data[i * row_step + j * column_step]; }
  MatrixView from(Index i, Index j) const noexcept { return {&(*this)(i, j), row_step, column_step}; }
  MatrixView transposed() const noexcept { return {data, column_step, row_step}; }
  operator MatrixView<const T>() const noexcept { return {data, row_step, column_step}; }
};

// The view of op(A) for a matrix stored column after column.
template <class T>
MatrixView<T> view(T* data, Index leading, bool transposed = false) noexcept {
  return transposed ? MatrixView<T>{data, leading, 1} : MatrixView<T>{data, 1, leading};
}

// A caller's vector; a negative increment starts at the far end of the memory.
template <class T>
struct VectorView {
  T* data;
  Index step;

  VectorView(T* first, Index stride) noexcept : data(first), step(stride) {}
  VectorView(T* memory, Index count, Index increment) noexcept
      : data(increment < 0 ? memory - (count - 1) * increment : memory), step(increment) {}
  T& operator[](Index i) const noexcept { return data[i * step]; }
  operator VectorView<const T>() const noexcept { return {data, step}; }
};

}  // namespace orin::sequential

#endif
