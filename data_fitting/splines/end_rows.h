// end_rows: the slope at an end of a cubic spline as a linear function of the slopes beside it, per end condition.
// SPDX-License-Identifier: MIT
//
// Notation  s slopes at the points, d difference quotients of the values, g reciprocals of the cell widths, each
//           counted from the end inward; the row of an end is  s0 = constant + next s1 + after s2.
// Source    de Boor, A Practical Guide to Splines, chapter IV, with every row solved for the end slope
#ifndef ORIN_DATA_FITTING_SPLINES_END_ROWS_H
#define ORIN_DATA_FITTING_SPLINES_END_ROWS_H

#include "data_fitting/task.h"

namespace orin::data_fitting {

struct EndRow {
  double constant;
  double next;
  double after;
};

struct End {
  Index points;  // of the whole partition
  double g0, g1;
  double d0, d1;
  double value;  // given by the caller, null unless the condition needs one
  double side;   // +1 at the left end, -1 at the right one: second derivatives keep their sign when x is mirrored
};

enum class EndCondition { not_a_knot, free, first_derivative, second_derivative };

// S' = value.
inline EndRow given_slope(const End& e) { return {e.value, 0, 0}; }

// S'' = (6 d0 - 4 s0 - 2 s1) g0 = value.
inline EndRow given_curvature(const End& e) { return {1.5 * e.d0 - e.side * e.value / (4 * e.g0), -0.5, 0}; }

inline EndRow no_curvature(const End& e) { return {1.5 * e.d0, -0.5, 0}; }

// The end cell a parabola: s0 + s1 = 2 d0. It is also not-a-knot on three points, where one parabola goes through all.
inline EndRow parabola(const End& e) { return {2 * e.d0, -1, 0}; }

// Third derivatives (s0 + s1 - 2 d0) g0^2 and (s1 + s2 - 2 d1) g1^2 equal, with any slopes inside.
inline EndRow not_a_knot(const End& e) {
  if (e.points == 3) return parabola(e);
  const double ratio = e.g1 / e.g0, square = ratio * ratio;
  return {2 * e.d0 - 2 * square * e.d1, square - 1, square};
}

// The same where the second derivative is continuous at the first inner point, whose equation removes s2.
inline EndRow not_a_knot_smooth(const End& e) {
  if (e.points == 3) return parabola(e);
  const double ratio = e.g1 / e.g0;
  const double d0_weight = (2 + 3 * ratio) / (1 + ratio), d1_weight = ratio * ratio / (1 + ratio);
  return {d0_weight * e.d0 + d1_weight * e.d1, -(1 + ratio), 0};
}

}  // namespace orin::data_fitting

#endif
