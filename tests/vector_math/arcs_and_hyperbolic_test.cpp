// arcs_and_hyperbolic_test: special arguments by eye, table rules and seams of the inverse trigonometric and hyperbolic
// functions.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/vector_math/reference_cases.h"
#include "vector_math/catalog.h"
#include "vector_math/data/asin_data.h"
#include "vector_math/data/atan_data.h"
#include "vector_math/data/octants_data.h"
#include "vector_math/data/tanh_data.h"
#include "vector_math/kernels/angle.h"

namespace {

using namespace orin::vector_math;

template <class T>
class ArcsAndHyperbolic : public testing::Test {
 protected:
  void SetUp() override { _korSetMode(KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF); }
  void TearDown() override { _korSetMode(KOR_MODE_DEFAULT); }

  static const RealFunction<T>& function(const char* name) {
    static const auto functions = real_functions<T>();
    for (const auto& each : functions)
      if (std::strcmp(each.function, name) == 0) return each;
    std::abort();
  }
  static double error_bound(const RealFunction<T>& f, int grade) {
    return Grade(grade) == Grade::ha ? f.ha_ulp() * static_cast<double>(std::numeric_limits<T>::epsilon())
                                     : f.relative_bound(Grade(grade));
  }
};
using Elements = testing::Types<float, double>;
TYPED_TEST_SUITE(ArcsAndHyperbolic, Elements);

TYPED_TEST(ArcsAndHyperbolic, SpecialArguments) {
  using T = TypeParam;
  using Limits = std::numeric_limits<T>;
  constexpr T inf = Limits::infinity(), nan = Limits::quiet_NaN(), largest = Limits::max(),
              least = Limits::denorm_min();
  constexpr T overflow = sizeof(T) == 8 ? T(0x1.633ce8fb9f87ep+9) : T(0x1.65a9fap+6);  // of sinh and cosh
  constexpr T exp_overflow = sizeof(T) == 8 ? T(0x1.62e42fefa39fp+9) : T(0x1.62e43p+6);
  const struct {
    const char* function;
    T x, result;
    int status;
  } lines[] = {
      {"Atan", inf, half_pi<T>, 0},
      {"Atan", -inf, -half_pi<T>, 0},
      {"Atan", largest, half_pi<T>, 0},
      {"Atan", nan, nan, 0},
      {"Atan", -T(0), -T(0), 0},
      {"Atan", -least, -least, 0},
      {"Asin", 1, half_pi<T>, 0},
      {"Asin", -1, -half_pi<T>, 0},
      {"Asin", std::nextafter(T(1), T(2)), nan, 1},
      {"Asin", -inf, nan, 1},
      {"Asin", nan, nan, 0},
      {"Asin", -T(0), -T(0), 0},
      {"Asin", least, least, 0},
      {"Acos", 1, 0, 0},
      {"Acos", 0, half_pi<T>, 0},
      {"Acos", -least, half_pi<T>, 0},
      {"Acos", -1, pi<T>, 0},
      {"Acos", std::nextafter(T(-1), T(-2)), nan, 1},
      {"Acos", inf, nan, 1},
      {"Acos", nan, nan, 0},
      {"Sinh", inf, inf, 0},
      {"Sinh", -inf, -inf, 0},
      {"Sinh", overflow, inf, 3},
      {"Sinh", -overflow, -inf, 3},
      {"Sinh", -largest, -inf, 3},
      {"Sinh", nan, nan, 0},
      {"Sinh", -T(0), -T(0), 0},
      {"Sinh", -least, -least, 0},
      {"Cosh", -inf, inf, 0},
      {"Cosh", -overflow, inf, 3},
      {"Cosh", largest, inf, 3},
      {"Cosh", nan, nan, 0},
      {"Cosh", -T(0), 1, 0},
      {"Cosh", least, 1, 0},
      {"Expm1", inf, inf, 0},
      {"Expm1", -inf, -1, 0},
      {"Expm1", -largest, -1, 0},
      {"Expm1", -100, -1, 0},
      {"Expm1", exp_overflow, inf, 3},
      {"Expm1", largest, inf, 3},
      {"Expm1", nan, nan, 0},
      {"Expm1", -T(0), -T(0), 0},
      {"Expm1", least, least, 0},
      {"Tanh", inf, 1, 0},
      {"Tanh", -inf, -1, 0},
      {"Tanh", -largest, -1, 0},
      {"Tanh", 25, 1, 0},
      {"Tanh", nan, nan, 0},
      {"Tanh", -T(0), -T(0), 0},
      {"Tanh", -least, -least, 0},
  };
  for (const auto& line : lines) {
    for (int grade = 0; grade < grades; ++grade) {
      SCOPED_TRACE(std::string(line.function) + " " + grade_names[grade]);
      _korClearErrStatus();
      const T result = this->function(line.function).call(grade, line.x, 0);
      EXPECT_EQ(_korGetErrStatus(), line.status) << line.x;
      if (std::isnan(line.result))
        EXPECT_TRUE(std::isnan(result)) << line.x;
      else if (std::fabs(line.result) == half_pi<T> && Grade(grade) != Grade::ha)
        EXPECT_NEAR(result, line.result, 2 * this->error_bound(this->function(line.function), grade)) << line.x;
      else
        EXPECT_EQ(bits_of(result), bits_of(line.result)) << line.x << " -> " << result;
    }
  }
}

TYPED_TEST(ArcsAndHyperbolic, AnglesOfSpecialPoints) {
  using T = TypeParam;
  using Limits = std::numeric_limits<T>;
  constexpr T inf = Limits::infinity(), nan = Limits::quiet_NaN(), largest = Limits::max(),
              least = Limits::denorm_min();
  constexpr T tiny = Limits::min();
  const T quarter = half_pi<T> / 2, three_quarters = static_cast<T>(0x1.2d97c7f3321d2p+1);
  const struct {
    T y, x, result;
  } lines[] = {
      {0, 0, 0},
      {0, -T(0), pi<T>},
      {0, 1, 0},
      {0, -1, pi<T>},
      {0, inf, 0},
      {0, -inf, pi<T>},
      {0, least, 0},
      {0, -largest, pi<T>},
      {1, 0, half_pi<T>},
      {1, -T(0), half_pi<T>},
      {least, 0, half_pi<T>},
      {largest, -T(0), half_pi<T>},
      {1, inf, 0},
      {1, -inf, pi<T>},
      {largest, -inf, pi<T>},
      {inf, 1, half_pi<T>},
      {inf, -largest, half_pi<T>},
      {inf, 0, half_pi<T>},
      {inf, inf, quarter},
      {inf, -inf, three_quarters},
      {largest, largest, quarter},
      {least, -least, three_quarters},
      {tiny, tiny, quarter},
      {largest, least, half_pi<T>},
      {largest, -least, half_pi<T>},
      {least, largest, 0},
      {least, -largest, pi<T>},
      {tiny, 4, tiny / 4},
      {tiny, largest / 8, 0},
      {3 * tiny, 2, tiny * T(1.5)},
      {least * 5, 2, least * 2},
      {nan, 1, nan},
      {1, nan, nan},
      {nan, inf, nan},
      {nan, 0, nan},
  };
  const auto& f = this->function("Atan2");
  for (const auto& line : lines) {
    for (const T sign : {T(1), T(-1)}) {
      for (int grade = 0; grade < grades; ++grade) {
        _korClearErrStatus();
        const T result = f.call(grade, line.y * sign, line.x);
        SCOPED_TRACE(std::string(grade_names[grade]) + " " + std::to_string(line.y * sign) + ", " +
                     std::to_string(line.x));
        EXPECT_EQ(_korGetErrStatus(), 0);
        if (std::isnan(line.result)) {
          EXPECT_TRUE(std::isnan(result));
          continue;
        }
        EXPECT_EQ(std::signbit(result), std::signbit(sign));
        if (Grade(grade) == Grade::ha || line.result == 0)
          EXPECT_EQ(bits_of(result), bits_of(line.result * sign)) << std::hexfloat << result;
        else
          EXPECT_NEAR(result, line.result * sign, this->error_bound(f, grade) * line.result + least)
              << std::hexfloat << result;
      }
    }
  }
}

// Of two NaN the first one comes out, on every target: an addition would leave that to the compiler.
TYPED_TEST(ArcsAndHyperbolic, TheFirstNaNStays) {
  using T = TypeParam;
  const BitsOf<T> first = bits_of(std::numeric_limits<T>::quiet_NaN()) + 1, second = first + 1;
  const auto& f = this->function("Atan2");
  for (int grade = 0; grade < grades; ++grade)
    EXPECT_EQ(bits_of(f.call(grade, std::bit_cast<T>(first), std::bit_cast<T>(second))), first) << grade_names[grade];
}

// Finite just below the overflow bound, whatever the grade's error.
TYPED_TEST(ArcsAndHyperbolic, OverflowStartsAtItsBound) {
  using T = TypeParam;
  for (int grade = 0; grade < grades; ++grade) {
    const T last = sizeof(T) == 8 ? T(0x1.633ce8fb9f87dp+9) : T(0x1.65a9f8p+6);
    const T last_exp = sizeof(T) == 8 ? T(0x1.62e42fefa39efp+9) : T(0x1.62e42ep+6);
    _korClearErrStatus();
    EXPECT_TRUE(std::isfinite(this->function("Sinh").call(grade, -last, 0))) << grade_names[grade];
    EXPECT_TRUE(std::isfinite(this->function("Cosh").call(grade, last, 0))) << grade_names[grade];
    EXPECT_TRUE(std::isfinite(this->function("Expm1").call(grade, last_exp, 0))) << grade_names[grade];
    EXPECT_EQ(_korGetErrStatus(), 0);
  }
}

// Next to 0 the odd functions are x (1 + c x^2): the number itself in the grade that promises it.
TYPED_TEST(ArcsAndHyperbolic, SmallArgumentsAreTheirOwnResults) {
  using T = TypeParam;
  const T below = std::ldexp(T(1), -std::numeric_limits<T>::digits / 2 - 2);
  for (const char* name : {"Atan", "Asin", "Sinh", "Tanh"}) {
    const auto& f = this->function(name);
    for (T x = below; x > 0; x *= T(0.37))
      for (const T argument : {x, -x})
        EXPECT_EQ(bits_of(f.call(static_cast<int>(Grade::ha), argument, 0)), bits_of(argument)) << name << ' ' << x;
  }
}

// Around the border between two branches, bins or steps no result leaves the line through its neighbours by more than
// twice the grade's error, roundings of the arguments' steps included.
TYPED_TEST(ArcsAndHyperbolic, NoStepAtTheSeams) {
  using T = TypeParam;
  constexpr int reach = 64;
  const auto expect_smooth = [&](const char* name, double seam) {
    const auto& f = this->function(name);
    if (!(std::fabs(seam) < static_cast<double>(f.high()))) return;
    for (int grade = 0; grade < grades; ++grade) {
      T x[2 * reach + 1], y[2 * reach + 1];
      const std::int64_t middle = ordinal(static_cast<T>(std::fabs(seam)));
      for (int k = 0; k <= 2 * reach; ++k)
        x[k] = std::bit_cast<T>(static_cast<BitsOf<T>>(middle + k - reach)) * (seam < 0 ? T(-1) : T(1));
      f.call(grade, 2 * reach + 1, x, x, y);
      const double first = static_cast<double>(y[0]), last = static_cast<double>(y[2 * reach]);
      const double from = static_cast<double>(x[0]), to = static_cast<double>(x[2 * reach]);
      const double slack = 2 * this->error_bound(f, grade) * std::max(std::fabs(first), std::fabs(last));
      // A curve leaves its chord by an eighth of the second derivative, here at most 16 times the function (of double,
      // where chords are short, of no account), times the chord's square.
      const double curved = 2 * (to - from) * (to - from) * std::fabs(last);
      double worst = 0;
      for (int k = 0; k <= 2 * reach; ++k) {
        const double line = first + (last - first) * ((static_cast<double>(x[k]) - from) / (to - from));
        worst = std::max(worst, std::fabs(static_cast<double>(y[k]) - line));
      }
      EXPECT_LE(worst, slack + curved) << name << ' ' << grade_names[grade] << " at " << seam;
    }
  };
  for (int k = -8 * 32; k < 7 * 32; ++k) {
    const double edge = std::ldexp(1 + (k & 31) / 32.0, (k - (k & 31)) / 32);
    expect_smooth("Atan", edge);
    expect_smooth("Tanh", edge);
    if (edge < 0.75) expect_smooth("Asin", -edge);
    if (edge < 0.75) expect_smooth("Acos", -edge);
  }
  for (int k = -17; k >= -15 * 16; --k) {  // the edges of 1 - |x|
    const double edge = 1 - std::ldexp(1 + (k & 15) / 16.0, (k - (k & 15)) / 16);
    if (sizeof(T) == 4 && edge > 0.9) break;  // the neighbours of a float are too far away for so bent a curve
    expect_smooth("Acos", -edge);
    expect_smooth("Acos", edge);
    expect_smooth("Asin", edge);
  }
  expect_smooth("Asin", 0.7);
  expect_smooth("Acos", 0.7);
  const double ln2 = 0x1.62e42fefa39efp-1;
  for (const double steps : {0.5, 1.5, 37.5, 128.0, 255.5, 256.5, 1000.5, 16383.5, 16384.5, 32767.5, 32511.5}) {
    for (const char* name : {"Sinh", "Cosh", "Expm1"}) {
      expect_smooth(name, steps * ln2 / 256);
      expect_smooth(name, -steps * ln2 / 256);
    }
    expect_smooth("Tanh", steps * ln2 / 512);
  }
  for (const double border : {88.0, 708.0, 709.5, 710.0}) {
    expect_smooth("Sinh", -border);
    expect_smooth("Cosh", border);
    expect_smooth("Expm1", border);
  }
}

// Whatever the quotient, the bin that the difference of the bits picks has a middle next to it in angle.
TEST(ArcTables, BitsPickTheBin) {
  using namespace atan_data;
  std::mt19937_64 random(5);
  for (int k = 0; k < 100000; ++k) {
    const auto any = [&] {
      return std::ldexp(1 + static_cast<double>(random() >> 12) * 0x1p-52, static_cast<int>(random() % 16));
    };
    const double y = any(), x = any();
    const auto distance = static_cast<std::int64_t>(bits_of(y) - bits_of(x));
    const auto bin = std::clamp<std::int64_t>(distance >> 47, -224, 224) + 224;
    const double c = points[2 * bin], arc = points[2 * bin + 1];
    const double reach = bin == 0 || bin == 448 ? 0x1.08p-7 : 0x1.0dp-5;
    ASSERT_LE(std::fabs(std::atan2(y, x) - arc), reach) << y << ' ' << x;
    ASSERT_NEAR(std::atan(c), arc, 0x1p-51) << bin;
  }
}

// The angles of the octants fit together: pi/2 less, pi less and pi/2 more than those of the first one.
TEST(ArcTables, OctantsFitTogether) {
  constexpr std::size_t steps = std::size(octants_data::angles) / 8;
  ASSERT_EQ(steps, 65u);
  for (std::size_t j = 0; j < steps; ++j) {
    const auto high = [&](std::size_t octant) { return octants_data::angles[2 * (steps * octant + j)]; };
    const auto rest = [&](std::size_t octant) { return octants_data::angles[2 * (steps * octant + j) + 1]; };
    EXPECT_NEAR(high(0), std::atan(static_cast<double>(j) / 64), 0x1p-53) << j;
    EXPECT_NEAR(((high(1) - half_pi<double>)+high(0)) + (rest(1) + rest(0)), pi_rest<double> / 2, 0x1p-104) << j;
    EXPECT_NEAR(((high(2) - pi<double>)+high(0)) + (rest(2) + rest(0)), pi_rest<double>, 0x1p-103) << j;
    EXPECT_NEAR(((high(3) - half_pi<double>)-high(0)) + (rest(3) - rest(0)), pi_rest<double> / 2, 0x1p-103) << j;
  }
}

// The products with the middle of a bin are exact because it has seven bits; high parts and rests fit together.
TEST(ArcTables, FollowTheirRules) {
  using namespace atan_data;
  const auto short_enough = [](double c) { return (bits_of(c) & ((std::uint64_t{1} << 46) - 1)) == 0; };
  for (std::size_t k = 0; k < std::size(arcs_d) / 2; ++k) {
    EXPECT_TRUE(short_enough(arcs_d[2 * k])) << k;
    EXPECT_EQ(static_cast<double>(arcs_s[2 * k]), arcs_d[2 * k]) << k;
    EXPECT_LE(std::fabs(rests_d[k]), std::ldexp(arcs_d[2 * k + 1], -53)) << k;
    // The two precisions agree, rests included.
    EXPECT_NEAR(static_cast<double>(arcs_s[2 * k + 1]) + static_cast<double>(rests_s[k]), arcs_d[2 * k + 1],
                std::ldexp(arcs_d[2 * k + 1], -47))
        << k;
  }
  for (std::size_t k = 0; k < std::size(tanh_data::points) / 2; ++k)
    EXPECT_TRUE(short_enough(tanh_data::points[2 * k])) << k;
  for (std::size_t k = 0; k < std::size(asin_data::points_d); k += 2) {
    const double sine = asin_data::points_d[k], cosine = asin_data::points_d[k + 1];
    EXPECT_EQ(sine, static_cast<double>(static_cast<float>(sine))) << k;  // 24 bits at most
    EXPECT_NEAR(sine * sine + cosine * cosine, 1, 0x1p-52) << k;
    // The two arcs are pi/2 together; the larger one's distance from that is exact, and so is the next sum.
    const std::size_t positive = k + 1024;
    const auto [smaller, larger] = std::minmax(asin_data::asin_d[k], asin_data::acos_d[positive]);
    EXPECT_NEAR(((larger - half_pi<double>)+smaller) + (asin_data::asin_d[k + 1] + asin_data::acos_d[positive + 1]),
                pi_rest<double> / 2, 0x1p-104)
        << k;
    // The angles of a sine and its opposite are pi together.
    EXPECT_NEAR(((asin_data::acos_d[k] - pi<double>)+asin_data::acos_d[positive]) +
                    (asin_data::acos_d[k + 1] + asin_data::acos_d[positive + 1]),
                pi_rest<double>, 0x1p-103)
        << k;
  }
}

}  // namespace
