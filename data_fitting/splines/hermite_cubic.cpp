// hermite_cubic: the cubic of given slopes at the inner points.
// SPDX-License-Identifier: MIT
//
// Method   that of the default cubic, inner_conditions.h; the two differ for a front end alone
// Ends     at least 3 points; every condition of end_rows.h
#include "data_fitting/splines/inner_conditions.h"

namespace orin::data_fitting {
namespace {

template <class T>
int32_t hermite_cubic(const DfTask1D* task) {
  return construct_cubic<ConditionedCubic<T>>(task);
}

}  // namespace
}  // namespace orin::data_fitting

using namespace orin::data_fitting;

extern "C" {

ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFHermiteCubicSpline1D(DfTask1D* task, int64_t, int64_t, int64_t) {
  return hermite_cubic<double>(task);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFHermiteCubicSpline1D(DfTask1D* task, int64_t, int64_t, int64_t) {
  return hermite_cubic<float>(task);
}
}
