// tour_functions: a table of functions with the worst error observed and the speed measured on the spot; complex roots.
// SPDX-License-Identifier: MIT
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "orin/vector_math.h"
#include "tour.h"

namespace {

using Unary = void ORIN_CALL(int32_t, const double*, double*);
using Binary = void ORIN_CALL(int32_t, const double*, const double*, double*);

constexpr int elements = 1000;

struct Row {
  const char* name;
  double low, high;                   // the arguments are spread over this
  long double (*exact)(long double);  // of one argument
  long double (*exact2)(long double, long double) = nullptr;
  double low2 = 0, high2 = 0;
};

constexpr Row rows[] = {
    {"Exp", -20, 20, std::exp},
    {"Expm1", -5, 5, std::expm1},
    {"Ln", 0.01, 100, std::log},
    {"Log10", 0.01, 100, std::log10},
    {"Log1p", -0.9, 10, std::log1p},
    {"Pow", 0.1, 10, nullptr, std::pow, -10, 10},
    {"Sqrt", 0, 100, std::sqrt},
    {"Cbrt", -100, 100, std::cbrt},
    {"Hypot", -10, 10, nullptr, std::hypot, -10, 10},
    {"Sin", -10, 10, std::sin},
    {"Cos", -10, 10, std::cos},
    {"Tan", -1.5, 1.5, std::tan},
    {"Asin", -1, 1, std::asin},
    {"Acos", -1, 1, std::acos},
    {"Atan", -10, 10, std::atan},
    {"Atan2", -10, 10, nullptr, std::atan2, -10, 10},
    {"Sinh", -10, 10, std::sinh},
    {"Cosh", -10, 10, std::cosh},
    {"Tanh", -5, 5, std::tanh},
    {"Asinh", -10, 10, std::asinh},
    {"Acosh", 1, 100, std::acosh},
    {"Atanh", -0.99, 0.99, std::atanh},
    {"Erf", -3, 3, std::erf},
    {"Erfc", -3, 8, std::erfc},
    {"LGamma", 3, 100, std::lgamma},
    {"TGamma", 0.5, 20, std::tgamma},
};

double error_in_ulp(double result, long double exact) {
  int exponent;
  std::frexp(static_cast<double>(exact), &exponent);
  return static_cast<double>(std::fabs(result - exact)) /
         std::ldexp(1.0, exponent - std::numeric_limits<double>::digits);
}

// Elements per microsecond, the best of some repetitions.
template <class Call>
double speed(const Call& call) {
  using Clock = std::chrono::steady_clock;
  constexpr int calls = 40;
  double best = 0;
  for (int repetition = 0; repetition < 20; ++repetition) {
    const auto start = Clock::now();
    for (int k = 0; k < calls; ++k) call();
    const std::chrono::duration<double, std::micro> elapsed = Clock::now() - start;
    if (elapsed.count() > 0) best = std::max(best, calls * elements / elapsed.count());
  }
  return best;
}

// The 48th roots of unity by cos + i sin of the angle, and as powers of the first one.
void roots_of_unity() {
  constexpr int count = 48;
  const double turn = 2 * std::acos(-1.0);
  double angles[count];
  KorComplex16 base[count], exponent[count], by_angle[count], by_power[count];
  for (int k = 0; k < count; ++k) {
    angles[k] = turn * k / count;
    exponent[k] = {static_cast<double>(k), 0};
  }
  const auto cis = tour::exported<void ORIN_CALL(int32_t, const double*, KorComplex16*)>("_korzCIS");
  const auto pow =
      tour::exported<void ORIN_CALL(int32_t, const KorComplex16*, const KorComplex16*, KorComplex16*)>("_korzPow");
  cis(count, angles, by_angle);
  for (KorComplex16& first : base) first = by_angle[1];
  pow(count, base, exponent, by_power);
  double largest = 0;
  for (int k = 0; k < count; ++k)
    largest = std::max(largest, std::hypot(by_angle[k].re - by_power[k].re, by_angle[k].im - by_power[k].im));
  std::printf("\n");
  tour::check("roots of unity, CIS less Pow", largest, 0, 1e-14);
}

}  // namespace

void tour_functions() {
  tour::heading("Functions in double: worst error over 1000 arguments in ulp, elements per microsecond here and now");
  std::printf("  %-12s %13s %13s %13s   %8s %8s %8s\n", "", "high accuracy", "low accuracy", "enhanced", "high", "low",
              "enhanced");
  for (const Row& row : rows) {
    std::vector<double> a(elements), b(elements), r(elements);
    for (std::size_t i = 0; i < elements; ++i) {
      a[i] = row.low + (row.high - row.low) * (static_cast<double>(i) + 0.5) / elements;
      b[i] = row.low2 + (row.high2 - row.low2) * static_cast<double>(i * 617 % elements) / elements;
    }
    struct {
      const char* suffix;
      double bound;  // in ulp: HA below 1, LA and EP relative
      double error, speed;
    } grades[] = {{"_HA", 1, 0, 0}, {"_50", std::ldexp(1.0, 53 - 50), 0, 0}, {"_26", std::ldexp(1.0, 53 - 26), 0, 0}};
    bool kept = true;
    for (auto& grade : grades) {
      const std::string entry = std::string("_kord") + row.name + grade.suffix;
      const auto call = [&] {
        if (row.exact2 != nullptr)
          tour::exported<Binary>(entry.c_str())(elements, a.data(), b.data(), r.data());
        else
          tour::exported<Unary>(entry.c_str())(elements, a.data(), r.data());
      };
      grade.speed = speed(call);
      for (std::size_t i = 0; i < elements; ++i) {
        const long double exact = row.exact2 != nullptr ? row.exact2(a[i], b[i]) : row.exact(a[i]);
        grade.error = std::max(grade.error, error_in_ulp(r[i], exact));
      }
      kept = kept && grade.error <= grade.bound;
    }
    std::printf("  %-12s %13.3f %13.3f %13.0f   %8.0f %8.0f %8.0f   %s\n", row.name, grades[0].error, grades[1].error,
                grades[2].error, grades[0].speed, grades[1].speed, grades[2].speed, tour::tally(kept));
  }
  roots_of_unity();
}
