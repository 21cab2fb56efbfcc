// subbotin_quadratic: quadratics with one continuous derivative whose knots lie between the points.
// SPDX-License-Identifier: MIT
#ifndef ORIN_DATA_FITTING_SPLINES_SUBBOTIN_QUADRATIC_H
#define ORIN_DATA_FITTING_SPLINES_SUBBOTIN_QUADRATIC_H

#include "data_fitting/splines/construct.h"

namespace orin::data_fitting {

template <class T>
int32_t build_subbotin(const DfTask1D& task, Shape shape, bool own_knots);

}  // namespace orin::data_fitting

#endif
