// hypot: elementwise sqrt(a^2 + b^2), both precisions.
// SPDX-License-Identifier: MIT
//
// Method, bounds, special arguments: hypot_core.h
#include "vector_math/kernels.h"
#include "vector_math/kernels/hypot_core.h"

namespace orin::vector_math {
namespace {

template <class T, bool accurate>
struct Hypot : TwoToOne<T>, Length<T, accurate> {
  static constexpr const char* name = sizeof(T) == 8 ? "vdHypot" : "vsHypot";
  static constexpr T ordinary = 1;
  static constexpr int groups_per_step = 1;
};

}  // namespace

#define ORIN_HYPOT(name, T, accurate)                                 \
  void ORIN_CALL name(std::int32_t n, const T* a, const T* b, T* r) { \
    elementwise<Hypot<T, accurate>>({}, n, {a, b}, {r});              \
  }
ORIN_HYPOT(hypot_s_la, float, false)
ORIN_HYPOT(hypot_s_ha, float, true)
ORIN_HYPOT(hypot_d_la, double, false)
ORIN_HYPOT(hypot_d_ha, double, true)
#undef ORIN_HYPOT

}  // namespace orin::vector_math
