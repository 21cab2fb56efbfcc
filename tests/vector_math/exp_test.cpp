// exp_test: special arguments by eye, and smoothness across every seam of the exponential's kernels.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/vector_math/reference_cases.h"
#include "vector_math/catalog.h"
#include "vector_math/data/exp_d_data.h"

namespace {

using namespace orin::vector_math;

template <class T>
const RealFunction<T>& exponential() {
  static const auto functions = real_functions<T>();
  for (const auto& function : functions)
    if (std::strcmp(function.function, "Exp") == 0) return function;
  std::abort();
}

class Exp : public testing::Test {
 protected:
  void SetUp() override { _korSetMode(KOR_ERRMODE_IGNORE); }
  void TearDown() override { _korSetMode(KOR_MODE_DEFAULT); }
};

struct Special {
  std::uint64_t argument, result;
  int status;
};

template <class T>
void expect_specials(std::initializer_list<Special> specials) {
  for (int grade = 0; grade < grades; ++grade) {
    for (const Special& special : specials) {
      const T x = std::bit_cast<T>(static_cast<BitsOf<T>>(special.argument));
      _korClearErrStatus();
      const T y = exponential<T>().call(grade, x, 0);
      EXPECT_EQ(bits_of(y), static_cast<BitsOf<T>>(special.result)) << grade_names[grade] << std::hexfloat << x;
      EXPECT_EQ(_korGetErrStatus(), special.status) << grade_names[grade] << std::hexfloat << x;
    }
  }
}

TEST_F(Exp, SpecialArguments) {
  expect_specials<double>({
      {0x7ff0000000000000, 0x7ff0000000000000, 0},  // +inf
      {0xfff0000000000000, 0x0000000000000000, 0},  // -inf
      {0x7ff8000000000123, 0x7ff8000000000123, 0},  // NaN keeps its payload
      {0x7ff0000000000123, 0x7ff8000000000123, 0},  // a signalling one becomes quiet
      {0xfff8000000000000, 0xfff8000000000000, 0},
      {0x40862e42fefa39f0, 0x7ff0000000000000, 3},  // the overflow bound
      {0x7fefffffffffffff, 0x7ff0000000000000, 3},
      {0xc0874910d52d3052, 0x0000000000000000, 4},  // the underflow bound
      {0xffefffffffffffff, 0x0000000000000000, 4},
      {0x0000000000000000, 0x3ff0000000000000, 0},
      {0x8000000000000000, 0x3ff0000000000000, 0},
  });
  expect_specials<float>({
      {0x7f800000, 0x7f800000, 0},
      {0xff800000, 0x00000000, 0},
      {0x7fc00123, 0x7fc00123, 0},
      {0x7f800123, 0x7fc00123, 0},
      {0x42b17218, 0x7f800000, 3},
      {0x7f7fffff, 0x7f800000, 3},
      {0xc2cff1b5, 0x00000000, 4},
      {0xff7fffff, 0x00000000, 4},
      {0x00000000, 0x3f800000, 0},
      {0x80000000, 0x3f800000, 0},
  });
  // In the grade that promises it, the least subnormal number beside the underflow bound.
  EXPECT_EQ(exponential<double>().call(static_cast<int>(Grade::ha), -0x1.74910d52d3051p+9, 0), 0x1p-1074);
}

// Finite just below the overflow bound, whatever the grade's error.
TEST_F(Exp, OverflowStartsAtItsBound) {
  for (int grade = 0; grade < grades; ++grade) {
    EXPECT_TRUE(std::isfinite(exponential<double>().call(grade, 0x1.62e42fefa39efp+9, 0))) << grade_names[grade];
    EXPECT_TRUE(std::isfinite(exponential<float>().call(grade, 0x1.62e42ep+6f, 0))) << grade_names[grade];
  }
}

// 64 neighbours on each side of `seam`: no step is larger than the slope and twice the grade's error explain.
template <class T>
void expect_smooth(double seam, const char* what) {
  constexpr int reach = 64;
  const auto& function = exponential<T>();
  for (int grade = 0; grade < grades; ++grade) {
    T x[2 * reach + 1], y[2 * reach + 1];
    x[0] = static_cast<T>(seam);
    for (int k = 0; k < reach; ++k) x[0] = std::nextafter(x[0], std::numeric_limits<T>::lowest());
    for (int k = 1; k <= 2 * reach; ++k) x[k] = std::nextafter(x[k - 1], std::numeric_limits<T>::max());
    function.call(grade, 2 * reach + 1, x, x, y);
    const double error = Grade(grade) == Grade::ha ? std::ldexp(function.ha_ulp(), 1 - std::numeric_limits<T>::digits)
                                                   : function.relative_bound(Grade(grade));
    for (int k = 0; k < 2 * reach; ++k) {
      const double step = static_cast<double>(y[k + 1]) - static_cast<double>(y[k]);
      const double slope = static_cast<double>(y[k]) * (static_cast<double>(x[k + 1]) - static_cast<double>(x[k]));
      const double slack = 2 * error * static_cast<double>(y[k]) +
                           (static_cast<double>(y[k]) < static_cast<double>(std::numeric_limits<T>::min())
                                ? 2 * static_cast<double>(std::numeric_limits<T>::denorm_min())
                                : 0);
      EXPECT_LE(std::fabs(step - slope), 1.001 * slack)
          << function.name << ' ' << grade_names[grade] << ", " << what << ": from " << std::hexfloat << x[k];
    }
  }
}

TEST_F(Exp, NoStepAtTheSeams) {
  const double ln2 = 0x1.62e42fefa39efp-1;
  struct {
    double seam;
    const char* what;
  } const seams[] = {{0, "zero"},
                     {ln2 / 128, "rounding of n, HA"},
                     {-ln2 / 128, "rounding of n, HA"},
                     {ln2 / 2048, "rounding of n, LA"},
                     {ln2 / 512, "rounding of n"},
                     {ln2 / 2, "rounding of the exponent"},
                     {0.5, "inside"},
                     {127 * ln2, "last binade of float"},
                     {86.5, "the range of float's LA"},
                     {-86.5, "the range of float's LA"},
                     {87.33654, "the fast range of float"},
                     {-87.33654, "subnormal floats"}};
  for (const auto& [seam, what] : seams) {
    expect_smooth<float>(seam, what);
    expect_smooth<double>(seam, what);
  }
  expect_smooth<double>(706.0, "the range of LA and EP");
  expect_smooth<double>(-706.0, "the range of LA and EP");
  expect_smooth<double>(708.39599609375, "the fast range");
  expect_smooth<double>(-708.39641853226408, "subnormal results");
  expect_smooth<double>(709.78000528721, "two-step scaling");
  expect_smooth<double>(1023.5 * ln2, "the last exponent");
  expect_smooth<double>(-1030.25 * ln2, "inside the subnormal results");
}

// T of the high-accuracy grade: 38 bits at most, so that sums with it are exact, and with its low part 2^(j/64).
TEST_F(Exp, TablePairsFollowTheirRule) {
  const auto high = [](int j) { return exp_d_data::ha_pairs[2 * j]; };
  const auto low = [](int j) { return exp_d_data::ha_pairs[2 * j + 1]; };
  for (int j = 0; j < 64; ++j) {
    EXPECT_EQ(bits_of(high(j)) & 0x7fff, 0u) << j;
    EXPECT_LE(std::fabs(low(j)), 0x1p-38) << j;
    // 2^(j/64) 2^(i/64) is 2 (or 1). The product of the high parts, in units of 2^-74 and modulo 2^64, is what it
    // exceeds that by; the terms with the low parts must take it away.
    const int i = (64 - j) % 64;
    const auto units = [](double x) { return static_cast<std::uint64_t>(std::ldexp(x, 37)); };
    const double excess =
        std::ldexp(static_cast<double>(static_cast<std::int64_t>(units(high(i)) * units(high(j)))), -74);
    EXPECT_NEAR(excess + high(i) * low(j) + low(i) * high(j) + low(i) * low(j), 0, 0x1p-88) << j;
  }
}

}  // namespace
