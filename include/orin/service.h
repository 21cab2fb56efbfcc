/* service.h: the identity of the module.
 * SPDX-License-Identifier: MIT
 */
#ifndef ORIN_SERVICE_H
#define ORIN_SERVICE_H

#include "orin/abi.h"

ORIN_BEGIN_DECLS

/* The processor class that this module was built for, as a loading front end asks for it: always 0, the
 * SSE2 class of 32-bit x86. Callable from any thread at any time. */
ORIN_API int32_t ORIN_CALL dll_cpu_version(void);

ORIN_END_DECLS

#endif
