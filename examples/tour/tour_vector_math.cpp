// tour_vector_math: the exponential in three grades, errors and their callback, packing.
// SPDX-License-Identifier: MIT
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <vector>

#include "mauna_loa_co2.h"
#include "orin/vector_math.h"
#include "tour.h"

namespace {

using mauna_loa::co2;
using mauna_loa::months;

template <class T>
using Unary = void ORIN_CALL(int32_t, const T*, T*);

// Deviation from the mean in tens of ppm: arguments around 0.
template <class T>
std::vector<T> anomalies() {
  std::vector<T> out;
  for (double value : co2) out.push_back(static_cast<T>((value - mauna_loa::known::mean) / 10));
  return out;
}

template <class T>
double ulp_of(long double exact) {
  int exponent;
  std::frexp(static_cast<double>(exact), &exponent);
  return std::ldexp(1.0, exponent - std::numeric_limits<T>::digits);
}

// One line: the entry, two of its results, its worst error over the series, and whether that is within its bound.
template <class T>
double show_grade(const char* entry, const char* grade, double bound_in_ulp) {
  const std::vector<T> arguments = anomalies<T>();
  std::vector<T> results(arguments.size());
  tour::exported<Unary<T>>(entry)(months, arguments.data(), results.data());
  double worst = 0, sum = 0;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const long double exact = std::exp(static_cast<long double>(arguments[i]));
    worst = std::fmax(worst, static_cast<double>(std::fabs(results[i] - exact)) / ulp_of<T>(exact));
    sum += results[i];
  }
  std::printf("  %-12s %-21s %-19.16g %-19.16g %11.3f %10.3g   %s\n", entry, grade,
              static_cast<double>(results.front()), static_cast<double>(results.back()), worst, bound_in_ulp,
              tour::tally(worst <= bound_in_ulp));
  return sum;
}

void exponentials() {
  tour::heading("Exponentials of (ppm - mean) / 10, error against long double");
  std::printf("  %-12s %-21s %-19s %-19s %11s %10s\n", "entry", "grade", "January 1959", "December 1997", "worst ulp",
              "bound, ulp");
  constexpr double known_sum = mauna_loa::known::sum_of_exponentials;
  const double sum = show_grade<double>("_kordExp_HA", "high accuracy", 1);
  show_grade<double>("_kordExp_50", "low accuracy", std::ldexp(1.0, 53 - 50));
  show_grade<double>("_kordExp_26", "enhanced performance", std::ldexp(1.0, 53 - 26));
  show_grade<float>("_korsExp_HA", "high accuracy", 1);
  show_grade<float>("_korsExp_21", "low accuracy", std::ldexp(1.0, 24 - 21));
  show_grade<float>("_korsExp_11", "enhanced performance", std::ldexp(1.0, 24 - 11));
  tour::check("sum of the exponentials", sum, known_sum, 1e-12 * known_sum);
}

int reports = 0;

int32_t ORIN_CALL print_report(KorErrorContext* context) {
  ++reports;
  std::printf("  callback: %s, element %d, status %d: a = %g, result %g\n", context->funcName,
              static_cast<int>(context->index), static_cast<int>(context->status), context->a1, context->r1);
  if (context->status == KOR_STATUS_OVERFLOW) context->r1 = std::numeric_limits<double>::max();
  return 0;
}

void special_values() {
  tour::heading("Special values, statuses and a callback that replaces an overflow by the largest number");
  const auto set_callback = tour::exported<KorErrorCallBack ORIN_CALL(KorErrorCallBack)>("_korSetErrorCallBack");
  const auto set_mode = tour::exported<uint32_t ORIN_CALL(uint32_t)>("_korSetMode");
  const auto clear_status = tour::exported<int32_t ORIN_CALL()>("_korClearErrStatus");
  const auto exp = tour::exported<Unary<double>>("_kordExp");

  const uint32_t previous_mode = set_mode(KOR_ERRMODE_CALLBACK);
  set_callback(&print_report);
  const double infinity = std::numeric_limits<double>::infinity();
  const double arguments[] = {0, 1, 710, -746, infinity, -infinity, std::nan("")};
  double results[7];
  exp(7, arguments, results);
  for (int i = 0; i < 7; ++i) std::printf("  exp(%g) = %.17g\n", arguments[i], results[i]);
  tour::check("reports (overflow, underflow)", reports, 2, 0);
  tour::check("last status (underflow)", clear_status(), KOR_STATUS_UNDERFLOW, 0);
  tour::check("exp(0)", results[0], 1, 0);
  tour::check("exp(710) as replaced", results[2], std::numeric_limits<double>::max(), 0);
  set_callback(nullptr);
  set_mode(KOR_ERRMODE_IGNORE);
  exp(0, arguments, results);
  tour::check("status of an empty array", clear_status(), KOR_STATUS_BADSIZE, 0);
  set_mode(previous_mode);
}

double mean(const std::vector<double>& values) {
  double sum = 0;
  for (double value : values) sum += value;
  return sum / static_cast<double>(values.size());
}

void packing() {
  tour::heading("Packing: the Januaries by stride, the months above the mean by mask, and back");
  std::vector<double> januaries(months / 12);
  tour::exported<void ORIN_CALL(int64_t, const double*, int64_t, double*)>("_kordPackI")(months / 12, co2, 12,
                                                                                         januaries.data());
  tour::check("mean of the Januaries", mean(januaries), mauna_loa::known::january_mean, 1e-10);

  std::vector<int32_t> mask(months);
  std::size_t count = 0;
  for (int i = 0; i < months; ++i)
    count += static_cast<std::size_t>(mask[static_cast<std::size_t>(i)] = co2[i] > mauna_loa::known::mean);
  std::vector<double> above(count);
  tour::exported<void ORIN_CALL(int64_t, const double*, const int32_t*, double*)>("_kordPackM")(
      months, co2, mask.data(), above.data());
  tour::check("months above the mean", static_cast<double>(count), mauna_loa::known::months_above_mean, 0);
  tour::check("their mean", mean(above), mauna_loa::known::mean_of_months_above, 1e-10);

  std::vector<double> spread(months, 0.0);
  tour::exported<void ORIN_CALL(int64_t, const double*, double*, const int32_t*)>("_kordUnpackM")(
      months, above.data(), spread.data(), mask.data());
  bool restored = true;
  for (int i = 0; i < months; ++i) {
    const auto at = static_cast<std::size_t>(i);
    restored = restored && spread[at] == (mask[at] != 0 ? co2[i] : 0.0);
  }
  tour::check("unpacked to their months again", restored);
}

}  // namespace

void tour_vector_math() {
  exponentials();
  special_values();
  packing();
}
