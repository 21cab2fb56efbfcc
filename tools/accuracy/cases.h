// cases.h: reference cases and digests for the tests, as text files.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TOOLS_ACCURACY_CASES_H
#define ORIN_TOOLS_ACCURACY_CASES_H

#include <string>

#include "tools/accuracy/scan.h"

namespace accuracy {

// Writes <folder>/<label>.cases: special arguments, the neighbours of every threshold of the status, arguments over all
// exponents and over the usual domain, and the worst that the scan found.
template <class T>
void write_cases(const orin::vector_math::RealFunction<T>& function, const ScanResult<T>& result,
                 const std::string& folder);

// Writes <folder>/digests.txt: one line for each kernel.
void write_digests(const std::string& folder);

}  // namespace accuracy

#endif
