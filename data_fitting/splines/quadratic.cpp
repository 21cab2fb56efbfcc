// quadratic: quadratic splines with one continuous derivative.
// SPDX-License-Identifier: MIT
//
// Type 0   knots at the points. With slopes s, difference quotients d and g the reciprocal width,
//            s[0] = 4 (v - y[0]) g[0] - d[0], v the value in the middle of the first cell                      (1)
//            s[i+1] = 2 d[i] - s[i]                                                                            (2)
//            c0 = y[i]   c1 = s[i]   c2 = (d[i] - s[i]) g[i]                                                   (3)
// Type 1   subbotin_quadratic.cpp
// Layout   three coefficients per cell in powers of t - x[i]; type 1: of t - left knot, one cell more
// Source   de Boor, A Practical Guide to Splines, chapter VI
#include "data_fitting/splines/cubic.h"
#include "data_fitting/splines/knots.h"
#include "data_fitting/splines/subbotin_quadratic.h"

namespace orin::data_fitting {
namespace {

template <class T>
int32_t build_default_quadratic(const DfTask1D& task, Shape shape) {
  const Index points = static_cast<Index>(task.nx), cells = points - 1;
  const double middle = static_cast<double>(*static_cast<const T*>(task.bc));
  Inputs<T> inputs;
  if (const int32_t status = inputs.prepare(task, shape.by_point, 3 * cells, 0)) return status;
  if (inputs.functions() <= 0) return ORIN_DF_OK;
  WorkArray<double> work;
  WorkArray<T> gathered;
  if (!allocate(work, 3 * int64_t{points}) || (shape.by_point && !allocate(gathered, points))) {
    return ORIN_DF_NO_MEMORY;
  }
  Cells<T> c{points, nullptr, work.data(), work.data() + points, work.data() + 2 * points, free_ends, {}};
  reciprocal_widths(inputs.x(), cells, c.g);
  for (Index f = 0; f < inputs.functions(); ++f) {
    c.y = inputs.values(f, gathered.data());
    difference_quotients(c);
    c.s[0] = 4 * (middle - static_cast<double>(c.y[0])) * c.g[0] - c.d[0];
    for (Index i = 0; i < cells; ++i) c.s[i + 1] = 2 * c.d[i] - c.s[i];
    T* const out = static_cast<T*>(task.scoeff[f]);
    for_lanes(0, cells, [&c, out](auto lanes, Index i) {
      using V = decltype(lanes);
      const V s = V::load(c.s + i);
      store_quadratic(out + 3 * i, V::load(c.y + i), s, (V::load(c.d + i) - s) * V::load(c.g + i));
    });
  }
  return ORIN_DF_OK;
}

template <class T>
struct DefaultQuadratic {
  template <Shape shape>
  static int32_t kernel(const DfTask1D& task) {
    return build_default_quadratic<T>(task, shape);
  }
};

template <class T>
struct Subbotin {
  static constexpr std::size_t index(const DfTask1D& task) {
    return 28u * ((task.ic_type & 4) != 0) + cubic_kernel_index(task);
  }
  template <Shape shape, bool knots_given>
  static int32_t kernel(const DfTask1D& task) {
    return build_subbotin<T>(task, shape, knots_given || own_knots(task));
  }
  static constexpr auto kernels = []<std::size_t... I>(std::index_sequence<I...>) {
    return std::array<Kernel, sizeof...(I)>{kernel<cubic_shape(I % 28), (I >= 28)>...};
  }
  (std::make_index_sequence<56>{});
};

template <class T>
int32_t quadratic(const DfTask1D* task) {
  if (const int32_t status = check_points(task, 2)) return status;
  if (task->s_type == ORIN_DF_DEFAULT) {
    if (task->bc_type != ORIN_DF_BC_MID_CELL || task->bc == nullptr) return ORIN_DF_BAD_BC;
    return plain_kernels<DefaultQuadratic<T>>[plain_kernel_index(*task)](*task);
  }
  if (task->s_type != ORIN_DF_SUBBOTIN) return ORIN_DF_BAD_METHOD;
  if (const int32_t status = check_ends(*task, false)) return status;
  return Subbotin<T>::kernels[Subbotin<T>::index(*task)](*task);
}

}  // namespace
}  // namespace orin::data_fitting

using namespace orin::data_fitting;

extern "C" {

ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFQuadraticSpline1D(DfTask1D* task, int64_t, int64_t, int64_t) {
  return quadratic<double>(task);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFQuadraticSpline1D(DfTask1D* task, int64_t, int64_t, int64_t) {
  return quadratic<float>(task);
}
}
