// linear: the polygon through the points.
// SPDX-License-Identifier: MIT
//
// Layout   two coefficients per cell, y[i] and the slope (y[i+1] - y[i]) / (x[i+1] - x[i]), in the caller's precision
// Cost     blocks of 2048 cells: slopes into a buffer on the stack, then pairs from it, both without a branch inside
#include "data_fitting/splines/construct.h"
#include "data_fitting/splines/lanes.h"

namespace orin::data_fitting {
namespace {

constexpr Index block_cells = 2048;

template <class T>
int32_t build_linear(const DfTask1D& task, Shape shape) {
  const Index points = static_cast<Index>(task.nx), cells = points - 1;
  Inputs<T> inputs;
  if (const int32_t status = inputs.prepare(task, shape.by_point, 2 * cells, 0)) return status;
  WorkArray<T> gathered;
  if (inputs.functions() <= 0) return ORIN_DF_OK;
  if (shape.by_point && !allocate(gathered, points)) return ORIN_DF_NO_MEMORY;
  const T* const x = inputs.x();
  for (Index f = 0; f < inputs.functions(); ++f) {
    const T* const y = inputs.values(f, gathered.data());
    T* const out = static_cast<T*>(task.scoeff[f]);
    for (Index begin = 0; begin < cells; begin += block_cells) {
      alignas(16) T slope[block_cells];
      const Index count = cells - begin < block_cells ? cells - begin : block_cells;
      for (Index i = begin; i < begin + count; ++i) slope[i - begin] = (y[i + 1] - y[i]) / (x[i + 1] - x[i]);
      for (Index i = begin; i < begin + count; ++i) {
        out[2 * i] = y[i];
        out[2 * i + 1] = slope[i - begin];
      }
    }
  }
  return ORIN_DF_OK;
}

template <class T>
struct Linear {
  template <Shape shape>
  static int32_t kernel(const DfTask1D& task) {
    return build_linear<T>(task, shape);
  }
};

template <class T>
int32_t linear(const DfTask1D* task, int64_t method) {
  if (const int32_t status = check_points(task, 2)) return status;
  if (method != 0) return ORIN_DF_BAD_METHOD;
  return plain_kernels<Linear<T>>[plain_kernel_index(*task)](*task);
}

}  // namespace
}  // namespace orin::data_fitting

using namespace orin::data_fitting;

extern "C" {

ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFLinearSpline1D(DfTask1D* task, int64_t, int64_t method, int64_t) {
  return linear<double>(task, method);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFLinearSpline1D(DfTask1D* task, int64_t, int64_t method, int64_t) {
  return linear<float>(task, method);
}
}
