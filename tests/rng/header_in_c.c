/* header_in_c: the public header as C sees it.
 * SPDX-License-Identifier: MIT */
#include "orin/rng.h"

int32_t rng_row_bytes_in_c(void);
int32_t rng_row_bytes_in_c(void) { return (int32_t)(sizeof(JunBrngProperties)); }
