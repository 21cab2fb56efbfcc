// rng_pipe: the numbers of one stream as an endless file of 32-bit words, for statistical batteries that read a pipe.
// SPDX-License-Identifier: MIT
//
// Method    The words are the integer parts of 2^32 u, u the uniform doubles that a user gets; the same words for
//           families whose raw outputs have 32 bits.
// Use       rng_pipe IDENTIFIER [SEED...] | dieharder -g 200 -a
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "orin/rng.h"

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs("rng_pipe IDENTIFIER [SEED...]: 32-bit words of the stream on standard output, until nobody reads\n",
               stderr);
    return 2;
  }
  std::vector<uint32_t> seeds;
  for (int i = 2; i < argc; ++i) seeds.push_back(static_cast<uint32_t>(std::strtoul(argv[i], nullptr, 0)));
  void* stream = nullptr;
  const auto brng = static_cast<int32_t>(std::strtol(argv[1], nullptr, 0));
  if (__junNewStreamEx(&stream, brng, static_cast<int32_t>(seeds.size()), seeds.data()) != JUN_RNG_OK) {
    std::fprintf(stderr, "rng_pipe: no stream %s\n", argv[1]);
    return 1;
  }
  constexpr int32_t count = 16384;
  static double u[count];
  static uint32_t words[count];
  do {
    if (_jundRngUniform(0, stream, count, u, 0, 1) != JUN_RNG_OK) return 1;
    for (int32_t i = 0; i < count; ++i) words[i] = static_cast<uint32_t>(u[i] * 0x1p32);
  } while (std::fwrite(words, sizeof words, 1, stdout) == 1);
  __junDeleteStream(&stream);
  return 0;
}
