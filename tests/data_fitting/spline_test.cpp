// spline_test: every family by the equations that define it, for every end condition, storage and precision.
// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstring>

#include "tests/data_fitting/api.h"
#include "tests/support/faulty_core.h"

namespace {

// A computed quantity with the sum of the magnitudes of its terms, the scale of its rounding errors.
struct Quantity {
  long double value = 0, scale = 0;
};

void add(Quantity& sum, long double term) {
  sum.value += term;
  sum.scale += std::fabs(term);
}

// Derivative k of the polynomial c at u.
template <class T>
Quantity derivative(const T* c, std::int64_t order, int k, long double u) {
  Quantity sum;
  for (int j = k; j < order; ++j) {
    long double factor = c[j];
    for (int i = 0; i < k; ++i) factor *= j - i;
    add(sum, factor * std::pow(u, static_cast<long double>(j - k)));
  }
  return sum;
}

template <class T>
void expect_near(Quantity a, Quantity b, const char* what) {
  const long double tolerance = 100 * std::numeric_limits<T>::epsilon() * (a.scale + b.scale);
  EXPECT_LE(std::fabs(a.value - b.value), tolerance) << what << ": " << a.value << " against " << b.value;
}

template <class T>
using Constructor = typename Fit<T>::Constructor;

template <class T>
struct Family {
  const char* name;
  Constructor<T> constructor;
  int64_t order, type;
  std::size_t least;
  bool smooth;  // second derivative continuous
};

template <class T>
const std::vector<Family<T>> cubics = {{"natural", Api<T>::natural, 4, 2, 3, true},
                                       {"default", Api<T>::default_cubic, 4, 0, 3, true},
                                       {"hermite", Api<T>::hermite, 4, 3, 3, true},
                                       {"bessel", Api<T>::bessel, 4, 4, 4, false},
                                       {"akima", Api<T>::akima, 4, 5, 5, false}};

constexpr int64_t bc_types[] = {0, 1, 2, 12, 24, 36, 48, 64, 4, 128};

// One function of a spline as a curve over its breaks.
template <class T>
struct Curve {
  const Fit<T>& fit;
  std::size_t f;
  std::vector<long double> breaks;

  std::size_t pieces() const { return breaks.size() - 1; }
  // The coefficients are made of differences of slopes over the width: their errors have the scale of the slopes.
  Quantity at(std::size_t piece, int k, long double t) const {
    const T* c = fit.piece(f, piece);
    Quantity q = derivative(c, fit.task->s_order, k, t - breaks[piece]);
    const long double width = breaks[piece + 1] - breaks[piece];
    for (int j = 1; j < fit.task->s_order; ++j) {
      q.scale += std::fabs(c[j]) * std::pow(width, static_cast<long double>(j - k));
    }
    return q;
  }
  Quantity left(int k) const { return at(0, k, fit.x.front()); }
  Quantity right(int k) const { return at(pieces() - 1, k, fit.x.back()); }

  void expect_continuous(int k) const {
    for (std::size_t i = 1; i < pieces(); ++i) {
      expect_near<T>(at(i - 1, k, breaks[i]), at(i, k, breaks[i]), "derivative at a break");
    }
  }

  // The ends that bc_type asks for; `free` tells whether free ends mean S'' = 0.
  void expect_ends(int64_t bc_type, bool free) const {
    const int first = bc_type == 12 || bc_type == 36 ? 1 : 2, second = bc_type == 12 || bc_type == 24 ? 1 : 2;
    const int highest = static_cast<int>(fit.task->s_order) - 1;
    if (bc_type == 1 && pieces() > 2) {
      expect_near<T>(at(0, highest, 0), at(1, highest, 0), "left not-a-knot");
      expect_near<T>(at(pieces() - 2, highest, 0), at(pieces() - 1, highest, 0), "right not-a-knot");
    } else if (bc_type == 12 || bc_type == 24 || bc_type == 36 || bc_type == 48) {
      expect_near<T>(left(first), {fit.bc[0], std::fabs(fit.bc[0])}, "left end");
      expect_near<T>(right(second), {fit.bc[1], std::fabs(fit.bc[1])}, "right end");
    } else if (bc_type == 64) {
      expect_near<T>(left(1), right(1), "periodic slope");
      expect_near<T>(left(2), right(2), "periodic curvature");
    } else if (bc_type != 1 && free) {
      expect_near<T>(left(2), {}, "free left end");
      expect_near<T>(right(2), {}, "free right end");
    }
  }
};

template <class T>
Curve<T> curve_over_points(const Fit<T>& fit, std::size_t f) {
  return {fit, f, {fit.x.begin(), fit.x.end()}};
}

template <class T>
void expect_values_at_points(Fit<T>& fit, std::size_t f) {
  const Curve<T> curve = curve_over_points(fit, f);
  for (std::size_t i = 0; i + 1 < fit.x.size(); ++i) EXPECT_EQ(fit.piece(f, i)[0], fit.value(f, i));
  expect_near<T>(curve.right(0), {fit.value(f, fit.x.size() - 1), 0}, "last value");
  curve.expect_continuous(0);
}

template <class T>
class Spline : public testing::Test {
 protected:
  // body(partition, xhint) for general and uniform partitions of n points.
  template <class Body>
  static void partitions(std::size_t n, Body body) {
    SCOPED_TRACE(testing::Message() << n << " points");
    body(random_partition<T>(n, static_cast<unsigned>(n)), 0);
    body(uniform_partition<T>(n), 4);
  }
};
TYPED_TEST_SUITE(Spline, Precisions);

TYPED_TEST(Spline, CubicsMeetTheirEquations) {
  using T = TypeParam;
  for (const Family<T>& family : cubics<T>) {
    for (std::size_t n = family.least; n < 60; n += n < 9 ? 1 : 25) {
      for (const int64_t bc_type : bc_types) {
        this->partitions(n, [&](std::vector<T> x, int64_t xhint) {
          SCOPED_TRACE(testing::Message() << family.name << " bc " << bc_type << " hint " << xhint);
          Fit<T> fit(std::move(x), 2, xhint);
          ASSERT_EQ(fit.build(family.constructor, 4, family.type, bc_type, {T{0.75f}, T{-1.5f}}), ORIN_DF_OK);
          for (std::size_t f = 0; f < 2; ++f) {
            expect_values_at_points(fit, f);
            const Curve<T> curve = curve_over_points(fit, f);
            curve.expect_continuous(1);
            if (family.smooth) curve.expect_continuous(2);
            curve.expect_ends(bc_type, family.smooth);
          }
        });
      }
    }
  }
}

TYPED_TEST(Spline, GivenInnerDerivatives) {
  using T = TypeParam;
  for (Constructor<T> constructor : {Api<T>::default_cubic, Api<T>::hermite}) {
    for (const int ic_type : {1, 2}) {
      for (const std::size_t n : {3, 4, 5, 30}) {
        for (const int64_t bc_type : bc_types) {
          this->partitions(n, [&](std::vector<T> x, int64_t xhint) {
            SCOPED_TRACE(testing::Message() << "ic " << ic_type << " bc " << bc_type << " hint " << xhint);
            Fit<T> fit(std::move(x), 2, xhint);
            std::vector<T> inner(2 * (n - 2));
            for (std::size_t i = 0; i < inner.size(); ++i) inner[i] = static_cast<T>(std::sin(1.0 + 3.0 * double(i)));
            ASSERT_EQ(fit.build(constructor, 4, 3, bc_type, {T{0.75f}, T{-1.5f}}, ic_type, inner), ORIN_DF_OK);
            for (std::size_t f = 0; f < 2; ++f) {
              expect_values_at_points(fit, f);
              const Curve<T> curve = curve_over_points(fit, f);
              for (std::size_t i = 1; i + 1 < n; ++i) {
                const T given = inner[f * (n - 2) + i - 1];
                expect_near<T>(curve.at(i, ic_type, curve.breaks[i]), {given, 1}, "given");
                expect_near<T>(curve.at(i - 1, ic_type, curve.breaks[i]), {given, 1}, "given");
              }
              curve.expect_ends(bc_type, true);
              if (bc_type == 1 && n == 3) {
                expect_near<T>(curve.left(3), {0, curve.left(2).scale}, "two parabolas");
              }
            }
          });
        }
      }
    }
  }
}

TYPED_TEST(Spline, BesselAndAkimaSlopes) {
  using T = TypeParam;
  for (const std::size_t n : {5, 6, 40}) {
    this->partitions(n, [&](std::vector<T> x, int64_t xhint) {
      Fit<T> fit(std::move(x), 1, xhint);
      std::vector<long double> d(n + 3);  // difference quotients with two beyond each end
      for (std::size_t i = 0; i + 1 < n; ++i) {
        d[i + 2] =
            (static_cast<long double>(fit.y[i + 1]) - fit.y[i]) / (static_cast<long double>(fit.x[i + 1]) - fit.x[i]);
      }
      d[1] = 2 * d[2] - d[3];
      d[0] = 2 * d[1] - d[2];
      d[n + 1] = 2 * d[n] - d[n - 1];
      d[n + 2] = 2 * d[n + 1] - d[n];
      ASSERT_EQ(fit.build(Api<T>::akima, 4, 5, 2), ORIN_DF_OK);
      for (std::size_t i = 0; i < n; ++i) {
        const long double right = std::fabs(d[i + 3] - d[i + 2]), left = std::fabs(d[i + 1] - d[i]);
        const Curve<T> curve = curve_over_points(fit, 0);
        const Quantity slope = i + 1 < n ? curve.at(i, 1, curve.breaks[i]) : curve.right(1);
        expect_near<T>(slope, {(right * d[i + 1] + left * d[i + 2]) / (right + left), 1}, "Akima");
      }
      ASSERT_EQ(fit.build(Api<T>::bessel, 4, 4, 2), ORIN_DF_OK);
      for (std::size_t i = 0; i < n; ++i) {
        const std::size_t m = std::clamp<std::size_t>(i, 1, n - 2);  // the middle of the parabola's three points
        const long double h0 = fit.x[m] - fit.x[m - 1], h1 = fit.x[m + 1] - fit.x[m];
        const long double curvature = (d[m + 2] - d[m + 1]) / (h0 + h1);
        const long double expected = d[m + 1] + curvature * (2.0L * fit.x[i] - fit.x[m - 1] - fit.x[m]);
        const Curve<T> curve = curve_over_points(fit, 0);
        const Quantity slope = i + 1 < n ? curve.at(i, 1, curve.breaks[i]) : curve.right(1);
        expect_near<T>(slope, {expected, 1}, "Bessel");
      }
    });
  }
  // Equal neighbouring quotients on both sides: the mean of the two inner ones.
  Fit<T> fit(uniform_partition<T>(6, 0, 1), 1);
  fit.y = {0, 1, 2, 5, 8, 11};
  ASSERT_EQ(fit.build(Api<T>::akima, 4, 5, 2), ORIN_DF_OK);
  EXPECT_EQ(fit.piece(0, 2)[1], 2);
}

TYPED_TEST(Spline, Quadratics) {
  using T = TypeParam;
  for (const std::size_t n : {2, 3, 4, 5, 6, 50}) {
    this->partitions(n, [&](std::vector<T> x, int64_t xhint) {
      Fit<T> fit(x, 2, xhint);
      ASSERT_EQ(fit.build(Api<T>::quadratic, 3, 0, 128, {T{0.375f}}), ORIN_DF_OK);
      for (std::size_t f = 0; f < 2; ++f) {
        expect_values_at_points(fit, f);
        const Curve<T> curve = curve_over_points(fit, f);
        curve.expect_continuous(1);
        expect_near<T>(curve.at(0, 0, (curve.breaks[0] + curve.breaks[1]) / 2), {0.375, 0}, "middle");
      }

      for (const int ic_type : {0, 8, 4}) {
        std::vector<T> knots;
        if (ic_type != 0) {
          for (std::size_t k = 0; k <= n; ++k) {
            const T before = k == 0 ? x[0] - T{0.25f} : x[k - 1], after = k == n ? x[n - 1] : x[k];
            knots.push_back(before + (after - before) * (k % 2 == 0 ? T{0.375f} : T{0.75f}));
          }
        }
        for (const int64_t bc_type : bc_types) {
          SCOPED_TRACE(testing::Message() << "Subbotin ic " << ic_type << " bc " << bc_type << " hint " << xhint);
          Fit<T> own(x, 2, xhint);
          ASSERT_EQ(own.build(Api<T>::quadratic, 3, 1, bc_type, {T{0.75f}, T{-1.5f}}, ic_type, knots), ORIN_DF_OK);
          std::vector<long double> breaks(knots.begin(), knots.end());
          if (knots.empty()) {
            breaks.push_back(x[0]);
            for (std::size_t k = 1; k < n; ++k) breaks.push_back((static_cast<long double>(x[k - 1]) + x[k]) / 2);
            breaks.push_back(x[n - 1]);
          }
          for (std::size_t f = 0; f < 2; ++f) {
            const Curve<T> curve{own, f, breaks};
            for (std::size_t k = 0; k < n; ++k) {
              expect_near<T>(curve.at(k, 0, x[k]), {own.value(f, k), 1}, "value at a point");
            }
            curve.expect_continuous(0);
            curve.expect_continuous(1);
            curve.expect_ends(bc_type, true);
          }
        }
      }
    });
  }
}

TYPED_TEST(Spline, Linear) {
  using T = TypeParam;
  {
    Fit<T> fit({0, 2}, 1);
    fit.y = {1, 3};
    ASSERT_EQ(fit.build(Api<T>::linear, 2, 0, 0), ORIN_DF_OK);
    EXPECT_EQ(fit.coefficients, (std::vector<T>{1, 1}));
  }
  for (const std::size_t n : {3, 2048, 2049, 2050, 5000}) {
    Fit<T> fit(random_partition<T>(n, 4), 2);
    ASSERT_EQ(fit.build(Api<T>::linear, 2, 0, 0), ORIN_DF_OK);
    for (std::size_t f = 0; f < 2; ++f) {
      for (std::size_t i = 0; i + 1 < n; ++i) {
        const T* y = fit.y.data() + f * n + i;
        ASSERT_EQ(fit.piece(f, i)[0], y[0]);
        ASSERT_EQ(fit.piece(f, i)[1], (y[1] - y[0]) / (fit.x[i + 1] - fit.x[i])) << i;
      }
    }
  }
}

// A polynomial that a family must give back; the ends that leave it alone.
TYPED_TEST(Spline, PolynomialsComeBack) {
  using T = TypeParam;
  const struct {
    const char* name;
    Constructor<T> constructor;
    int64_t order, type, bc_type;
    int degree;
  } rows[] = {{"natural", Api<T>::natural, 4, 2, 1, 3},      {"natural", Api<T>::natural, 4, 2, 12, 3},
              {"natural", Api<T>::natural, 4, 2, 48, 3},     {"default", Api<T>::default_cubic, 4, 0, 24, 3},
              {"bessel", Api<T>::bessel, 4, 4, 2, 2},        {"bessel", Api<T>::bessel, 4, 4, 1, 2},
              {"akima", Api<T>::akima, 4, 5, 2, 1},          {"subbotin", Api<T>::quadratic, 3, 1, 1, 2},
              {"quadratic", Api<T>::quadratic, 3, 0, 128, 2}};
  for (const auto& row : rows) {
    for (const std::size_t n : {5, 6, 17}) {
      this->partitions(n, [&](std::vector<T> x, int64_t xhint) {
        SCOPED_TRACE(testing::Message() << row.name << " bc " << row.bc_type << " hint " << xhint);
        for (T& v : x) v = std::round(v * 64) / 64;
        const auto p = [&](int k, double t) {
          const double c[] = {0.5, -1.25, 0.75, 0.5};
          double sum = 0;
          for (int j = row.degree; j >= k; --j) {
            double factor = c[j];
            for (int i = 0; i < k; ++i) factor *= j - i;
            sum = sum * t + factor;
          }
          return static_cast<T>(sum);
        };
        Fit<T> fit(x, 1, xhint);
        for (std::size_t i = 0; i < n; ++i) fit.y[i] = p(0, x[i]);
        std::vector<T> ends = {p(row.bc_type == 12 ? 1 : 2, x[0]), p(row.bc_type == 48 ? 2 : 1, x[n - 1])};
        if (row.bc_type == 128) ends = {p(0, (static_cast<double>(x[0]) + x[1]) / 2)};
        ASSERT_EQ(fit.build(row.constructor, row.order, row.type, row.bc_type, ends), ORIN_DF_OK);
        const double scale = std::fabs(static_cast<double>(*std::max_element(fit.y.begin(), fit.y.end()))) + 5;
        for (double t = x[0]; t < x[n - 1]; t += 0.0625) {
          const T site = static_cast<T>(t);
          const int32_t value_only[] = {1};
          T r;
          ASSERT_EQ(Api<T>::interpolate(fit.task, 1, &site, 0, 1, value_only, nullptr, &r, 0, nullptr), ORIN_DF_OK);
          EXPECT_NEAR(r, p(0, t), 8 * std::numeric_limits<T>::epsilon() * scale) << t;
        }
      });
    }
  }
}

// Every constructor, as the tests of storage, overlap and memory call it.
template <class T>
struct Call {
  Constructor<T> constructor;
  int64_t order, type, bc_type;
};
template <class T>
const std::vector<Call<T>> calls = {
    {Api<T>::linear, 2, 0, 2},   {Api<T>::quadratic, 3, 0, 128}, {Api<T>::quadratic, 3, 1, 36},
    {Api<T>::natural, 4, 2, 12}, {Api<T>::natural, 4, 2, 64},    {Api<T>::default_cubic, 4, 0, 1},
    {Api<T>::hermite, 4, 3, 2},  {Api<T>::bessel, 4, 4, 24},     {Api<T>::akima, 4, 5, 48}};

TYPED_TEST(Spline, StoragesAgreeToTheBit) {
  using T = TypeParam;
  constexpr std::size_t n = 33, ny = 3;
  for (const Call<T>& call : calls<T>) {
    Fit<T> plain(random_partition<T>(n, 2), ny), by_point(plain.x, ny, 0, 32), separate(plain.x, ny, 0, 128);
    std::vector<std::vector<T>> arrays;
    for (std::size_t f = 0; f < ny; ++f) {
      arrays.emplace_back(plain.y.begin() + f * n, plain.y.begin() + (f + 1) * n);
      for (std::size_t i = 0; i < n; ++i) by_point.value(f, i) = plain.value(f, i);
    }
    for (std::size_t f = 0; f < ny; ++f) Api<T>::edit_idx_ptr(separate.task, 2, int64_t(f), arrays[f].data());
    for (Fit<T>* fit : {&plain, &by_point, &separate}) {
      ASSERT_EQ(fit->build(call.constructor, call.order, call.type, call.bc_type, {T{1}, T{2}}), ORIN_DF_OK);
      EXPECT_EQ(fit->coefficients, plain.coefficients);
    }
  }
}

// Coefficients written over the values, over the partition, or between them.
TYPED_TEST(Spline, CoefficientsMayOverlapTheInputs) {
  using T = TypeParam;
  constexpr std::size_t n = 40, ny = 3;
  for (const Call<T>& call : calls<T>) {
    for (const int64_t storage : {0, 32}) {
      Fit<T> apart(random_partition<T>(n, 2), ny, 0, storage);
      ASSERT_EQ(apart.build(call.constructor, call.order, call.type, call.bc_type, {T{1}, T{2}}), ORIN_DF_OK);
      const std::size_t size = apart.coefficients.size();
      for (const std::size_t at : {std::size_t{0}, std::size_t{1}, n / 2, size - n - n * ny}) {
        std::vector<T> room(size + n * ny + n);
        T *x = room.data() + at, *y = x + n;
        std::copy(apart.x.begin(), apart.x.end(), x);
        std::copy(apart.y.begin(), apart.y.end(), y);
        DfTask1D* task = nullptr;
        ASSERT_EQ(Api<T>::new_task(&task, n, x, 0, ny, y, storage, 0), ORIN_DF_OK);
        ASSERT_EQ(
            Api<T>::edit_spline(task, call.order, call.type, call.bc_type, apart.bc.data(), 0, nullptr, room.data(), 0),
            ORIN_DF_OK);
        EXPECT_EQ(call.constructor(task, 0, 0, 0), ORIN_DF_OK);
        room.resize(size);
        EXPECT_EQ(room, apart.coefficients) << call.order << call.type << " at " << at;
        orin_df_kernel_DeleteTask(&task);
      }
    }
  }
}

TYPED_TEST(Spline, MemoryRunsOut) {
  using T = TypeParam;
  const long before = faulty_core::live_blocks();
  for (const Call<T>& call : calls<T>) {
    for (const bool overlap : {false, true}) {
      Fit<T> fit(random_partition<T>(9, 2), 2, 0, 32);
      ASSERT_EQ(fit.build(call.constructor, call.order, call.type, call.bc_type, {T{1}, T{2}}), ORIN_DF_OK);
      if (overlap) {
        fit.coefficients.assign(fit.coefficients.size() + 18, T{0});
        ASSERT_EQ(Api<T>::edit_ptr(fit.task, ORIN_DF_Y, fit.coefficients.data()), ORIN_DF_OK);
        ASSERT_EQ(Api<T>::edit_ptr(fit.task, ORIN_DF_SCOEFF, fit.coefficients.data()), ORIN_DF_OK);
      }
      const long failures = faulty_core::fail_each([&](bool) {
        const long needed = faulty_core::live_blocks();
        const int32_t status = call.constructor(fit.task, 0, 0, 0);
        EXPECT_TRUE(status == ORIN_DF_OK || status == ORIN_DF_NO_MEMORY);
        EXPECT_EQ(faulty_core::live_blocks(), needed);
      });
      EXPECT_GE(failures, overlap ? 2 : 1);
      faulty_core::fail_at(0);
      EXPECT_EQ(call.constructor(fit.task, 0, 0, 0), ORIN_DF_NO_MEMORY);
      faulty_core::fail_at(-1);
    }
  }
  EXPECT_EQ(faulty_core::live_blocks(), before);
}

TYPED_TEST(Spline, StatusesInOrder) {
  using T = TypeParam;
  using A = Api<T>;
  const T* const never_read = reinterpret_cast<const T*>(std::uintptr_t{64});
  T storage[64];
  for (const Call<T>& call : calls<T>) EXPECT_EQ(call.constructor(nullptr, 0, 9, 0), ORIN_DF_NULL_TASK);
  Fit<T> fit(uniform_partition<T>(9), 1);
  DfTask1D& task = *fit.task;
  const auto describe = [&](int64_t nx, int64_t type, int64_t bc_type, const T* bc) {
    task.nx = nx;
    task.s_type = type;
    task.bc_type = bc_type;
    task.bc = bc;
  };
  ASSERT_EQ(A::edit_spline(&task, 4, 0, 0, nullptr, 0, nullptr, storage, 0), ORIN_DF_OK);

  for (const Family<T>& family : cubics<T>) {
    SCOPED_TRACE(family.name);
    const auto least = static_cast<int64_t>(family.least);
    describe(least - 1, 0, 12, nullptr);
    EXPECT_EQ(family.constructor(&task, 0, 9, 0), ORIN_DF_BAD_NX);
    for (const int64_t bc_type : {12, 24, 36, 48}) {
      describe(least, family.type, bc_type, nullptr);
      EXPECT_EQ(family.constructor(&task, 0, 0, 0), ORIN_DF_BAD_BC);
    }
    const bool natural = family.constructor == A::natural;
    EXPECT_EQ(family.constructor(&task, 0, 9, 0), natural ? ORIN_DF_BAD_METHOD : ORIN_DF_BAD_BC);
    for (const int64_t type : {0, 2, 3, 4, 5}) {
      describe(least, type, 64, nullptr);
      EXPECT_EQ(family.constructor(&task, 5, 0, 5), type == 0 || type == 3 ? ORIN_DF_BAD_BC : ORIN_DF_OK);
      for (const int64_t bc_type : {0, 1, 2, 5, 64, 128}) {
        describe(least, type, bc_type, never_read);
        EXPECT_EQ(family.constructor(&task, 0, 0, 0), ORIN_DF_OK);
      }
    }
  }
  describe(1, 0, 0, nullptr);
  EXPECT_EQ(A::linear(&task, 0, 1, 0), ORIN_DF_BAD_NX);
  describe(2, 9, 12, nullptr);
  EXPECT_EQ(A::linear(&task, 0, 1, 0), ORIN_DF_BAD_METHOD);
  EXPECT_EQ(A::linear(&task, 0, 0, 0), ORIN_DF_OK) << "asks for no conditions";
  for (const int64_t bc_type : {0, 1, 64, 129}) {
    describe(2, 0, bc_type, never_read);
    EXPECT_EQ(A::quadratic(&task, 0, 7, 0), ORIN_DF_BAD_BC);
  }
  describe(2, 0, 128, nullptr);
  EXPECT_EQ(A::quadratic(&task, 0, 0, 0), ORIN_DF_BAD_BC);
  describe(2, 2, 128, never_read);
  EXPECT_EQ(A::quadratic(&task, 0, 0, 0), ORIN_DF_BAD_METHOD);
  describe(2, 1, 48, nullptr);
  EXPECT_EQ(A::quadratic(&task, 0, 0, 0), ORIN_DF_BAD_BC);
  describe(2, 1, 64, nullptr);
  EXPECT_EQ(A::quadratic(&task, 0, 0, 0), ORIN_DF_OK);

  Fit<T> empty(uniform_partition<T>(9), 0), bare(uniform_partition<T>(9), 1);
  EXPECT_EQ(A::natural(empty.task, 0, 0, 0), ORIN_DF_OK) << "no functions, nothing to build";
  EXPECT_EQ(A::natural(bare.task, 0, 0, 0), ORIN_DF_BAD_SCOEFF);
  orin_df_kernel_iEditVal(empty.task, ORIN_DF_NY, 1);
  EXPECT_EQ(A::natural(empty.task, 0, 0, 0), ORIN_DF_BAD_Y);

  describe(5, 0, 0, nullptr);
  for (const auto& [ic_type, status] : {std::pair{1, ORIN_DF_BAD_IC}, std::pair{9, ORIN_DF_BAD_IC_TYPE}}) {
    task.ic_type = ic_type;
    EXPECT_EQ(A::hermite(&task, 0, 0, 0), status);
    EXPECT_EQ(A::default_cubic(&task, 0, 0, 0), status);
    EXPECT_EQ(A::natural(&task, 0, 0, 0), ORIN_DF_OK);
    for (const auto& [of, missing] :
         {std::pair{&task, 0}, {bare.task, ORIN_DF_BAD_SCOEFF}, {empty.task, ORIN_DF_BAD_Y}}) {
      of->ic_type = ic_type;
      EXPECT_EQ(A::hermite(of, 0, 0, 0), missing != 0 ? missing : status) << "arrays before conditions";
    }
  }
  describe(5, 1, 0, nullptr);
  task.ic_type = 8;
  EXPECT_EQ(A::quadratic(&task, 0, 0, 0), ORIN_DF_BAD_IC);

  describe(INT64_MAX, 0, 0, nullptr);
  task.ic_type = 0;
  for (const Family<T>& family : cubics<T>) EXPECT_EQ(family.constructor(&task, 0, 0, 0), ORIN_DF_NO_MEMORY);
  EXPECT_EQ(A::linear(&task, 0, 0, 0), ORIN_DF_NO_MEMORY);
}

}  // namespace
