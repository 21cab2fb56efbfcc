// cubic: the frame of the cubic families: differences, slopes by the family's rule, end slopes, coefficients.
// SPDX-License-Identifier: MIT
//
// A piecewise cubic is told by its slopes s at the points. With h the width of a cell, g = 1 / h and d the difference
// quotient of its values, its coefficients in powers of t - x[i] are
//   c0 = y[i]   c1 = s[i]   c2 = (d - s[i]) g - k   c3 = k g   where k = (s[i] + s[i+1] - 2 d) g.            (1)
// Cost     O(nx); scratch 3 nx doubles and the family's own, shared by all functions.
// Source   de Boor, A Practical Guide to Splines, chapter IV
#ifndef ORIN_DATA_FITTING_SPLINES_CUBIC_H
#define ORIN_DATA_FITTING_SPLINES_CUBIC_H

#include "data_fitting/splines/construct.h"
#include "data_fitting/splines/end_rows.h"
#include "data_fitting/splines/lanes.h"

namespace orin::data_fitting {

// One function in the making; the arrays are scratch in double precision.
template <class T>
struct Cells {
  Index points;
  const T* y;
  double* g;  // reciprocal widths of the cells
  double* d;  // difference quotients
  double* s;  // slopes at the points
  Variant variant;
  std::array<double, 2> end_value;

  Index count() const { return points - 1; }
  bool periodic() const { return variant == periodic_ends; }

  End left() const { return {points, g[0], g[1], d[0], d[1], end_value[0], 1}; }
  End right() const {
    const Index last = count() - 1;
    return {points, g[last], g[last - 1], d[last], d[last - 1], end_value[1], -1};
  }
};

constexpr EndCondition left_condition(Variant variant) {
  constexpr EndCondition of[] = {EndCondition::not_a_knot,        EndCondition::free,
                                 EndCondition::first_derivative,  EndCondition::first_derivative,
                                 EndCondition::second_derivative, EndCondition::second_derivative};
  return of[variant];
}

constexpr EndCondition right_condition(Variant variant) {
  constexpr EndCondition of[] = {EndCondition::not_a_knot,       EndCondition::free,
                                 EndCondition::first_derivative, EndCondition::second_derivative,
                                 EndCondition::first_derivative, EndCondition::second_derivative};
  return of[variant];
}

// The row of one end; a family has its own rows for free and not-a-knot ends.
template <class Rule>
EndRow end_row(EndCondition condition, const End& end) {
  switch (condition) {
    case EndCondition::not_a_knot:
      return Rule::not_a_knot_end(end);
    case EndCondition::free:
      return Rule::free_end(end);
    case EndCondition::first_derivative:
      return given_slope(end);
    default:
      return given_curvature(end);
  }
}

// End slopes of a periodic spline, equal and with equal second derivatives:
// 2 (g0 + gm) s0 + g0 s1 + gm s[m] = 3 (d0 g0 + dm gm), m the last cell.
template <class T>
double periodic_end_slope(const Cells<T>& c) {
  const End l = c.left(), r = c.right();
  return ((3 * l.d0 - c.s[1]) * l.g0 + (3 * r.d0 - c.s[c.points - 2]) * r.g0) / (2 * (l.g0 + r.g0));
}

// End slopes where the inner ones are known.
template <class Rule, class T>
void close_ends(const Cells<T>& c) {
  double* s = c.s;
  const Index last = c.points - 1;
  if (c.periodic()) {
    s[0] = s[last] = periodic_end_slope(c);
    return;
  }
  const EndRow left = end_row<Rule>(left_condition(c.variant), c.left());
  const EndRow right = end_row<Rule>(right_condition(c.variant), c.right());
  s[0] = left.constant + left.next * s[1];
  s[last] = right.constant + right.next * s[last - 1];
  if (c.points > 3) {
    s[0] += left.after * s[2];
    s[last] += right.after * s[last - 2];
  }
}

// Of the cells as they are, in a uniform partition too: its points are rounded, and the ends of a piece must not be.
template <class T>
void reciprocal_widths(const T* x, Index cells, double* g) {
  for_lanes(0, cells, [=](auto lanes, Index i) {
    using V = decltype(lanes);
    (V::both(1.0) / (V::load(x + i + 1) - V::load(x + i))).store(g + i);
  });
}

template <class T>
void difference_quotients(const Cells<T>& c) {
  for_lanes(0, c.count(), [&c](auto lanes, Index i) {
    using V = decltype(lanes);
    ((V::load(c.y + i + 1) - V::load(c.y + i)) * V::load(c.g + i)).store(c.d + i);
  });
}

// (1)
template <class T>
void store_from_slopes(const Cells<T>& c, T* out) {
  for_lanes(0, c.count(), [&c, out](auto lanes, Index i) {
    using V = decltype(lanes);
    const V g = V::load(c.g + i), d = V::load(c.d + i), s = V::load(c.s + i);
    const V rise = d - s;
    const V k = ((V::load(c.s + i + 1) - d) - rise) * g;
    store_cubic(out + 4 * i, V::load(c.y + i), s, rise * g - k, k * g);
  });
}

// Builds every function of the task. A Rule says
//   scratch(points, periodic)   doubles that it needs beside the frame's
//   prepare(cells, scratch)     what depends on the partition alone
//   slopes(cells, conditions)   s[0] to s[points - 1] from d, g and the function's internal conditions
//   store(cells, out)           the coefficients
//   conditions(points)          internal conditions per function
template <class T, class Rule>
int32_t build_cubic(const DfTask1D& task, Shape shape) {
  Inputs<T> inputs;
  const Index points = static_cast<Index>(task.nx), cells = points - 1;
  if (const int32_t status = inputs.prepare(task, shape.by_point, 4 * cells, Rule::conditions(points))) return status;
  WorkArray<double> work;
  WorkArray<T> gathered;
  if (inputs.functions() <= 0) return ORIN_DF_OK;
  if (!allocate(work, 3 * int64_t{points} + Rule::scratch(points, shape.variant == periodic_ends)) ||
      (shape.by_point && !allocate(gathered, points))) {
    return ORIN_DF_NO_MEMORY;
  }
  double* const scratch = work.data() + 3 * points;
  Cells<T> c{points,
             nullptr,
             work.data(),
             work.data() + points,
             work.data() + 2 * points,
             shape.variant,
             end_values<T>(task, shape.variant)};
  reciprocal_widths(inputs.x(), cells, c.g);
  Rule rule;
  rule.prepare(c, scratch);
  for (Index f = 0; f < inputs.functions(); ++f) {
    c.y = inputs.values(f, gathered.data());
    difference_quotients(c);
    rule.slopes(c, inputs.conditions(f));
    Rule::store(c, static_cast<T*>(task.scoeff[f]));
  }
  return ORIN_DF_OK;
}

// What a rule without a system to solve and without internal conditions leaves empty.
template <class T>
struct LocalRule {
  static Index scratch(Index, bool) { return 0; }
  static Index conditions(Index) { return 0; }
  void prepare(const Cells<T>&, double*) {}
  static void store(const Cells<T>& c, T* out) { store_from_slopes(c, out); }
  static EndRow not_a_knot_end(const End& e) { return not_a_knot(e); }
};

}  // namespace orin::data_fitting

#endif
