// tour_conv: a series smoothed by both methods, and a delay found by correlation.
// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "orin/conv.h"
#include "tour.h"

namespace {

using Series = std::vector<double>;

// Runs one task on dense double data: the `length` outputs from position `start` on.
Series run_task(std::int32_t kind, std::int32_t mode, const Series& x, const Series& y, std::int32_t start,
                std::int32_t length) {
  const auto n = static_cast<std::int32_t>(x.size()), m = static_cast<std::int32_t>(y.size());
  Series z(static_cast<std::size_t>(length));
  ConvTask* task = nullptr;
  const auto create = tour::exported<decltype(__junNewTask)>("__junNewTask");
  const auto edit = tour::exported<decltype(__junEditTask)>("__junEditTask");
  const auto exec = tour::exported<decltype(__junExec)>("__junExec");
  const auto remove = tour::exported<decltype(__junDeleteTask)>("__junDeleteTask");
  create(&task, kind, 0, mode, ORIN_CONV_VALUE_REAL, ORIN_CONV_PRECISION_DOUBLE, 1, &n, &m, &length);
  edit(task, ORIN_CONV_EDIT_START, &start);
  tour::check("status of the task", exec(task, x.data(), nullptr, y.data(), nullptr, z.data(), nullptr), ORIN_CONV_OK,
              0);
  remove(&task);
  return z;
}

// Weights of a Gaussian over ten years and a month, summing to 1.
Series gaussian_filter() {
  constexpr int half = 60;
  Series weights(2 * half + 1);
  double sum = 0;
  for (int k = -half; k <= half; ++k) sum += weights[static_cast<std::size_t>(k + half)] = std::exp(-k * k / 800.0);
  for (double& weight : weights) weight /= sum;
  return weights;
}

void smoothing(const Series& series) {
  tour::heading("Smoothing: a Gaussian filter of 121 months by direct sums and by FFT");
  const Series filter = gaussian_filter();
  // Only positions at which the whole filter lies inside the series.
  const auto taps = static_cast<std::int32_t>(filter.size());
  const auto length = static_cast<std::int32_t>(series.size()) - taps + 1;
  const Series direct = run_task(ORIN_CONV_KIND_CONVOLUTION, ORIN_CONV_MODE_DIRECT, series, filter, taps - 1, length);
  const Series fft = run_task(ORIN_CONV_KIND_CONVOLUTION, ORIN_CONV_MODE_FFT, series, filter, taps - 1, length);
  double difference = 0, error = 0;
  for (std::size_t i = 0; i < direct.size(); ++i) {
    double plain = 0;
    for (std::size_t k = 0; k < filter.size(); ++k) plain += filter[k] * series[i + filter.size() - 1 - k];
    difference = std::fmax(difference, std::fabs(direct[i] - fft[i]));
    error = std::fmax(error, std::fabs(direct[i] - plain));
  }
  std::printf("  smoothed: %.3f ppm in the first full window, %.3f in the last\n", direct.front(), direct.back());
  tour::check("largest difference between the methods, ppm", difference, 0, 1e-11);
  tour::check("largest difference from a plain loop, ppm", error, 0, 1e-11);
  tour::check("the seasons are gone: every month rises", std::is_sorted(direct.begin(), direct.end()));
}

void delay(const Series& series) {
  constexpr std::int32_t months_late = 31;
  tour::heading("Delay: a station that reports 31 months late, found by correlation");
  // What each month changed more than the same month a year before: trend and seasons are out.
  Series news;
  for (std::size_t i = 0; i + 13 < series.size(); ++i)
    news.push_back((series[i + 13] - series[i + 12]) - (series[i + 1] - series[i]));
  const Series early(news.begin() + months_late, news.end()), late(news.begin(), news.end() - months_late);
  const auto n = static_cast<std::int32_t>(early.size());
  // late[k + 31] = early[k]: the correlation of early with late peaks at position 31. Positions begin at 1 - n.
  for (const std::int32_t mode : {ORIN_CONV_MODE_DIRECT, ORIN_CONV_MODE_FFT}) {
    const Series z = run_task(ORIN_CONV_KIND_CORRELATION, mode, early, late, 1 - n, 2 * n - 1);
    const auto peak = std::max_element(z.begin(), z.end()) - z.begin();
    tour::check(mode == ORIN_CONV_MODE_DIRECT ? "delay in months, direct" : "delay in months, FFT",
                static_cast<double>(peak + 1 - n), months_late, 0);
  }
}

}  // namespace

void tour_conv(const double* series, int count) {
  const Series values(series, series + count);
  smoothing(values);
  delay(values);
}
