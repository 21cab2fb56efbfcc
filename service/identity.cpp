// identity: which processor class the module was built for.
// SPDX-License-Identifier: MIT
#include "orin/service.h"

extern "C" ORIN_API int32_t ORIN_CALL dll_cpu_version(void) { return 0; }
