// probe: a registered generator family that records how it is called and delivers what the test tells it to.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TESTS_RNG_PROBE_H
#define ORIN_TESTS_RNG_PROBE_H

#include <cstdint>
#include <utility>
#include <vector>

#include "orin/rng.h"

namespace probe {

struct Call {
  int32_t method, n;
  std::vector<uint32_t> params;
};

inline Call last_call;               // of InitStream
inline int32_t status = JUN_RNG_OK;  // what every function returns
inline std::vector<double> script;   // values of the floating-point functions, whatever the interval
inline std::pair<double, double> interval;

inline int32_t ORIN_CALL init(int32_t method, void*, int32_t n, const uint32_t* params) {
  const int32_t words = method == JUN_RNG_LEAPFROG ? 1 : n;
  last_call = {method, n, {params, params + (words > 0 ? words : 0)}};
  return status;
}
template <class T>
int32_t ORIN_CALL uniform(void*, int32_t n, T* r, T a, T b) {
  interval = {a, b};
  for (int32_t i = 0; i < n; ++i) r[i] = static_cast<T>(script[static_cast<std::size_t>(i)]);
  return status;
}
inline int32_t ORIN_CALL raw(void*, int32_t, uint32_t*) { return status; }

inline JunBrngProperties properties(int32_t state_bytes = 48) {
  return {state_bytes, 3, 1, 4, 32, init, uniform<float>, uniform<double>, raw};
}

// Identifier of the family with this size, registered on first use.
template <int32_t StateBytes = 48>
int32_t identifier() {
  static const int32_t brng = [] {
    const JunBrngProperties family = properties(StateBytes);
    return __junRegisterBrng(&family);
  }();
  return brng;
}

}  // namespace probe

#endif
