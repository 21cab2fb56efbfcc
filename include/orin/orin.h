/* orin.h: every interface of ORIN SSE2.
 * SPDX-License-Identifier: MIT
 */
#ifndef ORIN_ORIN_H
#define ORIN_ORIN_H

#include "orin/conv.h"
#include "orin/data_fitting.h"
#include "orin/rng.h"
#include "orin/service.h"
#include "orin/summary_stats.h"
#include "orin/vector_math.h"

#endif
