// symmetric_eigen: eigenvalues and eigenvectors of a symmetric matrix, full or packed, in the caller's memory.
// SPDX-License-Identifier: MIT
//
// Method    A = Q T Q' by Householder reflections, column after column (1); T diagonalised by implicit QL sweeps with
//           Wilkinson's shift (2), from whichever end of a block has the smaller diagonal element; Q formed backwards
//           (3) and every sweep's rotations applied to it in strips of rows that stay in the first-level cache (4).
// Storage   One shape serves all: the columns of the lower triangle, diagonal element first. The upper triangle becomes
// that when
//           each of its columns is turned end for end, which numbers rows and columns backwards: same eigenvalues,
//           eigenvectors upside down. A packed upper triangle is turned as a whole.
// Range     The matrix is scaled so that squares neither overflow nor all underflow, the eigenvalues are scaled back.
// Failure   The number of off-diagonals left after 30 n sweeps. Elements that are not finite count as such from the
// start. Source    Martin, Reinsch, Wilkinson: Householder's tridiagonalization of a symmetric matrix, Numer. Math. 11
//           (1968); Dubrulle: A short note on the implicit QL algorithm, Numer. Math. 15 (1970); deflation as in LAPACK
//           Working Note 3.
#ifndef ORIN_COMPANIONS_SEQUENTIAL_SYMMETRIC_EIGEN_H
#define ORIN_COMPANIONS_SEQUENTIAL_SYMMETRIC_EIGEN_H

#include "packets.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace orin::sequential {

// Column j holds elements (j, j), (j + 1, j), ... side by side; it starts `step - j` (packed) or `step` (full) after
// column j - 1.
template <class T>
struct LowerColumns {
  T* data;
  Index step;
  bool packed;

  T* operator[](Index j) const noexcept { return data + j * step - (packed ? j * (j - 1) / 2 : 0); }
};

// Largest elements between these are safe: squares do not overflow, and an off-diagonal whose square underflows is
// below epsilon^2 times the largest.
template <class T>
struct Range {
  static constexpr T epsilon = std::numeric_limits<T>::epsilon() / 2;
  static constexpr T tiny = std::numeric_limits<T>::min();
  static T least() noexcept { return Eigen::numext::sqrt(tiny) / (epsilon * epsilon); }
  static T most() noexcept { return T(0.25) / Eigen::numext::sqrt(tiny); }
};

// sqrt(x^2 + y^2) without overflow or harmful underflow.
template <class T>
T length(T x, T y) noexcept {
  const T large = std::max(std::fabs(x), std::fabs(y)), small = std::min(std::fabs(x), std::fabs(y));
  if (small == 0) return large;
  const T ratio = small / large;
  return large * Eigen::numext::sqrt(T(1) + ratio * ratio);
}

// The factor that brings the matrix into the safe range: 1 where it lies there, 0 where an element is not finite.
template <class T>
T safe_scale(Index order, LowerColumns<T> a) noexcept {
  T largest = 0, test = 0;
  for (Index j = 0; j < order; ++j)
    for (Index i = 0; i < order - j; ++i) {
      largest = std::max(largest, std::fabs(a[j][i]));
      test += a[j][i] * T(0);  // NaN once an element is not finite
    }
  if (test != 0) return 0;
  if (largest > Range<T>::most()) return Range<T>::most() / largest;
  if (largest == 0 || largest >= Range<T>::least()) return 1;
  return largest < Range<T>::tiny ? 1 / Range<T>::tiny : Range<T>::least() / largest;
}

// Makes x the vector v of a reflection I - tau v v' that turns x into (value, 0, ...); v[0] = 1. Returns tau.
template <class T>
T reflect(Index count, T* x, T& value) noexcept {
  T largest = 0;
  for (Index i = 1; i < count; ++i) largest = std::max(largest, std::fabs(x[i]));
  value = x[0];
  x[0] = 1;
  if (largest == 0) return 0;
  T squares = 0;
  for (Index i = 1; i < count; ++i) squares += (x[i] / largest) * (x[i] / largest);
  const T head = value;
  value = -std::copysign(length(head, largest * Eigen::numext::sqrt(squares)), head);
  const T pivot = head - value;  // no cancellation: the signs differ
  for (Index i = 1; i < count; ++i) x[i] /= pivot;
  return -pivot / value;
}

// (1) A = Q T Q': diagonal and off-diagonal of T go to d and e and back into A; below them A keeps the reflections'
// vectors without their leading 1, their factors in tau where that is not null. p is room for n elements.
template <class T>
void tridiagonalise(Index order, LowerColumns<T> a, T* d, T* e, T* tau, T* p) noexcept {
  for (Index j = 0; j + 1 < order; ++j) {
    const Index rest = order - j - 1;
    T* const v = a[j] + 1;
    const T factor = reflect(rest, v, e[j]);
    if (factor != 0) {
      // p = tau B v, B being the trailing matrix: each of its columns serves as a column and as a row
      std::fill_n(p, rest, T(0));
      for (Index c = 0; c < rest; ++c) {
        const T* const column = a[j + 1 + c];
        const Index below = rest - c - 1;
        add_scaled(below, v[c], column + 1, p + c + 1);
        p[c] += column[0] * v[c] + dot(below, column + 1, v + c + 1);
      }
      for (Index i = 0; i < rest; ++i) p[i] *= factor;
      // B := B - v w' - w v' with w = p - (tau / 2) (p' v) v
      add_scaled(rest, -factor / 2 * dot(rest, p, v), v, p);
      for (Index c = 0; c < rest; ++c) {
        const T factors[] = {-p[c], -v[c]};
        const T* const columns[] = {v + c, p + c};
        add_scaled<2>(rest - c, factors, columns, a[j + 1 + c]);
      }
    }
    d[j] = a[j][0];
    if (tau != nullptr) tau[j] = factor;
    v[0] = e[j];
  }
  d[order - 1] = a[order - 1][0];
}

// (3) Q = H0 H1 ... in place of the vectors that column j of q holds from row j + 2 on. H_j leaves rows 0 to j alone,
// so Q is built from its last corner: column j + 1 of H_j (1, 0; 0, Q_{j+1}) is H_j's own, the others are reflected.
template <class T>
void form_basis(Index order, const T* tau, T* q, Index leading) noexcept {
  const auto column = [=](Index j, Index row) { return q + j * leading + row; };
  for (Index j = order - 2; j >= 0; --j) {
    const T* const v = column(j, j + 2);  // without the leading 1
    const Index rest = order - j - 2;
    for (Index c = j + 2; c < order; ++c) {
      const T along = -tau[j] * dot(rest, v, column(c, j + 2));
      *column(c, j + 1) = along;
      add_scaled(rest, along, v, column(c, j + 2));
    }
    T* const own = column(j + 1, j + 1);
    own[0] = 1 - tau[j];
    for (Index i = 0; i < rest; ++i) own[i + 1] = -tau[j] * v[i];
  }
  std::fill_n(q, order, T(0));
  for (Index j = 1; j < order; ++j) *column(j, 0) = 0;
  q[0] = 1;
}

// (4) Columns k and k + 1 (in units of `step` elements from `q`) by rotation k, for k = count - 1 down to 0. A rotation
// is its cosine and its sine.
template <class T>
void rotate_columns(Index rows, Index count, const T* rotations, T* q, Index step) noexcept {
  constexpr Index strip = 128;
  for (Index top = 0; top < rows; top += strip) {
    const Index height = std::min(strip, rows - top);
    for (Index k = count - 1; k >= 0; --k) {
      T *const x = q + k * step + top, *const y = x + step;
      const T cosine = rotations[2 * k], sine = rotations[2 * k + 1];
      const auto c = spread(cosine), s = spread(sine);
      Index i = 0;
      for (; i + lanes<T> <= height; i += lanes<T>) {
        const auto x0 = load(x + i), y0 = load(y + i);
        store(y + i, padd(pmul(s, x0), pmul(c, y0)));
        store(x + i, Eigen::internal::psub(pmul(c, x0), pmul(s, y0)));
      }
      for (; i < height; ++i) {
        const T x0 = x[i], y0 = y[i];
        y[i] = sine * x0 + cosine * y0;
        x[i] = cosine * x0 - sine * y0;
      }
    }
  }
}

// (2) One sweep over an unreduced block of `order` rows: its diagonal is d[0], d[step], ..., its off-diagonals e[0],
// e[step], ... The first off-diagonal shrinks.
template <class T>
void sweep(Index order, T* d, T* e, Index step, T* rotations) noexcept {
  T g = (d[step] - d[0]) / (2 * e[0]);
  g = d[(order - 1) * step] - d[0] + e[0] / (g + std::copysign(length(g, T(1)), g));
  T sine = 1, cosine = 1, shift = 0;
  for (Index i = order - 2; i >= 0; --i) {
    T *const di = d + i * step, *const ei = e + i * step;
    const T f = sine * *ei, b = cosine * *ei;
    const T r = length(f, g);
    if (i < order - 2) ei[step] = r;
    sine = r != 0 ? f / r : T(0);
    cosine = r != 0 ? g / r : T(1);
    g = di[step] - shift;
    const T t = (*di - g) * sine + 2 * cosine * b;
    shift = sine * t;
    di[step] = g + shift;
    g = cosine * t - b;
    if (rotations != nullptr) {
      rotations[2 * i] = cosine;
      rotations[2 * i + 1] = sine;
    }
  }
  d[0] -= shift;
  e[0] = g;
}

// Eigenvalues of T in d, ascending; with q, its columns are turned into the eigenvectors. Returns the off-diagonals
// left over.
template <class T>
Index diagonalise(Index order, T* d, T* e, T* q, Index leading, T* rotations) noexcept {
  const T tolerance = Range<T>::epsilon * Range<T>::epsilon;
  const auto negligible = [=](Index i) {
    const T size = std::fabs(e[i]);
    return size * size <= tolerance * std::fabs(d[i]) * std::fabs(d[i + 1]) + Range<T>::tiny;
  };
  Index last = order - 1, sweeps = 0;
  while (last > 0) {
    Index first = last;
    while (first > 0 && !negligible(first - 1)) --first;
    if (first > 0) e[first - 1] = 0;
    if (first == last) {
      --last;
      continue;
    }
    if (sweeps++ == 30 * order) return std::count_if(e, e + order - 1, [](T value) { return value != 0; });
    const Index count = last - first + 1;
    const bool downwards = std::fabs(d[last]) >= std::fabs(d[first]);  // small end first
    const Index start = downwards ? first : last, step = downwards ? 1 : -1;
    sweep(count, d + start, downwards ? e + first : e + last - 1, step, rotations);
    if (q != nullptr) rotate_columns(order, count - 1, rotations, q + start * leading, step * leading);
  }
  for (Index j = 0; j + 1 < order; ++j) {  // selection: few moves of columns
    const Index least = std::min_element(d + j, d + order) - d;
    if (least == j) continue;
    std::swap(d[j], d[least]);
    if (q != nullptr) std::swap_ranges(q + j * leading, q + j * leading + order, q + least * leading);
  }
  return 0;
}

// Eigenvalues in w; eigenvectors in the columns of q where that is not null. q may be the storage of the full matrix
// itself. `work` has room for 3 n - 2 elements, without q for 2 n - 1. Returns 0, or the off-diagonals that did not
// converge.
template <class T>
Index symmetric_eigen(Index order, LowerColumns<T> a, T* w, T* q, Index leading, T* work) noexcept {
  const T factor = safe_scale(order, a);
  if (factor == 0) {
    std::fill_n(w, order, std::numeric_limits<T>::quiet_NaN());
    return order - 1;
  }
  for (Index j = 0; factor != 1 && j < order; ++j)
    for (Index i = 0; i < order - j; ++i) a[j][i] *= factor;

  T *const e = work, *const p = work + (order - 1), *const tau = q != nullptr ? p + order : nullptr;
  tridiagonalise(order, a, w, e, tau, p);
  if (q != nullptr) {
    if (q != a.data)
      for (Index j = 0; j < order; ++j) std::copy_n(a[j], order - j, q + j * leading + j);
    form_basis(order, tau, q, leading);
  }
  T* const rotations = q != nullptr ? p : nullptr;  // p and tau have done their work
  const Index left = diagonalise(order, w, e, q, leading, rotations);
  for (Index j = 0; factor != 1 && j < order; ++j) w[j] /= factor;
  return left;
}

}  // namespace orin::sequential

#endif
