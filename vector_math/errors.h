// errors.h: what a kernel calls when an argument is bad.
// SPDX-License-Identifier: MIT
#ifndef ORIN_VECTOR_MATH_ERRORS_H
#define ORIN_VECTOR_MATH_ERRORS_H

#include <cstdint>

#include "orin/vector_math.h"

namespace orin::vector_math {

// Records `status` for the calling thread and does what its error mode asks: callback, errno, print, exception; then
// writes the results, which a callback may have changed, back into element `index` of the result vectors (the second
// before the first). Kernels without a second argument or result pass the first vector again. For status -1 the index
// is the size, for -2 it is 0, and no vector is touched.
void ReportKorError_s(std::int32_t status, std::int32_t index, const float* a1, const float* a2, float* r1, float* r2,
                      const char* name) noexcept;
void ReportKorError_d(std::int32_t status, std::int32_t index, const double* a1, const double* a2, double* r1,
                      double* r2, const char* name) noexcept;
void ReportKorError_c(std::int32_t status, std::int32_t index, const KorComplex8* a1, const KorComplex8* a2,
                      KorComplex8* r1, KorComplex8* r2, const char* name) noexcept;
void ReportKorError_z(std::int32_t status, std::int32_t index, const KorComplex16* a1, const KorComplex16* a2,
                      KorComplex16* r1, KorComplex16* r2, const char* name) noexcept;

// The same for any pair of argument and result type that there is: a real one and its complex one too. The index counts
// argument elements.
template <class A, class R>
void report_error(std::int32_t status, std::int32_t index, const A* a1, const A* a2, R* r1, R* r2,
                  const char* name) noexcept;

}  // namespace orin::vector_math

#endif
