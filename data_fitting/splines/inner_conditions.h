// inner_conditions: cubics whose first or second derivatives at the inner points are given by the caller.
// SPDX-License-Identifier: MIT
//
// First derivatives leave the end slopes alone unknown: the rows of end_rows.h.
// Second derivatives m at the points give, with h the width of a cell and d its difference quotient,
//   c0 = y[i]   c1 = d - h (2 m[i] + m[i+1]) / 6   c2 = m[i] / 2   c3 = (m[i+1] - m[i]) / (6 h)              (1)
//   ends, inward from either one with S' = v: m0 = 3 (d0 - v) / h0 - m1 / 2, mirrored at the right end       (2)
//   not-a-knot: m0 = m1 - h0 (m2 - m1) / h1, on three points m0 = m1                                         (3)
//   periodic: m0 = m[n] = (6 (d0 - dm) - h0 m1 - hm m[n-1]) / (2 (h0 + hm)), m the last cell                 (4)
// The slopes of such a curve jump at a point unless the given values are those of a smooth curve.
// Source   de Boor, A Practical Guide to Splines, chapter IV
#ifndef ORIN_DATA_FITTING_SPLINES_INNER_CONDITIONS_H
#define ORIN_DATA_FITTING_SPLINES_INNER_CONDITIONS_H

#include "data_fitting/splines/cubic.h"
#include "data_fitting/splines/smooth_cubic.h"

namespace orin::data_fitting {

template <class T>
struct GivenSlopesRule : LocalRule<T> {
  static EndRow free_end(const End& e) { return no_curvature(e); }
  static Index conditions(Index points) { return points - 2; }

  void slopes(const Cells<T>& c, const T* given) const {
    for (Index i = 1; i < c.points - 1; ++i) c.s[i] = static_cast<double>(given[i - 1]);
    close_ends<GivenSlopesRule>(c);
  }
};

// Here s holds the second derivatives.
template <class T>
struct GivenCurvaturesRule : LocalRule<T> {
  static Index conditions(Index points) { return points - 2; }

  void slopes(const Cells<T>& c, const T* given) const {
    const Index last = c.points - 1;
    for (Index i = 1; i < last; ++i) c.s[i] = static_cast<double>(given[i - 1]);
    const End l = c.left(), r = c.right();
    if (c.periodic()) {
      const double jump = 6 * (l.d0 - r.d0) - c.s[1] / l.g0 - c.s[last - 1] / r.g0;
      c.s[0] = c.s[last] = jump / (2 / l.g0 + 2 / r.g0);
    } else {
      c.s[0] = end_curvature(left_condition(c.variant), l, c.s + 1, 1);
      c.s[last] = end_curvature(right_condition(c.variant), r, c.s + last - 1, -1);
    }
  }

  // (1)
  static void store(const Cells<T>& c, T* out) {
    for_lanes(0, c.count(), [&c, out](auto lanes, Index i) {
      using V = decltype(lanes);
      const V g = V::load(c.g + i), m = V::load(c.s + i), next = V::load(c.s + i + 1);
      const V sixth = V::both(1.0 / 6);
      store_cubic(out + 4 * i, V::load(c.y + i), V::load(c.d + i) - (m + m + next) * sixth / g, V::both(0.5) * m,
                  (next - m) * sixth * g);
    });
  }

 private:
  // (2), (3); m points to the second derivative beside the end, `inward` is the step to the next one.
  static double end_curvature(EndCondition condition, const End& e, const double* m, Index inward) {
    switch (condition) {
      case EndCondition::first_derivative:
        return 3 * e.side * (e.d0 - e.value) * e.g0 - m[0] / 2;
      case EndCondition::second_derivative:
        return e.value;
      case EndCondition::not_a_knot:
        return e.points == 3 ? m[0] : m[0] - (m[inward] - m[0]) * e.g1 / e.g0;
      default:
        return 0;
    }
  }
};

// The cubics that take internal conditions, or make the second derivative continuous where none are given.
template <class T>
int32_t build_with_conditions(const DfTask1D& task, Shape shape) {
  if (task.ny <= 0) return ORIN_DF_OK;
  if (task.ic_type == ORIN_DF_NO_IC) return build_cubic<T, SmoothRule<T>>(task, shape);
  if (const int32_t status = check_arrays(task)) return status;
  if (task.ic_type != ORIN_DF_IC_FIRST_DERIVATIVE && task.ic_type != ORIN_DF_IC_SECOND_DERIVATIVE) {
    return ORIN_DF_BAD_IC_TYPE;
  }
  if (task.ic == nullptr) return ORIN_DF_BAD_IC;
  if (task.ic_type == ORIN_DF_IC_FIRST_DERIVATIVE) return build_cubic<T, GivenSlopesRule<T>>(task, shape);
  return build_cubic<T, GivenCurvaturesRule<T>>(task, shape);
}

template <class T>
struct ConditionedCubic {
  static constexpr int64_t least_points = 3;
  template <Shape shape>
  static int32_t kernel(const DfTask1D& task) {
    return build_with_conditions<T>(task, shape);
  }
};

}  // namespace orin::data_fitting

#endif
