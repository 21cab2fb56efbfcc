// triangular: products, solves, inverses and Cholesky factors with lower triangular views, by recursion over the
// product. SPDX-License-Identifier: MIT
//
// Method    Each operation halves its triangle, T = [T11 0; T21 T22]: two calls of itself on T11 and T22, and matrix
// products
//           for T21. Below `in_place_order` plain loops finish. All but a vanishing part of the time is then the
//           product's.
// Upper     An upper triangle is the lower triangle of the transposed view; a factor on the right is one on the left of
//           the transposed result. So every routine is written for lower, left.
// Touches   lower triangle only; with a unit diagonal the diagonal is not read.
// Source    Elmroth, Gustavson, Jonsson, Kagstrom: Recursive blocked algorithms and hybrid data structures for dense
// matrix
//           library software, SIAM Review 46 (2004).
#ifndef ORIN_COMPANIONS_SEQUENTIAL_TRIANGULAR_H
#define ORIN_COMPANIONS_SEQUENTIAL_TRIANGULAR_H

#include "product.h"

namespace orin::sequential {

enum class Diagonal { stored, unit };

// Where a triangle of the given order is cut in two: at a multiple of the base case's order.
inline constexpr Index half(Index order) noexcept {
  return std::max(round_down(order / 2, in_place_order), in_place_order);
}

// B := alpha T B, T lower (or its transpose, upper, where `transpose` is set) of order `order`; B has `columns`
// columns.
template <class T>
void multiply_triangle(Index order, Index columns, T alpha, MatrixView<const T> t, Diagonal diagonal, bool transpose,
                       MatrixView<T> b) noexcept {
  if (order <= in_place_order) {
    T square[in_place_order * in_place_order];  // T or T', with the elements that are not stored filled in
    const MatrixView<T> filled = view(square, order, transpose);
    for (Index j = 0; j < order; ++j)
      for (Index i = 0; i < order; ++i)
        filled(i, j) = i < j ? T(0) : i == j && diagonal == Diagonal::unit ? T(1) : t(i, j);
    return product<T>(order, columns, order, alpha, view(square, order), b, T(0), b);
  }
  const Index n1 = half(order), n2 = order - n1;
  const auto t21 = t.from(n1, 0), t22 = t.from(n1, n1);
  const auto b2 = b.from(n1, 0);
  if (transpose) {  // B1 = T11' B1 + T21' B2, then B2 = T22' B2
    multiply_triangle(n1, columns, alpha, t, diagonal, transpose, b);
    product<T>(n1, columns, n2, alpha, t21.transposed(), b2, T(1), b);
    multiply_triangle(n2, columns, alpha, t22, diagonal, transpose, b2);
  } else {  // B2 = T22 B2 + T21 B1, then B1 = T11 B1
    multiply_triangle(n2, columns, alpha, t22, diagonal, transpose, b2);
    product<T>(n2, columns, n1, alpha, t21, b, T(1), b2);
    multiply_triangle(n1, columns, alpha, t, diagonal, transpose, b);
  }
}

// B := inv(L) B, L lower with a stored diagonal.
template <class T>
void solve_lower(Index order, Index columns, MatrixView<const T> l, MatrixView<T> b) noexcept {
  if (order <= in_place_order) {
    for (Index i = 0; i < order; ++i) {
      if (b.column_step == 1)
        for (Index p = 0; p < i; ++p) add_scaled(columns, -l(i, p), &b(p, 0), &b(i, 0));
      for (Index j = 0; j < columns; ++j) {
        T rest = b(i, j);
        if (b.column_step != 1)
          for (Index p = 0; p < i; ++p) rest -= l(i, p) * b(p, j);
        b(i, j) = rest / l(i, i);
      }
    }
    return;
  }
  const Index n1 = half(order), n2 = order - n1;
  const auto b2 = b.from(n1, 0);
  solve_lower(n1, columns, l, b);
  product<T>(n2, columns, n1, T(-1), l.from(n1, 0), b, T(1), b2);
  solve_lower(n2, columns, l.from(n1, n1), b2);
}

// L := inv(L). No diagonal element may be zero.
template <class T>
void invert_lower(Index order, Diagonal diagonal, MatrixView<T> l) noexcept {
  if (order <= in_place_order) {
    for (Index j = order - 1; j >= 0;
         --j) {  // column j of the inverse: -inv(L22) L21 / l(j, j), L22 being inverted already
      T pivot = T(1);
      if (diagonal == Diagonal::stored) pivot = l(j, j) = T(1) / l(j, j);
      for (Index i = order - 1; i > j; --i) {
        T sum = diagonal == Diagonal::unit ? l(i, j) : l(i, i) * l(i, j);
        for (Index p = j + 1; p < i; ++p) sum += l(i, p) * l(p, j);
        l(i, j) = -sum * pivot;
      }
    }
    return;
  }
  const Index n1 = half(order), n2 = order - n1;
  const auto l21 = l.from(n1, 0), l22 = l.from(n1, n1);
  invert_lower(n1, diagonal, l);
  invert_lower(n2, diagonal, l22);
  // L21 := -inv(L22) L21 inv(L11); the factor on the right acts on the transpose from the left.
  multiply_triangle<T>(n2, n1, T(-1), l22, diagonal, false, l21);
  multiply_triangle<T>(n1, n2, T(1), l, diagonal, true, l21.transposed());
}

// Lower triangle of L' L in place of L.
template <class T>
void square_lower(Index order, MatrixView<T> l) noexcept {
  if (order <= in_place_order) {
    for (Index j = 0; j < order; ++j)
      for (Index i = j; i < order; ++i) {  // element (i, j) needs rows i and below of columns i and j only
        T sum = T(0);
        for (Index p = i; p < order; ++p) sum += l(p, i) * l(p, j);
        l(i, j) = sum;
      }
    return;
  }
  const Index n1 = half(order), n2 = order - n1;
  const auto l21 = l.from(n1, 0), l22 = l.from(n1, n1);
  square_lower(n1, l);
  product<T>(n1, n1, n2, T(1), l21.transposed(), l21, T(1), l, Part::lower);
  multiply_triangle<T>(n2, n1, T(1), l22, Diagonal::stored, true, l21);
  square_lower(n2, l22);
}

// A = L L' in place. Returns 0, or the 1-based order of the first leading minor that is not positive definite.
template <class T>
Index factor_lower(Index order, MatrixView<T> a) noexcept {
  if (order <= in_place_order) {
    for (Index j = 0; j < order; ++j)
      for (Index i = j; i < order; ++i) {
        T rest = a(i, j);
        for (Index p = 0; p < j; ++p) rest -= a(i, p) * a(j, p);
        if (i > j) {
          a(i, j) = rest / a(j, j);
        } else {
          if (!(rest > 0)) {  // NaN too
            a(j, j) = rest;
            return j + 1;
          }
          a(j, j) = Eigen::numext::sqrt(rest);
        }
      }
    return 0;
  }
  const Index n1 = half(order), n2 = order - n1;
  const auto a21 = a.from(n1, 0), a22 = a.from(n1, n1);
  if (const Index minor = factor_lower(n1, a)) return minor;
  solve_lower<T>(n1, n2, a, a21.transposed());  // L21 = A21 inv(L11')
  product<T>(n2, n2, n1, T(-1), a21, a21.transposed(), T(1), a22, Part::lower);
  const Index minor = factor_lower(n2, a22);
  return minor != 0 ? n1 + minor : 0;
}

}  // namespace orin::sequential

#endif
