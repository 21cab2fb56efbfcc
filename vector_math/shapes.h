// shapes.h: the argument lists of the vector functions.
// SPDX-License-Identifier: MIT
//
// For each shape NAME three macros: ORIN_ENTRY_NAME(t) the parameters of an entry, ORIN_KERNEL_NAME(t) those of its
// kernels, ORIN_PASS_NAME what an entry passes to the kernel.
#ifndef ORIN_VECTOR_MATH_SHAPES_H
#define ORIN_VECTOR_MATH_SHAPES_H

#include <cstdint>

#include "orin/vector_math.h"

namespace orin::vector_math {

using element_s = float;
using element_d = double;
using element_c = KorComplex8;
using element_z = KorComplex16;
using real_s = float;
using real_d = double;
using real_c = float;
using real_z = double;

}  // namespace orin::vector_math

#define ORIN_ENTRY_UNARY(t) (std::int32_t n, const element_##t* a, element_##t* r)
#define ORIN_KERNEL_UNARY(t) ORIN_ENTRY_UNARY(t)
#define ORIN_PASS_UNARY (n, a, r)

#define ORIN_ENTRY_UNARY_TO_REAL(t) (std::int32_t n, const element_##t* a, real_##t* r)
#define ORIN_KERNEL_UNARY_TO_REAL(t) ORIN_ENTRY_UNARY_TO_REAL(t)
#define ORIN_PASS_UNARY_TO_REAL (n, a, r)

#define ORIN_ENTRY_UNARY_FROM_REAL(t) (std::int32_t n, const real_##t* a, element_##t* r)
#define ORIN_KERNEL_UNARY_FROM_REAL(t) ORIN_ENTRY_UNARY_FROM_REAL(t)
#define ORIN_PASS_UNARY_FROM_REAL (n, a, r)

#define ORIN_ENTRY_BINARY(t) (std::int32_t n, const element_##t* a, const element_##t* b, element_##t* r)
#define ORIN_KERNEL_BINARY(t) ORIN_ENTRY_BINARY(t)
#define ORIN_PASS_BINARY (n, a, b, r)

#define ORIN_ENTRY_SCALAR(t) (std::int32_t n, const element_##t* a, element_##t b, element_##t* r)
#define ORIN_KERNEL_SCALAR(t) ORIN_ENTRY_SCALAR(t)
#define ORIN_PASS_SCALAR (n, a, b, r)

#define ORIN_ENTRY_LINEAR_FRAC(t)                                                                      \
  (std::int32_t n, const element_##t* a, const element_##t* b, element_##t scalea, element_##t shifta, \
   element_##t scaleb, element_##t shiftb, element_##t* r)
#define ORIN_KERNEL_LINEAR_FRAC(t) ORIN_ENTRY_LINEAR_FRAC(t)
#define ORIN_PASS_LINEAR_FRAC (n, a, b, scalea, shifta, scaleb, shiftb, r)

#define ORIN_ENTRY_TWO_RESULTS(t) (std::int32_t n, const element_##t* a, element_##t* r1, element_##t* r2)
#define ORIN_KERNEL_TWO_RESULTS(t) ORIN_ENTRY_TWO_RESULTS(t)
#define ORIN_PASS_TWO_RESULTS (n, a, r1, r2)

// Pack kernels have one argument more than their entries: 1 selects 32-bit counts, masks and indices.
#define ORIN_ENTRY_PACK_STRIDE(t) (std::int64_t n, const element_##t* a, std::int64_t increment, element_##t* y)
#define ORIN_KERNEL_PACK_STRIDE(t) \
  (std::int64_t n, const element_##t* a, std::int64_t increment, element_##t* y, std::int32_t indexing)
#define ORIN_PASS_PACK_STRIDE (n, a, increment, y, 1)

#define ORIN_ENTRY_PACK_ARRAY(t) (std::int64_t n, const element_##t* a, const std::int32_t* selector, element_##t* y)
#define ORIN_KERNEL_PACK_ARRAY(t) \
  (std::int64_t n, const element_##t* a, const void* selector, element_##t* y, std::int32_t indexing)
#define ORIN_PASS_PACK_ARRAY (n, a, selector, y, 1)

#define ORIN_ENTRY_UNPACK_STRIDE(t) (std::int64_t n, const element_##t* a, element_##t* y, std::int64_t increment)
#define ORIN_KERNEL_UNPACK_STRIDE(t) \
  (std::int64_t n, const element_##t* a, element_##t* y, std::int64_t increment, std::int32_t indexing)
#define ORIN_PASS_UNPACK_STRIDE (n, a, y, increment, 1)

#define ORIN_ENTRY_UNPACK_ARRAY(t) (std::int64_t n, const element_##t* a, element_##t* y, const std::int32_t* selector)
#define ORIN_KERNEL_UNPACK_ARRAY(t) \
  (std::int64_t n, const element_##t* a, element_##t* y, const void* selector, std::int32_t indexing)
#define ORIN_PASS_UNPACK_ARRAY (n, a, y, selector, 1)

#endif
