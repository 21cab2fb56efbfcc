// profile.h: the error of a function's kernels along its ordinary domain, for plots.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TOOLS_ACCURACY_PROFILE_H
#define ORIN_TOOLS_ACCURACY_PROFILE_H

#include <string>

#include "tools/accuracy/truth.h"

namespace accuracy {

// Writes `folder`/<label>.dat: for each of 240 stretches of the domain its middle and the worst error in ulp of LA, HA
// and EP there, against the quick reference. A function of two arguments sees random second ones.
template <class T>
void write_profile(const orin::vector_math::RealFunction<T>& function, const std::string& folder);

}  // namespace accuracy

#endif
