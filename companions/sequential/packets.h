// packets: the SSE2 vocabulary of this folder, taken from Eigen, and the two column operations everything else is made
// of. SPDX-License-Identifier: MIT
//
// Callers' doubles may sit on 4-byte boundaries, so every access to them is an unaligned load or store; the folder is
// compiled without automatic vectorisation, which would count on the natural alignment of the element type.
#ifndef ORIN_COMPANIONS_SEQUENTIAL_PACKETS_H
#define ORIN_COMPANIONS_SEQUENTIAL_PACKETS_H

#include "matrix_view.h"

#include <Eigen/Core>

namespace orin::sequential {

template <class T>
using Packet = typename Eigen::internal::packet_traits<T>::type;
template <class T>
inline constexpr Index lanes = Eigen::internal::packet_traits<T>::size;

template <class T>
Packet<T> load(const T* p) noexcept {
  return Eigen::internal::ploadu<Packet<T>>(p);
}
template <class T>
Packet<T> load_aligned(const T* p) noexcept {
  return Eigen::internal::pload<Packet<T>>(p);
}
template <class T>
Packet<T> spread(T value) noexcept {
  return Eigen::internal::pset1<Packet<T>>(value);
}
template <class T>
void store(T* p, const Packet<T>& v) noexcept {
  Eigen::internal::pstoreu(p, v);
}
template <class T>
void store_aligned(T* p, const Packet<T>& v) noexcept {
  Eigen::internal::pstore(p, v);
}
using Eigen::internal::padd;
using Eigen::internal::pmul;

// y += sum of the scale[c] * x[c], column after column for every element.
template <int Columns, class T>
void add_scaled(Index count, const T (&scale)[Columns], const T* const (&x)[Columns], T* y) noexcept {
  Packet<T> factors[Columns];
#pragma GCC unroll 4
  for (int c = 0; c < Columns; ++c) factors[c] = spread(scale[c]);
  Index i = 0;
  for (; i + 2 * lanes<T> <= count; i += 2 * lanes<T>) {
    auto even = load(y + i), odd = load(y + i + lanes<T>);
#pragma GCC unroll 4
    for (int c = 0; c < Columns; ++c) {
      even = padd(even, pmul(factors[c], load(x[c] + i)));
      odd = padd(odd, pmul(factors[c], load(x[c] + i + lanes<T>)));
    }
    store(y + i, even);
    store(y + i + lanes<T>, odd);
  }
  for (; i < count; ++i) {
    T sum = y[i];
#pragma GCC unroll 4
    for (int c = 0; c < Columns; ++c) sum += scale[c] * x[c][i];
    y[i] = sum;
  }
}

template <class T>
void add_scaled(Index count, T scale, const T* x, T* y) noexcept {
  const T scales[] = {scale};
  const T* const columns[] = {x};
  add_scaled<1>(count, scales, columns, y);
}

// result[c] = sum of x[c][i] * y[i], in two interleaved packets of partial sums.
template <int Columns, class T>
void dot(Index count, const T* const (&x)[Columns], const T* y, T (&result)[Columns]) noexcept {
  Packet<T> even[Columns], odd[Columns];
#pragma GCC unroll 4
  for (int c = 0; c < Columns; ++c) even[c] = odd[c] = spread(T(0));
  Index i = 0;
  for (; i + 2 * lanes<T> <= count; i += 2 * lanes<T>) {
    const auto y0 = load(y + i), y1 = load(y + i + lanes<T>);
#pragma GCC unroll 4
    for (int c = 0; c < Columns; ++c) {
      even[c] = padd(even[c], pmul(load(x[c] + i), y0));
      odd[c] = padd(odd[c], pmul(load(x[c] + i + lanes<T>), y1));
    }
  }
#pragma GCC unroll 4
  for (int c = 0; c < Columns; ++c) result[c] = Eigen::internal::predux(padd(even[c], odd[c]));
  for (; i < count; ++i)
#pragma GCC unroll 4
    for (int c = 0; c < Columns; ++c) result[c] += x[c][i] * y[i];
}

template <class T>
T dot(Index count, const T* x, const T* y) noexcept {
  const T* const columns[] = {x};
  T result[1];
  dot<1>(count, columns, y, result);
  return result[0];
}

}  // namespace orin::sequential

#endif
