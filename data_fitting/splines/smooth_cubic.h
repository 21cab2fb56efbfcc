// smooth_cubic: slopes that make the second derivative of a cubic spline continuous.
// SPDX-License-Identifier: MIT
//
//   g[i-1] s[i-1] + 2 (g[i-1] + g[i]) s[i] + g[i] s[i+1] = 3 (d[i-1] g[i-1] + d[i] g[i])   at inner points   (1)
//   s[0] and s[n] removed by the rows of the ends                                                            (2)
//   periodic: the system is solved once more for the column of s[0] = s[n], and the equation of the seam
//   (periodic_end_slope) then gives the end slope                                                            (3)
// Ends     free is S'' = 0
// Source   de Boor, A Practical Guide to Splines, chapter IV; (3) is the bordered form of the cyclic system
#ifndef ORIN_DATA_FITTING_SPLINES_SMOOTH_CUBIC_H
#define ORIN_DATA_FITTING_SPLINES_SMOOTH_CUBIC_H

#include "data_fitting/splines/cubic.h"
#include "data_fitting/splines/tridiagonal.h"

namespace orin::data_fitting {

template <class T>
class SmoothRule : public LocalRule<T> {
 public:
  static EndRow free_end(const End& e) { return no_curvature(e); }
  static EndRow not_a_knot_end(const End& e) { return not_a_knot_smooth(e); }

  static Index scratch(Index points, bool periodic) { return (periodic ? 3 : 2) * points; }

  // Rows of (1) for the points 1 to n - 1 and their factorisation.
  void prepare(const Cells<T>& c, double* scratch) {
    const Index rows = c.points - 2;
    double* diagonal = scratch;
    system_ = {rows, c.g, diagonal, c.g + 1, scratch + c.points};
    for_lanes(0, rows, [&](auto lanes, Index i) {
      using V = decltype(lanes);
      (V::both(2.0) * (V::load(c.g + i) + V::load(c.g + i + 1))).store(diagonal + i);
    });
    if (c.periodic()) {
      system_.factor();
      column_ = scratch + 2 * c.points;
      for (Index i = 0; i < rows; ++i) column_[i] = 0;
      column_[0] = c.g[0];
      column_[rows - 1] += c.g[rows];
      system_.solve(column_);
    } else {
      diagonal[0] += c.g[0] * left_row(c).next;
      diagonal[rows - 1] += c.g[rows] * right_row(c).next;
      system_.factor();
    }
  }

  void slopes(const Cells<T>& c, const T*) const {
    const Index rows = system_.rows;
    double* const r = c.s + 1;
    for_lanes(0, rows, [&](auto lanes, Index i) {
      using V = decltype(lanes);
      const V sum = V::load(c.d + i) * V::load(c.g + i) + V::load(c.d + i + 1) * V::load(c.g + i + 1);
      (V::both(3.0) * sum).store(r + i);
    });
    if (c.periodic()) {
      system_.solve(r);
      add_column(c);
    } else {
      r[0] -= c.g[0] * left_row(c).constant;
      r[rows - 1] -= c.g[rows] * right_row(c).constant;
      system_.solve(r);
      close_ends<SmoothRule>(c);
    }
  }

 private:
  static EndRow left_row(const Cells<T>& c) { return end_row<SmoothRule>(left_condition(c.variant), c.left()); }
  static EndRow right_row(const Cells<T>& c) { return end_row<SmoothRule>(right_condition(c.variant), c.right()); }

  // (3): inner slopes are r - s0 column, and s0 solves 2 (g0 + gm) s0 + g0 s[1] + gm s[n-1] = 3 (d0 g0 + dm gm).
  void add_column(const Cells<T>& c) const {
    const Index rows = system_.rows;
    double* const r = c.s + 1;
    const End l = c.left(), e = c.right();
    const double seam = 3 * (l.d0 * l.g0 + e.d0 * e.g0) - l.g0 * r[0] - e.g0 * r[rows - 1];
    const double s0 = seam / (2 * (l.g0 + e.g0) - l.g0 * column_[0] - e.g0 * column_[rows - 1]);
    for_lanes(0, rows, [&](auto lanes, Index i) {
      using V = decltype(lanes);
      (V::load(r + i) - V::both(s0) * V::load(column_ + i)).store(r + i);
    });
    c.s[0] = c.s[c.points - 1] = s0;
  }

  Tridiagonal system_{};
  double* column_ = nullptr;
};

}  // namespace orin::data_fitting

#endif
