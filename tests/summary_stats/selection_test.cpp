// selection_test: sort, selection of one rank and its step, on arrays made to break them.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>

#include "stats_task.h"
#include "summary_stats/quicksort.h"
#include "tests/support/guard_pages.h"

namespace {

using namespace stats;

template <class T>
class Selection : public testing::Test {};
TYPED_TEST_SUITE(Selection, Precisions);

// Arrays of n elements: shuffled, constant, two values, runs, organ pipe, McIlroy-like alternation, infinities.
template <class T>
std::vector<std::vector<T>> arrays(int n) {
  std::mt19937 generator(static_cast<unsigned>(n));
  std::vector<std::vector<T>> all;
  const auto add = [&](auto value) {
    std::vector<T> a;
    for (int i = 0; i < n; ++i) a.push_back(static_cast<T>(value(i)));
    all.push_back(a);
  };
  add([&](int) { return std::uniform_real_distribution<double>(-1, 1)(generator); });
  add([](int) { return 7; });
  add([&](int) { return generator() % 2; });
  add([&](int) { return generator() % 10; });
  add([](int i) { return i; });
  add([](int i) { return -i; });
  add([n](int i) { return std::min(i, n - i); });
  add([n](int i) { return i % 2 == 0 ? i : n - i; });
  add([](int i) { return i % 3 == 0 ? infinity_of<T> : i % 3 == 1 ? -infinity_of<T> : T(-0.0); });
  return all;
}

const int sizes[] = {0, 1, 2, 3, 4, 5, 15, 16, 17, 40, 127, 128, 129, 1000, 5000};

// Sorted numbers, then NaN; the same elements as before.
template <class T>
std::vector<T> sorted(std::vector<T> a) {
  const auto numbers = std::stable_partition(a.begin(), a.end(), [](T x) { return x == x; });
  std::sort(a.begin(), numbers);
  return a;
}

template <class T>
bool same(T a, T b) {
  return a == b || (a != a && b != b);
}

TYPED_TEST(Selection, SortsEverything) {
  for (const int n : sizes) {
    for (std::vector<TypeParam> a : arrays<TypeParam>(n)) {
      for (const int nan_every : {0, 1, 2, 7}) {
        for (int i = 0; nan_every > 0 && i < n; i += nan_every) a[static_cast<std::size_t>(i)] = nan_of<TypeParam>;
        GuardedArray<TypeParam> b(a.size());
        std::copy(a.begin(), a.end(), b.begin());
        EXPECT_EQ(Entries<TypeParam>::sort(n, b.data()), 0);
        EXPECT_TRUE(std::ranges::equal(b, sorted(a), same<TypeParam>)) << n << " " << nan_every;
        EXPECT_TRUE(b.surroundings_intact());
      }
    }
  }
}

// A value at every rank, none larger before it, none smaller behind it.
TYPED_TEST(Selection, FindsEveryRankAndPartitions) {
  for (const int n : {1, 2, 3, 4, 5, 17, 40}) {
    for (const std::vector<TypeParam>& a : arrays<TypeParam>(n)) {
      const auto expected = sorted(a);
      for (int k = 0; k < n; ++k) {
        auto b = a;
        const TypeParam found = Entries<TypeParam>::select(n, b.data(), k);
        EXPECT_EQ(found, expected[static_cast<std::size_t>(k)]);
        EXPECT_EQ(found, b[static_cast<std::size_t>(k)]);
        EXPECT_EQ(found, *std::max_element(b.begin(), b.begin() + k + 1));
        EXPECT_EQ(found, *std::min_element(b.begin() + k, b.end()));
        EXPECT_EQ(sorted(b), expected);
      }
    }
  }
  TypeParam one[] = {1};
  EXPECT_TRUE(std::isnan(Entries<TypeParam>::select(1, one, 1)));
  EXPECT_TRUE(std::isnan(Entries<TypeParam>::select(1, one, -1)));
  EXPECT_TRUE(std::isnan(Entries<TypeParam>::select(0, one, 0)));
}

// All arrays of up to 7 elements out of {-1, 0, 1, NaN}: no step and no selection leaves its memory or hangs, and no
// element is lost.
TYPED_TEST(Selection, NanNeverLeadsOutside) {
  const TypeParam choices[] = {-1, 0, 1, nan_of<TypeParam>};
  for (int n = 2; n <= 7; ++n) {
    GuardedArray<TypeParam> ends(static_cast<std::size_t>(n)),
        starts(static_cast<std::size_t>(n), GuardedArray<TypeParam>::at_start);
    for (int code = 0; code < 1 << 2 * n; ++code) {
      std::vector<TypeParam> a;
      for (int i = 0; i < n; ++i) a.push_back(choices[code >> 2 * i & 3]);
      for (GuardedArray<TypeParam>* b : {&ends, &starts}) {
        std::copy(a.begin(), a.end(), b->begin());
        int up = -1, down = -1;
        EXPECT_EQ(Entries<TypeParam>::step(0, n - 1, b->data(), &up, &down), 0);
        ASSERT_TRUE(0 <= down && down < up && up <= n) << code;
        Entries<TypeParam>::select(n, b->data(), code % n);
        EXPECT_TRUE(
            std::ranges::equal(sorted(std::vector<TypeParam>(b->begin(), b->end())), sorted(a), same<TypeParam>));
      }
    }
  }
}

// The step by hand: the middle 5 goes to place 1, the three are put in order, the scans meet.
TYPED_TEST(Selection, StepFollowsTheAlgorithm) {
  TypeParam a[] = {9, 4, 7, 1, 5, 8, 3, 6, 2};
  int up = 0, down = 0;
  // 9 5 7 1 4 8 3 6 2 -> ordered 2 5 . . . . . . 9 -> scans: 7<->3 (places 2, 6), up stops at 8 (5), down at 4 (4).
  EXPECT_EQ(Entries<TypeParam>::step(0, 8, a, &up, &down), 0);
  EXPECT_EQ(std::vector<TypeParam>(a, a + 9), (std::vector<TypeParam>{2, 4, 3, 1, 5, 8, 7, 6, 9}));
  EXPECT_EQ(up, 5);
  EXPECT_EQ(down, 4);
  TypeParam pair[] = {2, 1};
  EXPECT_EQ(Entries<TypeParam>::step(0, 1, pair, &up, &down), 0);
  EXPECT_EQ(pair[0], 1);
  EXPECT_EQ(up, 2);
  EXPECT_EQ(down, 0);
}

// Ranges that are left after so many levels are sorted all the same, by the way that is never quadratic.
TYPED_TEST(Selection, LevelsAreBounded) {
  for (const int levels : {0, 1, 3}) {
    for (std::vector<TypeParam> a : arrays<TypeParam>(1000)) {
      const auto expected = sorted(a);
      orin::summary_stats::quicksort(a.data(), 0, 1000, levels, [](std::ptrdiff_t, std::ptrdiff_t) { return true; });
      EXPECT_EQ(a, expected);
    }
  }
}

}  // namespace
