// scipy_test: coefficients, values, slopes and integrals against those of SciPy.
// SPDX-License-Identifier: MIT
#include <algorithm>

#include "tests/data_fitting/api.h"

namespace {

struct Case {
  const char* name;
  int64_t bc_type;  // -1: Akima
  std::vector<double> ends, x, y, coefficients, sites, values, slopes, integrals;
};

const Case cases[] = {
#include "tests/data/data_fitting/scipy.inc"
};

// Each number within 1e-12 of the largest of its kind.
void expect_close(const double* ours, const std::vector<double>& theirs, std::size_t stride, std::size_t kind,
                  const char* what) {
  double largest = 0;
  for (std::size_t i = kind; i < theirs.size(); i += stride) largest = std::max(largest, std::fabs(theirs[i]));
  ASSERT_GT(largest, 0) << what;
  for (std::size_t i = kind; i < theirs.size(); i += stride) {
    EXPECT_NEAR(ours[i], theirs[i], 1e-12 * largest) << what << ' ' << i;
  }
}

TEST(Scipy, CubicSplinesAgree) {
  using A = Api<double>;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Fit<double> fit(c.x, 1);
    fit.y = c.y;
    ASSERT_EQ(A::edit_ptr(fit.task, ORIN_DF_Y, fit.y.data()), ORIN_DF_OK);
    const bool akima = c.bc_type < 0;
    ASSERT_EQ(fit.build(akima ? A::akima : A::natural, 4, akima ? 5 : 2, akima ? 2 : c.bc_type, c.ends), ORIN_DF_OK);
    ASSERT_EQ(fit.coefficients.size(), c.coefficients.size());
    for (std::size_t power = 0; power < 4; ++power) {
      expect_close(fit.coefficients.data(), c.coefficients, 4, power, "coefficient");
    }
    const auto n = static_cast<int64_t>(c.sites.size());
    const int32_t value[] = {1}, slope[] = {0, 1};
    std::vector<double> r(c.sites.size()), left(c.sites.size(), c.sites[0]);
    ASSERT_EQ(A::interpolate(fit.task, n, c.sites.data(), 0, 1, value, nullptr, r.data(), 0, nullptr), ORIN_DF_OK);
    expect_close(r.data(), c.values, 1, 0, "value");
    ASSERT_EQ(A::interpolate(fit.task, n, c.sites.data(), 0, 2, slope, nullptr, r.data(), 0, nullptr), ORIN_DF_OK);
    expect_close(r.data(), c.slopes, 1, 0, "slope");
    ASSERT_EQ(A::integrate(fit.task, n, left.data(), 0, c.sites.data(), 0, r.data(), 0), ORIN_DF_OK);
    expect_close(r.data(), c.integrals, 1, 0, "integral");
  }
}

}  // namespace
