// default_cubic: the cubic through given derivatives at the inner points, smooth where none are given.
// SPDX-License-Identifier: MIT
//
// Method   inner_conditions.h, smooth_cubic.h
// Ends     at least 3 points; every condition of end_rows.h
#include "data_fitting/splines/inner_conditions.h"

namespace orin::data_fitting {
namespace {

template <class T>
int32_t default_cubic(const DfTask1D* task) {
  return construct_cubic<ConditionedCubic<T>>(task);
}

}  // namespace
}  // namespace orin::data_fitting

using namespace orin::data_fitting;

extern "C" {

ORIN_API int32_t ORIN_CALL orin_df_kernel_dDFDefaultCubicSpline1D(DfTask1D* task, int64_t, int64_t, int64_t) {
  return default_cubic<double>(task);
}
ORIN_API int32_t ORIN_CALL orin_df_kernel_sDFDefaultCubicSpline1D(DfTask1D* task, int64_t, int64_t, int64_t) {
  return default_cubic<float>(task);
}
}
