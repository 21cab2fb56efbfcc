// trng: the hardware source, which this module can hold a stream of but not generate from.
// SPDX-License-Identifier: MIT
//
// State     method word (always 0), retry count (second seed word, 10 without a usable one)
#include <cpuid.h>

#include <cstdint>

#include "rng/generators/entries.h"
#include "rng/generators/generators.h"

namespace orin::rng {
namespace {

struct TrngState {
  uint32_t method;
  uint32_t retries;
};
static_assert(sizeof(TrngState) == 8);

constexpr uint32_t default_retries = 10;

struct Trng {
  static int32_t seed(void* stream, int32_t n, const uint32_t* seeds) {
    const bool has_retries = n >= 2 && seeds[1] != 0;
    state_of<TrngState>(stream) = {0, has_retries ? seeds[1] : default_retries};
    return JUN_RNG_OK;
  }
};

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_BEGIN_DECLS

ORIN_RNG_INIT(TRNG, init_stream<Trng>)

int32_t ORIN_CALL __junBRngTRNGNotSupported(void) { return JUN_RNG_NO_TRUE_RANDOM; }

ORIN_API int32_t ORIN_CALL __junCPUisRDRAND(void) {
  unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
  return __get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0 && (ecx & bit_RDRND) != 0 ? 1 : 0;
}

ORIN_END_DECLS
