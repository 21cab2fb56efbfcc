// profile: the error of a function's kernels along its ordinary domain, for plots.
// SPDX-License-Identifier: MIT
#include "tools/accuracy/profile.h"

#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

namespace accuracy {

using namespace orin::vector_math;

namespace {

constexpr int stretches = 240;
constexpr int samples = 2048;  // of each stretch

template <class T>
double error_in_ulp(T result, Wide<T> exact) {
  if (!std::isfinite(exact) || !std::isfinite(result)) return 0;
  const int exponent = exact == 0 ? lowest_spacing<T> : std::ilogb(exact) + 1 - std::numeric_limits<T>::digits;
  return static_cast<double>(
      std::ldexp(std::fabs(static_cast<Wide<T>>(result) - exact), -std::max(exponent, lowest_spacing<T>)));
}

}  // namespace

template <class T>
void write_profile(const RealFunction<T>& function, const std::string& folder) {
  const std::string path = folder + "/" + function.label() + ".dat";
  std::FILE* file = std::fopen(path.c_str(), "w");
  if (file == nullptr) {
    std::perror(path.c_str());
    std::exit(1);
  }
  std::mt19937_64 random(20261121);
  const double low = function.low(), width = (static_cast<double>(function.high()) - low) / stretches;
  std::vector<T> a(samples), b(samples), result(samples);
  for (int k = 0; k < stretches; ++k) {
    std::uniform_real_distribution<double> first(low + k * width, low + (k + 1) * width);
    std::uniform_real_distribution<double> second(function.promise->second_low, function.promise->second_high);
    for (int i = 0; i < samples; ++i) {
      a[i] = static_cast<T>(first(random));
      b[i] = function.shape == RealFunction<T>::Shape::scalar && i > 0 ? b[0] : static_cast<T>(second(random));
    }
    std::fprintf(file, "%.6g", low + (k + 0.5) * width);
    for (int grade = 0; grade < grades; ++grade) {
      function.call(grade, samples, a.data(), b.data(), result.data());
      double worst = 0;
      for (int i = 0; i < samples; ++i)
        worst = std::max(
            worst, error_in_ulp(result[i], function.quick(static_cast<Wide<T>>(a[i]), static_cast<Wide<T>>(b[i]))));
      std::fprintf(file, " %.4g", worst);
    }
    std::fputc('\n', file);
  }
  std::fclose(file);
}

template void write_profile(const RealFunction<float>&, const std::string&);
template void write_profile(const RealFunction<double>&, const std::string&);

}  // namespace accuracy
