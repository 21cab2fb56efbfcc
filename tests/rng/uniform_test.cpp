// uniform_test: the uniform distribution, abstract streams and the hardware source.
// SPDX-License-Identifier: MIT
#include <xmmintrin.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <type_traits>
#include <vector>

#include "tests/rng/support.h"

namespace {

int32_t uniform(int32_t method, void* stream, int32_t n, double* r, double a, double b) {
  return _jundRngUniform(method, stream, n, r, a, b);
}
int32_t uniform(int32_t method, void* stream, int32_t n, float* r, float a, float b) {
  return _junsRngUniform(method, stream, n, r, a, b);
}

// A source of known values behind an abstract stream: each refill gives what `plan` says, cycling: 0 the least asked
// for, 1 as much as fits, -1 one less than the least. The stream asks for the places that follow in the circle, and
// leaves the buffer as the source has written it.
struct Source {
  std::vector<double> values;
  std::size_t given = 0;
  std::vector<int> plan = {1};
  std::size_t refills = 0;
  const void* stream = nullptr;
  std::vector<double> written;
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
  EXPECT_TRUE(stream == source.stream && nmin >= 1 && nmin <= nmax && nmax <= n);
  EXPECT_EQ(idx, static_cast<int32_t>(source.given) % n);
  EXPECT_TRUE(std::equal(source.written.begin(), source.written.end(), buffer));
  const int plan = source.plan[source.refills++ % source.plan.size()];
  const int32_t count = plan == 0 ? nmin : plan > 0 ? nmax : nmin - 1;
  for (int32_t i = 0; i < count; ++i) buffer[(idx + i) % n] = value<T>(source.values[source.given++]);
  source.written.assign(buffer, buffer + n);
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
class Abstract : public NoLeaks {
 protected:
  // A stream over a full buffer of n values; the source goes on from there.
  Stream start(int32_t n, double a = 0, double b = 1) {
    std::mt19937_64 random(3);
    source = {};
    for (int i = 0; i < 2000; ++i) {
      source.values.push_back(a + (b - a) * std::ldexp(static_cast<double>(random() >> 40), -24));
    }
    source.values[3] = static_cast<double>(std::nextafter(static_cast<float>(b), 0.0f));
    buffer_.clear();
    for (int32_t i = 0; i < n; ++i) buffer_.push_back(value<T>(source.values[source.given++]));
    source.written.assign(buffer_.begin(), buffer_.end());
    void* stream = nullptr;
    EXPECT_EQ(create(&stream, n, buffer_.data(), a, b, refill<T>), 0);
    source.stream = stream;
    return Stream(stream);
  }
  std::vector<T> buffer_;
};
using AllTypes = ::testing::Types<uint32_t, float, double>;
TYPED_TEST_SUITE(Abstract, AllTypes, );

}  // namespace

TEST(Uniform, PassesArgumentsAndStatus) {
  const Stream stream = patterned(probe::identifier());
  probe::script = {-3.0, 0.25, 9.0, 2.0, 1.0};
  std::vector<double> d(5);
  std::vector<float> s(5);
  EXPECT_EQ(uniform(0, stream.get(), 5, d.data(), 1.0, 2.0), 0);
  EXPECT_EQ(d, probe::script) << "without the bit nothing is clamped";
  EXPECT_EQ(uniform(0x40000000, stream.get(), 5, d.data(), 1.0, 2.0), 0);
  EXPECT_EQ(d, (std::vector<double>{1, 1, 2, 2, 1}));
  EXPECT_EQ(uniform(0x40000000, stream.get(), 5, d.data(), 2.0, 1.0), 0);
  EXPECT_EQ(d, std::vector<double>(5, 1.0)) << "min(b, max(a, r)) as it stands, also where b < a";
  EXPECT_EQ(uniform(-1, stream.get(), 5, s.data(), -1.0f, 0.5f), 0) << "other bits do not matter";
  EXPECT_EQ(s, (std::vector<float>{-1, 0.25f, 0.5f, 0.5f, 0.5f}));
  probe::status = -9;
  EXPECT_EQ(uniform(0x40000000, stream.get(), 5, d.data(), 1.0, 2.0), -9);
  EXPECT_EQ(d, probe::script) << "a failed call is not clamped";
  probe::status = 0;
  *static_cast<int32_t*>(stream.get()) = -1;
  EXPECT_EQ(uniform(0, stream.get(), 5, d.data(), 1.0, 2.0), JUN_RNG_BAD_IDENTIFIER);
}

// The values of the source come out in their order, whatever the cut into calls, the buffer and the size of the
// refills.
TYPED_TEST(Abstract, DeliversTheSourceInOrder) {
  for (const int32_t n : {1, 2, 7, 64}) {
    for (const std::vector<int>& plan : {std::vector<int>{1}, {0}, {0, 1, 0, 0, 1}}) {
      const Stream stream = this->start(n);
      source.plan = plan;
      std::vector<TypeParam> r(595), expected;
      for (int32_t cut = 0, at = 0; cut < 35; at += cut++) {
        ASSERT_EQ(generate(stream.get(), cut, r.data() + at), 0);
      }
      for (std::size_t i = 0; i < 595; ++i) expected.push_back(value<TypeParam>(source.values[i]));
      ASSERT_EQ(r, expected) << "n " << n;
    }
  }
}

TYPED_TEST(Abstract, RefusesWhatItCannotDo) {
  using T = TypeParam;
  const Stream stream = this->start(4);
  source.plan = {-1, 1};
  T r[8], *const none = nullptr;
  EXPECT_EQ(generate(stream.get(), 8, r), JUN_RNG_SHORT_REFILL);
  EXPECT_EQ(generate(stream.get(), 3, r), 0);
  EXPECT_EQ(r[2], value<T>(source.values[6])) << "what a short refill brought is not lost";
  double d = 5;
  float s = 5;
  uint32_t i = 5;
  const auto status = [](bool right) { return right ? JUN_RNG_OK : JUN_RNG_WRONG_ABSTRACT; };
  EXPECT_EQ(_jundRngUniform(0x40000000, stream.get(), 1, &d, 0, 1), status(std::is_same_v<T, double>));
  EXPECT_EQ(_junsRngUniform(0, stream.get(), 1, &s, 0, 1), status(std::is_same_v<T, float>));
  EXPECT_EQ(row_of(__junGetStreamStateBrng(stream.get())).iBRng(stream.get(), 1, &i),
            status(std::is_same_v<T, uint32_t>));
  EXPECT_EQ((d == 5) + (s == 5) + (i == 5), 2) << "only the right one writes";

  for (int fault = 0; fault < 5; ++fault) {
    void* place = &place;
    faulty_core::fail_at(fault == 4 ? 0 : -1);
    EXPECT_EQ(create(&place,
                     fault == 0   ? 0
                     : fault == 1 ? -1
                                  : 2,
                     fault == 2 ? none : r, 0, 1, fault == 3 ? nullptr : refill<T>),
              fault == 4 ? JUN_RNG_NO_MEMORY : JUN_RNG_NULL_POINTER);
    EXPECT_EQ(place, nullptr) << fault;
  }
}

// Values on [-1, 3) come out on the interval asked for, never at its end.
template <class T>
class AbstractMapping : public Abstract<T> {};
using FloatingTypes = ::testing::Types<float, double>;
TYPED_TEST_SUITE(AbstractMapping, FloatingTypes, );

TYPED_TEST(AbstractMapping, IsAffineAndHalfOpen) {
  using T = TypeParam;
  const T intervals[][2] = {{0, 1}, {-1, 3}, {5, 5.5}, {1, std::nextafter(T(1), T(2))}, {-2, 0}, {7, 7}};
  for (const auto& [a, b] : intervals) {
    const Stream stream = this->start(100, -1, 3);
    T r[100], rounded_up[100];
    ASSERT_EQ(uniform(0, stream.get(), 100, r, a, b), 0);
    const Stream same = this->start(100, -1, 3);
    const unsigned modes = _mm_getcsr();
    _mm_setcsr(0xDFC0);  // towards plus infinity, subnormals flushed: the caller's modes do not matter, and stay
    ASSERT_EQ(uniform(0x40000000, same.get(), 100, rounded_up, a, b), 0);
    EXPECT_EQ(_mm_getcsr() & ~0x3Fu, 0xDFC0u);
    _mm_setcsr(modes);
    EXPECT_EQ(std::memcmp(r, rounded_up, sizeof r), 0);
    const double tolerance = 8 * static_cast<double>(std::numeric_limits<T>::epsilon()) * (std::fabs(a) + 1);
    for (std::size_t i = 0; i < 100; ++i) {
      EXPECT_TRUE(a == b ? r[i] == a : r[i] >= a && r[i] < b) << i << ' ' << r[i];
      EXPECT_NEAR(r[i], a + (source.values[i] + 1) / 4 * (static_cast<double>(b) - a), tolerance) << i;
    }
  }
}

TEST(Trng, KeepsItsRetryCountAndGeneratesNothing) {
  struct Case {
    int32_t n;
    uint32_t seeds[2], retries;
  };
  for (const auto& [n, seeds, retries] :
       {Case{0, {9, 9}, 10}, {1, {9, 9}, 10}, {2, {9, 7}, 7}, {2, {0, 0}, 10}, {5, {1, 1}, 1}}) {
    void* place = nullptr;
    ASSERT_EQ(__junNewStreamEx(&place, JUN_BRNG_TRNG, n, seeds), 0);
    const Stream stream(place);
    const uint32_t expected[2] = {0, retries};
    EXPECT_EQ(std::memcmp(bytes_of(stream) + 16, expected, 8), 0);
    double d = 5;
    float s = 5;
    uint32_t i = 5;
    EXPECT_EQ(_jundRngUniform(0, place, 1, &d, 0, 1), JUN_RNG_NO_TRUE_RANDOM);
    EXPECT_EQ(_junsRngUniform(0, place, 1, &s, 0, 1), JUN_RNG_NO_TRUE_RANDOM);
    EXPECT_EQ(__RegBrngsNew[13].iBRng(place, 1, &i), JUN_RNG_NO_TRUE_RANDOM);
    EXPECT_TRUE(d == 5 && s == 5 && i == 5);
  }
}
