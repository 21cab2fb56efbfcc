// random.h: the random numbers of the scans.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TOOLS_ACCURACY_RANDOM_H
#define ORIN_TOOLS_ACCURACY_RANDOM_H

#include <cstdint>

namespace accuracy {

// Marsaglia's xorshift64* with the multiplier of Vigna (2014): arguments must be the same at every run.
class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed * UINT64_C(0x9e3779b97f4a7c15) + 1) {}
  std::uint64_t next() {
    state_ ^= state_ >> 12;
    state_ ^= state_ << 25;
    state_ ^= state_ >> 27;
    return state_ * UINT64_C(0x2545f4914f6cdd1d);
  }
  double uniform() { return static_cast<double>(next() >> 11) * 0x1p-53; }

 private:
  std::uint64_t state_;
};

}  // namespace accuracy

#endif
