// exp_d: elementwise e^x, double.
// SPDX-License-Identifier: MIT
//
// Method    exp_core_d.h
// Bounds    HA 0.55 ulp, subnormal results 0.78; LA relative 2^-50, EP 2^-26, one spacing more there
// Special   NaN -> NaN, +inf -> +inf, -inf -> +0, no status; overflow -> +inf, status 3; underflow -> +0, status 4;
//           subnormal results by a last product with 2^-1022, status 4
#include "vector_math/kernels.h"
#include "vector_math/kernels/exp_core_d.h"
#include "vector_math/kernels/exponential.h"

namespace orin::vector_math {

using exp_d::Power;
using simd::elementwise;

void ORIN_CALL exp_d_la(std::int32_t n, const double* a, double* r) {
  elementwise<Exponential<double, Power<Grade::la>>>({}, n, {a}, {r});
}
void ORIN_CALL exp_d_ha(std::int32_t n, const double* a, double* r) {
  elementwise<Exponential<double, Power<Grade::ha>>>({}, n, {a}, {r});
}
void ORIN_CALL exp_d_ep(std::int32_t n, const double* a, double* r) {
  elementwise<Exponential<double, Power<Grade::ep>>>({}, n, {a}, {r});
}

}  // namespace orin::vector_math
