// triangular: products, solves, inverses and Cholesky factors with lower triangular views, by recursion over the
// product. SPDX-License-Identifier: MIT
//
// Method    B := T B takes one pass in place: the rows of T that a run of B's rows still contributes to are met before
//           those rows are written (Multiply below). The others halve their triangle, L = [L11 0; L21 L22]: two calls
//           of themselves on L11 and L22, and products for L21; the last `square_order` rows are done by plain loops,
//           on a copy where that puts columns side by side. All but a vanishing part of the time is the product's.
// Upper     An upper triangle is the lower triangle of the transposed view; a factor on the right is one on the left of
//           the transposed result. So every routine is written for lower, left.
// Touches   lower triangle only; with a unit diagonal the diagonal is not read.
// Source    Elmroth, Gustavson, Jonsson, Kagstrom: Recursive blocked algorithms and hybrid data structures for dense
//           matrix library software, SIAM Review 46 (2004).
#ifndef ORIN_COMPANIONS_SEQUENTIAL_TRIANGULAR_H
#define ORIN_COMPANIONS_SEQUENTIAL_TRIANGULAR_H

#include "product.h"
#include "vector_products.h"

namespace orin::sequential {

enum class Diagonal { stored, unit };

// As pack_rows, of rows `row` and on of a triangle: zeros where it has none, ones on a unit diagonal, neither being
// read. What lies beyond the tile on the diagonal is never multiplied and not written.
template <class T>
void pack_triangle(MatrixView<const T> t, Part part, Diagonal diagonal, Index row, Index rows, Index depth,
                   T* out) noexcept {
  constexpr Index height = Tile<T>::rows;
  for (Index i = row; i < row + rows; i += height, out += depth * height) {
    const Index live = std::min(height, row + rows - i), crossing_end = std::min(i + height, depth);
    const Index from = part == Part::lower ? 0 : crossing_end, to = part == Part::lower ? i : depth;
    if (from < to) pack_rows(t.from(i, from), live, to - from, out + from * height);
    for (Index p = i; p < crossing_end; ++p)
      for (Index r = i; r < i + height; ++r) {
        const bool stored = r < i + live && (part == Part::lower ? r >= p : r <= p);
        out[p * height + r - i] = r == p && diagonal == Diagonal::unit ? T(1) : stored ? t(r, p) : T(0);
      }
  }
}

// B := alpha T B, T lower, or with `transpose` the upper triangle that is its transpose; B has `columns` columns.
//
// A run of B's rows is packed, then multiplied with the columns of T below (above) it, itself last of all that needs
// it: runs are taken from the last row to the first for a lower T and the other way for an upper one.
template <class T>
void multiply_triangle(Index order, Index columns, T alpha, MatrixView<const T> t, Diagonal diagonal, bool transpose,
                       MatrixView<T> b) noexcept {
  if (order <= 0 || columns <= 0) return;
  const Part part = transpose ? Part::upper : Part::lower;
  if (transpose) t = t.transposed();
  const Panels<T> panels(order, columns, order);
  const Index last_run = round_down(order - 1, depth_block);
  for (Index j = 0; j < columns; j += panels.column_block()) {
    const Index block_columns = std::min(panels.column_block(), columns - j);
    for (Index done = 0; done <= last_run; done += depth_block) {
      const Index p = transpose ? done : last_run - done, run = std::min(depth_block, order - p);
      pack_columns<T>(b.from(p, j), block_columns, run, panels.b());
      const auto rows_from = [&](Index from, Index to, bool on_diagonal) {
        for (Index i = from; i < to; i += panels.row_block()) {
          const Index rows = std::min(panels.row_block(), to - i);
          if (j > 0 && panels.holds_a()) {
            // packed already
          } else if (on_diagonal) {
            pack_triangle(t.from(p, p), part, diagonal, i - p, rows, run, panels.a());
          } else {
            pack_rows(t.from(i, p), rows, run, panels.a());
          }
          multiply_block(panels, rows, block_columns, run, alpha, on_diagonal ? T(0) : T(1), b.from(i, j), Part::all, 0,
                         on_diagonal ? part : Part::all, i - p);
        }
      };
      rows_from(p, p + run, true);
      rows_from(transpose ? 0 : p + run, transpose ? p : order, false);
    }
  }
}

// The order below which recursion ends, and a lower triangle of that order with its columns side by side.
inline constexpr Index square_order = 32;

template <class T>
class Square {
 public:
  Square(Index order, MatrixView<const T> a) noexcept : order_(order) {
    each([&](Index i, Index j) { (*this)(i, j) = a(i, j); });
  }
  void store(MatrixView<T> a) const noexcept {
    each([&](Index i, Index j) { a(i, j) = cells_[i + j * square_order]; });
  }
  T& operator()(Index i, Index j) noexcept { return cells_[i + j * square_order]; }
  VectorView<T> row(Index i) noexcept { return {&(*this)(i, 0), square_order}; }

 private:
  template <class Visit>
  void each(Visit visit) const noexcept {
    for (Index j = 0; j < order_; ++j)
      for (Index i = j; i < order_; ++i) visit(i, j);
  }

  Index order_;
  T cells_[square_order * square_order];
};

// Where a triangle of the given order is cut in two.
inline constexpr Index half(Index order) noexcept {
  return std::max(round_down(order / 2, square_order), square_order);
}

// B := inv(L) B, L lower with a stored diagonal.
template <class T>
void solve_lower(Index order, Index columns, MatrixView<const T> l, MatrixView<T> b) noexcept {
  if (order <= square_order) {
    for (Index i = 0; i < order; ++i) {  // row i of B less the rows above it by the elements of L's row i
      const VectorView<const T> factors(&l(i, 0), l.column_step);
      const VectorView<T> row(&b(i, 0), b.column_step);
      if (b.column_step == 1)
        add_columns<T>(columns, i, T(-1), b.data, b.row_step, factors, row);
      else
        add_dots<T>(i, columns, T(-1), b.data, b.column_step, factors, row);
      const T inverse = 1 / l(i, i);
      for (Index j = 0; j < columns; ++j) row[j] *= inverse;
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
  if (order <= square_order) {
    Square<T> s(order, l);
    const bool unit = diagonal == Diagonal::unit;
    for (Index j = order - 1; j >= 0;
         --j) {  // column j below the diagonal: -inv(L22) L21 / L(j, j), L22 being inverted
      const T pivot = unit ? T(1) : T(1) / s(j, j);
      for (Index p = order - 1; p > j; --p) {
        const T factor = s(p, j);
        add_scaled(order - p - 1, factor, &s(p, p) + 1, &s(p, j) + 1);
        if (!unit) s(p, j) *= s(p, p);
      }
      for (Index i = j + 1; i < order; ++i) s(i, j) *= -pivot;
      if (!unit) s(j, j) = pivot;
    }
    return s.store(l);
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
  if (order <= square_order) {
    Square<T> s(order, l);
    for (Index j = 0; j < order; ++j)
      for (Index i = j; i < order; ++i) s(i, j) = dot(order - i, &s(i, i), &s(i, j));  // rows i and below, still L's
    return s.store(l);
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
  if (order <= square_order) {
    Square<T> s(order, a);
    Index bad = 0;
    for (Index j = 0; j < order && bad == 0; ++j) {  // column j less the columns before it by the elements of its row
      add_columns<T>(order - j, j, T(-1), &s(j, 0), square_order, s.row(j), {&s(j, j), 1});
      if (s(j, j) > 0) {
        s(j, j) = Eigen::numext::sqrt(s(j, j));
        const T inverse = 1 / s(j, j);
        for (Index i = j + 1; i < order; ++i) s(i, j) *= inverse;
      } else {  // NaN too
        bad = j + 1;
      }
    }
    s.store(a);
    return bad;
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
