// tour_summary_stats: the series summarised year by year, and its quantiles as a stream.
// SPDX-License-Identifier: MIT
//
// The months are the observations and the years the variables, one observation per row: row m holds month m of every
// year.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "co2_by_year.h"
#include "mauna_loa_co2.h"
#include "orin/summary_stats.h"
#include "tour.h"

namespace {

using mauna_loa::co2;
using mauna_loa::months;

constexpr int32_t months_per_year = 12, years = months / months_per_year;
constexpr int32_t observation_rows = ORIN_SS_OBSERVATION_ROWS, variable_rows = ORIN_SS_VARIABLE_ROWS;

using Kernel = int32_t ORIN_CALL(SSTask*, uint64_t, int32_t);

// The rows of the table that is printed and checked, one value per year each.
struct Summary {
  std::vector<double> mean = std::vector<double>(years), variance = mean, third = mean, skewness = mean, minimum = mean,
                      maximum = mean;
  std::vector<double> quartiles = std::vector<double>(3 * years);
  std::vector<double> covariance = std::vector<double>(years * years), correlation = covariance;
};

bool summarise(const std::vector<double>& rows, Summary& out) {
  constexpr int32_t order_count = 3;
  const double orders[order_count] = {0.25, 0.5, 0.75};
  SSTask* task = nullptr;
  bool good = tour::exported<decltype(__jundSSNewTask)>("__jundSSNewTask")(
                  &task, &years, &months_per_year, &observation_rows, rows.data(), nullptr, nullptr, 0) == 0;
  tour::exported<decltype(__jundSSEditMoments)>("__jundSSEditMoments")(task, out.mean.data(), nullptr, nullptr, nullptr,
                                                                       out.variance.data(), out.third.data(), nullptr);
  const auto edit = tour::exported<decltype(__jundSSEditTask)>("__jundSSEditTask");
  edit(task, 15, out.skewness.data());
  edit(task, 16, out.minimum.data());
  edit(task, 17, out.maximum.data());
  tour::exported<decltype(__jundSSEditCovCor)>("__jundSSEditCovCor")(
      task, nullptr, out.covariance.data(), &variable_rows, out.correlation.data(), &variable_rows);
  tour::exported<decltype(__jundSSEditQuantiles)>("__jundSSEditQuantiles")(task, &order_count, orders,
                                                                           out.quartiles.data(), nullptr, nullptr);
  good = good && tour::exported<Kernel>("_jundSSBasic")(task, ORIN_SS_SKEWNESS | ORIN_SS_CORRELATION, 1) == 0;
  good = good && tour::exported<Kernel>("_jundSSMinmax")(task, ORIN_SS_MINIMUM | ORIN_SS_MAXIMUM, 1) == 0;
  good = good && tour::exported<Kernel>("_jundSSQuantiles")(task, ORIN_SS_QUANTILES, 0) == 0;
  return tour::exported<decltype(__junSSDeleteTask)>("__junSSDeleteTask")(&task) == 0 && good;
}

// The median of all months, fed year by year, with ranks off by at most 1 % of what was seen.
double streamed_median() {
  constexpr int32_t one = 1;
  const double half = 0.5, eps = 0.01;
  double median = 0;
  SSTask* task = nullptr;
  tour::exported<decltype(__jundSSNewTask)>("__jundSSNewTask")(&task, &one, &months_per_year, &variable_rows, co2,
                                                               nullptr, nullptr, 0);
  tour::exported<decltype(__jundSSEditStreamQuantiles)>("__jundSSEditStreamQuantiles")(task, &one, &half, &median, &one,
                                                                                       &eps);
  for (int32_t year = 0; year < years; ++year) {
    tour::exported<decltype(__jundSSEditTask)>("__jundSSEditTask")(task, 3, co2 + year * months_per_year);
    tour::exported<Kernel>("_jundSSStreamQuantiles")(task, ORIN_SS_STREAM_QUANTILES, 0);
  }
  tour::exported<decltype(__junSSDeleteTask)>("__junSSDeleteTask")(&task);
  return median;
}

}  // namespace

void tour_summary_stats() {
  tour::heading("Summary statistics by year, ppm");
  std::vector<double> rows;
  for (int32_t month = 0; month < months_per_year; ++month) {
    for (int32_t year = 0; year < years; ++year) rows.push_back(co2[year * months_per_year + month]);
  }
  Summary s;
  tour::check("every kernel succeeds", summarise(rows, s));

  double worst = 0;
  std::printf("  %6s %9s %9s %9s %9s %9s %9s %9s %9s\n", "year", "mean", "variance", "minimum", "quartile", "median",
              "quartile", "maximum", "skewness");
  for (std::size_t y = 0; y < years; ++y) {
    const mauna_loa::YearSummary& known = mauna_loa::known_years[y];
    const double* q = &s.quartiles[3 * y];
    const double computed[] = {s.mean[y], s.variance[y], s.minimum[y], q[0], q[1], q[2], s.maximum[y], s.skewness[y]};
    const double expected[] = {known.mean,   known.variance,       known.minimum, known.lower_quartile,
                               known.median, known.upper_quartile, known.maximum, known.skewness};
    for (int k = 0; k < 8; ++k) worst = std::fmax(worst, std::fabs(computed[k] - expected[k]));
    if (y % 6 != 0 && y + 1 != years) continue;
    std::printf("  %6d", mauna_loa::first_year + static_cast<int>(y));
    for (const double value : computed) std::printf(" %9.4f", value);
    std::printf("\n");
  }
  tour::check("largest difference from R over all years", worst, 0, 1e-11);
  tour::check("correlation of the first and the last year", s.correlation[years - 1], mauna_loa::known_correlation,
              1e-13);

  const double median = streamed_median();
  int below = 0;
  for (const double value : co2) below += value < median ? 1 : 0;
  tour::check("months below the streamed median", below, (months - 1) / 2.0, 0.01 * months);
}
