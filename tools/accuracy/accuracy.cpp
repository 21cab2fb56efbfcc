// accuracy: measures the error of every function and grade against MPFR and writes docs/accuracy.md.
// SPDX-License-Identifier: MIT
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <thread>

#include "tools/accuracy/cases.h"
#include "tools/accuracy/profile.h"
#include "tools/accuracy/scan.h"

namespace {

using namespace accuracy;
using namespace orin::vector_math;

constexpr const char* manual =
    R"(usage: accuracy [OPTION...] [FUNCTION...]

Measures the error of the functions (all without names: Exp ...) in both precisions and three grades, prints the worst
of each with its argument, and enters it in docs/accuracy.md. Ends with PASS or FAIL.

  --root DIR      the source tree (default: the current directory)
  --samples N     double, and two arguments: N samples (default 50000000)
  --sampled       single precision too; without it, all 2^32 arguments of functions of one
  --threads N     default: as many as the machine has
  --cases         also write tests/data/vector_math/<label>.cases and digests.txt
  --digests       only write digests.txt
  --profile DIR   only write the error along the ordinary domain to DIR/<label>.dat
)";

struct Options {
  std::string root = ".";
  std::string profile;
  std::int64_t samples = 50'000'000;
  bool sampled = false, cases = false, digests_only = false;
  int threads = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  std::vector<std::string> functions;

  bool wants(const char* function) const {
    return functions.empty() || std::find(functions.begin(), functions.end(), function) != functions.end();
  }
};

std::string format(const char* pattern, auto... values) {
  char text[300];
  std::snprintf(text, sizeof text, pattern, values...);
  return text;
}

// docs/accuracy.md: a fixed head and one row for each kernel. Rows of functions not measured now are kept.
class Document {
 public:
  explicit Document(std::string path) : path_(std::move(path)) {
    std::ifstream file(path_);
    for (std::string line; std::getline(file, line);)
      if (line.starts_with("| v")) rows_[key(line)] = line;
  }
  void enter(const std::string& line) { rows_[key(line)] = line; }
  void write() const {
    std::ofstream file(path_);
    file << R"(# Accuracy

Written by `./run accuracy`; every figure is measured against MPFR. An ulp is the spacing of the numbers at the exact
result. HA promises a largest error in ulp, of subnormal results half of that and 1/2 (they are rounded twice); LA and
EP promise a largest relative error, one spacing more on subnormal results.
"all" arguments are all 2^32 floats. The others are random bit patterns, random and evenly spaced arguments of the
ordinary domain, and a climb from the worst of them through their neighbours.
The same bits come out on Windows and Linux (`tests/data/vector_math/digests.txt`).

| Function | Grade | Bound | Worst error, ulp | at | of subnormal results | at | Worst relative error | at | Arguments |
|---|---|---|---|---|---|---|---|---|---|
)";
    const auto write_rows = [&](const auto& functions) {
      for (const auto& function : functions)
        for (const char* grade : grade_names)
          if (const auto row = rows_.find(function.label() + " " + grade); row != rows_.end())
            file << row->second << '\n';
    };
    write_rows(real_functions<float>());
    write_rows(real_functions<double>());
    file << "\n## Along the ordinary domain\n\nThe worst of 2048 errors in each of 240 stretches.\n\n";
    for (const auto& function : real_functions<double>())
      file << "![v" << function.label().substr(2) << "](plots/" << function.label().substr(2) << ".png)\n";
  }

 private:
  static std::string key(const std::string& line) {
    std::istringstream words(line);
    std::string bar, name, grade;
    words >> bar >> name >> bar >> grade;
    return name + " " + grade;
  }

  std::string path_;
  std::map<std::string, std::string> rows_;
};

// Whether the findings keep the grade's bound: HA in ulp, the others relative, one spacing more below normal numbers.
template <class T>
bool keeps_bound(const RealFunction<T>& function, int grade, const ScanResult<T>& result) {
  const auto within = [](const std::vector<Finding<T>>& findings, double bound) {
    return findings.empty() || findings[0].ulp <= bound;
  };
  if (Grade(grade) == Grade::ha)
    return within(result.by_ulp[grade], function.ha_ulp()) &&
           within(result.subnormal[grade], function.ha_ulp_of_subnormals());
  if (!result.by_relative[grade].empty() &&
      result.by_relative[grade][0].relative > function.relative_bound(Grade(grade)))
    return false;
  Truth truth(*function.promise);
  for (const Finding<T>& finding : result.subnormal[grade]) {
    truth.set(finding.point);
    const double spacings = static_cast<double>(ordinal(std::fabs(truth.rounded<T>())));
    if (finding.ulp > 1 + function.relative_bound(Grade(grade)) * spacings) return false;
  }
  return result.by_ulp[grade].empty() || std::isfinite(result.by_ulp[grade][0].ulp);
}

template <class T>
std::string place(const RealFunction<T>& function, Point<T> x) {
  const std::string first = format("%a", static_cast<double>(x.a));
  return function.inputs() == 1 ? first : first + ", " + format("%a", static_cast<double>(x.b));
}

template <class T>
bool measure(const RealFunction<T>& function, const Options& options, Document& document) {
  const auto start = std::chrono::steady_clock::now();
  const bool all = sizeof(T) == 4 && function.inputs() == 1 && !options.sampled;
  const std::int64_t samples = all ? 0 : options.samples;
  const ScanResult<T> result = scan(function, samples, options.threads);
  bool pass = true;
  for (int grade = 0; grade < grades; ++grade) {
    const bool kept = keeps_bound(function, grade, result);
    pass &= kept;
    const Finding<T> none{{T(0), T(0)}, 0, 0};
    const auto worst = [&](const std::vector<Finding<T>>& findings) { return findings.empty() ? none : findings[0]; };
    const Finding<T> ulp = worst(result.by_ulp[grade]);
    const Finding<T> subnormal = worst(result.subnormal[grade]);
    const Finding<T> relative = worst(result.by_relative[grade]);
    const std::string bound = Grade(grade) == Grade::ha
                                  ? format("%.2f ulp", function.ha_ulp())
                                  : format("2^%d", std::ilogb(function.relative_bound(Grade(grade))));
    const std::string arguments = all ? "all" : format("%.3g", static_cast<double>(result.arguments));
    const std::string relative_text = format("2^%.2f", std::log2(relative.relative));
    std::printf("%-10s %s  bound %-8s  worst %.4f ulp at %s, subnormal %.4f, relative %s at %s  %s\n",
                function.label().c_str(), grade_names[grade], bound.c_str(), ulp.ulp,
                place(function, ulp.point).c_str(), subnormal.ulp, relative_text.c_str(),
                place(function, relative.point).c_str(), kept ? "kept" : "BROKEN");
    document.enter("| " + function.label() + " | " + grade_names[grade] + " | " + bound + " | " +
                   format("%.4f", ulp.ulp) + " | `" + place(function, ulp.point) + "` | " +
                   (result.subnormal[grade].empty()
                        ? std::string("- | -")
                        : format("%.4f", subnormal.ulp) + " | `" + place(function, subnormal.point) + "`") +
                   " | " + relative_text + " | `" + place(function, relative.point) + "` | " + arguments + " |");
  }
  if (options.cases) write_cases(function, result, options.root + "/tests/data/vector_math");
  const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
  std::printf("%-10s     %.4g arguments in %.1f s\n", function.label().c_str(), static_cast<double>(result.arguments),
              elapsed.count());
  return pass;
}

Options parse(int count, char** words) {
  Options options;
  for (int k = 1; k < count; ++k) {
    const std::string word = words[k];
    const auto value = [&]() -> std::string {
      return k + 1 < count ? words[++k] : (std::fputs(manual, stderr), std::exit(2), "");
    };
    if (word == "--root")
      options.root = value();
    else if (word == "--samples")
      options.samples = std::max(1LL, std::atoll(value().c_str()));
    else if (word == "--profile")
      options.profile = value();
    else if (word == "--threads")
      options.threads = std::max(1, std::atoi(value().c_str()));
    else if (word == "--sampled")
      options.sampled = true;
    else if (word == "--cases")
      options.cases = true;
    else if (word == "--digests")
      options.digests_only = true;
    else if (word.starts_with("-"))
      std::fputs(manual, stderr), std::exit(2);
    else
      options.functions.push_back(word);
  }
  return options;
}

}  // namespace

int main(int count, char** words) {
  const Options options = parse(count, words);
  const std::string data = options.root + "/tests/data/vector_math";
  if (options.digests_only) {
    write_digests(data);
    return 0;
  }
  Document document(options.root + "/docs/accuracy.md");
  bool pass = true, any = false;
  const auto measure_all = [&](const auto& functions) {
    for (const auto& function : functions) {
      if (!options.wants(function.function)) continue;
      any = true;
      if (options.profile.empty())
        pass &= measure(function, options, document);
      else
        write_profile(function, options.profile);
    }
  };
  measure_all(real_functions<double>());
  measure_all(real_functions<float>());
  if (!any) {
    std::fputs("no such function\n", stderr);
    return 2;
  }
  if (!options.profile.empty()) return 0;
  document.write();
  if (options.cases) write_digests(data);
  std::puts(pass ? "PASS" : "FAIL");
  return pass ? 0 : 1;
}
