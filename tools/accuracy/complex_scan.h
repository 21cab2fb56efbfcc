// complex_scan.h: the search for the worst errors of complex functions, and their reference cases.
// SPDX-License-Identifier: MIT
//
// Every point is judged by MPC: parts of random exponents and signs over the range of ordinary results, points of the
// usual square, next to the axes, next to the unit circle and next to +-1 and +-i; then a climb from the worst of them
// through their neighbours.
#ifndef ORIN_TOOLS_ACCURACY_COMPLEX_SCAN_H
#define ORIN_TOOLS_ACCURACY_COMPLEX_SCAN_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/accuracy/complex_truth.h"

namespace accuracy {

template <class T>
struct ComplexFinding {
  using Z = typename orin::vector_math::ComplexFunction<T>::Z;
  Z a, b;
  double error, error_of_parts;  // in ulp of the modulus; in ulp of each part
};

template <class T>
struct ComplexScanResult {
  std::int64_t arguments = 0;
  // Per grade, the largest first: by modulus and by part.
  std::vector<ComplexFinding<T>> by_modulus[orin::vector_math::grades];
  std::vector<ComplexFinding<T>> by_part[orin::vector_math::grades];
};

template <class T>
ComplexScanResult<T> complex_scan(const orin::vector_math::ComplexFunction<T>& function, std::int64_t samples,
                                  int threads);

// Writes <folder>/<name>.cases: points of all these kinds and the worst that the scan found.
template <class T>
void write_complex_cases(const orin::vector_math::ComplexFunction<T>& function, const ComplexScanResult<T>& result,
                         const std::string& folder);

}  // namespace accuracy

#endif
