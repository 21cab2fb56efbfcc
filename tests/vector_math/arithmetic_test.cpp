// arithmetic_test: the plain operations, bit by bit against the processor's, and the statuses of quotients.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <xmmintrin.h>

#include <limits>
#include <random>

#include "tests/support/guard_pages.h"
#include "tests/vector_math/reference_cases.h"
#include "vector_math/kernels.h"

namespace {

using namespace orin::vector_math;

std::vector<KorErrorContext> reports;
int32_t ORIN_CALL note(KorErrorContext* context) {
  reports.push_back(*context);
  return 0;
}

template <class T>
class Arithmetic : public testing::Test {
 protected:
  using Limits = std::numeric_limits<T>;
  static constexpr T inf = Limits::infinity(), nan = Limits::quiet_NaN(), largest = Limits::max(),
                     least = Limits::denorm_min();

  void SetUp() override {
    _korSetMode(KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF);
    _korClearErrStatus();
    reports.clear();
  }
  void TearDown() override {
    _korSetErrorCallBack(nullptr);
    _korSetMode(KOR_MODE_DEFAULT);
  }

  struct Scalars {
    T scalea, shifta, scaleb, shiftb;
  };
  static void linear_frac(int32_t n, const T* a, const T* b, const Scalars& s, T* r) {
    if constexpr (sizeof(T) == 8)
      _kordLinearFrac(n, a, b, s.scalea, s.shifta, s.scaleb, s.shiftb, r);
    else
      _korsLinearFrac(n, a, b, s.scalea, s.shifta, s.scaleb, s.shiftb, r);
  }
  // Each operation by itself, whatever the compiler would like to do with two of them.
  static T formula(T a, T b, const Scalars& s) {
    volatile T numerator = s.scalea * a, denominator = s.scaleb * b;
    numerator = numerator + s.shifta;
    denominator = denominator + s.shiftb;
    return numerator / denominator;
  }
  // Whole ones with probability 1/2, so that zeros of numerator and denominator are met.
  static std::vector<T> numbers(std::size_t n, unsigned seed) {
    std::mt19937_64 random(seed);
    std::vector<T> values(n);
    for (T& x : values) {
      const auto bits = random();
      x = bits % 2 == 0 ? static_cast<T>(static_cast<int>(bits >> 32) % 4)
                        : std::bit_cast<T>(static_cast<BitsOf<T>>(bits >> (sizeof(T) == 8 ? 0 : 32)));
    }
    return values;
  }
};
using Elements = testing::Types<float, double>;
TYPED_TEST_SUITE(Arithmetic, Elements);

TYPED_TEST(Arithmetic, LinearFracIsTheFormulaInEveryGrade) {
  using T = TypeParam;
  const typename TestFixture::Scalars scalars[] = {{1, 0, 1, 0}, {2, -2, 3, -6}, {T(0.1), T(0.7), T(-0.3), T(0.9)},
                                                   {0, 1, 0, 3}, {1, 0, 0, 1},   {this->largest, 1, this->least, 1}};
  for (const auto& s : scalars) {
    for (std::size_t n : {1u, 3u, 4u, 5u, 8u, 1001u}) {
      const auto a = this->numbers(n, 1), b = this->numbers(n, 2);
      for (int place = 0; place < 3; ++place) {
        GuardedArray<T> x(n), y(n, GuardedArray<T>::at_start, 4), r(n, GuardedArray<T>::at_end, 4);
        std::copy(a.begin(), a.end(), x.begin());
        std::copy(b.begin(), b.end(), y.begin());
        T* const result = place == 0 ? r.data() : place == 1 ? x.data() : y.data();
        this->linear_frac(static_cast<int32_t>(n), x.data(), y.data(), s, result);
        for (std::size_t i = 0; i < n; ++i) {
          const T expected = this->formula(a[i], b[i], s);
          if (std::isnan(expected))
            EXPECT_TRUE(std::isnan(result[i])) << a[i] << ' ' << b[i];
          else
            EXPECT_EQ(bits_of(result[i]), bits_of(expected)) << a[i] << ' ' << b[i];
        }
        EXPECT_TRUE(x.surroundings_intact() && y.surroundings_intact() && r.surroundings_intact());
      }
    }
  }
}

TYPED_TEST(Arithmetic, LinearFracTellsWhatHappened) {
  using T = TypeParam;
  const struct {
    typename TestFixture::Scalars scalars;
    T a, b;
    int status;
  } lines[] = {
      {{1, 0, 1, 0}, 1, 2, 0},
      {{1, 0, 1, 0}, 1, 0, 2},
      {{1, 0, 1, -1}, 5, 1, 2},
      {{1, -5, 1, -1}, 5, 1, 1},
      {{1, 0, 1, 0}, this->inf, 0, 0},
      {{1, 0, 1, 0}, this->inf, this->inf, 1},
      {{1, 0, 1, 0}, this->nan, 0, 0},
      {{1, 0, 1, 0}, 1, this->nan, 0},
      {{this->largest, 0, 1, 0}, 2, 1, 3},
      {{this->largest, 0, this->largest, 0}, 2, 2, 1},
      {{1, 0, T(0.25), 0}, this->largest, 1, 3},
      {{this->nan, 0, 1, 0}, 1, 0, 0},
      {{this->inf, 0, 1, 0}, 1, 2, 0},
      {{0, 0, 1, 0}, this->inf, 2, 1},
      {{1, this->inf, 1, -this->inf}, 1, 1, 1},
  };
  for (const auto& line : lines) {
    _korClearErrStatus();
    T r;
    this->linear_frac(1, &line.a, &line.b, line.scalars, &r);
    EXPECT_EQ(_korGetErrStatus(), line.status) << "line " << &line - lines << ": " << r;
  }
}

TYPED_TEST(Arithmetic, LinearFracReports) {
  using T = TypeParam;
  _korSetErrorCallBack(&note);
  _korSetMode(KOR_ERRMODE_CALLBACK);
  T a[6] = {1, 2, 3, 4, 5, 6}, b[6] = {1, 1, 1, 0, 1, 1}, r[6];
  this->linear_frac(6, a, b, {1, 0, 1, 0}, r);
  this->linear_frac(0, a, b, {1, 0, 1, 0}, r);
  this->linear_frac(6, a, nullptr, {1, 0, 1, 0}, r);
  ASSERT_EQ(reports.size(), 3u);
  EXPECT_EQ(reports[0].status, KOR_STATUS_SING);
  EXPECT_EQ(reports[0].index, 3);
  EXPECT_EQ(reports[0].a1, 4);
  EXPECT_EQ(reports[0].a2, 0);
  EXPECT_STREQ(reports[0].funcName, sizeof(T) == 8 ? "vdLinearFrac" : "vsLinearFrac");
  EXPECT_EQ(reports[1].status, KOR_STATUS_BADSIZE);
  EXPECT_EQ(reports[2].status, KOR_STATUS_BADMEM);
}

// Quotients right at the largest number and around the divisors that are looked at one by one.
TYPED_TEST(Arithmetic, QuotientsOverflowWhereTheyMust) {
  using T = TypeParam;
  const T least_normal = std::numeric_limits<T>::min();
  const struct {
    T a, b, result;
    int status;
  } lines[] = {
      {this->largest, 1, this->largest, 0},
      {this->largest, std::nextafter(T(1), T(0)), this->inf, 3},
      {-this->largest, T(0.5), -this->inf, 3},
      {this->largest / 2, T(0.5), this->largest, 0},
      {1, 1 / this->largest, this->inf, 3},
      {1, least_normal, 1 / least_normal, 0},
      {this->largest * least_normal, least_normal, this->largest, 0},
      {1, -this->least, -this->inf, 3},
      {this->least, this->least, 1, 0},
      {this->least, 3, 0, 0},
      {-T(0), 5, -T(0), 0},
      {5, -T(0), -this->inf, 2},
      {this->inf, -T(0), -this->inf, 0},
      {0, -this->inf, -T(0), 0},
      {this->inf, this->inf, this->nan, 1},
      {0, -T(0), this->nan, 1},
      {this->nan, 0, this->nan, 0},
  };
  for (const auto& function : real_functions<T>()) {
    const bool divides = std::strcmp(function.function, "Div") == 0;
    if (!divides && std::strcmp(function.function, "Inv") != 0) continue;
    for (const auto& line : lines) {
      if (!divides && line.a != 1) continue;
      _korClearErrStatus();
      const T result = divides ? function.call(0, line.a, line.b) : function.call(0, line.b, T(0));
      EXPECT_EQ(_korGetErrStatus(), line.status) << line.a << " / " << line.b;
      if (std::isnan(line.result))
        EXPECT_TRUE(std::isnan(result)) << line.a << " / " << line.b;
      else
        EXPECT_EQ(bits_of(result), bits_of(line.result)) << line.a << " / " << line.b;
    }
  }
}

// Halves and their neighbours, numbers around the last ones with fractions, signs of zeros, under any rounding mode.
TYPED_TEST(Arithmetic, RoundingBitByBit) {
  using T = TypeParam;
  const T below_half = std::nextafter(T(0.5), T(0)), last = 1 / std::numeric_limits<T>::epsilon();
  const struct {
    const char* function;
    T (*truth)(T);
  } functions[] = {
      {"Floor", [](T x) { return std::floor(x); }},
      {"Ceil", [](T x) { return std::ceil(x); }},
      {"Trunc", [](T x) { return std::trunc(x); }},
      {"Round", [](T x) { return std::round(x); }},
      {"Rint", [](T x) { return std::rint(x); }},
      {"NearbyInt", [](T x) { return std::nearbyint(x); }},
      {"Modf", [](T x) { return std::trunc(x); }},
      {"Modf", [](T x) { return std::copysign(std::isinf(x) ? T(0) : x - std::trunc(x), x); }},
  };
  std::vector<T> values = {0, below_half, last, this->inf, this->least, this->largest};
  for (T base : {T(0), T(1), T(2), T(7), last / 4, last / 2 - 1, last - 2, last + 2})
    for (T fraction : {T(0.25), T(0.5), T(0.75), T(1), T(2)})
      for (T side : {T(0), this->inf}) values.push_back(std::nextafter(base + fraction, side));
  int found = 0;
  for (const auto& function : real_functions<T>()) {
    int result = 1;
    for (const auto& row : functions) {
      if (std::strcmp(row.function, function.function) != 0 || result++ != function.promise->result) continue;
      ++found;
      for (T x : values) {
        for (T a : {x, -x}) {
          const T expected = row.truth(a);
          for (unsigned rounding : {0x0000u, 0x2000u, 0x4000u, 0x6000u}) {
            const unsigned saved = _mm_getcsr();
            _mm_setcsr(0x1F80 | rounding);
            const T got = function.call(1, a, T(0));
            _mm_setcsr(saved);
            EXPECT_EQ(bits_of(got), bits_of(expected)) << function.label() << std::hexfloat << ' ' << a;
          }
        }
      }
    }
  }
  EXPECT_EQ(found, 8);
}

}  // namespace
