// direct.h: the direct method on arguments that have passed their tests.
// SPDX-License-Identifier: MIT
#ifndef ORIN_CONV_DIRECT_H
#define ORIN_CONV_DIRECT_H

#include "conv/arguments.h"

namespace orin::conv {

template <class P>
std::int32_t sum_directly(const Arguments& arguments, Kind kind);

extern template std::int32_t sum_directly<SS>(const Arguments&, Kind);
extern template std::int32_t sum_directly<SD>(const Arguments&, Kind);
extern template std::int32_t sum_directly<DD>(const Arguments&, Kind);
extern template std::int32_t sum_directly<CC>(const Arguments&, Kind);
extern template std::int32_t sum_directly<CZ>(const Arguments&, Kind);
extern template std::int32_t sum_directly<ZZ>(const Arguments&, Kind);

}  // namespace orin::conv

#endif
