// view.h: strided arrays of up to seven dimensions.
// SPDX-License-Identifier: MIT
#ifndef ORIN_CONV_VIEW_H
#define ORIN_CONV_VIEW_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "conv/simd.h"
#include "orin/conv.h"
#include "service/work_buffer.h"

namespace orin::conv {

constexpr int max_dims = ORIN_CONV_MAX_DIMS;

// A type pair: scalars of the data, scalars of the arithmetic, scalars per element.
template <class DataT, class SumT, std::size_t Parts>
struct Pair {
  using Data = DataT;
  using Sum = SumT;
  static constexpr std::size_t parts = Parts;
};
using SS = Pair<float, float, 1>;
using SD = Pair<float, double, 1>;
using DD = Pair<double, double, 1>;
using CC = Pair<float, float, 2>;
using CZ = Pair<float, double, 2>;
using ZZ = Pair<double, double, 2>;

// The product where it exists. A stride of a single element may be any number; what it wraps to is never used.
inline std::ptrdiff_t wrapped_product(std::ptrdiff_t a, std::ptrdiff_t b) {
  return static_cast<std::ptrdiff_t>(static_cast<std::size_t>(a) * static_cast<std::size_t>(b));
}

// Element k stands at origin + sum of k[d] stride[d]; strides count scalars. Only the first `dims` entries of the lists
// are made and copied: a short call is over sooner than whole lists are through memory.
template <class Scalar>
struct View {
  Scalar* origin = nullptr;
  int dims = 0;
  std::ptrdiff_t shape[max_dims];
  std::ptrdiff_t stride[max_dims];

  View() = default;
  View(Scalar* elements, int dimensions) : origin(elements), dims(dimensions) {}
  View(const View& other) : View(other.origin, other.dims) { copy_lists(other); }
  View(const View<std::remove_const_t<Scalar>>& other) requires(std::is_const_v<Scalar>)
      : View(other.origin, other.dims) {
    copy_lists(other);
  }
  View& operator=(const View& other) {
    origin = other.origin;
    dims = other.dims;
    copy_lists(other);
    return *this;
  }

  // The same elements in opposite order along dimension d.
  void reverse(int d) {
    origin += (shape[d] - 1) * stride[d];
    stride[d] = wrapped_product(stride[d], -1);
  }
  void reverse() {
    for (int d = 0; d < dims; ++d) reverse(d);
  }

 private:
  template <class Other>
  void copy_lists(const View<Other>& other) {
    int d = 0;
    do {  // there is a first dimension
      shape[d] = other.shape[d];
      stride[d] = other.stride[d];
    } while (++d < dims);
  }
};

// The caller's array: a negative stride means that `address` is that of the last element.
template <std::size_t Parts, class Scalar>
View<Scalar> caller_view(Scalar* address, int dims, const std::int32_t* shape, const std::int32_t* stride) {
  View<Scalar> view(address, dims);
  for (int d = 0; d < dims; ++d) {
    view.shape[d] = shape[d];
    view.stride[d] = wrapped_product(stride[d], static_cast<std::ptrdiff_t>(Parts));
    if (stride[d] < 0) view.origin -= (view.shape[d] - 1) * view.stride[d];
  }
  return view;
}

// Product of lengths, or the largest number when it does not fit.
inline std::size_t saturated_product(std::size_t a, std::size_t b) {
  std::size_t product;
  return __builtin_mul_overflow(a, b, &product) ? SIZE_MAX : product;
}

template <class Length>
std::size_t volume(int dims, const Length* shape) {
  std::size_t product = 1;
  for (int d = 0; d < dims; ++d) product = saturated_product(product, static_cast<std::size_t>(shape[d]));
  return product;
}
template <class Scalar>
std::size_t volume(const View<Scalar>& view) {
  return volume(view.dims, view.shape);
}

// Calls f(offset) for every index vector over dimensions 1 and up, offset[v] being the sum of index times
// stride[v][d]: the rows of several arrays of one shape side by side.
template <std::size_t Views, class F>
void for_each_row(int dims, const std::ptrdiff_t* shape, const std::ptrdiff_t* const (&stride)[Views], F&& f) {
  std::ptrdiff_t index[max_dims] = {};
  std::ptrdiff_t offset[Views] = {};
  for (;;) {
    f(offset, index);
    int d = 1;
    for (; d < dims; ++d) {
      for (std::size_t v = 0; v < Views; ++v) offset[v] += stride[v][d];
      if (++index[d] < shape[d]) break;
      for (std::size_t v = 0; v < Views; ++v) offset[v] -= index[d] * stride[v][d];
      index[d] = 0;
    }
    if (d >= dims) return;
  }
}

// A row of `count` elements, converted where the types differ.
template <std::size_t Parts, class From, class To>
void copy_row(const From* from, std::ptrdiff_t from_stride, To* to, std::ptrdiff_t to_stride, std::ptrdiff_t count) {
  constexpr auto parts = static_cast<std::ptrdiff_t>(Parts);
  if constexpr (std::is_same_v<std::remove_const_t<From>, To>) {
    if (from_stride == parts && to_stride == parts) {
      std::copy_n(from, count * parts, to);
      return;
    }
    if (from_stride == -parts && to_stride == parts) {
      using Lanes = Simd<To>;
      constexpr std::ptrdiff_t together = Lanes::lanes / Parts;
      for (; count >= together; count -= together, from -= together * parts, to += together * parts)
        Lanes::store_any(to, Lanes::template reversed<Parts>(Lanes::load_any(from - (together - 1) * parts)));
    }
  }
  for (; count > 0; --count, from += from_stride, to += to_stride)
    for (std::ptrdiff_t p = 0; p < parts; ++p) to[p] = static_cast<To>(from[p]);
}

// Copies elements between arrays of one shape.
template <std::size_t Parts, class From, class To>
void copy_elements(const View<From>& from, const View<To>& to) {
  for_each_row<2>(from.dims, from.shape, {from.stride, to.stride}, [&](const std::ptrdiff_t* offset, const auto*) {
    copy_row<Parts>(from.origin + offset[0], from.stride[0], to.origin + offset[1], to.stride[0], from.shape[0]);
  });
}

// A dense array of the same shape at `origin`, its rows `pitch[0]` elements apart in dimension 1 and so on.
template <std::size_t Parts, class To, class Scalar, class Length>
View<To> dense_view(To* origin, const View<Scalar>& like, const Length* pitch) {
  View<To> dense(origin, like.dims);
  std::ptrdiff_t stride = Parts;
  for (int d = 0; d < like.dims; stride *= static_cast<std::ptrdiff_t>(pitch[d++])) {
    dense.shape[d] = like.shape[d];
    dense.stride[d] = stride;
  }
  return dense;
}

// Replaces `view` by a dense copy in `buffer`; false when that cannot be had.
template <std::size_t Parts, class Scalar>
[[nodiscard]] bool pack(View<const Scalar>& view, service::WorkBuffer<Scalar>& buffer) {
  if (!buffer.allocate(saturated_product(volume(view), Parts))) return false;
  const View<Scalar> dense = dense_view<Parts>(buffer.data(), view, view.shape);
  copy_elements<Parts>(view, dense);
  view = dense;
  return true;
}

}  // namespace orin::conv

#endif
