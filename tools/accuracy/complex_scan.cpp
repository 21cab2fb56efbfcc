// complex_scan: the search for the worst errors of complex functions, and their reference cases.
// SPDX-License-Identifier: MIT
#include "tools/accuracy/complex_scan.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "tools/accuracy/complex_truths.h"
#include "tools/accuracy/random.h"

namespace accuracy {

using namespace orin::vector_math;

MpcFunction complex_truth_of(const ComplexPromise& promise) {
  struct {
    const char* function;
    MpcFunction truth;
  } const truths[] = {
#define ORIN_COMPLEX_CATALOG(F, truth, ...) {#F, truth},
#include "vector_math/complex_catalog.def"
#undef ORIN_COMPLEX_CATALOG
  };
  for (const auto& row : truths)
    if (std::strcmp(row.function, promise.function) == 0) return row.truth;
  std::abort();
}

namespace {

constexpr std::size_t kept = 32;

template <class T>
class Points {
 public:
  using Function = ComplexFunction<T>;
  using Z = typename Function::Z;
  Points(const Function& function, std::uint64_t seed) : function_(function), random_(seed) {}

  // A point of kind 0 to 4, as the head of complex_scan.h lists them.
  Z next(std::uint64_t kind) {
    const double usual = function_.promise->usual;
    Z z{};
    switch (kind) {
      case 0:
        z = {any_exponent(), any_exponent()};
        break;
      case 1:
        z = {static_cast<T>(uniform(-usual, usual)), static_cast<T>(uniform(-usual, usual))};
        break;
      case 2: {
        z = {static_cast<T>(uniform(-usual, usual)), near_zero()};
        if (random_.next() % 2 == 0) std::swap(z.re, z.im);
        break;
      }
      case 3: {
        const double angle = uniform(-3.2, 3.2), radius = 1 + static_cast<double>(near_zero());
        z = {static_cast<T>(radius * std::cos(angle)), static_cast<T>(radius * std::sin(angle))};
        break;
      }
      default: {
        z = {static_cast<T>(1 + static_cast<double>(near_zero())), near_zero()};
        if (random_.next() % 2 == 0) z.re = -z.re;
        if (random_.next() % 2 == 0) std::swap(z.re, z.im);
      }
    }
    return function_.shape == Function::Shape::from_real ? Z{z.re, 0} : z;
  }
  Z near(Z z) {
    const bool real = function_.shape == Function::Shape::from_real;
    return {near(z.re), real ? z.im : near(z.im)};
  }
  std::uint64_t random() { return random_.next(); }

 private:
  double uniform(double low, double high) { return low + (high - low) * random_.uniform(); }
  T signed_power(double exponent) {
    const auto magnitude = static_cast<T>(std::exp2(exponent));
    return random_.next() % 2 == 0 ? magnitude : -magnitude;
  }
  T any_exponent() { return signed_power(uniform(function_.low(), function_.high())); }
  T near_zero() {
    return random_.next() % 16 == 0 ? T(0) : signed_power(-uniform(0, 2 * std::numeric_limits<T>::digits));
  }
  T near(T x) {
    if (random_.next() % 4 == 0) return x;
    const auto distance = static_cast<std::int64_t>(random_.next() >> (1 + random_.next() % 63)) %
                          (INT64_C(1) << (sizeof(T) == 8 ? 48 : 20));
    const T y = from_ordinal<T>(ordinal(x) + (random_.next() % 2 == 0 ? distance : -distance));
    return std::isfinite(y) ? y : x;
  }

  const Function& function_;
  Random random_;
};

// The largest few of what is offered.
template <class T>
class Largest {
 public:
  void offer(const ComplexFinding<T>& finding, double error) {
    if (entries_.size() == kept && error <= entries_.back().first) return;
    const auto at = std::find_if(entries_.begin(), entries_.end(), [&](const auto& e) { return e.first < error; });
    entries_.insert(at, {error, finding});
    if (entries_.size() > kept) entries_.pop_back();
  }
  void merge(const Largest& other) {
    for (const auto& [error, finding] : other.entries_) offer(finding, error);
  }
  std::vector<ComplexFinding<T>> findings() const {
    std::vector<ComplexFinding<T>> out;
    for (const auto& entry : entries_) out.push_back(entry.second);
    return out;
  }

 private:
  std::vector<std::pair<double, ComplexFinding<T>>> entries_;
};

template <class T>
struct Scanner {
  using Z = typename ComplexFunction<T>::Z;
  const ComplexFunction<T>& function;
  Points<T> points;
  Largest<T> by_modulus[grades], by_part[grades];
  std::int64_t count = 0;

  void judge(ComplexTruth<T>& truth, Z a, Z b) {
    ++count;
    truth.set(a, b);
    if (!truth.is_finite()) return;
    for (int grade = 0; grade < grades; ++grade) {
      const Z y = function.call(grade, a, b);
      ComplexFinding<T> finding{a, b, std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
      if (std::isfinite(y.re) && std::isfinite(y.im)) {
        finding.error = truth.error(y);
        finding.error_of_parts = truth.error_of_parts(y);
      }
      by_modulus[grade].offer(finding, finding.error);
      by_part[grade].offer(finding, finding.error_of_parts);
    }
  }
  void run(std::int64_t samples) {
    _korSetMode(KOR_HA | KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF);
    ComplexTruth<T> truth(function);
    for (std::int64_t k = 0; k < samples; ++k) {
      const Z a = points.next(points.random() % 5);
      const Z b = function.has_second() ? points.next(points.random() % 5) : Z{0, 0};
      judge(truth, a, b);
    }
    for (int round = 0; round < 8; ++round) {
      std::vector<ComplexFinding<T>> starts;
      for (int grade = 0; grade < grades; ++grade)
        for (const Largest<T>* largest : {&by_modulus[grade], &by_part[grade]})
          for (const auto& finding : largest->findings()) starts.push_back(finding);
      for (const auto& start : starts)
        for (int k = 0; k < 16; ++k)
          judge(truth, points.near(start.a), function.has_second() ? points.near(start.b) : start.b);
    }
    mpfr_free_cache();
  }
};

}  // namespace

template <class T>
ComplexScanResult<T> complex_scan(const ComplexFunction<T>& function, std::int64_t samples, int threads) {
  std::vector<Scanner<T>> scanners;
  for (int part = 0; part < threads; ++part)
    scanners.push_back({function, Points<T>(function, static_cast<std::uint64_t>(part) + 1), {}, {}});
  std::vector<std::thread> running;
  for (Scanner<T>& scanner : scanners) running.emplace_back([&] { scanner.run(samples / threads); });
  for (std::thread& thread : running) thread.join();
  ComplexScanResult<T> result;
  for (Scanner<T>& scanner : scanners) {
    result.arguments += scanner.count;
    for (int grade = 0; grade < grades; ++grade) {
      if (&scanner == &scanners[0]) continue;
      scanners[0].by_modulus[grade].merge(scanner.by_modulus[grade]);
      scanners[0].by_part[grade].merge(scanner.by_part[grade]);
    }
  }
  for (int grade = 0; grade < grades; ++grade) {
    result.by_modulus[grade] = scanners[0].by_modulus[grade].findings();
    result.by_part[grade] = scanners[0].by_part[grade].findings();
  }
  return result;
}

template <class T>
void write_complex_cases(const ComplexFunction<T>& function, const ComplexScanResult<T>& result,
                         const std::string& folder) {
  using Z = typename ComplexFunction<T>::Z;
  const std::string path = folder + "/" + function.name + ".cases";
  std::FILE* file = std::fopen(path.c_str(), "w");
  if (file == nullptr) {
    std::perror(path.c_str());
    std::exit(1);
  }
  std::fprintf(file,
               "# %s: arguments, rounded result, excess of each part in 1/4096 of its ulp, status; by tools/accuracy "
               "--cases %s\n",
               function.name, function.function);
  ComplexTruth<T> truth(function);
  const auto print = [&](Z z) {
    for (T part : {z.re, z.im})
      std::fprintf(file, "%0*" PRIx64 " ", static_cast<int>(2 * sizeof(T)),
                   static_cast<std::uint64_t>(std::bit_cast<BitsOf<T>>(part)));
  };
  const auto write = [&](Z a, Z b) {
    truth.set(a, b);
    if (!truth.is_number()) return;
    const Z rounded = truth.rounded();
    print(a);
    if (function.has_second()) print(b);
    print(rounded);
    for (bool imaginary : {false, true}) {
      const T part = imaginary ? rounded.im : rounded.re;
      const long excess = std::isfinite(part) ? std::lround(4096 * truth.excess(imaginary, part)) : 0;
      std::fprintf(file, "%c%03lx ", excess < 0 ? '-' : '+', std::labs(excess));
    }
    std::fprintf(file, "%d\n", truth.status());
  };
  Points<T> points(function, 2027);
  const char* const kinds[] = {"all exponents", "the usual square", "next to the axes", "next to the unit circle",
                               "next to +-1 and +-i"};
  for (std::uint64_t kind = 0; kind < 5; ++kind) {
    std::fprintf(file, "# %s\n", kinds[kind]);
    for (std::uint64_t k = 0; k < 96; ++k)
      write(points.next(kind), function.has_second() ? points.next(k % 5) : Z{0, 0});
  }
  for (int grade = 0; grade < grades; ++grade) {
    std::fprintf(file, "# the worst found for %s\n", grade_names[grade]);
    for (const auto* findings : {&result.by_modulus[grade], &result.by_part[grade]})
      for (std::size_t k = 0; k < 8 && k < findings->size(); ++k) write((*findings)[k].a, (*findings)[k].b);
  }
  std::fclose(file);
}

template ComplexScanResult<float> complex_scan(const ComplexFunction<float>&, std::int64_t, int);
template ComplexScanResult<double> complex_scan(const ComplexFunction<double>&, std::int64_t, int);
template void write_complex_cases(const ComplexFunction<float>&, const ComplexScanResult<float>&, const std::string&);
template void write_complex_cases(const ComplexFunction<double>&, const ComplexScanResult<double>&, const std::string&);

}  // namespace accuracy
