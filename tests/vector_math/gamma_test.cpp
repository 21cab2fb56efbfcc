// gamma_test: the gamma functions at poles, in the subnormal range and across the seams of their tables.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <limits>
#include <numbers>

#include "tests/vector_math/reference_cases.h"
#include "vector_math/catalog.h"

namespace {

using namespace orin::vector_math;

template <class T>
class Gamma : public testing::Test {
 protected:
  using Limits = std::numeric_limits<T>;
  static constexpr T largest = Limits::max(), least = Limits::denorm_min(),
                     last_fraction = 1 / Limits::epsilon() / 2 + T(0.5);

  void SetUp() override { _korSetMode(KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF); }
  void TearDown() override { _korSetMode(KOR_MODE_DEFAULT); }

  static RealFunction<T> function(const char* name) {
    for (const auto& each : real_functions<T>())
      if (std::strcmp(each.function, name) == 0) return each;
    ADD_FAILURE() << name << " is missing";
    return real_functions<T>().front();
  }

  struct Line {
    T x, result;
    int status;
  };
  // Each line in all grades, alone and among ordinary arguments.
  void expect(const char* name, const std::vector<Line>& lines) {
    const auto f = function(name);
    for (int grade = 0; grade < grades; ++grade) {
      for (const Line& line : lines) {
        SCOPED_TRACE(testing::Message() << f.name << " " << grade_names[grade] << " " << line.x);
        const T a[7] = {T(1.25), T(-0.75), T(3), line.x, T(0.01), T(5.5), T(-2.5)};
        T r[7];
        _korClearErrStatus();
        f.call(grade, 7, a, a, r);
        EXPECT_EQ(_korGetErrStatus(), line.status);
        EXPECT_EQ(bits_of(r[3]), bits_of(f.call(grade, line.x, T(0))));
        if (std::isnan(line.result))
          EXPECT_TRUE(std::isnan(r[3])) << r[3];
        else
          EXPECT_EQ(bits_of(r[3]), bits_of(line.result)) << std::hexfloat << r[3];
      }
    }
  }
};
using Elements = testing::Types<float, double>;
TYPED_TEST_SUITE(Gamma, Elements);

TYPED_TEST(Gamma, SpecialArgumentsOfTGamma) {
  using T = TypeParam;
  using F = TestFixture;
  constexpr T inf = F::Limits::infinity(), nan = F::Limits::quiet_NaN();
  this->expect("TGamma", {{nan, nan, 0},
                          {inf, inf, 0},
                          {-inf, nan, 1},
                          {0, inf, 2},
                          {-T(0), -inf, 2},
                          {F::least, inf, 3},
                          {-F::least, -inf, 3},
                          {F::Limits::min() / 4, inf, 3},
                          {-F::Limits::min() / 4, -inf, 3},
                          {-1, nan, 1},
                          {-2, nan, 1},
                          {-33, nan, 1},
                          {-34, nan, 1},
                          {-170, nan, 1},
                          {-171, nan, 1},
                          {-200, nan, 1},
                          {T(-1048577), nan, 1},
                          {-2 * F::last_fraction, nan, 1},
                          {-F::largest, nan, 1},
                          {T(-200.5), -T(0), 4},
                          {T(-201.5), T(0), 4},
                          {T(-1000.25), -T(0), 4},
                          {T(-1000001.5), T(0), 4},
                          {-F::last_fraction, -T(0), 4},
                          {1 - F::last_fraction, T(0), 4},
                          {172, inf, 3},
                          {200, inf, 3},
                          {F::largest, inf, 3}});
}

TYPED_TEST(Gamma, SubnormalResultsOfTGamma) {
  // Correctly rounded values, by mpmath.gamma at 2000 bits.
  if constexpr (sizeof(TypeParam) == 8) {
    this->expect("TGamma", {{-170.5, -0x1.7d2374dfcda7ap-1022, 0},
                            {-171.5, 0x0.0238ee05c879ep-1022, 4},
                            {-172.25, -0x0.0010e9b2f9c18p-1022, 4},
                            {-173.984375, 0x0.00000824f33fap-1022, 4},
                            {-175.0000000000001, 0x1.5f90991892a22p-1014, 0},
                            {-176.5, -0x0.00000000000f2p-1022, 4},
                            {-177.75, 0x0.0000000000001p-1022, 4},
                            {-180.4375, -0.0, 4},
                            {-181.0625, 0.0, 4}});
  } else {
    this->expect("TGamma", {{-33.5f, 0x1.531034p-124f, 0},
                            {-34.03125f, -0x1.089344p-123f, 0},
                            {-34.5f, -0x1.3a7e5p-129f, 4},
                            {-35.75f, 0x1.471p-135f, 4},
                            {-37.0625f, 0x1.4dp-140f, 4},
                            {-40.984375f, -0.0f, 4},
                            {-41.0625f, 0.0f, 4}});
  }
}

TYPED_TEST(Gamma, SpecialArgumentsOfLGamma) {
  using T = TypeParam;
  using F = TestFixture;
  constexpr T inf = F::Limits::infinity(), nan = F::Limits::quiet_NaN();
  const T overflow = sizeof(T) == 8 ? T(0x1.754d9278b51a8p+1014) : T(0x1.895f1cp+121);
  this->expect("LGamma", {{nan, nan, 0},
                          {inf, inf, 0},
                          {-inf, inf, 0},
                          {0, inf, 2},
                          {-T(0), inf, 2},
                          {-1, inf, 2},
                          {-17, inf, 2},
                          {-256, inf, 2},
                          {T(-1048577), inf, 2},
                          {-2 * F::last_fraction, inf, 2},
                          {-F::largest, inf, 2},
                          {1, 0, 0},
                          {2, 0, 0},
                          {overflow, inf, 3},
                          {F::largest, inf, 3}});
  const auto f = this->function("LGamma");
  for (int grade = 0; grade < grades; ++grade) {
    const T below = std::nextafter(overflow, T(0));
    EXPECT_NEAR(f.call(grade, below, T(0)) / F::largest, 1, f.relative_bound(Grade(grade)));
    // -log|x| to all digits, and Stirling's series less log|x| + log(sin(pi/2)).
    EXPECT_NEAR(f.call(grade, F::least, T(0)) / -std::log(F::least), 1, f.relative_bound(Grade(grade)));
    const double y = static_cast<double>(F::last_fraction), log = std::log(y);
    const double far = -((y + 0.5) * log - y + 0.5 * std::log(2 / std::numbers::pi) + 1 / (12 * y));
    EXPECT_NEAR(static_cast<double>(f.call(grade, -F::last_fraction, T(0))) / far, 1, f.relative_bound(Grade(grade)));
  }
}

}  // namespace
