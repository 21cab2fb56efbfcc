// error_functions_test: special arguments by eye, identities and round trips, no steps at the seams, rules of the tables.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

#include "tests/vector_math/reference_cases.h"
#include "vector_math/catalog.h"
#include "vector_math/data/erf_data.h"
#include "vector_math/data/erf_inverse_data.h"
#include "vector_math/data/erfc_data.h"

namespace {

using namespace orin::vector_math;

template <class T>
class ErrorFunctions : public testing::Test {
 protected:
  void SetUp() override { _korSetMode(KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF); }
  void TearDown() override { _korSetMode(KOR_MODE_DEFAULT); }

  static const RealFunction<T>& function(const char* name) {
    static const auto all = real_functions<T>();
    return *std::find_if(all.begin(), all.end(),
                         [&](const auto& each) { return std::strcmp(each.function, name) == 0; });
  }
  static T call(const char* name, int grade, T x) { return function(name).call(grade, x, T(0)); }
  static T from_ordinal(std::int64_t k) {
    const T magnitude = std::bit_cast<T>(static_cast<BitsOf<T>>(k < 0 ? -k : k));
    return k < 0 ? -magnitude : magnitude;
  }
  // What the grade may be off, relatively.
  static double relative(int grade) {
    return Grade(grade) == Grade::ha ? std::ldexp(1.0, -std::numeric_limits<T>::digits)
                                     : RealFunction<T>::relative_bound(Grade(grade));
  }
};
using Elements = testing::Types<float, double>;
TYPED_TEST_SUITE(ErrorFunctions, Elements);

TYPED_TEST(ErrorFunctions, SpecialArguments) {
  using T = TypeParam;
  using Limits = std::numeric_limits<T>;
  constexpr T inf = Limits::infinity(), nan = Limits::quiet_NaN(), max = Limits::max();
  const T below_1 = std::nextafter(T(1), T(0)), above_1 = std::nextafter(T(1), T(2));
  const T above_2 = std::nextafter(T(2), T(3)), least = Limits::denorm_min();
  struct {
    const char* name;
    T x, y;
    int status;
  } const rows[] = {
      {"Erf", T(0), T(0), 0},
      {"Erf", -T(0), -T(0), 0},
      {"Erf", inf, T(1), 0},
      {"Erf", -inf, T(-1), 0},
      {"Erf", max, T(1), 0},
      {"Erf", -max, T(-1), 0},
      {"Erf", nan, nan, 0},
      {"Erfc", T(0), T(1), 0},
      {"Erfc", -T(0), T(1), 0},
      {"Erfc", inf, T(0), 0},
      {"Erfc", -inf, T(2), 0},
      {"Erfc", max, T(0), 4},
      {"Erfc", -max, T(2), 0},
      {"Erfc", nan, nan, 0},
      {"CdfNorm", T(0), T(0.5), 0},
      {"CdfNorm", -T(0), T(0.5), 0},
      {"CdfNorm", inf, T(1), 0},
      {"CdfNorm", -inf, T(0), 0},
      {"CdfNorm", -max, T(0), 4},
      {"CdfNorm", max, T(1), 0},
      {"CdfNorm", nan, nan, 0},
      {"ErfInv", T(0), T(0), 0},
      {"ErfInv", -T(0), -T(0), 0},
      {"ErfInv", T(1), inf, 2},
      {"ErfInv", T(-1), -inf, 2},
      {"ErfInv", above_1, nan, 1},
      {"ErfInv", -above_1, nan, 1},
      {"ErfInv", inf, nan, 1},
      {"ErfInv", -inf, nan, 1},
      {"ErfInv", nan, nan, 0},
      {"ErfcInv", T(0), inf, 2},
      {"ErfcInv", -T(0), inf, 2},
      {"ErfcInv", T(2), -inf, 2},
      {"ErfcInv", T(1), T(0), 0},
      {"ErfcInv", above_2, nan, 1},
      {"ErfcInv", -least, nan, 1},
      {"ErfcInv", inf, nan, 1},
      {"ErfcInv", -inf, nan, 1},
      {"ErfcInv", nan, nan, 0},
      {"CdfNormInv", T(0), -inf, 2},
      {"CdfNormInv", -T(0), -inf, 2},
      {"CdfNormInv", T(1), inf, 2},
      {"CdfNormInv", T(0.5), T(0), 0},
      {"CdfNormInv", above_1, nan, 1},
      {"CdfNormInv", -least, nan, 1},
      {"CdfNormInv", inf, nan, 1},
      {"CdfNormInv", -inf, nan, 1},
      {"CdfNormInv", nan, nan, 0},
  };
  for (int grade = 0; grade < grades; ++grade) {
    for (const auto& row : rows) {
      _korClearErrStatus();
      const T y = this->call(row.name, grade, row.x);
      // The coarser grades are 1 and 2 only within their bounds.
      if (std::isnan(row.y))
        EXPECT_TRUE(std::isnan(y)) << row.name << row.x;
      else if (std::isinf(row.y) || row.y == 0)
        EXPECT_EQ(bits_of(y), bits_of(row.y)) << row.name << row.x << " -> " << y;
      else
        EXPECT_NEAR(y, row.y, this->relative(grade) * std::fabs(static_cast<double>(row.y))) << row.name << row.x;
      EXPECT_EQ(_korGetErrStatus(), row.status) << row.name << row.x;
    }
    // The last arguments before the poles have finite results.
    for (const char* name : {"ErfInv", "CdfNormInv"}) {
      EXPECT_TRUE(std::isfinite(this->call(name, grade, below_1)));
      EXPECT_TRUE(std::isfinite(this->call(name, grade, least)));
    }
    EXPECT_TRUE(std::isfinite(this->call("ErfcInv", grade, std::nextafter(T(2), T(0)))));
    EXPECT_TRUE(std::isfinite(this->call("ErfcInv", grade, least)));
  }
}

// Reflections hold to the bit, for both sides are computed alike.
TYPED_TEST(ErrorFunctions, Reflections) {
  using T = TypeParam;
  for (int grade = 0; grade < grades; ++grade) {
    for (int k = 1; k < 2000; ++k) {
      const T x = static_cast<T>(k * 0x1p-11);  // x, 1 - x, 2 - x are exact
      EXPECT_EQ(this->call("Erf", grade, -6 * x), -this->call("Erf", grade, 6 * x));
      EXPECT_EQ(this->call("ErfInv", grade, -x), -this->call("ErfInv", grade, x));
      EXPECT_EQ(this->call("ErfcInv", grade, 2 - x), -this->call("ErfcInv", grade, x));
      EXPECT_EQ(this->call("ErfcInv", grade, 1 - x), this->call("ErfInv", grade, x));
      EXPECT_EQ(this->call("CdfNormInv", grade, 1 - x), -this->call("CdfNormInv", grade, x));
      EXPECT_NEAR(this->call("Erfc", grade, -4 * x) + this->call("Erfc", grade, 4 * x), 2, 4 * this->relative(grade));
      EXPECT_NEAR(this->call("CdfNorm", grade, -5 * x) + this->call("CdfNorm", grade, 5 * x), 1,
                  2 * this->relative(grade));
    }
  }
}

// Through the inverse and back, down to the least positive number. The error e of y = erfc^-1(v) comes back as 2 y^2 e.
TYPED_TEST(ErrorFunctions, RoundTripsThroughTheTails) {
  using T = TypeParam;
  using Limits = std::numeric_limits<T>;
  for (int grade = 0; grade < grades; ++grade) {
    for (double tried = 0.75; static_cast<T>(tried) > 0; tried *= 0.4375) {
      const T v = static_cast<T>(tried);
      const double y = static_cast<double>(this->call("ErfcInv", grade, v));
      const double z = static_cast<double>(this->call("CdfNormInv", grade, v));
      const double one = this->relative(grade), spacing = static_cast<double>(Limits::denorm_min());
      const double exact = static_cast<double>(v);
      EXPECT_NEAR(this->call("Erfc", grade, static_cast<T>(y)), exact, exact * (one * (3 + 2.2 * y * y)) + 2 * spacing);
      EXPECT_NEAR(this->call("CdfNorm", grade, static_cast<T>(z)), exact,
                  exact * (one * (3 + 1.2 * z * z)) + 2 * spacing);
    }
  }
}

// From one argument to the next, across every seam of ranges, results go on as they did: the steps to the left and to
// the right are those of the slope, but for the error of the two results.
TYPED_TEST(ErrorFunctions, NoStepsAtTheSeams) {
  using T = TypeParam;
  struct {
    const char* name;
    T seam;
  } const seams[] = {{"Erf", T(6)},
                     {"Erf", T(0x1p-7)},
                     {"Erf", T(0x1p-6)},
                     {"Erf", T(2.6)},
                     {"Erf", T(3.84)},
                     {"Erf", T(1) / 32},
                     {"Erfc", T(26)},
                     {"Erfc", T(9)},
                     {"Erfc", T(1)},
                     {"Erfc", T(-6)},
                     {"CdfNorm", T(-37)},
                     {"CdfNorm", T(-12.5)},
                     {"CdfNorm", T(-1)},
                     {"ErfInv", 1 - T(0x1p-10)},
                     {"ErfInv", T(1) / 128},
                     {"ErfInv", T(0.5)},
                     {"ErfcInv", T(0x1p-10)},
                     {"ErfcInv", 2 - T(0x1p-10)},
                     {"ErfcInv", T(0.5)},
                     {"CdfNormInv", T(0x1p-11)},
                     {"CdfNormInv", T(0.25)},
                     {"CdfNormInv", 1 - T(0x1p-11)},
                     {"CdfNormInv", T(0x1p-40)}};
  for (int grade = 0; grade < grades; ++grade) {
    for (const auto& [name, seam] : seams) {
      const double here = static_cast<double>(this->call(name, grade, seam));
      if (std::fabs(here) < static_cast<double>(std::numeric_limits<T>::min())) continue;  // in single precision
      for (int k = -16; k < 16; ++k) {
        const T a = this->from_ordinal(ordinal(seam) + k), b = this->from_ordinal(ordinal(seam) + k + 1);
        const double from = static_cast<double>(this->call(name, grade, a));
        const double to = static_cast<double>(this->call(name, grade, b));
        const double width = static_cast<double>(b) - static_cast<double>(a);
        const double far = 64 * width;
        const double slope = (static_cast<double>(this->call(name, grade, static_cast<T>(seam + far))) -
                              static_cast<double>(this->call(name, grade, static_cast<T>(seam - far)))) /
                             (2 * far);
        EXPECT_NEAR(to - from, slope * width, 3.2 * this->relative(grade) * std::fabs(here))
            << name << " at " << std::hexfloat << a << ", grade " << grade_names[grade];
      }
    }
  }
}

bool has_bits(double x, int count) {
  int exponent;
  const double fraction = std::ldexp(std::frexp(x, &exponent), count);
  return fraction == std::floor(fraction);
}

// Products of two entries are exact where the kernels take them so; rests continue what they belong to.
TEST(ErrorFunctionTables, HeadsAreShortAndRestsContinueThem) {
  for (const auto& table : {erfc_data::erfc_tail::fine, erfc_data::normal_tail::fine})
    for (int row = 0; row < 150; ++row) {
      EXPECT_TRUE(has_bits(table[10 * row], 26));
      EXPECT_LE(std::fabs(table[10 * row + 1]), 0x1p-26 * table[10 * row]);
    }
  for (int j = 0; j < 128; ++j) {
    EXPECT_TRUE(has_bits(erfc_data::powers[2 * j], 26));
    EXPECT_LE(std::fabs(erfc_data::powers[2 * j + 1]), 0x1p-26);
  }
  const auto check_rests = [](const auto& table, auto reach) {
    for (std::size_t row = 0; row < std::size(table) / 10; ++row) {
      const double* c = table + 10 * row;
      const double head = std::bit_cast<double>(bits_of(c[1]) & ~((UINT64_C(1) << 27) - 1));  // as the kernel cuts it
      EXPECT_LE(std::fabs(c[8]), 0x1p-53 * std::fabs(c[0]));
      EXPECT_LE(std::fabs((head + c[9]) - c[1]), 0x1p-53 * std::fabs(c[1]));
      EXPECT_TRUE(c[0] == 0 || std::fabs(c[0]) > std::fabs(c[1]) * reach(row)) << "their sum takes c0 as the larger";
    }
  };
  check_rests(erf_data::fine, [](std::size_t) { return 1.0 / 64; });
  const auto reach = [](std::size_t row) { return std::ldexp(1.0, static_cast<int>(row / 32) - 16); };
  check_rests(erf_inverse_data::erfc_inverse::fine, reach);
  check_rests(erf_inverse_data::normal_quantile::fine, reach);
}

}  // namespace
