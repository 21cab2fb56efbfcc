// kernels.h: declarations of all kernels, from the function list.
// SPDX-License-Identifier: MIT
#ifndef ORIN_VECTOR_MATH_KERNELS_H
#define ORIN_VECTOR_MATH_KERNELS_H

#include "vector_math/shapes.h"

namespace orin::vector_math {

#define ORIN_FUNCTION(t, F, SHAPE, LA, HA, EP, cost_la, cost_ha, cost_ep) \
  void ORIN_CALL LA ORIN_KERNEL_##SHAPE(t);                               \
  void ORIN_CALL HA ORIN_KERNEL_##SHAPE(t);                               \
  void ORIN_CALL EP ORIN_KERNEL_##SHAPE(t);
#include "vector_math/functions.def"
#undef ORIN_FUNCTION

}  // namespace orin::vector_math

#endif
