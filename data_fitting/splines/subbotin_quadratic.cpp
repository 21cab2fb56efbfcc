// subbotin_quadratic: quadratics with one continuous derivative whose knots lie between the points.
// SPDX-License-Identifier: MIT
//
// Notation  n points x, knots t[0] <= x[0] <= t[1] <= x[1] ... <= t[n], H[k] = t[k+1] - t[k], m slopes at the knots,
//           a[k] = (x[k] - t[k]) / H[k]. The slope is linear in each cell, so that y[k] - y[k-1], its integral from
//           x[k-1] to x[k], gives for k = 1 to n - 1
//   H[k-1] (1 - a[k-1])^2 / 2  m[k-1] + (H[k-1] (1 - a[k-1]^2) / 2 + H[k] a[k] (2 - a[k]) / 2) m[k]
//     + H[k] a[k]^2 / 2  m[k+1] = y[k] - y[k-1]                                                              (1)
//   the inner slopes are u - m[0] v - m[n] w, where u, v, w solve (1) for its right side and for the columns of
//   m[0] and m[n]                                                                                            (2)
//   the two conditions at the ends are linear in the three outer slopes of each side: with (2), two equations for
//   m[0] and m[n]                                                                                            (3)
//   c0 = y[k] - r (c1 + r c2), r = x[k] - t[k]   c1 = m[k]   c2 = (m[k+1] - m[k]) / (2 H[k])                  (4)
// Ends      S' is taken at x[0] and x[n-1], S'' is constant in the outer cells; free: S'' = 0; not-a-knot: S'' the same
//           in the two outer cells, on two points S'' = 0; periodic: S' and S'' agree
// Source    Stechkin and Subbotin, Splines in Computational Mathematics (1976)
#include "data_fitting/splines/subbotin_quadratic.h"

#include "data_fitting/splines/knots.h"
#include "data_fitting/splines/tridiagonal.h"

namespace orin::data_fitting {
namespace {

struct Layout {
  Index points;
  double* width;   // H, n values
  double* inside;  // a, n values
  double* offset;  // x[k] - t[k], n values
  double* slope;   // m, n + 1 values
  double* column[2];
  Tridiagonal system;  // rows k = 1 to n - 1 of (1)
};

// One condition: left[i] on the slopes m[0..2], right[i] on m[n], m[n-1], m[n-2].
struct Condition {
  double left[3] = {};
  double right[3] = {};
  double value = 0;
};

struct Side {
  double width, next_width;
  double inside;  // place of the outer point in the outer cell, from the outer knot
  double sign;    // +1 left, -1 right: with the outer slope first, S'' is its difference the other way round
};

void add_first(double* weight, const Side& side, double factor) {
  weight[0] += factor * (1 - side.inside);
  weight[1] += factor * side.inside;
}

void add_second(double* weight, const Side& side, double factor) {
  weight[0] -= factor * side.sign / side.width;
  weight[1] += factor * side.sign / side.width;
}

void add_change_of_second(double* weight, const Side& side) {
  weight[0] = -side.next_width;
  weight[1] = side.next_width + side.width;
  weight[2] = -side.width;
}

enum class Rule { first, second, not_a_knot };

void add_rule(Rule rule, double* weight, const Side& side, Index points) {
  if (rule == Rule::first) {
    add_first(weight, side, 1);
  } else if (rule == Rule::not_a_knot && points > 2) {
    add_change_of_second(weight, side);
  } else {
    add_second(weight, side, 1);
  }
}

// (3) before (2) is put in.
void end_conditions(const Layout& p, Variant variant, std::array<double, 2> value, Condition (&condition)[2]) {
  const Index last = p.points - 1;
  const Side left{p.width[0], p.width[1], p.inside[0], 1};
  const Side right{p.width[last], p.width[last - 1], 1 - p.inside[last], -1};
  if (variant == periodic_ends) {
    add_first(condition[0].left, left, 1);
    add_first(condition[0].right, right, -1);
    add_second(condition[1].left, left, 1);
    add_second(condition[1].right, right, -1);
    return;
  }
  Rule left_rule = Rule::second, right_rule = Rule::second;
  if (variant == not_a_knot_ends) left_rule = right_rule = Rule::not_a_knot;
  if (variant == first_first || variant == first_second) left_rule = Rule::first;
  if (variant == first_first || variant == second_first) right_rule = Rule::first;
  add_rule(left_rule, condition[0].left, left, p.points);
  add_rule(right_rule, condition[1].right, right, p.points);
  condition[0].value = value[0];
  condition[1].value = value[1];
}

// What a condition makes of a solution of (1) whose inner slopes are inner[1..n-1].
double apply(const Condition& c, const double* inner, Index n) {
  double sum = 0;
  for (Index i = 1; i <= 2 && i < n; ++i) sum += c.left[i] * inner[i] + c.right[i] * inner[n - i];
  return sum;
}

template <class T>
void place_knots(const DfTask1D& task, bool own_knots, const Layout& p) {
  const Knots<T> knots(task, own_knots);
  const T* x = static_cast<const T*>(task.x);
  double knot = knots[0];
  for (Index k = 0; k < p.points; ++k) {
    const double next = knots[k + 1];
    p.width[k] = next - knot;
    p.offset[k] = static_cast<double>(x[k]) - knot;
    p.inside[k] = p.offset[k] / p.width[k];
    knot = next;
  }
}

// (1); the arrays of the system start with the row k = 1.
void set_rows(const Layout& p, double* lower, double* diagonal, double* upper) {
  for (Index k = 1; k < p.points; ++k) {
    const double before = p.inside[k - 1], a = p.inside[k];
    lower[k - 1] = 0.5 * p.width[k - 1] * (1 - before) * (1 - before);
    diagonal[k - 1] = 0.5 * (p.width[k - 1] * (1 - before) * (1 + before) + p.width[k] * a * (2 - a));
    upper[k - 1] = 0.5 * p.width[k] * a * a;
  }
}

void solve_columns(const Layout& p) {
  const Index rows = p.system.rows;
  for (double* column : p.column) {
    for (Index k = 0; k <= p.points; ++k) column[k] = 0;
  }
  p.column[0][1] = p.system.lower[0];
  p.column[1][rows] = p.system.upper[rows - 1];
  p.system.solve(p.column[0] + 1);
  p.system.solve(p.column[1] + 1);
}

// (2), (3): the outer slopes, then all of them.
void close(const Layout& p, const Condition (&condition)[2]) {
  const Index n = p.points;
  double matrix[2][2], r[2];
  for (int row = 0; row < 2; ++row) {
    const Condition& c = condition[row];
    matrix[row][0] = c.left[0] - apply(c, p.column[0], n);
    matrix[row][1] = c.right[0] - apply(c, p.column[1], n);
    r[row] = c.value - apply(c, p.slope, n);
  }
  const double determinant = matrix[0][0] * matrix[1][1] - matrix[0][1] * matrix[1][0];
  const double first = (r[0] * matrix[1][1] - matrix[0][1] * r[1]) / determinant;
  const double last = (matrix[0][0] * r[1] - r[0] * matrix[1][0]) / determinant;
  for (Index k = 1; k < n; ++k) p.slope[k] -= first * p.column[0][k] + last * p.column[1][k];
  p.slope[0] = first;
  p.slope[n] = last;
}

// (4)
template <class T>
void store(const Layout& p, const T* y, T* out) {
  for (Index k = 0; k < p.points; ++k) {
    const double c1 = p.slope[k], c2 = (p.slope[k + 1] - c1) / (2 * p.width[k]);
    out[3 * k] = static_cast<T>(static_cast<double>(y[k]) - p.offset[k] * (c1 + p.offset[k] * c2));
    out[3 * k + 1] = static_cast<T>(c1);
    out[3 * k + 2] = static_cast<T>(c2);
  }
}

}  // namespace

template <class T>
int32_t build_subbotin(const DfTask1D& task, Shape shape, bool own_knots) {
  const Index n = static_cast<Index>(task.nx);
  Inputs<T> inputs;
  if (const int32_t status = inputs.prepare(task, shape.by_point, 3 * n, 0)) return status;
  if (inputs.functions() <= 0) return ORIN_DF_OK;
  if (own_knots && task.ic == nullptr) return ORIN_DF_BAD_IC;
  constexpr Index arrays = 10;
  WorkArray<double> work;
  WorkArray<T> gathered;
  if (!allocate(work, arrays * (int64_t{n} + 1)) || (shape.by_point && !allocate(gathered, n))) {
    return ORIN_DF_NO_MEMORY;
  }
  double* array[arrays];
  for (Index k = 0; k < arrays; ++k) array[k] = work.data() + k * (n + 1);
  const Layout p{
      n, array[0], array[1], array[2], array[3], {array[4], array[5]}, {n - 1, array[6], array[7], array[8], array[9]}};
  place_knots<T>(task, own_knots, p);
  set_rows(p, array[6], array[7], array[8]);
  p.system.factor();
  solve_columns(p);
  Condition condition[2];
  end_conditions(p, shape.variant, end_values<T>(task, shape.variant), condition);
  for (Index f = 0; f < inputs.functions(); ++f) {
    const T* y = inputs.values(f, gathered.data());
    for (Index k = 1; k < n; ++k) p.slope[k] = static_cast<double>(y[k]) - static_cast<double>(y[k - 1]);
    p.system.solve(p.slope + 1);
    close(p, condition);
    store(p, y, static_cast<T*>(task.scoeff[f]));
  }
  return ORIN_DF_OK;
}

template int32_t build_subbotin<double>(const DfTask1D&, Shape, bool);
template int32_t build_subbotin<float>(const DfTask1D&, Shape, bool);

}  // namespace orin::data_fitting
