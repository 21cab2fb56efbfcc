// data_fitting_bench: search, construction, evaluation and integration beside GSL, Boost, SciPy and plain loops.
// SPDX-License-Identifier: MIT
//
// Method    1000 points, 10^6 sites in one call; minimum over rounds in which the contenders take turns, so that a busy
//           machine disturbs all of them alike. Results are compared with the peer's first; a row prints WRONG if they
//           differ. ns per site, knot or pair of limits, and how many times the peer's time ours goes into.
// Boost     pchip for the Hermite cubic (its slopes are its own), cardinal_cubic_b_spline for uniform partitions
// SciPy     runs in its own process, bench/data_fitting_scipy.py, right after
// 32 bits   the Windows build has no GSL, Boost and SciPy: those rows time the module alone
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include "orin/data_fitting.h"

#if !defined(_WIN32)
#include <gsl/gsl_spline.h>

#include <boost/math/interpolators/cardinal_cubic_b_spline.hpp>
#include <boost/math/interpolators/pchip.hpp>
#define ORIN_BENCH_PEERS 1
#endif

namespace {

using Clock = std::chrono::steady_clock;
using Doubles = std::vector<double>;
using Cells = std::vector<int32_t>;

constexpr int points = 1000;
constexpr std::size_t sites = 1000000, cached = 8000;
constexpr int rounds = 25;

// Best nanoseconds of each contender, per item.
template <class... F>
std::array<double, sizeof...(F)> race(double items, F&&... contenders) {
  std::array<double, sizeof...(F)> best;
  best.fill(1e300);
  for (int round = 0; round < rounds; ++round) {
    std::size_t i = 0;
    const auto turn = [&](auto& call) {
      const auto start = Clock::now();
      call();
      const double time = std::chrono::duration<double, std::nano>(Clock::now() - start).count();
      best[i] = std::min(best[i], time / items);
      ++i;
    };
    (turn(contenders), ...);
  }
  return best;
}

void row(const char* what, double ours) { std::printf("%-44s %9.3f\n", what, ours); }

void row(const char* what, double ours, const char* peer, double theirs, bool right) {
  std::printf("%-44s %9.3f   %-28s %9.3f   x %.2f%s\n", what, ours, peer, theirs, theirs / ours,
              right ? "" : "   WRONG");
}

#if ORIN_BENCH_PEERS
bool close(const Doubles& a, const Doubles& b, double tolerance) {
  double worst = 0, scale = 1;
  for (std::size_t i = 0; i < b.size(); ++i) {
    worst = std::max(worst, std::fabs(a[i] - b[i]));
    scale = std::max(scale, std::fabs(b[i]));
  }
  return worst <= tolerance * scale;
}
#endif

struct Data {
  Doubles general, even, y, random, ascending;
  std::vector<float> even_float, random_float;

  Data() : general(points), even(points), y(points), random(sites) {
    std::mt19937_64 engine(1);
    std::uniform_real_distribution<double> unit(0, 1);
    for (double& v : general) v = unit(engine);
    std::sort(general.begin(), general.end());
    general.front() = 0;
    general.back() = 1;
    for (int i = 0; i < points; ++i) {
      even[static_cast<std::size_t>(i)] = i / (points - 1.0);
      y[static_cast<std::size_t>(i)] = std::sin(20 * general[static_cast<std::size_t>(i)]) + 0.1 * unit(engine);
    }
    for (double& v : random) v = unit(engine);
    ascending = random;
    std::sort(ascending.begin(), ascending.end());
    even_float.assign(even.begin(), even.end());
    random_float.assign(random.begin(), random.end());
  }
};

struct Spline {
  DfTask1D* task = nullptr;
  Doubles coefficients = Doubles(4 * points);

  Spline(const Doubles& x, const Doubles& y, int64_t xhint) {
    orin_df_kernel_dNewTask1D(&task, points, x.data(), xhint, 1, y.data(), 0, 0);
    natural();
  }
  ~Spline() { orin_df_kernel_DeleteTask(&task); }
  Spline(const Spline&) = delete;
  Spline& operator=(const Spline&) = delete;

  void describe(int64_t order, int64_t type, int64_t bc_type, const double* bc, const double* slopes = nullptr) {
    orin_df_kernel_dEditPPSpline1D(task, order, type, bc_type, bc, slopes != nullptr, slopes, coefficients.data(), 0);
  }
  void natural() {
    describe(4, ORIN_DF_NATURAL, ORIN_DF_BC_FREE_ENDS, nullptr);
    orin_df_kernel_dDFNaturalCubicSpline1D(task, 0, 0, 0);
  }
  void at(const Doubles& site, int64_t hint, std::vector<int32_t> asked, Doubles& r) const {
    orin_df_kernel_dInterpolate1D(task, static_cast<int64_t>(site.size()), site.data(), hint,
                                  static_cast<int64_t>(asked.size()), asked.data(), nullptr, r.data(), 0, nullptr);
  }
};

constexpr auto n = static_cast<int64_t>(sites);

// The plain loops that a careful user writes.
void truncate_all(const double* s, std::size_t count, double x0, double r, int32_t* cell) {
  for (std::size_t i = 0; i < count; ++i) cell[i] = static_cast<int32_t>((s[i] - x0) * r) + 1;
}

// The same with the cells of sites outside, as the search gives them.
void locate_all(const double* s, std::size_t count, double x0, double r, int32_t nx, int32_t* cell) {
  for (std::size_t i = 0; i < count; ++i) {
    const int32_t c = s[i] >= x0 ? static_cast<int32_t>((s[i] - x0) * r) + 1 : 0;
    cell[i] = c < nx ? c : nx;
  }
}

void merge(const Doubles& x, const Doubles& s, Cells& cell) {
  std::size_t c = 0;
  for (std::size_t i = 0; i < s.size(); ++i) {
    while (c < x.size() && x[c] <= s[i]) ++c;
    cell[i] = static_cast<int32_t>(c);
  }
}

void searches(const Data& data) {
  Cells ours(sites), theirs(sites);
  const double multiplier = points - 1;
  const auto hybrid = [&] {
    orin_df_kernel_dDFHybridSearch1D(points, data.general.data(), n, data.random.data(), ours.data(), 0);
  };
  const auto bound = race(sites, hybrid, [&] {
    for (std::size_t i = 0; i < sites; ++i) {
      theirs[i] = static_cast<int32_t>(std::upper_bound(data.general.begin(), data.general.end(), data.random[i]) -
                                       data.general.begin());
    }
  });
  row("search, general, random sites", bound[0], "std::upper_bound", bound[1], ours == theirs);
  const auto hundreds = race(sites, [&] {
    for (int64_t i = 0; i < n; i += 100) {
      orin_df_kernel_dDFHybridSearch1D(points, data.general.data(), 100, data.random.data() + i, ours.data() + i, 0);
    }
  });
  row("  the same in calls of 100 sites", hundreds[0], "std::upper_bound", bound[1], ours == theirs);

  const auto sorted = race(
      sites,
      [&] {
        int32_t position = 0;
        orin_df_kernel_dDFSortedSearch1D(points, data.general.data(), n, data.ascending.data(), &position, ours.data(),
                                         0);
      },
      [&] { merge(data.general, data.ascending, theirs); });
  row("search, general, sorted sites", sorted[0], "merging loop", sorted[1], ours == theirs);
#if ORIN_BENCH_PEERS
  gsl_interp_accel* accel = gsl_interp_accel_alloc();
  const auto accelerated = race(sites, [&] {
    for (std::size_t i = 0; i < sites; ++i) {
      theirs[i] = static_cast<int32_t>(gsl_interp_accel_find(accel, data.general.data(), points, data.ascending[i]));
    }
  });
  row("", sorted[0], "GSL accelerator", accelerated[0], true);
  gsl_interp_accel_free(accel);
#endif

  for (const std::size_t count : {cached, sites}) {
    const auto even = race(
        static_cast<double>(sites / count * count),
        [&] {
          for (std::size_t k = 0; k < sites / count; ++k) {
            orin_df_kernel_dDFUniformSearch1D(points, data.even.data(), static_cast<int64_t>(count), data.random.data(),
                                              multiplier, ours.data(), 0);
          }
        },
        [&] {
          for (std::size_t k = 0; k < sites / count; ++k) {
            truncate_all(data.random.data(), count, data.even[0], multiplier, theirs.data());
          }
        },
        [&] {
          for (std::size_t k = 0; k < sites / count; ++k) {
            locate_all(data.random.data(), count, data.even[0], multiplier, points, theirs.data());
          }
        });
    const bool same = std::equal(ours.begin(), ours.begin() + static_cast<std::ptrdiff_t>(count), theirs.begin());
    row(count == cached ? "search, uniform, 8000 sites" : "search, uniform", even[0], "unchecked loop", even[1], same);
    row("", even[0], "the rule as a loop", even[2], same);
  }
  const auto even_float = race(sites, [&] {
    orin_df_kernel_sDFUniformSearch1D(points, data.even_float.data(), n, data.random_float.data(),
                                      static_cast<float>(multiplier), ours.data(), 0);
  });
  row("search, uniform, float", even_float[0]);
  const auto quasi = race(sites, [&] {
    orin_df_kernel_dDFQuasiUniformSearch1D(points, data.even.data(), n, data.random.data(), multiplier, ours.data(), 0);
  });
  row("search, quasi-uniform", quasi[0]);
}

// A constructor repeated, per knot.
template <class Construct>
double construct(Construct build) {
  constexpr int repeats = 100;
  return race(double{points} * repeats, [&] {
    for (int i = 0; i < repeats; ++i) build();
  })[0];
}

void constructions(const Data& data) {
  Spline spline(data.general, data.y, 0), even(data.even, data.y, ORIN_DF_UNIFORM);
  const double ends[2] = {1, 0};
  const double natural = construct([&] { orin_df_kernel_dDFNaturalCubicSpline1D(spline.task, 0, 0, 0); });
  const double uniform = construct([&] { orin_df_kernel_dDFNaturalCubicSpline1D(even.task, 0, 0, 0); });
  spline.describe(4, ORIN_DF_AKIMA, ORIN_DF_BC_FREE_ENDS, nullptr);
  const double akima = construct([&] { orin_df_kernel_dDFAkimaCubicSpline1D(spline.task, 0, 0, 0); });
  const Doubles slopes(points - 2, 1.0);
  spline.describe(4, ORIN_DF_HERMITE, ORIN_DF_BC_FREE_ENDS, nullptr, slopes.data());
  const double hermite = construct([&] { orin_df_kernel_dDFHermiteCubicSpline1D(spline.task, 0, 0, 0); });
#if ORIN_BENCH_PEERS
  gsl_spline* cubic = gsl_spline_alloc(gsl_interp_cspline, points);
  gsl_spline* local = gsl_spline_alloc(gsl_interp_akima, points);
  row("construct natural cubic", natural, "GSL cspline",
      construct([&] { gsl_spline_init(cubic, data.general.data(), data.y.data(), points); }), true);
  row("construct natural cubic, uniform", uniform);
  row("construct Akima", akima, "GSL akima",
      construct([&] { gsl_spline_init(local, data.general.data(), data.y.data(), points); }), true);
  row("construct Hermite", hermite, "Boost pchip", construct([&] {
        Doubles x = data.general, y = data.y;
        boost::math::interpolators::pchip<Doubles> curve(std::move(x), std::move(y));
      }),
      true);
  gsl_spline_free(cubic);
  gsl_spline_free(local);
#else
  row("construct natural cubic", natural);
  row("construct natural cubic, uniform", uniform);
  row("construct Akima", akima);
  row("construct Hermite", hermite);
#endif
  spline.describe(4, ORIN_DF_BESSEL, ORIN_DF_BC_FREE_ENDS, nullptr);
  row("construct Bessel", construct([&] { orin_df_kernel_dDFBesselCubicSpline1D(spline.task, 0, 0, 0); }));
  spline.describe(3, ORIN_DF_DEFAULT, ORIN_DF_BC_MID_CELL, ends);
  row("construct quadratic", construct([&] { orin_df_kernel_dDFQuadraticSpline1D(spline.task, 0, 0, 0); }));
  spline.describe(3, ORIN_DF_SUBBOTIN, ORIN_DF_BC_FREE_ENDS, nullptr);
  row("construct Subbotin", construct([&] { orin_df_kernel_dDFQuadraticSpline1D(spline.task, 0, 0, 0); }));
  spline.describe(2, ORIN_DF_DEFAULT, ORIN_DF_BC_FREE_ENDS, nullptr);
  row("construct linear", construct([&] { orin_df_kernel_dDFLinearSpline1D(spline.task, 0, 0, 0); }));
}

void evaluations(const Data& data) {
  Spline spline(data.general, data.y, 0), even(data.even, data.y, ORIN_DF_UNIFORM);
  Doubles ours(2 * sites), theirs(2 * sites);
  const auto values = [&](const Spline& of, const Doubles& site, int64_t hint) {
    return race(sites, [&] { of.at(site, hint, {1}, ours); })[0];
  };
#if ORIN_BENCH_PEERS
  gsl_spline* cubic = gsl_spline_alloc(gsl_interp_cspline, points);
  gsl_interp_accel* accel = gsl_interp_accel_alloc();
  gsl_spline_init(cubic, data.general.data(), data.y.data(), points);
  const auto compare = [&](const char* what, const Doubles& site, int64_t hint, bool slope) {
    const std::size_t stride = slope ? 2 : 1;
    ours.resize(stride * sites);
    theirs.resize(stride * sites);
    const std::vector<int32_t> asked(stride, 1);
    const auto time = race(
        sites, [&] { spline.at(site, hint, asked, ours); },
        [&] {
          for (std::size_t i = 0; i < sites; ++i) {
            theirs[stride * i] = gsl_spline_eval(cubic, site[i], accel);
            if (slope) theirs[stride * i + 1] = gsl_spline_eval_deriv(cubic, site[i], accel);
          }
        });
    row(what, time[0], "GSL", time[1], close(ours, theirs, 1e-10));
  };
  compare("evaluate cubic, general, random sites", data.random, 0, false);
  compare("evaluate cubic, general, sorted sites", data.ascending, ORIN_DF_SORTED_SITES, false);
  compare("value and slope, general, random sites", data.random, 0, true);
  gsl_spline_free(cubic);
  gsl_interp_accel_free(accel);

  const double slopes[2] = {20, 0};
  even.describe(4, ORIN_DF_NATURAL, 12, slopes);
  orin_df_kernel_dDFNaturalCubicSpline1D(even.task, 0, 0, 0);
  const boost::math::interpolators::cardinal_cubic_b_spline<double> cardinal(data.y.data(), points, 0.0,
                                                                             1.0 / (points - 1), 20.0, 0.0);
  ours.resize(sites);
  theirs.resize(sites);
  const auto time = race(
      sites, [&] { even.at(data.random, 0, {1}, ours); },
      [&] {
        for (std::size_t i = 0; i < sites; ++i) theirs[i] = cardinal(data.random[i]);
      });
  row("evaluate cubic, uniform, random sites", time[0], "Boost cardinal cubic", time[1], close(ours, theirs, 1e-9));
  // The shortest way: no site outside, no doubt about the cell, functions of one kind.
  for (const std::size_t count : {sites, cached}) {
    const Doubles few(data.random.begin(), data.random.begin() + static_cast<std::ptrdiff_t>(count));
    Doubles evaluated(count), direct(count);
    const auto again = [&](auto pass) {
      return [=] {
        for (std::size_t k = 0; k < sites / count; ++k) pass();
      };
    };
    const auto index_and_evaluate = [&] {
      const double* const x = data.even.data();
      const double* const coefficients = static_cast<const double*>(even.task->scoeff[0]);
      for (std::size_t i = 0; i < count; ++i) {
        const int k = std::min(static_cast<int>((few[i] - x[0]) * (points - 1)), points - 2);
        const double* const c = coefficients + 4 * k;
        const double u = few[i] - x[k];
        direct[i] = ((c[3] * u + c[2]) * u + c[1]) * u + c[0];
      }
    };
    const auto plain = race(static_cast<double>(sites / count * count), again([&] { even.at(few, 0, {1}, evaluated); }),
                            again(index_and_evaluate));
    row(count == cached ? "evaluate cubic, uniform, 8000 sites" : "", plain[0], "direct index and Horner", plain[1],
        close(evaluated, direct, 1e-9));
  }
#else
  row("evaluate cubic, general, random sites", values(spline, data.random, 0));
  row("evaluate cubic, general, sorted sites", values(spline, data.ascending, ORIN_DF_SORTED_SITES));
  row("evaluate cubic, uniform, random sites", values(even, data.random, 0));
#endif
  spline.describe(2, ORIN_DF_DEFAULT, ORIN_DF_BC_FREE_ENDS, nullptr);
  orin_df_kernel_dDFLinearSpline1D(spline.task, 0, 0, 0);
  row("evaluate linear, general, sorted sites", values(spline, data.ascending, ORIN_DF_SORTED_SITES));
}

void integrals(const Data& data) {
  const Spline spline(data.general, data.y, 0);
  Doubles right = data.random, ours(sites);
  std::rotate(right.begin(), right.begin() + 777, right.end());
  const double time = race(sites, [&] {
    orin_df_kernel_dIntegrate1D(spline.task, n, data.random.data(), 0, right.data(), 0, ours.data(), 0);
  })[0];
#if ORIN_BENCH_PEERS
  gsl_spline* cubic = gsl_spline_alloc(gsl_interp_cspline, points);
  gsl_interp_accel* accel = gsl_interp_accel_alloc();
  gsl_spline_init(cubic, data.general.data(), data.y.data(), points);
  constexpr std::size_t few = 1000;
  ours.resize(few);
  Doubles theirs(few);
  const double gsl = race(few, [&] {
    for (std::size_t i = 0; i < few; ++i) {
      const double a = std::min(data.random[i], right[i]), b = std::max(data.random[i], right[i]);
      theirs[i] = gsl_spline_eval_integ(cubic, a, b, accel) * (data.random[i] <= right[i] ? 1 : -1);
    }
  })[0];
  row("integrals over random limits", time, "GSL", gsl, close(ours, theirs, 1e-12));
  gsl_spline_free(cubic);
  gsl_interp_accel_free(accel);
#else
  row("integrals over random limits", time);
#endif
}

}  // namespace

int main() {
  const Data data;
  std::printf("%d points, %zu sites; ns per site, knot or pair of limits\n", points, sites);
  searches(data);
  constructions(data);
  evaluations(data);
  integrals(data);
  std::fflush(stdout);
#if ORIN_BENCH_PEERS
  if (std::system("/usr/bin/python3 -B " ORIN_SOURCE_DIR "/bench/data_fitting_scipy.py") != 0) {
    std::printf("SciPy: SKIPPED, python3-scipy is not installed\n");
  }
#endif
}
