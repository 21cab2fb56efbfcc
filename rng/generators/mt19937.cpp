// mt19937: the Mersenne twister of period 2^19937 - 1, u = y / 2^32.
// SPDX-License-Identifier: MIT
//
// Source    M. Matsumoto, T. Nishimura, ACM TOMACS 8 (1998) 3-30. State: 624 words and the count of them delivered.
// Streams   neither leapfrog nor skip-ahead
// Proof     tests/rng/generators/known_answers_test.cpp: the authors' outputs for both seedings
#include "rng/generators/entries.h"
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

ORIN_RNG_ENTRIES(MT19937, init_stream<Mt19937>, uniforms<Mt19937>, raw_outputs<Mt19937>)
