// scan.h: the search for the worst errors of a function's three kernels.
// SPDX-License-Identifier: MIT
//
// Candidates are found with a quick reference and judged by the truth. Double, and two arguments: random bits, random
// and evenly spaced arguments of the ordinary domain, then a climb from the worst of them through their neighbours. One
// argument in single precision: all of them, beside the double kernel, whose own error is below 2^-28 ulp of a float.
#ifndef ORIN_TOOLS_ACCURACY_SCAN_H
#define ORIN_TOOLS_ACCURACY_SCAN_H

#include <cstdint>
#include <vector>

#include "tools/accuracy/truth.h"

namespace accuracy {

template <class T>
struct Finding {
  Point<T> point;
  double ulp;
  double relative;
};

template <class T>
struct ScanResult {
  std::int64_t arguments = 0;
  // Per grade: the worst ones by error in ulp among normal and among subnormal results, and by relative error, largest
  // first.
  std::vector<Finding<T>> by_ulp[orin::vector_math::grades];
  std::vector<Finding<T>> subnormal[orin::vector_math::grades];
  std::vector<Finding<T>> by_relative[orin::vector_math::grades];
};

// Scans with `threads` threads: `samples` arguments, or all of them where samples is 0 and the function takes one
// float.
template <class T>
ScanResult<T> scan(const orin::vector_math::RealFunction<T>& function, std::int64_t samples, int threads);

}  // namespace accuracy

#endif
