// rng_test: the generators through the tables that the module exports, on stacks aligned to 4 bytes only.
// SPDX-License-Identifier: MIT
#include <cstdint>
#include <cstring>
#include <vector>

#include "orin/rng.h"
#include "tests/module/module.h"
#include "tests/support/faulty_core.h"

#if defined(__i386__)

extern "C" void call_on_stack(std::uint32_t offset, void* function, const std::uint32_t* words, std::uint32_t count);

namespace {

using Words = std::vector<std::uint32_t>;

template <class T>
void append(Words& words, T value) {
  std::uint32_t parts[sizeof value / 4];
  std::memcpy(parts, &value, sizeof value);
  words.insert(words.end(), parts, parts + sizeof parts / 4);
}

template <class Function, class... Arguments>
void call(std::uint32_t offset, Function* function, Arguments... arguments) {
  Words words;
  (append(words, arguments), ...);
  call_on_stack(offset, reinterpret_cast<void*>(function), words.data(), static_cast<std::uint32_t>(words.size()));
}

// Everything that a new stream of the family gives: seeded, partly raw, moved on, then floats and doubles.
struct Numbers {
  std::uint32_t raw[4 * 37] = {};
  float s[37] = {};
  double d[37] = {};
};
Numbers numbers(int32_t brng, std::uint32_t offset) {
  const auto* table = static_cast<const JunBrngProperties*>(process::symbol(module_library(), "__RegBrngsNew"));
  const JunBrngProperties& row = table[brng / 0x100000 - 1];
  const std::uint32_t seeds[2] = {5, 6};
  void* stream = nullptr;
  Numbers out;
  call(offset, exported<decltype(__junNewStreamEx)>("__junNewStreamEx"), &stream, brng, int32_t{2}, &seeds[0]);
  call(offset, row.iBRng, stream, int32_t{37}, &out.raw[0]);
  call(offset, exported<decltype(__junSkipAheadStream)>("__junSkipAheadStream"), stream, std::uint64_t{1} << 40);
  call(offset, exported<decltype(_junsRngUniform)>("_junsRngUniform"), int32_t{0}, stream, int32_t{37}, &out.s[0],
       -1.0f, 2.0f);
  call(offset, exported<decltype(_jundRngUniform)>("_jundRngUniform"), int32_t{JUN_RNG_CLAMP}, stream, int32_t{37},
       &out.d[0], -1.0, 2.0);
  call(offset, exported<decltype(__junDeleteStream)>("__junDeleteStream"), &stream);
  return out;
}

}  // namespace

TEST(Stack, EveryGeneratorAtEveryAlignment) {
  const long blocks = faulty_core::live_blocks();
  const auto* legacy = static_cast<const JunBrngProperties*>(process::symbol(module_library(), "__RegBrngs"));
  EXPECT_TRUE(legacy[278].StateBytes == 43280 && legacy[279].StateBytes == 0);
  for (const int32_t row : {0, 1, 2, 3, 4, 5, 6, 7, 8, 12}) {
    const int32_t brng = (row + 1) * 0x100000;
    const Numbers expected = numbers(brng, 0);
    EXPECT_NE(expected.d[36], 0.0);
    for (const std::uint32_t offset : {4u, 8u, 12u}) {
      const Numbers found = numbers(brng, offset);
      EXPECT_EQ(std::memcmp(&found, &expected, sizeof found), 0) << "row " << row << " at offset " << offset;
    }
  }
  EXPECT_EQ(faulty_core::live_blocks(), blocks);
}

#endif
