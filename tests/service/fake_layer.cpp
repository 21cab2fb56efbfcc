// fake_layer: a threading layer with one routine, which answers with the layer's number.
// SPDX-License-Identifier: MIT
#include <cstdint>

#if defined(_WIN32)
#define EXPORT extern "C" __declspec(dllexport)
#else
#define EXPORT extern "C" __attribute__((visibility("default")))
#endif

EXPORT void orin_blas_dsyr(const char*, const std::int32_t*, const double*, const double*, const std::int32_t*,
                           double* a, const std::int32_t*) {
  *a = FAKE_LAYER;
}
