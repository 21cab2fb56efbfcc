// support: streams that clean up after themselves, a check for leaks, and a generator family that does as it is told.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TESTS_RNG_SUPPORT_H
#define ORIN_TESTS_RNG_SUPPORT_H

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "orin/rng.h"
#include "tests/support/faulty_core.h"

struct DeleteStream {
  void operator()(void* stream) const { __junDeleteStream(&stream); }
};
using Stream = std::unique_ptr<void, DeleteStream>;

inline unsigned char* bytes_of(const Stream& stream) { return static_cast<unsigned char*>(stream.get()); }

inline JunBrngProperties row_of(int32_t brng) {
  JunBrngProperties row = {};
  EXPECT_EQ(__junGetBrngProperties(brng, &row), 0) << brng;
  return row;
}

inline JunBrngProperties row_of(const Stream& stream) { return row_of(__junGetStreamStateBrng(stream.get())); }

// A stream that is not seeded: its state bytes are start, start + 1, ...
inline Stream patterned(int32_t brng, int start = 0) {
  int32_t row = 0, sub_stream = 0;
  const JunBrngProperties* table = __junGetBrngBaseOffset(brng, &row, &sub_stream);
  void* stream = nullptr;
  EXPECT_EQ(__junAllocateStream(&stream, brng, table, row, sub_stream), 0) << brng;
  for (int32_t i = 16; i < row_of(brng).StateBytes; ++i) {
    static_cast<unsigned char*>(stream)[i] = static_cast<unsigned char>(start + i);
  }
  return Stream(stream);
}

// Each test ends with as many blocks as it began with.
class NoLeaks : public ::testing::Test {
 protected:
  void TearDown() override { EXPECT_EQ(faulty_core::live_blocks(), blocks_); }
  const long blocks_ = faulty_core::live_blocks();
};

namespace probe {

inline int32_t status = JUN_RNG_OK;  // what every function of the family returns
inline int32_t method, n;            // of the last InitStream
inline std::vector<uint32_t> params;
inline std::vector<double> script;  // values of the floating-point functions, whatever the interval

inline int32_t ORIN_CALL init(int32_t asked, void*, int32_t count, const uint32_t* words) {
  method = asked, n = count;
  params.assign(words, words + (asked == JUN_RNG_LEAPFROG ? 1 : count));
  return status;
}
template <class T>
int32_t ORIN_CALL uniform(void*, int32_t count, T* r, T, T) {
  for (int32_t i = 0; i < count; ++i) r[i] = static_cast<T>(script[static_cast<std::size_t>(i)]);
  return status;
}
inline int32_t ORIN_CALL raw(void*, int32_t, uint32_t*) { return status; }

inline JunBrngProperties properties(int32_t state_bytes = 48) {
  return {state_bytes, 3, 1, 4, 32, init, uniform<float>, uniform<double>, raw};
}

// Identifier of the family with streams of this size, registered on first use.
template <int32_t StateBytes = 48>
int32_t identifier() {
  static const JunBrngProperties family = properties(StateBytes);
  static const int32_t brng = __junRegisterBrng(&family);
  return brng;
}

}  // namespace probe

#endif
