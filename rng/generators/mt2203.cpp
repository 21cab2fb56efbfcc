// mt2203: 6024 Mersenne twisters of period 2^2203 - 1, one per sub-stream, u = y / 2^32.
// SPDX-License-Identifier: MIT
//
// Source    M. Matsumoto, T. Nishimura, Dynamic creation of pseudorandom number generators, MCQMC 1998 (2000) 56-69.
//           State: 69 words and the count of them delivered; the parameters are those of the stream's identifier.
// Data      rng/data/mt2203_parameters.h: twist coefficients and tempering masks
// Streams   neither leapfrog nor skip-ahead; the sub-streams have different characteristic polynomials
// Proof     tests/rng/generators/mt2203_test.cpp: minimal polynomials of outputs, irreducible by an independent
//           library
#include "rng/data/mt2203_parameters.h"
#include "rng/generators/entries.h"
#include "rng/generators/twister.h"

namespace orin::rng {
namespace {

using Engine = Twister<69, 34, 5, 12, 8>;

struct State {
  Engine::Table table;
  uint32_t reserved[4];
};
static_assert(sizeof(State) == 312 - sizeof(StreamHeader));

struct Mt2203 {
  static int32_t seed(void* stream, int32_t n, const uint32_t* seeds) {
    State& state = state_of<State>(stream);
    Engine::seed(state.table, n, seeds);
    std::memset(state.reserved, 0, sizeof state.reserved);
    return JUN_RNG_OK;
  }

  template <class Sink>
  static int32_t generate(void* stream, std::size_t n, Sink& sink) {
    const uint32_t* p = mt2203_parameters[sub_stream_of(stream)];
    Engine::generate(state_of<State>(stream).table, n, {p[0], p[1], p[2]}, sink);
    return JUN_RNG_OK;
  }
};

}  // namespace
}  // namespace orin::rng

using namespace orin::rng;

ORIN_RNG_ENTRIES(MT2203, init_stream<Mt2203>, uniforms<Mt2203>, raw_outputs<Mt2203>)
