// tour_data_fitting: a cubic spline through the monthly means, read day by day with its slope, and its integral.
// SPDX-License-Identifier: MIT
//
// Time is counted in months from January 1959; a mean stands at the middle of its month.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "mauna_loa_co2.h"
#include "orin/data_fitting.h"
#include "tour.h"

namespace {

constexpr int year = 1988, days = 366;
constexpr int first_month = 12 * (year - mauna_loa::first_year);

struct Spline {
  std::vector<double> middle, coefficients;
  DfTask1D* task = nullptr;

  Spline() : middle(mauna_loa::months), coefficients(4 * (mauna_loa::months - 1)) {
    for (int month = 0; month < mauna_loa::months; ++month) middle[static_cast<std::size_t>(month)] = month + 0.5;
    tour::exported<decltype(orin_df_kernel_dNewTask1D)>("orin_df_kernel_dNewTask1D")(
        &task, mauna_loa::months, middle.data(), ORIN_DF_UNIFORM, 1, mauna_loa::co2, 0, 0);
    tour::exported<decltype(orin_df_kernel_dEditPPSpline1D)>("orin_df_kernel_dEditPPSpline1D")(
        task, ORIN_DF_CUBIC, ORIN_DF_NATURAL, ORIN_DF_BC_NOT_A_KNOT, nullptr, ORIN_DF_NO_IC, nullptr,
        coefficients.data(), 0);
    tour::check("the spline is built", tour::exported<decltype(orin_df_kernel_dDFNaturalCubicSpline1D)>(
                                           "orin_df_kernel_dDFNaturalCubicSpline1D")(task, 0, 0, 0) == ORIN_DF_OK);
  }
  ~Spline() { tour::exported<decltype(orin_df_kernel_DeleteTask)>("orin_df_kernel_DeleteTask")(&task); }
  Spline(const Spline&) = delete;
  Spline& operator=(const Spline&) = delete;

  // Value and slope at each time, alternately.
  std::vector<double> at(const std::vector<double>& time) const {
    const int32_t value_and_slope[] = {1, 1};
    std::vector<double> r(2 * time.size());
    tour::exported<decltype(orin_df_kernel_dInterpolate1D)>("orin_df_kernel_dInterpolate1D")(
        task, static_cast<int64_t>(time.size()), time.data(), ORIN_DF_SORTED_SITES, 2, value_and_slope, nullptr,
        r.data(), 0, nullptr);
    return r;
  }

  double integral(double from, double to) const {
    double r = 0;
    tour::exported<decltype(orin_df_kernel_dIntegrate1D)>("orin_df_kernel_dIntegrate1D")(task, 1, &from, 0, &to, 0, &r,
                                                                                         0);
    return r;
  }
};

}  // namespace

void tour_data_fitting() {
  tour::heading("A cubic spline through the monthly means, day by day through 1988");
  const Spline spline;

  const std::vector<double> means = spline.at(spline.middle);
  bool met = true;
  for (std::size_t month = 0; month + 1 < mauna_loa::months; ++month) met &= means[2 * month] == mauna_loa::co2[month];
  tour::check("it meets every mean but the last to the bit", met);

  std::vector<double> day(days);
  for (int d = 0; d < days; ++d) day[static_cast<std::size_t>(d)] = first_month + 12.0 * (d + 0.5) / days;
  const std::vector<double> daily = spline.at(day);
  std::size_t highest = 0, rising = 0, falling = 0;
  for (std::size_t d = 0; d < days; ++d) {
    if (daily[2 * d] > daily[2 * highest]) highest = d;
    if (daily[2 * d + 1] > daily[2 * rising + 1]) rising = d;
    if (daily[2 * d + 1] < daily[2 * falling + 1]) falling = d;
  }
  const auto line = [&daily](const char* what, std::size_t d) {
    std::printf("  %-17s day %3d of the year: %.2f ppm, %+.3f ppm a month\n", what, static_cast<int>(d) + 1,
                daily[2 * d], daily[2 * d + 1]);
  };
  line("highest", highest);
  line("rises fastest", rising);
  line("falls fastest", falling);
  tour::check("the slope turns from up to down at the highest",
              daily[2 * highest - 1] > 0 && daily[2 * highest + 3] < 0);

  double sum = 0;
  for (int month = first_month; month < first_month + 12; ++month) sum += mauna_loa::co2[month];
  const double whole = spline.integral(first_month, first_month + 12);
  tour::check("integral over the year, sum of the months", whole, sum, 0.1);
  tour::check("and backwards the negative, to the bit", spline.integral(first_month + 12, first_month) == -whole);
}
