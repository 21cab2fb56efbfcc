// butterflies.h: the passes of the transform over blocks in its layout, and the product of last blocks.
// SPDX-License-Identifier: MIT
//
// Equations and layout: transform.h.
#ifndef ORIN_CONV_BUTTERFLIES_H
#define ORIN_CONV_BUTTERFLIES_H

#include <cstddef>

#include "conv/simd.h"
#include "conv/twiddles.h"

namespace orin::conv {

// A vector of complex numbers, parts apart.
template <class T>
struct Lanes {
  using Vector = typename Simd<T>::Vector;
  Vector re, im;

  friend Lanes operator+(Lanes a, Lanes b) { return {a.re + b.re, a.im + b.im}; }
  friend Lanes operator-(Lanes a, Lanes b) { return {a.re - b.re, a.im - b.im}; }
  friend Lanes operator*(Lanes a, Lanes b) { return {a.re * b.re - a.im * b.im, a.re * b.im + a.im * b.re}; }
};

// a conj(w)
template <class T>
Lanes<T> times_conjugate(Lanes<T> a, Lanes<T> w) {
  return {a.re * w.re + a.im * w.im, a.im * w.re - a.re * w.im};
}

// a + i b, a - i b
template <class T>
Lanes<T> plus_i(Lanes<T> a, Lanes<T> b) {
  return {a.re - b.im, a.im + b.re};
}
template <class T>
Lanes<T> minus_i(Lanes<T> a, Lanes<T> b) {
  return {a.re + b.im, a.im - b.re};
}

// Scalars of a group: its vector of real and its vector of imaginary parts.
template <class T>
constexpr std::size_t group = 2 * Simd<T>::lanes;

template <class T>
Lanes<T> load(const T* p) {
  return {Simd<T>::load(p), Simd<T>::load(p + Simd<T>::lanes)};
}

template <class T>
void store(T* p, Lanes<T> a) {
  Simd<T>::store(p, a.re);
  Simd<T>::store(p + Simd<T>::lanes, a.im);
}

template <class T>
Lanes<T> factor(const typename TwiddleBlock<T>::Factor& f) {
  return {Simd<T>::load(f.re), Simd<T>::load(f.im)};
}

template <class T>
struct Quarters {
  Lanes<T> a0, a1, a2, a3;
};

// The splitting of the head: w a1, w^2 a2 and w^3 a3 in, the four blocks out.
template <class T>
Quarters<T> split(Lanes<T> a0, Lanes<T> a1, Lanes<T> a2, Lanes<T> a3) {
  const Lanes<T> s0 = a0 + a2, d0 = a0 - a2, s1 = a1 + a3, d1 = a1 - a3;
  return {s0 + s1, s0 - s1, plus_i(d0, d1), minus_i(d0, d1)};
}

// Its inverse but for a factor 4: the four blocks in; a0, w a1, w^2 a2 and w^3 a3 out.
template <class T>
Quarters<T> join(Lanes<T> b0, Lanes<T> b1, Lanes<T> b2, Lanes<T> b3) {
  const Lanes<T> s0 = b0 + b1, d0 = b0 - b1, s1 = b2 + b3, d1 = b2 - b3;
  return {s0 + s1, minus_i(d0, d1), s0 - s1, plus_i(d0, d1)};
}

// `blocks` neighbouring blocks of `length` groups split in place.
template <class T>
void split_pass(T* p, std::size_t blocks, std::size_t length, const TwiddleBlock<T>* twiddle) {
  const std::size_t quarter = length / 4 * group<T>;
  for (const TwiddleBlock<T>* end = twiddle + blocks; twiddle != end; ++twiddle, p += 3 * quarter) {
    const Lanes<T> w1 = factor<T>(twiddle->power[0]), w2 = factor<T>(twiddle->power[1]),
                   w3 = factor<T>(twiddle->power[2]);
    for (const T* stop = p + quarter; p != stop; p += group<T>) {
      const Quarters<T> b =
          split(load(p), load(p + quarter) * w1, load(p + 2 * quarter) * w2, load(p + 3 * quarter) * w3);
      store(p, b.a0);
      store(p + quarter, b.a1);
      store(p + 2 * quarter, b.a2);
      store(p + 3 * quarter, b.a3);
    }
  }
}

// Undoes split_pass but for a factor 4.
template <class T>
void join_pass(T* p, std::size_t blocks, std::size_t length, const TwiddleBlock<T>* twiddle) {
  const std::size_t quarter = length / 4 * group<T>;
  for (const TwiddleBlock<T>* end = twiddle + blocks; twiddle != end; ++twiddle, p += 3 * quarter) {
    const Lanes<T> w1 = factor<T>(twiddle->power[0]), w2 = factor<T>(twiddle->power[1]),
                   w3 = factor<T>(twiddle->power[2]);
    for (const T* stop = p + quarter; p != stop; p += group<T>) {
      const Quarters<T> a = join(load(p), load(p + quarter), load(p + 2 * quarter), load(p + 3 * quarter));
      store(p, a.a0);
      store(p + quarter, times_conjugate(a.a1, w1));
      store(p + 2 * quarter, times_conjugate(a.a2, w2));
      store(p + 3 * quarter, times_conjugate(a.a3, w3));
    }
  }
}

// a := a b modulo t^Length - omega.
template <std::size_t Length, class T>
[[gnu::always_inline]] inline void multiply_polynomials(T* a, const T* b, Lanes<T> omega) {
  std::array<Lanes<T>, Length> x, y, wrapped;  // wrapped: omega b, for the products beyond t^Length
  unrolled<Length>([&](auto i) __attribute__((always_inline)) {
    x[i] = load(a + i * group<T>);
    y[i] = load(b + i * group<T>);
    if constexpr (i > 0) wrapped[i] = omega * y[i];
  });
  unrolled<Length>([&](auto k) __attribute__((always_inline)) {
    Lanes<T> sum = x[0] * y[k];
    unrolled<Length - 1>([&](auto j) __attribute__((always_inline)) {
      constexpr std::size_t i = j + 1;
      if constexpr (i <= k)
        sum = sum + x[i] * y[k - i];
      else
        sum = sum + x[i] * wrapped[k + Length - i];
    });
    store(a + k * group<T>, sum);
  });
}

// The last blocks below `parents` blocks of the level above them.
template <std::size_t Length, class T>
void multiply_polynomials_below(T* a, const T* b, std::size_t parents, const TwiddleBlock<T>* twiddle) {
  for (const TwiddleBlock<T>* end = twiddle + parents; twiddle != end; ++twiddle) {
    const Lanes<T> w = factor<T>(twiddle->power[0]);
    const Lanes<T> zero{Simd<T>::zero(), Simd<T>::zero()};
    for (const Lanes<T> omega : {w, zero - w, plus_i(zero, w), minus_i(zero, w)}) {
      multiply_polynomials<Length>(a, b, omega);
      a += Length * group<T>;
      b += Length * group<T>;
    }
  }
}

}  // namespace orin::conv

#endif
