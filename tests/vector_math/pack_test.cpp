// pack_test: the six copies against their definitions, for every type and both index widths.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "tests/support/guard_pages.h"
#include "vector_math/kernels.h"

namespace {

using namespace orin::vector_math;

template <class T>
struct Kernels;
#define KERNELS_OF(t)                                \
  template <>                                        \
  struct Kernels<element_##t> {                      \
    static constexpr auto* pack_i = &pack_i_##t;     \
    static constexpr auto* pack_m = &pack_m_##t;     \
    static constexpr auto* pack_v = &pack_v_##t;     \
    static constexpr auto* unpack_i = &unpack_i_##t; \
    static constexpr auto* unpack_m = &unpack_m_##t; \
    static constexpr auto* unpack_v = &unpack_v_##t; \
  };
KERNELS_OF(s)
KERNELS_OF(d)
KERNELS_OF(c)
KERNELS_OF(z)
#undef KERNELS_OF

// Random bytes: also signalling NaNs keep their bits.
template <class T>
void fill(GuardedArray<T>& array, unsigned seed) {
  std::mt19937 random(seed);
  auto* bytes = reinterpret_cast<unsigned char*>(array.data());
  for (std::size_t i = 0; i < array.size() * sizeof(T); ++i) bytes[i] = static_cast<unsigned char>(random());
}

template <class T>
bool same(const T& a, const T& b) {
  return std::memcmp(&a, &b, sizeof(T)) == 0;
}

template <class T>
class Pack : public testing::Test {
 protected:
  static constexpr std::size_t long_count = 60;
  // Both sides touch a guard page; arrays of doubles are aligned to 4 bytes only.
  static constexpr std::size_t offset = 4;

  template <class Index>
  void check(std::int32_t indexing) {
    for (std::size_t n = 0; n <= 20; ++n) {
      GuardedArray<T> dense(n, GuardedArray<T>::at_end, offset), packed(n, GuardedArray<T>::at_start, offset);
      GuardedArray<T> wide(long_count), spread(long_count);
      GuardedArray<Index> mask(n), index(n);
      fill(dense, 1);
      fill(wide, 2);
      std::mt19937 random(static_cast<unsigned>(n));
      std::size_t chosen = 0;
      for (std::size_t i = 0; i < n; ++i) {
        mask[i] = static_cast<Index>(random() % 2 * (sizeof(Index) == 8 && i % 2 ? std::uint64_t{1} << 40 : 3));
        chosen += mask[i] != 0;
        index[i] = static_cast<Index>((i * 7 + 3) % long_count);
      }
      const auto count = static_cast<std::int64_t>(n);

      for (int step : {1, 3, 0, -2}) {
        const T* start = step >= 0 ? wide.data() : wide.data() + long_count - 1;
        Kernels<T>::pack_i(count, start, step, packed.data(), indexing);
        for (std::size_t i = 0; i < n; ++i) ASSERT_TRUE(same(packed[i], start[static_cast<int>(i) * step]));
        if (step == 0) continue;
        fill(spread, 3);
        T* to = step > 0 ? spread.data() : spread.data() + long_count - 1;
        Kernels<T>::unpack_i(count, dense.data(), to, step, indexing);
        for (std::size_t i = 0; i < n; ++i) ASSERT_TRUE(same(to[static_cast<int>(i) * step], dense[i]));
      }

      Kernels<T>::pack_v(count, wide.data(), index.data(), packed.data(), indexing);
      for (std::size_t i = 0; i < n; ++i) ASSERT_TRUE(same(packed[i], wide[static_cast<std::size_t>(index[i])]));
      Kernels<T>::unpack_v(count, dense.data(), spread.data(), index.data(), indexing);
      for (std::size_t i = 0; i < n; ++i) ASSERT_TRUE(same(spread[static_cast<std::size_t>(index[i])], dense[i]));

      // Exactly the chosen elements fit into the packed side.
      GuardedArray<T> selected(chosen), unpacked(n), before(n);
      Kernels<T>::pack_m(count, dense.data(), mask.data(), selected.data(), indexing);
      fill(unpacked, 4);
      fill(before, 4);
      Kernels<T>::unpack_m(count, selected.data(), unpacked.data(), mask.data(), indexing);
      for (std::size_t i = 0, k = 0; i < n; ++i) {
        if (mask[i] != 0) {
          ASSERT_TRUE(same(selected[k++], dense[i]));
        }
        ASSERT_TRUE(same(unpacked[i], mask[i] != 0 ? dense[i] : before[i]));
      }
      ASSERT_TRUE(packed.surroundings_intact() && spread.surroundings_intact());
    }
  }
};

using Types = testing::Types<float, double, KorComplex8, KorComplex16>;
TYPED_TEST_SUITE(Pack, Types);

TYPED_TEST(Pack, With32BitIndices) { this->template check<std::int32_t>(1); }
TYPED_TEST(Pack, With64BitIndices) {
  this->template check<std::int64_t>(0);
  this->template check<std::int64_t>(2);
}

// With switch 1 the high halves of counts and increments do not count; otherwise they do.
TYPED_TEST(Pack, SwitchSelectsTheHalves) {
  TypeParam from[2] = {}, to[2];
  std::memset(&from[1], 0x11, sizeof from[1]);
  constexpr std::int64_t high = std::int64_t{1} << 32;
  std::memset(to, 0x77, sizeof to);
  Kernels<TypeParam>::pack_i(high + 2, from, high + 1, to, 1);
  EXPECT_TRUE(same(to[1], from[1]));
  std::memset(to, 0x77, sizeof to);
  Kernels<TypeParam>::pack_i(high - 1, from, 1, to, 1);  // -1 in its low half
  Kernels<TypeParam>::pack_i(-high + 2, from, 1, to, 0);
  EXPECT_FALSE(same(to[0], from[0]));
}

TEST(PackEntries, PassTheSwitch) {
  const double a[] = {10, 20, 30};
  const int32_t mask[] = {1, 0, 1}, index[] = {2, 0, 1};
  double y[] = {0, 0, 7};
  _kordPackM(3, a, mask, y);
  EXPECT_EQ(y[1], 30);
  EXPECT_EQ(y[2], 7);
  _kordPackV_26(3, a, index, y);
  EXPECT_EQ(y[0], 30);
  _kordUnpackI_50(2, a, y, 2);
  EXPECT_EQ(y[2], 20);
  const double b[] = {7, 8};
  const int32_t where[] = {0, 1, 1};
  double z[] = {1, 2, 3};
  _kordUnpackM_HA(3, b, z, where);
  EXPECT_EQ(z[0], 1);
  EXPECT_EQ(z[1], 7);
  EXPECT_EQ(z[2], 8);
}

}  // namespace
