// use_test: interpolation and integration against the polynomials themselves, however sites, cells and results lie.
// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <tuple>

#include "tests/data_fitting/api.h"
#include "tests/support/faulty_core.h"
#include "tests/support/guard_pages.h"

namespace {

// The spline of a task as a plain function: the piece of a site by counting breaks.
template <class T>
class Reference {
 public:
  const Fit<T>& fit;
  std::vector<long double> breaks;

  explicit Reference(const Fit<T>& of) : fit(of), breaks(of.x.begin(), of.x.end()) {
    if (fit.task->s_order != 3 || fit.task->s_type != 1) return;
    if (!fit.ic.empty()) {
      breaks.assign(fit.ic.begin(), fit.ic.end());
      return;
    }
    for (std::size_t k = fit.x.size() - 1; k > 0; --k) {
      breaks[k] = (static_cast<long double>(fit.x[k - 1]) + fit.x[k]) / 2;
    }
    breaks.push_back(fit.x.back());
  }

  std::size_t piece(long double t) const {
    const std::size_t right =
        static_cast<std::size_t>(std::upper_bound(breaks.begin(), breaks.end(), t) - breaks.begin());
    return std::clamp<std::size_t>(right, 1, breaks.size() - 1) - 1;
  }
  // Derivative k at t, and its terms' magnitude.
  long double at(std::size_t f, int k, long double t, long double& scale) const {
    const std::size_t i = piece(t);
    const T* c = fit.piece(f, i);
    long double sum = 0;
    for (int j = k; j < fit.task->s_order; ++j) {
      long double term = c[j];
      for (int m = 0; m < j; ++m) term *= m < k ? j - m : t - breaks[i];
      sum += term;
      scale += std::fabs(term);
    }
    return sum;
  }
  // The integral from the first break to t; whole pieces are summed once.
  long double primitive(std::size_t f, long double t, long double& scale) {
    if (whole.empty()) {
      for (std::size_t g = 0; g < static_cast<std::size_t>(fit.ny); ++g) {
        whole.emplace_back(1);
        for (std::size_t i = 0; i + 1 < breaks.size(); ++i) {
          whole[g].push_back(part(g, i, breaks[i + 1] - breaks[i], whole[g].back()));
        }
      }
    }
    const std::size_t last = piece(t);
    const Quantity sum = part(f, last, t - breaks[last], whole[f][last]);
    scale += sum.scale;
    return sum.value;
  }

 private:
  struct Quantity {
    long double value = 0, scale = 0;
  };
  Quantity part(std::size_t f, std::size_t i, long double u, Quantity sum) const {
    long double power = u;
    for (int j = 0; j < fit.task->s_order; ++j, power *= u) {
      const long double term = fit.piece(f, i)[j] * power / (j + 1);
      sum.value += term;
      sum.scale += std::fabs(term);
    }
    return sum;
  }
  std::vector<std::vector<Quantity>> whole;
};

enum Ordering { random_order, ascending, given_cells, hinted };

template <class T>
class Use : public testing::Test {
 protected:
  static constexpr T eps = std::numeric_limits<T>::epsilon();

  // body(fit, xhint) for the orders and types of spline, over general, quasi-uniform and uniform partitions.
  template <class Body>
  static void splines(Body body) {
    for (const int64_t xhint : {0, 1, 2, 4}) {
      const std::size_t n = 61;
      const std::vector<T> x = xhint == 4 ? uniform_partition<T>(n, -2, 0.1) : random_partition<T>(n, 8);
      std::vector<T> knots = {x[0] - T{0.5f}};
      for (std::size_t k = 1; k < n; ++k) knots.push_back(x[k - 1] + (x[k] - x[k - 1]) * T{0.3f});
      knots.push_back(x[n - 1]);
      SCOPED_TRACE(testing::Message() << "hint " << xhint);
      const auto with = [&](typename Fit<T>::Constructor constructor, int64_t order, int64_t type, int64_t bc_type,
                            int64_t ic_type, std::vector<T> ic) {
        SCOPED_TRACE(testing::Message() << "order " << order << " type " << type << " ic " << ic_type);
        Fit<T> fit(x, 3, xhint);
        ASSERT_EQ(fit.build(constructor, order, type, bc_type, {T{0.25f}, T{0}}, ic_type, ic), ORIN_DF_OK);
        body(fit, xhint);
      };
      with(Api<T>::linear, 2, 0, 2, 0, {});
      with(Api<T>::quadratic, 3, 0, 128, 0, {});
      with(Api<T>::quadratic, 3, 1, 12, 0, {});
      with(Api<T>::quadratic, 3, 1, 2, 8, knots);
      with(Api<T>::natural, 4, 2, 1, 0, {});
    }
  }

  static std::vector<T> sites(const Fit<T>& fit, std::size_t n, bool sorted) {
    std::mt19937 random(static_cast<unsigned>(n));
    const double length = static_cast<double>(fit.x.back()) - fit.x.front();
    std::uniform_real_distribution<double> site(fit.x.front() - 0.05 * length, fit.x.back() + 0.05 * length);
    std::vector<T> s(n);
    for (T& v : s) v = static_cast<T>(site(random));
    if (sorted) std::sort(s.begin(), s.end());
    return s;
  }
};
TYPED_TEST_SUITE(Use, Precisions);

TYPED_TEST(Use, DerivativesOfEveryFunction) {
  using T = TypeParam;
  this->splines([this](const Fit<T>& fit, int64_t) {
    const Reference<T> reference(fit);
    for (const Ordering ordering : {random_order, ascending, given_cells, hinted}) {
      for (const std::size_t n : {1, 7, 257, 700}) {
        const std::vector<T> s = this->sites(fit, n, ordering == ascending);
        std::vector<int64_t> cells(n);
        for (std::size_t i = 0; i < n; ++i)
          cells[i] = std::upper_bound(fit.x.begin(), fit.x.end(), s[i]) - fit.x.begin();
        const T data_hint[] = {30, 1};
        const std::vector<std::vector<int32_t>> asks = {{1}, {0, 1}, {1, 1}, {1, 0, -7, 0, 1}, {0, 0, 1, 1, 0, 1}};
        int64_t rhint = 32;
        for (const std::vector<int32_t>& ask : asks) {
          rhint = rhint == 32 ? 0 : rhint + 16;
          const std::size_t asked = ask.size() - static_cast<std::size_t>(std::count(ask.begin(), ask.end(), 0));
          GuardedArray<T> r(3 * n * asked, n % 2 == 0 ? GuardedArray<T>::at_end : GuardedArray<T>::at_start);
          ASSERT_EQ(Api<T>::interpolate(fit.task, int64_t(n), s.data(), ordering == ascending ? 64 : 0,
                                        int64_t(ask.size()), ask.data(), ordering == hinted ? data_hint : nullptr,
                                        r.data(), rhint, ordering == given_cells ? cells.data() : nullptr),
                    ORIN_DF_OK);
          EXPECT_TRUE(r.surroundings_intact());
          for (std::size_t f = 0; f < 3; ++f) {
            for (std::size_t i = 0; i < n; ++i) {
              const T* result = r.data() + (rhint == 32 ? i * 3 + f : f * n + i) * asked;
              for (std::size_t k = 0; k < ask.size(); ++k) {
                if (ask[k] == 0) continue;
                // The coordinate in the piece is rounded: its error moves the result along the next derivative.
                long double scale = 0, slope = 0, ignored = 0;
                const long double expected = reference.at(f, static_cast<int>(k), s[i], scale);
                slope = std::fabs(reference.at(f, static_cast<int>(k) + 1, s[i], ignored)) * (std::fabs(s[i]) + 1);
                ASSERT_LE(std::fabs(*result++ - expected), this->eps * (4 * scale + slope))
                    << "derivative " << k << ", site " << s[i];
              }
            }
          }
        }
      }
    }
  });
}

TYPED_TEST(Use, PointsAreMetExactly) {
  using T = TypeParam;
  this->splines([](Fit<T>& fit, int64_t) {
    if (fit.task->s_type == 1) return;  // the Subbotin spline has no knots there
    const int64_t n = fit.nx();
    const int32_t ask[] = {1};
    for (const int64_t sitehint : {0, 64}) {
      std::vector<T> r(3 * fit.x.size());
      ASSERT_EQ(Api<T>::interpolate(fit.task, n, fit.x.data(), sitehint, 1, ask, nullptr, r.data(), 0, nullptr), 0);
      for (std::size_t f = 0; f < 3; ++f)
        for (std::size_t i = 0; i < fit.x.size(); ++i) EXPECT_EQ(r[f * fit.x.size() + i], fit.value(f, i)) << i;
    }
  });
}

// The last point takes its function's value, in every storage, and only as the end of a polynomial that leads there:
// coefficients of other values stand for themselves.
TYPED_TEST(Use, TheLastPoint) {
  using T = TypeParam;
  const int32_t ask[] = {1, 1};
  for (const int64_t storage : {0, 16, 32, 128}) {
    Fit<T> fit(random_partition<T>(9, 2), storage == 128 ? 1 : 3, 0, storage);
    fit.value(0, 8) = T(1e-20);  // beside values of 1
    ASSERT_EQ(fit.build(Api<T>::natural, 4, 2, 2), ORIN_DF_OK);
    const std::size_t functions = static_cast<std::size_t>(fit.ny);
    const std::vector<T> s = {fit.x[8], fit.x[1], fit.x[8]};
    const int64_t cells[] = {9, 2, 1};
    std::vector<T> r(6 * functions);
    for (const int64_t rhint : {0, 32}) {
      const auto at = [&](std::size_t f, std::size_t i) {
        return r[2 * (rhint == 32 ? i * functions + f : f * 3 + i)];
      };
      ASSERT_EQ(Api<T>::interpolate(fit.task, 3, s.data(), 0, 2, ask, nullptr, r.data(), rhint, nullptr), ORIN_DF_OK);
      for (std::size_t f = 0; f < functions; ++f)
        EXPECT_TRUE(at(f, 0) == fit.value(f, 8) && at(f, 1) == fit.value(f, 1) && at(f, 2) == fit.value(f, 8)) << f;
      ASSERT_EQ(Api<T>::interpolate(fit.task, 3, s.data(), 0, 2, ask, nullptr, r.data(), rhint, cells), ORIN_DF_OK);
      EXPECT_EQ(at(0, 0), fit.value(0, 8));
      EXPECT_GT(std::fabs(at(0, 2) - fit.value(0, 8)), T(1e-3)) << "the first cell's polynomial was asked for";
    }
    fit.coefficients.assign(fit.coefficients.size(), T(2));
    const T u = fit.x[8] - fit.x[7];
    ASSERT_EQ(Api<T>::interpolate(fit.task, 3, s.data(), 0, 2, ask, nullptr, r.data(), 0, nullptr), ORIN_DF_OK);
    EXPECT_EQ(r[0], ((2 * u + 2) * u + 2) * u + 2);
  }
}

// Far from the origin the points of a uniform partition are rounded by a good part of a cell. Still every point is met,
// the piece to the left of a point ends there, and parabolas come back to within the rounding of the sites.
TYPED_TEST(Use, UniformPartitionsFarFromTheOrigin) {
  using T = TypeParam;
  const bool single = sizeof(T) == 4;
  for (const double step : {single ? 0.25 : 1e-9, single ? 0.3 : 1e-3, 0.7}) {
    const std::size_t n = 300;
    const std::vector<T> x = uniform_partition<T>(n, 1e6, step);
    for (const auto& [constructor, order, type, bc] : {std::tuple{Api<T>::linear, 2, 0, 0},
                                                       {Api<T>::quadratic, 3, 0, 128},
                                                       {Api<T>::natural, 4, 2, 1},
                                                       {Api<T>::akima, 4, 5, 2},
                                                       {Api<T>::bessel, 4, 4, 2}}) {
      SCOPED_TRACE(testing::Message() << "step " << step << " order " << order << " type " << type);
      Fit<T> fit(x, 1, 4);
      const auto curve = [&, is_line = order == 2](T t, int k) {
        const long double u = (static_cast<long double>(t) - x[0]) / (x[n - 1] - x[0]);
        return k == 0 ? 1 + u * (is_line ? 1 : 1 - u) : 1 + (is_line ? 0 : 2);
      };
      for (std::size_t i = 0; i < n; ++i) fit.y[i] = static_cast<T>(curve(x[i], 0));
      const T middle = static_cast<T>(curve(x[0], 0) / 2 + curve(x[1], 0) / 2);
      ASSERT_EQ(fit.build(constructor, order, type, bc, {middle}), ORIN_DF_OK);
      std::vector<T> s;
      for (const T point : x) s.insert(s.end(), {point, std::nextafter(point, T(0)), std::nextafter(point, T(2e6))});
      std::vector<T> r(s.size());
      const int32_t ask[] = {1};
      ASSERT_EQ(Api<T>::interpolate(fit.task, int64_t(s.size()), s.data(), 0, 1, ask, nullptr, r.data(), 0, nullptr),
                0);
      for (std::size_t i = 0; i < n; ++i) {
        ASSERT_EQ(r[3 * i], fit.y[i]) << "point " << i;
        if (i == 0 || i == n - 1) continue;
        // One spacing of the sites away the curve has moved by its slope alone, whichever piece is taken; the wrong one
        // would add its own bend.
        for (const std::size_t side : {1, 2}) {
          const T* c = fit.piece(0, side == 1 ? i - 1 : i);
          long double u = static_cast<long double>(s[3 * i + side]) - x[side == 1 ? i - 1 : i], value = 0, scale = 0;
          for (int j = order - 1; j >= 0; --j) value = value * u + c[j], scale = scale * u + std::fabs(c[j]);
          ASSERT_LE(std::fabs(r[3 * i + side] - value), 4 * this->eps * scale) << "beside point " << i;
        }
        if (order == 3 || type == 5) continue;  // an end value off the parabola, slopes off it where cells differ
        ASSERT_LE(std::fabs(r[3 * i + 1] - curve(s[3 * i + 1], 0)), 16 * this->eps);
      }
    }
  }
}

// In a long call the sites of a uniform partition are placed in groups, alone one by one: the same bits, whether the points
// are the nearest to the exact ones, sums of many steps, or not uniform at all.
TYPED_TEST(Use, UniformSitesDoNotDependOnTheirNeighbours) {
  using T = TypeParam;
  constexpr T inf = std::numeric_limits<T>::infinity();
  constexpr std::size_t n = 200;
  enum { rounded, far, summed, uneven };
  for (const int kind : {rounded, far, summed, uneven}) {
    std::vector<T> x = uniform_partition<T>(n, kind == far ? 4e5 : -3, 0.3);
    for (std::size_t i = 1; i < n; ++i) {
      if (kind == summed) x[i] = x[i - 1] + T(0.3);
      if (kind == uneven) x[i] += T(i % 7) / 40;
    }
    Fit<T> fit(x, 1, 4);
    ASSERT_EQ(fit.build(Api<T>::natural, 4, 2, 2), ORIN_DF_OK);
    std::vector<T> s = this->sites(fit, 3000, false);
    for (std::size_t i = 0; i < n; ++i) {
      s[15 * i] = x[i];
      s[15 * i + 1] = std::nextafter(x[i], -inf);
      if (i % 50 == 7) s[15 * i + 2] = std::array{inf, -inf, std::numeric_limits<T>::quiet_NaN(), x[n - 1]}[i / 50];
    }
    std::vector<T> together(s.size());
    const int32_t ask[] = {1};
    const auto value = [&](std::size_t count, const T* site, T* r) {
      ASSERT_EQ(Api<T>::interpolate(fit.task, int64_t(count), site, 0, 1, ask, nullptr, r, 0, nullptr), ORIN_DF_OK);
    };
    value(s.size(), s.data(), together.data());
    for (std::size_t i = 0; i < s.size(); ++i) {
      T alone;
      value(1, &s[i], &alone);
      EXPECT_TRUE(alone == together[i] || (alone != alone && together[i] != together[i]))
          << "kind " << kind << " site " << s[i] << ": " << alone << ' ' << together[i];
    }
    if (kind == uneven) continue;  // its points may belong to the piece on their left
    for (std::size_t i = 0; i < n; ++i) EXPECT_EQ(together[15 * i], fit.y[i]) << "kind " << kind << " point " << i;
  }
}

TYPED_TEST(Use, StrangeSitesAndCells) {
  using T = TypeParam;
  constexpr T inf = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN();
  this->splines([&](const Fit<T>& fit, int64_t) {
    const int32_t ask[] = {1, 1};
    for (const std::size_t n : {6, 600}) {  // with and without a guide table
      std::vector<T> s(n, fit.x[3]), r(6 * n), limits(3 * n);
      const T strange[] = {nan, inf, -inf, std::numeric_limits<T>::max(), -nan};
      std::copy(std::begin(strange), std::end(strange), s.begin());
      for (const int64_t sitehint : {0, 64}) {
        ASSERT_EQ(Api<T>::interpolate(fit.task, int64_t(n), s.data(), sitehint, 2, ask, nullptr, r.data(), 0, nullptr),
                  0);
        EXPECT_TRUE(r[0] != r[0] && r[8] != r[8]);
        EXPECT_FALSE(std::isfinite(r[2]) && std::isfinite(r[4]));
        if (sitehint == 0) {
          EXPECT_EQ(r[10], r[2 * n - 2]);
        }
        std::vector<T> right(n, fit.x[40]);
        ASSERT_EQ(Api<T>::integrate(fit.task, int64_t(n), s.data(), sitehint, right.data(), 0, limits.data(), 0), 0);
        EXPECT_TRUE(limits[0] != limits[0] && limits[4] != limits[4]);
        EXPECT_FALSE(std::isfinite(limits[1]) && std::isfinite(limits[2]));
        if (sitehint == 0) {
          EXPECT_EQ(limits[5], limits[n - 1]);
        }
      }
    }
    const std::vector<T> s(4, fit.x[5]);
    const int64_t cells[] = {INT64_MIN, 0, fit.nx() + 1, INT64_MAX};
    std::vector<T> r(24);
    ASSERT_EQ(Api<T>::interpolate(fit.task, 4, s.data(), 0, 2, ask, nullptr, r.data(), 0, cells), ORIN_DF_OK);
    EXPECT_TRUE(r[0] == r[2] && r[4] == r[6]) << "clamped to the outer cells";
  });
}

TYPED_TEST(Use, Integrals) {
  using T = TypeParam;
  this->splines([this](const Fit<T>& fit, int64_t) {
    Reference<T> reference(fit);
    for (const std::size_t n : {1, 2, 300, 800}) {
      for (const bool sorted : {false, true}) {
        std::vector<T> a = this->sites(fit, n, sorted), b = this->sites(fit, n + 1, sorted);
        for (std::size_t i = 0; i < n; i += 5) b[i] = sorted ? b[i] : a[i] + (b[i] - a[i]) * T{0.001f};
        GuardedArray<T> r(3 * n), back(3 * n);
        for (const int64_t rhint : {16, 32}) {
          ASSERT_EQ(Api<T>::integrate(fit.task, int64_t(n), a.data(), sorted ? 64 : 0, b.data(), sorted ? 64 : 0,
                                      r.data(), rhint),
                    ORIN_DF_OK);
          ASSERT_EQ(Api<T>::integrate(fit.task, int64_t(n), b.data(), 0, a.data(), 0, back.data(), rhint), ORIN_DF_OK);
          EXPECT_TRUE(r.surroundings_intact());
          for (std::size_t f = 0; f < 3; ++f) {
            for (std::size_t i = 0; i < n; ++i) {
              const std::size_t at = rhint == 32 ? i * 3 + f : f * n + i;
              long double sa = 0, sb = 0;
              const long double expected = reference.primitive(f, b[i], sb) - reference.primitive(f, a[i], sa);
              const long double scale = std::fabs(sb - sa) + 2 * std::fabs(b[i] - a[i]);
              const long double place = 4 * std::numeric_limits<double>::epsilon() * (sa + sb + 4);
              ASSERT_LE(std::fabs(r[at] - expected), this->eps * scale + place) << a[i] << " to " << b[i];
              ASSERT_EQ(r[at], -back[at]) << "reversed";
            }
          }
        }
        ASSERT_EQ(Api<T>::integrate(fit.task, int64_t(n), a.data(), 0, a.data(), 0, r.data(), 0), ORIN_DF_OK);
        for (std::size_t i = 0; i < 3 * n; ++i) ASSERT_EQ(r[i], 0);
      }
    }
  });
}

// Points that repeat or descend: nothing to expect of the numbers, but every access stays inside.
TYPED_TEST(Use, PointsOutOfOrderStayInside) {
  using T = TypeParam;
  using A = Api<T>;
  constexpr std::size_t n = 300, sites = 500;
  for (const bool descending : {false, true}) {
    GuardedArray<T> x(n), y(n, GuardedArray<T>::at_start), c(4 * n), s(sites), r(sites);
    for (std::size_t i = 0; i < n; ++i) {
      x[i] = static_cast<T>(descending ? n - i : i / 4);
      y[i] = static_cast<T>(i % 7);
    }
    for (std::size_t i = 0; i < sites; ++i) s[i] = static_cast<T>((i * 37) % 331) - 10;
    for (const int64_t xhint : {0, 2, 4}) {
      DfTask1D* task = nullptr;
      ASSERT_EQ(A::new_task(&task, n, x.data(), xhint, 1, y.data(), 0, 0), ORIN_DF_OK);
      for (const auto& [constructor, order, type] : {std::tuple{A::linear, 2, 0},
                                                     {A::quadratic, 3, 1},
                                                     {A::natural, 4, 2},
                                                     {A::akima, 4, 5},
                                                     {A::bessel, 4, 4}}) {
        ASSERT_EQ(A::edit_spline(task, order, type, 1, nullptr, 0, nullptr, c.data(), 0), ORIN_DF_OK);
        EXPECT_EQ(constructor(task, 0, 0, 0), ORIN_DF_OK);
        for (const int64_t sitehint : {0, 64}) {
          const int32_t value[] = {1};
          EXPECT_EQ(A::interpolate(task, sites, s.data(), sitehint, 1, value, nullptr, r.data(), 0, nullptr), 0);
          EXPECT_EQ(A::integrate(task, sites - 1, s.data(), sitehint, s.data() + 1, 0, r.data(), 0), ORIN_DF_OK);
        }
      }
      orin_df_kernel_DeleteTask(&task);
    }
    EXPECT_TRUE(c.surroundings_intact() && r.surroundings_intact());
  }
}

// The first cells hold values of 1e16: prefix sums in one double would lose all of a later cell's integral.
TYPED_TEST(Use, LargeValuesElsewhereDoNoHarm) {
  using T = TypeParam;
  Fit<T> fit(uniform_partition<T>(100, 0, 1), 1);
  for (std::size_t i = 0; i < 100; ++i) fit.y[i] = i < 10 ? T(1e16) : T(i);
  ASSERT_EQ(fit.build(Api<T>::linear, 2, 0, 0), ORIN_DF_OK);
  const T left[] = {0, 20, 20.5}, right[] = {1, 23, 80};
  T r[3];
  ASSERT_EQ(Api<T>::integrate(fit.task, 3, left, 0, right, 0, r, 0), ORIN_DF_OK);
  EXPECT_EQ(r[1], T(64.5));
  EXPECT_EQ(r[2], T((80.0 * 80.0 - 20.5 * 20.5) / 2));
}

TYPED_TEST(Use, StatusesAndMemory) {
  using T = TypeParam;
  using A = Api<T>;
  const T s[] = {0, 1};
  const int32_t ask[] = {1}, none[] = {0};
  T r[8] = {42};
  const auto values = [&](const DfTask1D* task, int64_t n, const T* site, const int32_t* dorder, T* out,
                          int64_t rhint) {
    return A::interpolate(task, n, site, 0, 1, dorder, nullptr, out, rhint, nullptr);
  };
  EXPECT_EQ(values(nullptr, 0, s, ask, r, 0), ORIN_DF_NULL_TASK);
  EXPECT_EQ(A::integrate(nullptr, 0, s, 0, s, 0, r, 0), ORIN_DF_NULL_TASK);
  Fit<T> fit(uniform_partition<T>(9), 1);
  EXPECT_EQ(values(fit.task, 2, s, ask, r, 0), ORIN_DF_BAD_ORDER);
  fit.task->s_order = 4;
  EXPECT_EQ(values(fit.task, 2, s, ask, r, 0), ORIN_DF_BAD_SCOEFF);
  EXPECT_EQ(A::integrate(fit.task, 2, s, 0, s, 0, r, 0), ORIN_DF_BAD_SCOEFF);
  ASSERT_EQ(fit.build(A::natural, 4, 2, 2), ORIN_DF_OK);
  EXPECT_EQ(values(fit.task, 0, nullptr, ask, nullptr, 9), ORIN_DF_OK);
  EXPECT_EQ(values(fit.task, 2, s, none, r, 0), ORIN_DF_OK);
  EXPECT_EQ(values(fit.task, 2, s, nullptr, r, 0), ORIN_DF_OK);
  EXPECT_EQ(r[0], 42) << "nothing was asked for";
  EXPECT_EQ(values(fit.task, 2, nullptr, ask, r, 0), ORIN_DF_BAD_X);
  EXPECT_EQ(values(fit.task, 2, s, ask, nullptr, 0), ORIN_DF_BAD_Y);
  EXPECT_EQ(values(fit.task, 2, s, ask, r, 128), ORIN_DF_BAD_YHINT);
  EXPECT_EQ(A::integrate(fit.task, 0, nullptr, 0, nullptr, 0, nullptr, 0), ORIN_DF_OK);
  EXPECT_EQ(A::integrate(fit.task, 2, nullptr, 0, s, 0, r, 0), ORIN_DF_BAD_X);
  EXPECT_EQ(A::integrate(fit.task, 2, s, 0, nullptr, 0, r, 0), ORIN_DF_BAD_X);
  EXPECT_EQ(A::integrate(fit.task, 2, s, 0, s, 0, nullptr, 0), ORIN_DF_BAD_Y);
  EXPECT_EQ(A::integrate(fit.task, 2, s, 0, s, 0, r, 64), ORIN_DF_BAD_YHINT);
  for (const auto& [order, type] : {std::pair{0, 0}, {5, 0}, {2, 1}, {3, 2}, {4, 1}, {4, 6}}) {
    fit.task->s_order = order;
    fit.task->s_type = type;
    EXPECT_EQ(A::integrate(fit.task, 2, s, 0, s, 0, r, 0), ORIN_DF_BAD_TYPE) << order << ' ' << type;
  }
  fit.task->s_order = 3;
  fit.task->s_type = 1;
  fit.task->ic_type = 8;
  EXPECT_EQ(values(fit.task, 2, s, ask, r, 0), ORIN_DF_BAD_IC);
  EXPECT_EQ(A::integrate(fit.task, 2, s, 0, s, 0, r, 0), ORIN_DF_BAD_IC);

  ASSERT_EQ(fit.build(A::natural, 4, 2, 2), ORIN_DF_OK);
  const long before = faulty_core::live_blocks();
  faulty_core::fail_at(0);
  EXPECT_EQ(A::integrate(fit.task, 2, s, 0, s, 0, r, 0), ORIN_DF_NO_MEMORY);
  faulty_core::fail_at(0);
  EXPECT_EQ(values(fit.task, 2, s, ask, r, 0), ORIN_DF_OK);
  EXPECT_EQ(faulty_core::allocations(), 0) << "interpolation needs no memory";
  faulty_core::fail_at(-1);
  EXPECT_EQ(faulty_core::live_blocks(), before);
}

// The same bits on every target: a digest of coefficients, values, slopes and integrals.
TYPED_TEST(Use, BitsAreTheSameOnEveryTarget) {
  using T = TypeParam;
  std::uint64_t digest = 14695981039346656037U;
  const auto take = [&digest](const std::vector<T>& numbers) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(numbers.data());
    for (std::size_t i = 0; i < numbers.size() * sizeof(T); ++i) digest = (digest ^ bytes[i]) * 1099511628211U;
  };
  this->splines([&](const Fit<T>& fit, int64_t) {
    const std::vector<T> s = this->sites(fit, 900, false), right = this->sites(fit, 901, false);
    std::vector<T> r(6 * s.size()), integrals(3 * s.size());
    const int32_t ask[] = {1, 1};
    ASSERT_EQ(Api<T>::interpolate(fit.task, 900, s.data(), 0, 2, ask, nullptr, r.data(), 0, nullptr), ORIN_DF_OK);
    ASSERT_EQ(Api<T>::integrate(fit.task, 900, s.data(), 0, right.data(), 0, integrals.data(), 0), ORIN_DF_OK);
    take(fit.coefficients);
    take(r);
    take(integrals);
  });
  EXPECT_EQ(digest, sizeof(T) == 8 ? 11184335716608775507U : 15045338050455170849U);
}

}  // namespace
