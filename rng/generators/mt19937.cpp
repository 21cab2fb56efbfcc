// mt19937: the Mersenne twister of period 2^19937 - 1, u = y / 2^32.
// SPDX-License-Identifier: MIT
//
// Source    M. Matsumoto, T. Nishimura, ACM TOMACS 8 (1998) 3-30. State: 624 words and the count of them delivered.
// Streams   neither leapfrog nor skip-ahead
// Proof     tests/rng/generators/known_answers_test.cpp: the authors' outputs for both seedings
#include "rng/generators/twister.h"

namespace orin::rng {
namespace {

using Engine = Twister<624, 397, 31, 11, 4>;

constexpr TwisterParameters parameters{0x9908b0dfU, 0x9d2c5680U, 0xefc60000U};

struct State {
  Engine::Table table;
  uint32_t reserved;
};
static_assert(sizeof(State) == 2520 - sizeof(StreamHeader));

struct Mt19937 {
  static int32_t seed(void* stream, int32_t n, const uint32_t* seeds) {
    State& state = state_of<State>(stream);
    Engine::seed(state.table, n, seeds);
    state.reserved = 0;
    return JUN_RNG_OK;
  }

  template <class Sink>
  static int32_t generate(void* stream, std::size_t n, Sink& sink) {
    Engine::generate(state_of<State>(stream).table, n, parameters, sink);
    return JUN_RNG_OK;
  }
};

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_BEGIN_DECLS

ORIN_API int32_t ORIN_CALL __junBRngMT19937InitStream(int32_t method, void* stream, int32_t n, const uint32_t* params) {
  return init_stream<Mt19937>(method, stream, n, params);
}

ORIN_API int32_t ORIN_CALL __junsBRngMT19937(void* stream, int32_t n, float* r, float a, float b) {
  return uniforms<Mt19937>(stream, n, r, a, b);
}

ORIN_API int32_t ORIN_CALL __jundBRngMT19937(void* stream, int32_t n, double* r, double a, double b) {
  return uniforms<Mt19937>(stream, n, r, a, b);
}

ORIN_API int32_t ORIN_CALL __juniBRngMT19937(void* stream, int32_t n, uint32_t* r) {
  return raw_outputs<Mt19937>(stream, n, r);
}

ORIN_END_DECLS
