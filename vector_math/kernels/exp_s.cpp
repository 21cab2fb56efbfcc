// exp_s: elementwise e^x, single precision.
// SPDX-License-Identifier: MIT
//
// Method    exp_core_s.h
// Bounds    HA 0.53 ulp, subnormal results 0.77; LA relative 2^-21, EP 2^-11, subnormal results one spacing more
// Special   NaN -> NaN, +inf -> +inf, -inf -> +0, no status; overflow -> +inf, status 3; underflow -> +0, status 4;
//           subnormal results by a last product with 2^-126, status 4
#include "vector_math/kernels.h"
#include "vector_math/kernels/exp_core_s.h"
#include "vector_math/kernels/exponential.h"

namespace orin::vector_math {

using exp_s::Power;
using simd::elementwise;

void ORIN_CALL exp_s_la(std::int32_t n, const float* a, float* r) {
  elementwise<Exponential<float, Power<Grade::la>>>({}, n, {a}, {r});
}
void ORIN_CALL exp_s_ha(std::int32_t n, const float* a, float* r) {
  elementwise<Exponential<float, Power<Grade::ha>>>({}, n, {a}, {r});
}
void ORIN_CALL exp_s_ep(std::int32_t n, const float* a, float* r) {
  elementwise<Exponential<float, Power<Grade::ep>>>({}, n, {a}, {r});
}

}  // namespace orin::vector_math
