// natural_cubic: the cubic spline with a continuous second derivative.
// SPDX-License-Identifier: MIT
//
// Method   smooth_cubic.h; internal conditions are not asked for
// Ends     at least 3 points; every condition of end_rows.h
// Layout   four coefficients per cell in powers of t - x[i], cell after cell
#include "data_fitting/splines/smooth_cubic.h"

namespace orin::data_fitting {
namespace {

template <class T>
struct NaturalCubic {
  static constexpr int64_t least_points = 3;
  template <Shape shape>
  static int32_t kernel(const DfTask1D& task) {
    return build_cubic<T, SmoothRule<T>>(task, shape);
  }
};

template <class T>
int32_t natural_cubic(const DfTask1D* task, int64_t method) {
  if (const int32_t status = check_points(task, NaturalCubic<T>::least_points)) return status;
  if (method != 0) return ORIN_DF_BAD_METHOD;
  return construct_cubic<NaturalCubic<T>>(task);
}

}  // namespace
}  // namespace orin::data_fitting

using namespace orin::data_fitting;

extern "C" {

ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFNaturalCubicSpline1D(DfTask1D* task, int64_t, int64_t method, int64_t) {
  return natural_cubic<double>(task, method);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFNaturalCubicSpline1D(DfTask1D* task, int64_t, int64_t method, int64_t) {
  return natural_cubic<float>(task, method);
}
}
