// shapes_test: the elementwise loop on toy functions of every shape, each with specials, against scalar arithmetic.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "tests/support/guard_pages.h"
#include "vector_math/simd/complex.h"

namespace {

using namespace orin::vector_math;
using namespace orin::vector_math::simd;

template <class T>
using Register = std::conditional_t<sizeof(T) == 8, Vec2d, Vec4f>;

template <class T>
struct Quotient : TwoToOne<T> {
  static constexpr const char* name = "quotient";
  static constexpr T ordinary = 1;
  // The divisor's high word without its sign: zero, or a number so small that its high word is zero.
  static Vec4i special_lanes(Vec4i, Vec4i divisor) { return magnitude(divisor) == Vec4i(0); }
  static Register<T> fast(Register<T> a, Register<T> b) { return a / b; }
  static Outcome<T> special(T a, T b) {
    if (b != 0) return {{a / b}, KOR_STATUS_OK};
    return {{std::copysign(std::numeric_limits<T>::infinity(), a)}, KOR_STATUS_SING};
  }
};

// Root and square; a negative argument has no root.
template <class T>
struct RootAndSquare : OneToTwo<T> {
  static constexpr const char* name = "rootAndSquare";
  static constexpr T ordinary = 1;
  static Vec4i special_lanes(Vec4i high) { return high < Vec4i(0); }
  static Two<Register<T>> fast(Register<T> a) { return {sqrt(a), a * a}; }
  static Outcome<T, 2> special(T a) { return {{T(-1), a * a}, KOR_STATUS_ERRDOM}; }
};

// No specials, one group at a time, a parameter.
template <class T>
struct Shifted : OneToOne<T> {
  static constexpr const char* name = "shifted";
  static constexpr int groups_per_step = 1;
  T shift;
  explicit Shifted(T by) : shift(by) {}
  Register<T> fast(Register<T> a) const { return a + Register<T>(shift); }
};

// The half of small arguments, the double of large ones, the latter by the second path alone; beyond, nothing.
template <class T>
struct HalfOrDouble : OneToOne<T> {
  static constexpr const char* name = "halfOrDouble";
  static constexpr T ordinary = 1, small = 8, large = 1024;
  static Vec4i above(Vec4i words, T bound) {
    return magnitude(words) > Vec4i(static_cast<std::int32_t>(bits_of(bound) >> (8 * sizeof(T) - 32)));
  }
  static Vec4i beyond_fast(Vec4i words) { return above(words, small); }
  static Vec4i special_lanes(Vec4i words) { return above(words, large); }
  static Register<T> fast(Register<T> x) { return x * Register<T>(T(0.5)); }
  static Register<T> wide(Register<T> x) { return select(abs(x) > Register<T>(small), x * Register<T>(2), fast(x)); }
  static Outcome<T> special(T) { return {{0}, KOR_STATUS_ERRDOM}; }

  static auto bits_of(T x) {
    return std::bit_cast<std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>>(x);
  }
};

// From real to complex: a and 2a; a negative argument is special. And back: the sum of the parts.
template <class T>
struct WithDouble : OneToOther<T, ComplexOf<T>> {
  static constexpr const char* name = "withDouble";
  static constexpr T ordinary = 1;
  static Vec4i special_lanes(Vec4i words) { return words; }
  static Complex<Register<T>> fast(Register<T> a) { return {a, a + a}; }
  static Outcome<ComplexOf<T>> special(T a) { return {{{a, T(7)}}, KOR_STATUS_ERRDOM}; }
};
template <class T>
struct SumOfParts : OneToOther<ComplexOf<T>, T> {
  static constexpr const char* name = "sumOfParts";
  static constexpr int groups_per_step = 1;
  static Register<T> fast(Complex<Register<T>> z) { return z.re + z.im; }
};

std::vector<KorErrorContext> reports;
int32_t ORIN_CALL note(KorErrorContext* context) {
  reports.push_back(*context);
  context->r1 = 100;
  context->r2 = 200;
  return 0;
}

template <class T>
class Shapes : public testing::Test {
 protected:
  void SetUp() override {
    _korSetMode(KOR_ERRMODE_CALLBACK);
    _korSetErrorCallBack(&note);
    reports.clear();
  }
  void TearDown() override {
    _korSetErrorCallBack(nullptr);
    _korSetMode(KOR_MODE_DEFAULT);
  }
};
using Elements = testing::Types<float, double>;
TYPED_TEST_SUITE(Shapes, Elements);

// Every n, every place of one special element, and the result in each vector's place.
TYPED_TEST(Shapes, TwoArguments) {
  using T = TypeParam;
  for (int n = 1; n <= 19; ++n) {
    const auto count = static_cast<std::size_t>(n);
    for (std::size_t odd = 0; odd <= count; ++odd) {
      for (int place = 0; place < 3; ++place) {
        GuardedArray<T> a(count), b(count, GuardedArray<T>::at_start, 4), r(count, GuardedArray<T>::at_end, 4);
        std::vector<T> expected(count);
        for (std::size_t i = 0; i < count; ++i) {
          a[i] = T(i) - 3;
          b[i] = i == odd ? T(0) : T(i) + T(0.5);
          expected[i] = i == odd ? T(100) : a[i] / b[i];
        }
        const T odd_argument = odd < count ? a[odd] : T(0);
        T* result = place == 0 ? r.data() : place == 1 ? a.data() : b.data();
        reports.clear();
        elementwise<Quotient<T>>({}, n, {a.data(), b.data()}, {result});
        EXPECT_EQ(std::memcmp(result, expected.data(), count * sizeof(T)), 0) << n << ' ' << odd << ' ' << place;
        ASSERT_EQ(reports.size(), odd < count ? 1u : 0u);
        if (odd < count) {
          EXPECT_EQ(reports[0].status, KOR_STATUS_SING);
          EXPECT_EQ(reports[0].index, static_cast<int>(odd));
          EXPECT_EQ(reports[0].a1, odd_argument) << place;
          EXPECT_EQ(reports[0].a2, 0) << place;
          EXPECT_EQ(std::fabs(reports[0].r1), std::numeric_limits<double>::infinity());
        }
        EXPECT_TRUE(a.surroundings_intact() && b.surroundings_intact() && r.surroundings_intact());
      }
    }
  }
}

TYPED_TEST(Shapes, TwoResults) {
  using T = TypeParam;
  for (int n = 1; n <= 19; ++n) {
    const auto count = static_cast<std::size_t>(n);
    for (std::size_t odd = 0; odd <= count; ++odd) {
      for (int place = 0; place < 3; ++place) {
        GuardedArray<T> a(count), r1(count, GuardedArray<T>::at_start), r2(count, GuardedArray<T>::at_end, 8);
        for (std::size_t i = 0; i < count; ++i) a[i] = i == odd ? T(-3) : T(i) + T(0.25);
        T* first = place == 1 ? a.data() : r1.data();
        T* second = place == 2 ? a.data() : r2.data();
        reports.clear();
        elementwise<RootAndSquare<T>>({}, n, {a.data()}, {first, second});
        for (std::size_t i = 0; i < count; ++i) {
          const T x = T(i) + T(0.25);
          EXPECT_EQ(first[i], i == odd ? T(100) : std::sqrt(x)) << n << ' ' << odd << ' ' << place;
          EXPECT_EQ(second[i], i == odd ? T(200) : x * x) << n << ' ' << odd << ' ' << place;
        }
        ASSERT_EQ(reports.size(), odd < count ? 1u : 0u);
        if (odd < count) {
          EXPECT_EQ(reports[0].a1, -3) << place;
          EXPECT_EQ(reports[0].a2, -3) << place;
          EXPECT_EQ(reports[0].r1, -1) << place;
          EXPECT_EQ(reports[0].r2, 9) << place;
        }
        EXPECT_TRUE(a.surroundings_intact() && r1.surroundings_intact() && r2.surroundings_intact());
      }
    }
  }
}

// All mixtures of the three kinds of arguments in up to three groups' worth of places, in place.
TYPED_TEST(Shapes, SecondPath) {
  using T = TypeParam;
  const T kinds[] = {T(-3), T(100), T(5000)};
  const T results[] = {T(-1.5), T(200), T(100)};  // the last one is the callback's
  unsigned random = 1;
  for (int n = 1; n <= 13; ++n) {
    const auto count = static_cast<std::size_t>(n);
    for (int mixture = 0; mixture < 200; ++mixture) {
      GuardedArray<T> a(count);
      std::vector<T> expected(count);
      std::size_t specials = 0;
      for (std::size_t i = 0; i < count; ++i) {
        random = random * 1664525 + 1013904223;
        const unsigned kind = mixture % 2 == 0 ? random >> 31 : (random >> 24) % 3;
        a[i] = kinds[kind];
        expected[i] = results[kind];
        specials += kind == 2;
      }
      reports.clear();
      elementwise<HalfOrDouble<T>>({}, n, {a.data()}, {a.data()});
      EXPECT_EQ(std::memcmp(a.data(), expected.data(), count * sizeof(T)), 0) << n << ' ' << mixture;
      EXPECT_EQ(reports.size(), specials);
      EXPECT_TRUE(a.surroundings_intact());
    }
  }
}

// Every n and every place of one special element, the result in a vector of its own and in the argument's place.
TYPED_TEST(Shapes, FromRealToComplexAndBack) {
  using T = TypeParam;
  using Z = ComplexOf<T>;
  for (int n = 1; n <= 19; ++n) {
    const auto count = static_cast<std::size_t>(n);
    for (std::size_t odd = 0; odd <= count; ++odd) {
      for (bool in_place : {false, true}) {
        GuardedArray<T> a(count);
        GuardedArray<Z> z(count, GuardedArray<Z>::at_end, 4);
        T* const arguments = in_place ? &z.data()->re : a.data();
        for (std::size_t i = 0; i < count; ++i) arguments[i] = i == odd ? T(-3) : T(i);
        reports.clear();
        elementwise<WithDouble<T>>({}, n, {arguments}, {z.data()});
        for (std::size_t i = 0; i < count; ++i) {
          EXPECT_EQ(z[i].re, i == odd ? T(100) : T(i)) << n << ' ' << odd << ' ' << in_place;
          EXPECT_EQ(z[i].im, i == odd ? T(7) : T(2 * i)) << n << ' ' << odd << ' ' << in_place;
        }
        ASSERT_EQ(reports.size(), odd < count ? 1u : 0u);
        if (odd < count) {
          EXPECT_EQ(reports[0].index, static_cast<int>(odd));
          EXPECT_EQ(reports[0].a1, -3);
          EXPECT_EQ(reports[0].a1Im, 0);
          EXPECT_EQ(reports[0].r1, -3);
          EXPECT_EQ(reports[0].r1Im, 7);
        }
        T* const sums = in_place ? &z.data()->re : a.data();
        elementwise<SumOfParts<T>>({}, n, {z.data()}, {sums});
        for (std::size_t i = 0; i < count; ++i)
          EXPECT_EQ(sums[i], i == odd ? T(107) : T(3 * i)) << n << ' ' << odd << ' ' << in_place;
        EXPECT_TRUE(a.surroundings_intact() && z.surroundings_intact());
      }
    }
  }
}

// A parameter takes part under the kernel's own rounding, whatever the caller's.
TYPED_TEST(Shapes, Parameter) {
  using T = TypeParam;
  const T tiny = std::numeric_limits<T>::epsilon() / 8;
  for (int n = 1; n <= 9; ++n) {
    const auto count = static_cast<std::size_t>(n);
    GuardedArray<T> a(count);
    for (T& x : a) x = 1;
    const unsigned saved = _mm_getcsr();
    _mm_setcsr(0x1F80 | 0x4000);  // upwards
    elementwise<Shifted<T>>(Shifted<T>(tiny), n, {a.data()}, {a.data()});
    _mm_setcsr(saved);
    for (const T x : a) EXPECT_EQ(x, 1);
    EXPECT_TRUE(reports.empty());
  }
  elementwise<Shifted<T>>(Shifted<T>(tiny), 0, {nullptr}, {nullptr});
  ASSERT_EQ(reports.size(), 1u);
  EXPECT_EQ(reports[0].status, KOR_STATUS_BADSIZE);
}

}  // namespace
