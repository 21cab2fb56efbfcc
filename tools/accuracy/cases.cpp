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
  CaseWriter(const RealFunction<T>& function, std::FILE* file)
      : function_(function), file_(file), truth_(*function.promise) {}

  void heading(const std::string& text) { std::fprintf(file_, "# %s\n", text.c_str()); }
  void write(Point<T> x) {
    truth_.set(x);
    const T rounded = truth_.template rounded<T>();
    // In 1/4096 ulp; a result that is no finite number exceeds nothing.
    const long excess = std::isfinite(rounded) ? std::lround(4096 * truth_.excess_over(rounded)) : 0;
    print(x.a);
    if (function_.inputs() == 2) print(x.b);
    print(rounded);
    std::fprintf(file_, "%c%03lx %d\n", excess < 0 ? '-' : '+', std::labs(excess),
                 truth_.template status<T>(*function_.promise));
  }
  int status(Point<T> x) {
    truth_.set(x);
    return truth_.template status<T>(*function_.promise);
  }
  // Between two arguments of different status: four neighbours on each side of the change.
  void write_threshold(std::int64_t low, std::int64_t high, T b) {
    const int before = status({from_ordinal<T>(low), b});
    while (high - low > 1) {
      const std::int64_t middle = low + (high - low) / 2;
      (status({from_ordinal<T>(middle), b}) == before ? low : high) = middle;
    }
    for (std::int64_t k = low - 3; k <= high + 3; ++k) write({from_ordinal<T>(k), b});
  }

 private:
  void print(T x) {
    std::fprintf(file_, "%0*" PRIx64 " ", static_cast<int>(2 * sizeof(T)),
                 static_cast<std::uint64_t>(std::bit_cast<BitsOf<T>>(x)));
  }

  const RealFunction<T>& function_;
  std::FILE* file_;
  Truth truth_;
};

}  // namespace

template <class T>
void write_cases(const RealFunction<T>& function, const ScanResult<T>& result, const std::string& folder) {
  using Limits = std::numeric_limits<T>;
  std::FILE* file = open(folder + "/" + function.label() + ".cases");
  std::fprintf(file, "# %s: arguments, rounded result, excess in 1/4096 ulp, status; by tools/accuracy --cases %s\n",
               function.label().c_str(), function.function);
  CaseWriter<T> cases(function, file);
  const double second_low = function.promise->second_low, second_high = function.promise->second_high;
  // Second arguments where the first ones run: a few, in turn.
  const auto second = [&](std::int64_t k) {
    return function.inputs() == 1
               ? T(0)
               : static_cast<T>(second_low +
                                (second_high - second_low) * static_cast<double>((k * 37 % 101 + 101) % 101) / 101);
  };

  cases.heading("special arguments");
  std::vector<T> specials = {Limits::quiet_NaN()};
  for (T x : {T(0), T(0.5), T(1), T(2), T(3), Limits::denorm_min(), Limits::min(), Limits::epsilon(), Limits::max(),
              Limits::infinity()}) {
    specials.push_back(x);
    specials.push_back(-x);
  }
  for (T a : specials)
    for (T b : function.inputs() == 1 ? std::vector<T>{0} : specials) cases.write({a, b});

  // The finite numbers in 512 steps of their order, that is in steps of exponents, both signs.
  const std::int64_t step = ordinal(Limits::max()) / 256;
  cases.heading("neighbours of the thresholds");
  for (std::int64_t k = -256; k < 256; ++k) {
    const std::int64_t low = k * step, high = (k + 1) * step;
    const T b = second(7);
    if (cases.status({from_ordinal<T>(low), b}) != cases.status({from_ordinal<T>(high), b}))
      cases.write_threshold(low, high, b);
  }
  cases.heading("all exponents");
  for (std::int64_t k = -256; k < 256; ++k) cases.write({from_ordinal<T>(k * step + (k * k * 7919) % step), second(k)});
  cases.heading("the ordinary domain");
  for (int k = 0; k < 256; ++k)
    cases.write({static_cast<T>(function.low() + (function.high() - function.low()) * (k + 0.618) / 256), second(k)});
  for (int grade = 0; grade < grades; ++grade) {
    cases.heading(std::string("the worst found for ") + grade_names[grade]);
    for (std::size_t k = 0; k < 16 && k < result.by_ulp[grade].size(); ++k) cases.write(result.by_ulp[grade][k].point);
    for (std::size_t k = 0; k < 8 && k < result.subnormal[grade].size(); ++k)
      cases.write(result.subnormal[grade][k].point);
  }
  std::fclose(file);
}

void write_digests(const std::string& folder) {
  _korSetMode(KOR_HA | KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF);
  std::FILE* file = open(folder + "/digests.txt");
  const auto write = [&](const auto& functions) {
    for (const auto& function : functions)
      for (int grade = 0; grade < grades; ++grade)
        std::fprintf(file, "%s %s %016" PRIx64 "\n", function.label().c_str(), grade_names[grade],
                     digest(function, grade));
  };
  write(real_functions<float>());
  write(real_functions<double>());
  std::fclose(file);
}

template void write_cases(const RealFunction<float>&, const ScanResult<float>&, const std::string&);
template void write_cases(const RealFunction<double>&, const ScanResult<double>&, const std::string&);

}  // namespace accuracy
