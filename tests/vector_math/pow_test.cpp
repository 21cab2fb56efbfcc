// pow_test: special arguments of x^y by eye: C Annex F, and the statuses.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <limits>

#include "tests/vector_math/reference_cases.h"
#include "vector_math/catalog.h"

namespace {

using namespace orin::vector_math;

template <class T>
class Pow : public testing::Test {
 protected:
  void SetUp() override { _korSetMode(KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF); }
  void TearDown() override { _korSetMode(KOR_MODE_DEFAULT); }
};
using Elements = testing::Types<float, double>;
TYPED_TEST_SUITE(Pow, Elements);

TYPED_TEST(Pow, SpecialArguments) {
  using T = TypeParam;
  using Limits = std::numeric_limits<T>;
  const T inf = Limits::infinity(), nan = Limits::quiet_NaN(), largest = Limits::max(), least = Limits::denorm_min();
  const T odd = 2 / Limits::epsilon() - 1, even = odd + 1, half_way = 1 / Limits::epsilon() / 2 + T(0.5);
  const struct {
    T x, y, result;
    int status;
  } lines[] = {
      {0, 3, 0, 0},
      {-T(0), 3, -T(0), 0},
      {-T(0), 2, 0, 0},
      {-T(0), T(2.5), 0, 0},
      {0, -3, inf, 2},
      {-T(0), -3, -inf, 2},
      {-T(0), -2, inf, 2},
      {-T(0), T(-2.5), inf, 2},
      {-T(0), odd, -T(0), 0},
      {-T(0), even, 0, 0},
      {-T(0), -odd, -inf, 2},
      {-T(0), half_way, 0, 0},
      {0, inf, 0, 0},
      {0, -inf, inf, 0},
      {-T(0), -inf, inf, 0},
      {-1, inf, 1, 0},
      {-1, -inf, 1, 0},
      {1, inf, 1, 0},
      {1, nan, 1, 0},
      {nan, 0, 1, 0},
      {nan, -T(0), 1, 0},
      {inf, 0, 1, 0},
      {-inf, -T(0), 1, 0},
      {0, 0, 1, 0},
      {nan, 1, nan, 0},
      {2, nan, nan, 0},
      {-2, nan, nan, 0},
      {T(0.5), -inf, inf, 0},
      {T(-0.5), inf, 0, 0},
      {2, inf, inf, 0},
      {-2, -inf, 0, 0},
      {inf, 1, inf, 0},
      {inf, -1, 0, 0},
      {-inf, 3, -inf, 0},
      {-inf, 2, inf, 0},
      {-inf, -3, -T(0), 0},
      {-inf, -2, 0, 0},
      {-inf, T(0.5), inf, 0},
      {-inf, T(-0.5), 0, 0},
      {-2, T(0.5), nan, 1},
      {-least, T(0.5), nan, 1},
      {-2, 3, -8, 0},
      {-2, -2, T(0.25), 0},
      {-1, odd, -1, 0},
      {-1, even, 1, 0},
      {-1, half_way, nan, 1},
      {2, largest, inf, 3},
      {-2, odd, -inf, 3},
      {2, -largest, 0, 4},
      {-2, -odd, -T(0), 4},
      {T(0.5), largest, 0, 4},
      {largest, 2, inf, 3},
      {-largest, 3, -inf, 3},
      {least, 1, least, 4},
      {-least, 1, -least, 4},
      {least, 2, 0, 4},
      {least, -2, inf, 3},
      {1, largest, 1, 0},
      {1, least, 1, 0},
      {largest, 0, 1, 0},
      {2, Limits::min_exponent - 1, Limits::min(), 0},
      {2, Limits::min_exponent - 2, Limits::min() / 2, 4},
      {2, Limits::max_exponent, inf, 3},
  };
  int forms = 0;
  for (const auto& function : real_functions<T>()) {
    if (std::strncmp(function.function, "Pow", 3) != 0 || function.inputs() != 2) continue;
    ++forms;
    for (int grade = 0; grade < grades; ++grade) {
      SCOPED_TRACE(std::string(function.name) + " " + grade_names[grade]);
      for (const auto& line : lines) {
        _korClearErrStatus();
        const T result = function.call(grade, line.x, line.y);
        EXPECT_EQ(_korGetErrStatus(), line.status) << line.x << " ^ " << line.y;
        if (std::isnan(line.result))
          EXPECT_TRUE(std::isnan(result)) << line.x << " ^ " << line.y;
        else if (line.result == -8 || line.result == T(0.25))  // ordinary powers are as good as the grade
          EXPECT_NEAR(result / line.result, 1, function.relative_bound(Grade::ep)) << line.x << " ^ " << line.y;
        else
          EXPECT_EQ(bits_of(result), bits_of(line.result)) << line.x << " ^ " << line.y << " = " << result;
      }
    }
  }
  EXPECT_EQ(forms, 2) << "Pow and Powx";
}

}  // namespace
