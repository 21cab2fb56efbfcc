// uniform_test: the uniform distribution, abstract streams and the hardware source.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "rng/stream_layout.h"
#include "tests/rng/probe.h"
#include "tests/support/faulty_core.h"

namespace {

int32_t uniform(int32_t method, void* stream, int32_t n, double* r, double a, double b) {
  return _jundRngUniform(method, stream, n, r, a, b);
}
int32_t uniform(int32_t method, void* stream, int32_t n, float* r, float a, float b) {
  return _junsRngUniform(method, stream, n, r, a, b);
}

// A source of known values behind an abstract stream: each refill gives what `plan` says, cycling: 0 the least asked
// for, 1 as much as fits, -1 one less than the least.
struct Source {
  std::vector<double> values;
  std::size_t given = 0;
  std::vector<int> plan = {1};
  std::size_t refills = 0;
  const void* stream = nullptr;
};
Source source;

template <class T>
T value(double v) {
  return static_cast<T>(v);
}
template <>
uint32_t value<uint32_t>(double v) {
  return static_cast<uint32_t>(v * 4294967296.0);
}

template <class T>
int32_t ORIN_CALL refill(void* stream, int32_t n, T* buffer, int32_t nmin, int32_t nmax, int32_t idx) {
  EXPECT_TRUE(stream == source.stream && nmin >= 1 && nmin <= nmax && nmax <= n && idx >= 0 && idx < n);
  const int plan = source.plan[source.refills++ % source.plan.size()];
  const int32_t count = plan == 0 ? nmin : plan > 0 ? nmax : nmin - 1;
  for (int32_t i = 0; i < count; ++i) buffer[(idx + i) % n] = value<T>(source.values[source.given++]);
  return count;
}

int32_t create(void** stream, int32_t n, uint32_t* buffer, double, double, JunRefillI callback) {
  return __juniNewAbstractStream(stream, n, buffer, callback);
}
int32_t create(void** stream, int32_t n, double* buffer, double a, double b, JunRefillD callback) {
  return __jundNewAbstractStream(stream, n, buffer, a, b, callback);
}
int32_t create(void** stream, int32_t n, float* buffer, double a, double b, JunRefillS callback) {
  return __junsNewAbstractStream(stream, n, buffer, static_cast<float>(a), static_cast<float>(b), callback);
}

int32_t generate(void* stream, int32_t n, uint32_t* r) { return __juniBRngiAbstract(stream, n, r); }
template <class T>
int32_t generate(void* stream, int32_t n, T* r) {
  return uniform(0, stream, n, r, T{0}, T{1});
}

template <class T>
class AbstractTest : public ::testing::Test {
 protected:
  // A stream over a full buffer of n values; the source goes on from there.
  void* start(int32_t n, double a = 0, double b = 1) {
    std::mt19937_64 random(3);
    source = {};
    for (int i = 0; i < 5000; ++i)
      source.values.push_back(a + (b - a) * std::ldexp(static_cast<double>(random() >> 40), -24));
    buffer_.clear();
    for (; source.given < static_cast<std::size_t>(n); ++source.given) {
      buffer_.push_back(value<T>(source.values[source.given]));
    }
    void* stream = nullptr;
    EXPECT_EQ(create(&stream, n, buffer_.data(), a, b, refill<T>), 0);
    source.stream = stream;
    return stream;
  }
  std::vector<T> buffer_;
};
using AllTypes = ::testing::Types<uint32_t, float, double>;
TYPED_TEST_SUITE(AbstractTest, AllTypes, );

}  // namespace

TEST(Uniform, PassesArgumentsAndStatus) {
  void* stream = nullptr;
  ASSERT_EQ(__junNewStreamEx(&stream, probe::identifier(), 0, nullptr), 0);
  probe::script = {-3.0, 0.25, 9.0, 2.0, 1.0};
  double d[5];
  float s[5];
  EXPECT_EQ(uniform(0, stream, 5, d, 1.0, 2.0), 0);
  EXPECT_EQ(std::vector<double>(d, d + 5), probe::script) << "without the bit nothing is clamped";
  EXPECT_EQ(probe::interval, std::make_pair(1.0, 2.0));
  EXPECT_EQ(uniform(0x40000000, stream, 5, d, 1.0, 2.0), 0);
  EXPECT_EQ(std::vector<double>(d, d + 5), (std::vector<double>{1, 1, 2, 2, 1}));
  EXPECT_EQ(uniform(-1, stream, 5, s, -1.0f, 0.5f), 0) << "other bits do not matter";
  EXPECT_EQ(std::vector<float>(s, s + 5), (std::vector<float>{-1, 0.25f, 0.5f, 0.5f, 0.5f}));
  EXPECT_EQ(uniform(0x40000000, stream, 3, d, 2.0, 1.0), 0);
  EXPECT_EQ(d[0], 1.0) << "min(b, max(a, r)) as it stands, also where b < a";
  probe::status = -9;
  EXPECT_EQ(uniform(0x40000000, stream, 5, d, 1.0, 2.0), -9);
  EXPECT_EQ(d[0], -3.0) << "a failed call is not clamped";
  probe::status = 0;
  EXPECT_EQ(uniform(0x40000000, stream, -5, d, 1.0, 2.0), 0);
  *static_cast<int32_t*>(stream) = -1;
  EXPECT_EQ(uniform(0, stream, 5, d, 1.0, 2.0), JUN_RNG_BAD_IDENTIFIER);
  EXPECT_EQ(uniform(0, nullptr, 5, d, 1.0, 2.0), JUN_RNG_NULL_POINTER);
  __junDeleteStream(&stream);
}

// The values of the source come out in their order, whatever the cut into calls, the buffer and the size of the
// refills.
TYPED_TEST(AbstractTest, DeliversTheSourceInOrder) {
  const long blocks = faulty_core::live_blocks();
  for (const int32_t n : {1, 2, 7, 64}) {
    for (const std::vector<int>& plan : {std::vector<int>{1}, {0}, {0, 1, 0, 0, 1}}) {
      void* stream = this->start(n);
      source.plan = plan;
      std::vector<TypeParam> r(600);
      std::size_t at = 0;
      for (int32_t cut = 0; at + static_cast<std::size_t>(cut) <= r.size(); ++cut) {
        ASSERT_EQ(generate(stream, cut, r.data() + at), 0);
        at += static_cast<std::size_t>(cut);
      }
      for (std::size_t i = 0; i < at; ++i) {
        ASSERT_EQ(r[i], value<TypeParam>(source.values[i])) << "n " << n << ", value " << i;
      }
      __junDeleteStream(&stream);
    }
  }
  EXPECT_EQ(faulty_core::live_blocks(), blocks);
}

TYPED_TEST(AbstractTest, RefusesWhatItCannotDo) {
  void* stream = this->start(4);
  source.plan = {-1, 1};
  std::vector<TypeParam> r(8);
  EXPECT_EQ(generate(stream, 8, r.data()), JUN_RNG_SHORT_REFILL);
  EXPECT_EQ(generate(stream, 3, r.data()), 0);
  EXPECT_EQ(r[2], value<TypeParam>(source.values[6])) << "what a short refill brought is not lost";
  JunBrngProperties row = {};
  ASSERT_EQ(__junGetBrngProperties(__junGetStreamStateBrng(stream), &row), 0);
  using T = TypeParam;
  double d = 5;
  float s = 5;
  uint32_t i = 5;
  const int32_t as_double = _jundRngUniform(0x40000000, stream, 1, &d, 0, 1);
  const int32_t as_float = _junsRngUniform(0, stream, 1, &s, 0, 1);
  const int32_t as_words = row.iBRng(stream, 1, &i);
  const auto wrong = [](bool right) { return right ? JUN_RNG_OK : JUN_RNG_WRONG_ABSTRACT; };
  EXPECT_EQ(as_double, wrong(std::is_same_v<T, double>));
  EXPECT_EQ(as_float, wrong(std::is_same_v<T, float>));
  EXPECT_EQ(as_words, wrong(std::is_same_v<T, uint32_t>));
  EXPECT_EQ((d == 5) + (s == 5) + (i == 5), 2) << "only the right one writes";
  __junDeleteStream(&stream);

  T buffer[2];
  const struct {
    int32_t n;
    T* buffer;
    decltype(&refill<T>) callback;
  } bad[] = {{0, buffer, refill<T>}, {-1, buffer, refill<T>}, {2, nullptr, refill<T>}, {2, buffer, nullptr}};
  for (const auto& arguments : bad) {
    stream = &stream;
    EXPECT_EQ(create(&stream, arguments.n, arguments.buffer, 0, 1, arguments.callback), JUN_RNG_NULL_POINTER);
    EXPECT_EQ(stream, nullptr);
  }
  faulty_core::fail_at(0);
  EXPECT_EQ(create(&stream, 2, buffer, 0, 1, refill<T>), JUN_RNG_NO_MEMORY);
  EXPECT_EQ(stream, nullptr);
}

// Values on [-1, 3) come out on the interval asked for, never at its end.
template <class T>
class AbstractMapping : public AbstractTest<T> {};
using FloatingTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(AbstractMapping, FloatingTypes, );

TYPED_TEST(AbstractMapping, IsAffineAndHalfOpen) {
  using T = TypeParam;
  const std::pair<T, T> intervals[] = {{T(0), T(1)},  {T(-1), T(3)}, {T(5), T(5.5)}, {T(1), std::nextafter(T(1), T(2))},
                                       {T(-2), T(0)}, {T(7), T(7)}};
  for (const auto& [a, b] : intervals) {
    void* stream = this->start(16, -1, 3);
    this->buffer_[3] = std::nextafter(T(3), T(0));
    source.values[3] = static_cast<double>(this->buffer_[3]);
    T r[100];
    ASSERT_EQ(uniform(0, stream, 100, r, a, b), 0);
    for (std::size_t i = 0; i < 100; ++i) {
      EXPECT_TRUE(a == b ? r[i] == a : r[i] >= a && r[i] < b) << i << ' ' << r[i];
      const double exact =
          static_cast<double>(a) + (source.values[i] + 1) * (static_cast<double>(b) - static_cast<double>(a)) / 4;
      EXPECT_NEAR(r[i], exact,
                  4 * static_cast<double>(std::numeric_limits<T>::epsilon()) * std::abs(exact) + 1e-300 +
                      (a == -1 ? 0 : static_cast<double>(std::numeric_limits<T>::epsilon()) * 4));
    }
    __junDeleteStream(&stream);
  }
}

TEST(Trng, KeepsItsRetryCountAndGeneratesNothing) {
  struct Case {
    int32_t n;
    uint32_t seeds[2], retries;
  };
  for (const auto& [n, seeds, retries] :
       {Case{0, {9, 9}, 10}, {1, {9, 9}, 10}, {2, {9, 7}, 7}, {2, {0, 0}, 10}, {5, {1, 1}, 1}}) {
    void* stream = nullptr;
    ASSERT_EQ(__junNewStreamEx(&stream, JUN_BRNG_TRNG, n, seeds), 0);
    const uint32_t expected[2] = {0, retries};
    EXPECT_EQ(std::memcmp(static_cast<char*>(stream) + 16, expected, 8), 0);
    double d = 5;
    float s = 5;
    uint32_t i = 5;
    EXPECT_EQ(_jundRngUniform(0, stream, 1, &d, 0, 1), JUN_RNG_NO_TRUE_RANDOM);
    EXPECT_EQ(_junsRngUniform(0, stream, 1, &s, 0, 1), JUN_RNG_NO_TRUE_RANDOM);
    EXPECT_EQ(__RegBrngsNew[13].iBRng(stream, 1, &i), JUN_RNG_NO_TRUE_RANDOM);
    EXPECT_TRUE(d == 5 && s == 5 && i == 5);
    __junDeleteStream(&stream);
  }
}
