// registers.h: the registers of simd/vec.h among the verbs of the kernels.
// SPDX-License-Identifier: MIT
#ifndef ORIN_VECTOR_MATH_SIMD_REGISTERS_H
#define ORIN_VECTOR_MATH_SIMD_REGISTERS_H

#include "simd/vec.h"

namespace orin::vector_math::simd {
using namespace orin::simd;
}

#endif
