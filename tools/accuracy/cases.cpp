// cases: reference cases and digests for the tests, as text files.
// SPDX-License-Identifier: MIT
#include "tools/accuracy/cases.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include "vector_math/digest.h"

namespace accuracy {

using namespace orin::vector_math;

namespace {

std::FILE* open(const std::string& path) {
  std::FILE* file = std::fopen(path.c_str(), "w");
  if (file == nullptr) {
    std::perror(path.c_str());
    std::exit(1);
  }
  return file;
}

template <class T>
class CaseWriter {
 public:
  CaseWriter(const UnaryFunction<T>& function, std::FILE* file)
      : reference_(reference_of(function.function)),
        reports_underflow_(function.promise->reports_underflow),
        file_(file) {}

  void heading(const char* text) { std::fprintf(file_, "# %s\n", text); }
  void write(T x) {
    truth_.set(reference_, x);
    const T rounded = truth_.template rounded<T>();
    // In 1/4096 ulp; a result that is no finite number exceeds nothing.
    const long excess = std::isfinite(rounded) ? std::lround(4096 * truth_.excess_over(rounded)) : 0;
    constexpr int digits = 2 * sizeof(T);
    std::fprintf(file_, "%0*" PRIx64 " %0*" PRIx64 " %c%03lx %d\n", digits,
                 static_cast<std::uint64_t>(std::bit_cast<BitsOf<T>>(x)), digits,
                 static_cast<std::uint64_t>(std::bit_cast<BitsOf<T>>(rounded)), excess < 0 ? '-' : '+',
                 std::labs(excess), truth_.template status<T>(reports_underflow_));
  }
  int status(T x) {
    truth_.set(reference_, x);
    return truth_.template status<T>(reports_underflow_);
  }
  // Between two arguments of different status: four neighbours on each side of the change.
  void write_threshold(std::int64_t low, std::int64_t high) {
    const int before = status(from_ordinal<T>(low));
    while (high - low > 1) {
      const std::int64_t middle = low + (high - low) / 2;
      (status(from_ordinal<T>(middle)) == before ? low : high) = middle;
    }
    for (std::int64_t k = low - 3; k <= high + 3; ++k) write(from_ordinal<T>(k));
  }

 private:
  const Reference& reference_;
  bool reports_underflow_;
  std::FILE* file_;
  Truth truth_;
};

}  // namespace

template <class T>
void write_cases(const UnaryFunction<T>& function, const ScanResult<T>& result, const std::string& folder) {
  using Limits = std::numeric_limits<T>;
  std::FILE* file = open(folder + "/" + function.name + ".cases");
  std::fprintf(file, "# %s: argument, rounded result, excess in 1/4096 ulp, status; by tools/accuracy --cases %s\n",
               function.name, function.function);
  CaseWriter<T> cases(function, file);

  cases.heading("special arguments");
  for (T x : {T(0), T(1), Limits::denorm_min(), Limits::min(), Limits::epsilon(), Limits::max(), Limits::infinity()}) {
    cases.write(x);
    cases.write(-x);
  }
  cases.write(Limits::quiet_NaN());

  // The finite numbers in 512 steps of their order, that is in steps of exponents, both signs.
  const std::int64_t largest = ordinal(Limits::max());
  const std::int64_t step = largest / 256;
  cases.heading("neighbours of the thresholds");
  for (std::int64_t k = -256; k < 256; ++k) {
    const std::int64_t low = k * step, high = (k + 1) * step;
    if (cases.status(from_ordinal<T>(low)) != cases.status(from_ordinal<T>(high))) cases.write_threshold(low, high);
  }
  cases.heading("all exponents");
  for (std::int64_t k = -256; k < 256; ++k) cases.write(from_ordinal<T>(k * step + (k * k * 7919) % step));
  cases.heading("the usual domain");
  for (int k = 0; k < 256; ++k)
    cases.write(static_cast<T>(function.low() + (function.high() - function.low()) * (k + 0.618) / 256));
  for (int grade = 0; grade < grades; ++grade) {
    cases.heading((std::string("the worst found for ") + grade_names[grade]).c_str());
    for (std::size_t k = 0; k < 16 && k < result.by_ulp[grade].size(); ++k)
      cases.write(result.by_ulp[grade][k].argument);
  }
  std::fclose(file);
}

void write_digests(const std::string& folder) {
  _korSetMode(KOR_HA | KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF);
  std::FILE* file = open(folder + "/digests.txt");
  const auto write = [&](const auto& functions) {
    for (const auto& function : functions)
      for (int grade = 0; grade < grades; ++grade)
        std::fprintf(file, "%s %s %016" PRIx64 "\n", function.name, grade_names[grade],
                     digest(function.kernels[grade]));
  };
  write(unary_functions<float>());
  write(unary_functions<double>());
  std::fclose(file);
}

template void write_cases(const UnaryFunction<float>&, const ScanResult<float>&, const std::string&);
template void write_cases(const UnaryFunction<double>&, const ScanResult<double>&, const std::string&);

}  // namespace accuracy
