// complex_values_test: complex functions at the values of C Annex G, on their cuts and at their poles; symmetries;
// powers that are known exactly, tiny angles, results next to +-1.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <random>

#include "vector_math/complex_catalog.h"

namespace {

using namespace orin::vector_math;

constexpr double inf = std::numeric_limits<double>::infinity(), nan = std::numeric_limits<double>::quiet_NaN();
constexpr double pi = 3.14159265358979323846;

struct Value {
  const char* function;
  double re, im;                // of the argument
  double result_re, result_im;  // NaN stands for any NaN
  int status;
};

// Signs of the imaginary parts turn with that of the argument: another test tells.
const Value values[] = {
    {"Ln", -0.0, 0.0, -inf, pi, 2},
    {"Ln", 0.0, 0.0, -inf, 0.0, 2},
    {"Ln", 5, inf, inf, pi / 2, 0},
    {"Ln", 5, nan, nan, nan, 0},
    {"Ln", -inf, 3, inf, pi, 0},
    {"Ln", inf, 3, inf, 0.0, 0},
    {"Ln", -inf, inf, inf, 3 * pi / 4, 0},
    {"Ln", inf, inf, inf, pi / 4, 0},
    {"Ln", -inf, nan, inf, nan, 0},
    {"Ln", nan, 3, nan, nan, 0},
    {"Ln", nan, inf, inf, nan, 0},
    {"Ln", -1, 0.0, 0.0, pi, 0},
    {"Log10", 0.0, 0.0, -inf, 0.0, 2},
    {"Log10", -inf, 3, inf, pi / std::log(10.0), 0},
    {"Log10", 100, 0.0, 2, 0.0, 0},
    {"Acos", 0.0, 0.0, pi / 2, -0.0, 0},
    {"Acos", -0.0, 0.0, pi / 2, -0.0, 0},
    {"Acos", -0.0, nan, pi / 2, nan, 0},
    {"Acos", 5, inf, pi / 2, -inf, 0},
    {"Acos", 5, nan, nan, nan, 0},
    {"Acos", -inf, 3, pi, -inf, 0},
    {"Acos", inf, 3, 0.0, -inf, 0},
    {"Acos", -inf, inf, 3 * pi / 4, -inf, 0},
    {"Acos", inf, inf, pi / 4, -inf, 0},
    {"Acos", nan, 3, nan, nan, 0},
    {"Acos", nan, inf, nan, -inf, 0},
    {"Acos", 1, 0.0, 0.0, -0.0, 0},
    {"Acos", -1, 0.0, pi, -0.0, 0},
    {"Acosh", 0.0, 0.0, 0.0, pi / 2, 0},
    {"Acosh", 5, inf, inf, pi / 2, 0},
    {"Acosh", -inf, 3, inf, pi, 0},
    {"Acosh", inf, 3, inf, 0.0, 0},
    {"Acosh", -inf, inf, inf, 3 * pi / 4, 0},
    {"Acosh", inf, inf, inf, pi / 4, 0},
    {"Acosh", inf, nan, inf, nan, 0},
    {"Acosh", nan, inf, inf, nan, 0},
    {"Acosh", nan, 3, nan, nan, 0},
    {"Acosh", 1, 0.0, 0.0, 0.0, 0},
    {"Asinh", 0.0, 0.0, 0.0, 0.0, 0},
    {"Asinh", 5, inf, inf, pi / 2, 0},
    {"Asinh", 5, nan, nan, nan, 0},
    {"Asinh", inf, 3, inf, 0.0, 0},
    {"Asinh", inf, inf, inf, pi / 4, 0},
    {"Asinh", inf, nan, inf, nan, 0},
    {"Asinh", nan, 0.0, nan, 0.0, 0},
    {"Asinh", nan, 3, nan, nan, 0},
    {"Asinh", nan, inf, inf, nan, 0},
    {"Asinh", 0.0, 1, 0.0, pi / 2, 0},
    {"Asin", 0.0, 0.0, 0.0, 0.0, 0},
    {"Asin", 0.0, nan, 0.0, nan, 0},
    {"Asin", 3, inf, 0.0, inf, 0},
    {"Asin", inf, 3, pi / 2, inf, 0},
    {"Asin", inf, nan, nan, inf, 0},
    {"Asin", nan, inf, nan, inf, 0},
    {"Asin", -1, 0.0, -pi / 2, 0.0, 0},
    {"Atanh", 0.0, 0.0, 0.0, 0.0, 0},
    {"Atanh", 0.0, nan, 0.0, nan, 0},
    {"Atanh", 1, 0.0, inf, 0.0, 2},
    {"Atanh", -1, 0.0, -inf, 0.0, 2},
    {"Atanh", 5, inf, 0.0, pi / 2, 0},
    {"Atanh", 5, nan, nan, nan, 0},
    {"Atanh", inf, 3, 0.0, pi / 2, 0},
    {"Atanh", inf, inf, 0.0, pi / 2, 0},
    {"Atanh", inf, nan, 0.0, nan, 0},
    {"Atanh", nan, 3, nan, nan, 0},
    {"Atanh", nan, inf, 0.0, pi / 2, 0},
    {"Atan", 0.0, 1, 0.0, inf, 2},
    {"Atan", -0.0, 1, -0.0, inf, 2},
    {"Atan", inf, 3, pi / 2, 0.0, 0},
    {"Atan", 3, inf, pi / 2, 0.0, 0},
    {"Arg", -0.0, 0.0, pi, 0, 0},
    {"Arg", -inf, inf, 3 * pi / 4, 0, 0},
    {"Arg", 3, nan, nan, 0, 0},
    {"Exp", -0.0, 0.0, 1, 0.0, 0},
    {"Exp", 5, inf, nan, nan, 1},
    {"Exp", 5, nan, nan, nan, 0},
    {"Exp", inf, 0.0, inf, 0.0, 0},
    {"Exp", -inf, 3, -0.0, 0.0, 0},
    {"Exp", inf, 3, -inf, inf, 0},
    {"Exp", -inf, inf, 0.0, 0.0, 0},
    {"Exp", inf, inf, inf, nan, 1},
    {"Exp", -inf, nan, 0.0, 0.0, 0},
    {"Exp", inf, nan, inf, nan, 0},
    {"Exp", nan, 0.0, nan, 0.0, 0},
    {"Exp", nan, 3, nan, nan, 0},
    {"Exp", 710, 0.0, inf, 0.0, 3},
    {"Exp", -800, 3, -0.0, 0.0, 4},
    {"Sinh", 0.0, 0.0, 0.0, 0.0, 0},
    {"Sinh", 0.0, inf, 0.0, nan, 1},
    {"Sinh", 0.0, nan, 0.0, nan, 0},
    {"Sinh", 5, inf, nan, nan, 1},
    {"Sinh", 5, nan, nan, nan, 0},
    {"Sinh", inf, 0.0, inf, 0.0, 0},
    {"Sinh", inf, 3, -inf, inf, 0},
    {"Sinh", inf, inf, inf, nan, 1},
    {"Sinh", inf, nan, inf, nan, 0},
    {"Sinh", nan, 0.0, nan, 0.0, 0},
    {"Sinh", nan, inf, nan, nan, 0},
    {"Sinh", 1000, 3, -inf, inf, 3},
    {"Cosh", 0.0, 0.0, 1, 0.0, 0},
    {"Cosh", 0.0, inf, nan, 0.0, 1},
    {"Cosh", 0.0, nan, nan, 0.0, 0},
    {"Cosh", 5, inf, nan, nan, 1},
    {"Cosh", inf, 0.0, inf, 0.0, 0},
    {"Cosh", inf, 3, -inf, inf, 0},
    {"Cosh", inf, inf, inf, nan, 1},
    {"Cosh", inf, nan, inf, nan, 0},
    {"Cosh", nan, 0.0, nan, 0.0, 0},
    {"Cosh", -1000, 3, -inf, -inf, 3},
    {"Tanh", 0.0, 0.0, 0.0, 0.0, 0},
    {"Tanh", 0.0, inf, 0.0, nan, 1},
    {"Tanh", 5, inf, nan, nan, 1},
    {"Tanh", 5, nan, nan, nan, 0},
    {"Tanh", inf, 3, 1, -0.0, 0},
    {"Tanh", inf, inf, 1, 0.0, 0},
    {"Tanh", inf, nan, 1, 0.0, 0},
    {"Tanh", nan, 0.0, nan, 0.0, 0},
    {"Tanh", nan, 3, nan, nan, 0},
    {"Tanh", 400, 1, 1, 0.0, 0},
    {"Sin", 0.0, inf, 0.0, inf, 0},
    {"Sin", 3, inf, inf, -inf, 0},
    {"Sin", inf, 0.0, nan, 0.0, 1},
    {"Cos", 0.0, 0.0, 1, -0.0, 0},
    {"Cos", 3, inf, -inf, -inf, 0},
    {"Cos", inf, 5, nan, nan, 1},
    {"Tan", 0.0, inf, 0.0, 1, 0},
    {"Tan", inf, inf, 0.0, 1, 0},
    {"Tan", inf, 3, nan, nan, 1},
    {"CIS", -0.0, 0.0, 1, -0.0, 0},
    {"CIS", inf, 0.0, nan, nan, 1},
    {"CIS", nan, 0.0, nan, nan, 0},
    // On the cuts the sign of zero tells the side.
    {"Atanh", 2, 0.0, 0.54930614433405484570, pi / 2, 0},
    {"Atan", 0.0, 2, pi / 2, 0.54930614433405484570, 0},
    {"Atan", -0.0, 2, -pi / 2, 0.54930614433405484570, 0},
    {"Asin", 2, 0.0, pi / 2, 1.31695789692481670863, 0},
    {"Acos", 2, 0.0, 0.0, -1.31695789692481670863, 0},
    {"Acos", -2, 0.0, pi, -1.31695789692481670863, 0},
    {"Asinh", 0.0, 2, 1.31695789692481670863, pi / 2, 0},
    {"Asinh", -0.0, 2, -1.31695789692481670863, pi / 2, 0},
    {"Acosh", -2, 0.0, 1.31695789692481670863, pi, 0},
    {"Acosh", 0.5, 0.0, 0.0, 1.04719755119659774615, 0},
};

struct PowerValue {
  double re, im, b_re, b_im;
  double result_re, result_im;
  int status;
};
const PowerValue power_values[] = {
    {nan, nan, 0.0, 0.0, 1, 0.0, 0},  {0.0, 0.0, 0.0, 0.0, 1, 0.0, 0},  {0.0, 0.0, 2, 5, 0.0, 0.0, 0},
    {0.0, 0.0, -2, 0.0, inf, 0.0, 2}, {0.0, 0.0, -2, 1, inf, nan, 1},   {0.0, 0.0, 0.0, 1, nan, nan, 1},
    {nan, 1, 2, 0.0, nan, nan, 0},    {1, 1, nan, 0.0, nan, nan, 0},    {inf, 3, -2, 1, 0.0, 0.0, 0},
    {inf, 0.0, 2, 0.0, inf, 0.0, 0},  {inf, 0.0, 0.0, 1, nan, nan, 1},  {inf, 1, 1, 1, inf, nan, 1},
    {2, 0.0, inf, 0.0, inf, 0.0, 0},  {2, 0.0, -inf, 0.0, 0.0, 0.0, 0}, {0.25, 0.25, inf, 0.0, 0.0, 0.0, 0},
    {2, 2, inf, 0.0, inf, nan, 1},    {2, 2, 1, inf, nan, nan, 1},      {1, 0.0, inf, 0.0, 1, 0.0, 0},
    {2, 0.0, 1e6, 0.0, inf, 0.0, 3},  {2, 0.0, -1e6, 0.0, 0.0, 0.0, 4}, {1e-30, 0.0, 50, 0.0, 0.0, 0.0, 4},
    {2, 2, 1e30, 0.0, inf, inf, 3},
};

template <class T>
class ComplexValues : public testing::Test {
 protected:
  using Function = ComplexFunction<T>;
  using Z = typename Function::Z;

  void SetUp() override { _korSetMode(KOR_HA | KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF); }
  void TearDown() override { _korSetMode(KOR_MODE_DEFAULT | KOR_FTZDAZ_OFF); }

  template <class Body>
  void for_each_kernel_of(const char* name, const Body& body) {
    bool any = false;
    for (const auto& function : complex_functions<T>()) {
      if (std::strcmp(function.function, name) != 0) continue;
      any = true;
      for (int grade = 0; grade < grades; ++grade) {
        SCOPED_TRACE(function.label() + " " + grade_names[grade]);
        body(function, grade);
      }
    }
    EXPECT_TRUE(any) << name;
  }
  static Z at(double re, double im) { return {static_cast<T>(re), static_cast<T>(im)}; }

  // Whether a part is the value, the sign of zero included, within the grade's bound and what the value was rounded by.
  static bool is(T part, double value, double bound) {
    if (std::isnan(value) || std::isnan(part)) return std::isnan(value) && std::isnan(part);
    if (std::isinf(value) || value == 0)
      return part == static_cast<T>(value) && std::signbit(part) == std::signbit(value);
    const double ulp = std::fabs(value) * static_cast<double>(std::numeric_limits<T>::epsilon());
    return std::fabs(static_cast<double>(part) - value) <= (bound + 1) * ulp;
  }
};

using Parts = testing::Types<float, double>;
TYPED_TEST_SUITE(ComplexValues, Parts);

TYPED_TEST(ComplexValues, SpecialValuesCutsAndPoles) {
  for (const Value& value : values) {
    this->for_each_kernel_of(value.function, [&](const auto& function, int grade) {
      _korClearErrStatus();
      const auto result = function.call(grade, this->at(value.re, value.im), this->at(0, 0));
      const bool exactly = value.re == 0 && value.im == 0 && value.result_re == 1;
      const double bound = exactly ? -1 : function.bound(Grade(grade));
      // Beside 0 only as much is promised as the modulus has ulps.
      const auto small = [&](auto part, double exact) {
        return exact == 0 && !std::signbit(exact) &&
               std::fabs(static_cast<double>(part)) <=
                   bound * static_cast<double>(std::numeric_limits<TypeParam>::epsilon());
      };
      EXPECT_TRUE(this->is(result.re, value.result_re, bound) || small(result.re, value.result_re))
          << value.re << ' ' << value.im << " -> " << result.re << ' ' << result.im;
      EXPECT_TRUE(this->is(result.im, value.result_im, bound))
          << value.re << ' ' << value.im << " -> " << result.re << ' ' << result.im;
      EXPECT_EQ(_korGetErrStatus(), value.status) << value.re << ' ' << value.im;
    });
  }
}

TYPED_TEST(ComplexValues, SpecialPowers) {
  for (const char* name : {"Pow", "Powx"}) {
    for (const PowerValue& value : power_values) {
      this->for_each_kernel_of(name, [&](const auto& function, int grade) {
        _korClearErrStatus();
        const auto result = function.call(grade, this->at(value.re, value.im), this->at(value.b_re, value.b_im));
        const auto is = [](double part, double exact) {
          return part == exact || (std::isnan(part) && std::isnan(exact)) || (std::isinf(part) && exact == inf);
        };
        EXPECT_TRUE(is(static_cast<double>(result.re), value.result_re) &&
                    is(static_cast<double>(result.im), value.result_im))
            << value.re << ' ' << value.im << " ^ " << value.b_re << ' ' << value.b_im << " -> " << result.re << ' '
            << result.im;
        EXPECT_EQ(_korGetErrStatus(), value.status)
            << value.re << ' ' << value.im << " ^ " << value.b_re << ' ' << value.b_im;
      });
    }
  }
}

// f(conj z) = conj f(z) bit by bit, and f(-z) = -f(z) for the odd functions, special values included.
TYPED_TEST(ComplexValues, Symmetries) {
  using T = TypeParam;
  using Limits = std::numeric_limits<T>;
  const T parts[] = {T(0),
                     T(1),
                     T(0.5),
                     T(2),
                     T(1e-30),
                     T(1e30),
                     Limits::infinity(),
                     T(1.5),
                     Limits::min(),
                     Limits::max(),
                     Limits::denorm_min(),
                     T(1) - Limits::epsilon() / 2};
  const auto same = [](T a, T b) {
    return (std::isnan(a) && std::isnan(b)) || (a == b && std::signbit(a) == std::signbit(b));
  };
  for (const char* name : {"Ln", "Log10", "Acos", "Acosh", "Asin", "Asinh", "Atan", "Atanh", "Exp", "Sin", "Cos", "Tan",
                           "Sinh", "Cosh", "Tanh"}) {
    const bool odd =
        std::strncmp(name, "As", 2) == 0 || std::strncmp(name, "At", 2) == 0 || name[0] == 'S' || name[0] == 'T';
    this->for_each_kernel_of(name, [&](const auto& function, int grade) {
      for (T re : parts) {
        for (T im : parts) {
          for (T sign : {T(1), T(-1)}) {
            const auto z = function.call(grade, {sign * re, im}, {0, 0});
            const auto conjugate = function.call(grade, {sign * re, -im}, {0, 0});
            EXPECT_TRUE(same(z.re, conjugate.re) && same(z.im, -conjugate.im)) << sign * re << ' ' << im;
            if (!odd) continue;
            const auto negative = function.call(grade, {-sign * re, -im}, {0, 0});
            EXPECT_TRUE(same(z.re, -negative.re) && same(z.im, -negative.im)) << sign * re << ' ' << im;
          }
        }
      }
    });
  }
}

// (1 + i)^n is a product of 2^(n/2) and a power of i, times 1 + i for odd n: exact in all exponents.
TYPED_TEST(ComplexValues, PowersOfOnePlusI) {
  using T = TypeParam;
  constexpr int last = 2 * std::numeric_limits<T>::max_exponent - 4;
  for (const char* name : {"Pow", "Powx"}) {
    this->for_each_kernel_of(name, [&](const auto& function, int grade) {
      // The coarse grade has its logarithm to 2^-50, which shows in the last powers of double.
      const double bound = function.bound(Grade(grade)) * static_cast<double>(std::numeric_limits<T>::epsilon());
      for (int n = -last + 8; n <= last; ++n) {
        _korClearErrStatus();
        const auto result = function.call(grade, this->at(1, 1), this->at(n, 0));
        const int eighth = ((n % 8) + 8) % 8;
        const double re[] = {1, 1, 0, -1, -1, -1, 0, 1}, im[] = {0, 1, 1, 1, 0, -1, -1, -1};
        const int half = (n - (eighth % 2)) / 2;
        const double modulus = eighth % 2 != 0 ? std::sqrt(2.0) : 1.0;
        const double error = std::hypot(std::ldexp(static_cast<double>(result.re), -half) - re[eighth],
                                        std::ldexp(static_cast<double>(result.im), -half) - im[eighth]);
        EXPECT_LE(error, bound * modulus) << n << ": " << result.re << ' ' << result.im;
        EXPECT_EQ(_korGetErrStatus(), KOR_STATUS_OK) << n;
      }
      // Past the normal numbers on either side.
      _korClearErrStatus();
      function.call(grade, this->at(1, 1), this->at(last + 8, 0));
      EXPECT_EQ(_korGetErrStatus(), KOR_STATUS_OVERFLOW);
      _korClearErrStatus();
      const auto small = function.call(grade, this->at(1, 1), this->at(-last - 16, 0));
      EXPECT_EQ(_korGetErrStatus(), KOR_STATUS_UNDERFLOW);
      EXPECT_TRUE(small.re != 0 || small.im != 0);
    });
  }
}

// A subnormal angle keeps all its digits under a large exponential, a normal one next to it under a small one.
TYPED_TEST(ComplexValues, ExponentialsOfTinyAngles) {
  using T = TypeParam;
  using Limits = std::numeric_limits<T>;
  this->for_each_kernel_of("Exp", [&](const auto& function, int grade) {
    if (Grade(grade) != Grade::ha) return;  // the others bound the error by the modulus
    const double bound = function.bound(Grade::ha) * static_cast<double>(Limits::epsilon());
    for (double x : {-3.0, -0.25, 0.3, 10.0, 40.0, 80.0}) {
      for (T y : {Limits::denorm_min() * 5, Limits::min() / 3, Limits::min() * T(1.7)}) {
        const auto result = function.call(grade, {static_cast<T>(x), y}, {0, 0});
        const auto exact = std::exp(static_cast<long double>(static_cast<T>(x))) * static_cast<long double>(y);
        const auto error = std::fabs(static_cast<long double>(result.im) - exact);
        EXPECT_LE(error, std::fmax(bound * exact, function.bound(Grade::ha) * Limits::denorm_min())) << x << ' ' << y;
      }
    }
  });
}

// Where tanh is +-1 to the last digit its other part is nothing beside it, with the sign of sin 2y.
TYPED_TEST(ComplexValues, TanhFarOut) {
  using T = TypeParam;
  this->for_each_kernel_of("Tanh", [&](const auto& function, int grade) {
    const double bound = function.bound(Grade(grade)) * static_cast<double>(std::numeric_limits<T>::epsilon());
    for (double x : {42.0, 44.0, 90.0, 340.0, 1e6}) {
      for (double y : {0.5, 2.0, -3.0}) {
        const auto result = function.call(grade, this->at(-x, y), {0, 0});
        EXPECT_NEAR(static_cast<double>(result.re), -1, bound) << x << ' ' << y;
        EXPECT_LE(std::fabs(static_cast<double>(result.im)), 0x1p-118) << x << ' ' << y;
        EXPECT_EQ(std::signbit(result.im), std::sin(2 * y) < 0) << x << ' ' << y;
      }
    }
  });
}

// LA and EP of single precision change from floats to double and to special paths where arguments grow large, tiny or
// come next to poles: all of the float range in both parts, beside HA. Powers of moderate numbers, on both sides of the
// limits of their path in floats.
TEST(ComplexGrades, FollowHighAccuracyOverAllFloats) {
  std::mt19937 random(7);
  const auto word = [&] { return static_cast<std::uint32_t>(random()); };
  const auto part = [&] {
    if (word() % 2 == 0) return std::bit_cast<float>(word());
    // Next to powers of two, where the paths change, and to the poles.
    const float power = std::ldexp(1.0f, static_cast<int>(word() % 277) - 149);
    const float near[] = {1.0f, power, power, 0.0f};
    const std::uint32_t at = std::bit_cast<std::uint32_t>(near[word() % 4]);
    const std::uint32_t moved = at + word() % 5 - (at < 2 ? at : 2);
    return std::bit_cast<float>(moved | (word() & 0x80000000u));
  };
  const auto uniform = [&](float most) { return most * (static_cast<float>(word()) * 0x1p-31f - 1); };
  constexpr std::int32_t count = 4096;
  std::vector<KorComplex8> z(count), w(count), r(count), exact(count);
  _korSetMode(KOR_HA | KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF);
  for (const auto& function : complex_functions<float>()) {
    bool listed = false;
    for (const char* name : {"Ln", "Log10", "Pow", "Powx", "Atan", "Atanh", "Asin", "Acos", "Asinh", "Acosh"})
      listed |= std::strcmp(function.function, name) == 0;
    if (!listed) continue;
    for (int round = 0; round < 64; ++round) {
      for (std::size_t i = 0; i < z.size(); ++i) {
        if (!function.has_second()) {
          z[i] = {part(), part()};
          if (round % 4 == 0) z[i].re = std::ldexp(uniform(1), round % 8 == 0 ? 70 : -70);
          continue;
        }
        const float size = std::exp2(uniform(round % 4 == 0 ? 50 : 14));
        z[i] = {size * uniform(1), size * uniform(1)};
        w[i] = {uniform(40), uniform(40)};
      }
      function.call(static_cast<int>(Grade::ha), count, z.data(), w.data(), exact.data());
      for (Grade grade : {Grade::la, Grade::ep}) {
        SCOPED_TRACE(function.label() + " " + grade_names[static_cast<int>(grade)]);
        function.call(static_cast<int>(grade), count, z.data(), w.data(), r.data());
        for (std::size_t i = 0; i < z.size(); ++i) {
          const double modulus = std::hypot(static_cast<double>(exact[i].re), static_cast<double>(exact[i].im));
          const double spacing = std::ldexp(1.0, std::max(std::ilogb(std::fmax(modulus, 0x1p-149)) - 23, -149));
          const double tolerance = (function.bound(grade) + 1) * spacing;
          const auto follows = [&](float got, float wanted) {
            if (!std::isfinite(wanted)) return std::isnan(wanted) ? std::isnan(got) : got == wanted;
            if (wanted == 0 && got == 0) return std::signbit(wanted) == std::signbit(got);
            return !std::isfinite(modulus) || std::fabs(static_cast<double>(got) - wanted) <= tolerance;
          };
          ASSERT_TRUE(follows(r[i].re, exact[i].re) && follows(r[i].im, exact[i].im))
              << std::hexfloat << z[i].re << ' ' << z[i].im << ", " << w[i].re << ' ' << w[i].im << " -> " << r[i].re
              << ' ' << r[i].im << ", not " << exact[i].re << ' ' << exact[i].im;
          if (i % 32 != 0) continue;
          // Among others of its kind as alone.
          KorComplex8 alone;
          const std::size_t first = function.shape == ComplexFunction<float>::Shape::scalar ? 0 : i;
          function.call(static_cast<int>(grade), 1, &z[i], &w[first], &alone);
          ASSERT_EQ(std::memcmp(&alone, &r[i], sizeof alone), 0) << std::hexfloat << z[i].re << ' ' << z[i].im;
        }
      }
    }
  }
  _korSetMode(KOR_MODE_DEFAULT | KOR_FTZDAZ_OFF);
}

}  // namespace
