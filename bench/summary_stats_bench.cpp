// summary_stats_bench: the statistics kernels beside std::nth_element, std::sort, Eigen and OpenBLAS.
// SPDX-License-Identifier: MIT
//
// Method    10^6 values (covariance: 20 variables of 10^5) drawn once, the same for everybody. Contenders take turns,
//           so that a busy machine disturbs all of them alike; minimum and median over the rounds of the time per
//           value. The ratio is the fastest peer's minimum over ours: above 1 we are faster. Results are compared with
//           the peer's first: a row that is off prints WRONG.
// Peers     compiled for SSE2 as the library is. Moments: Eigen's mean, a plain sum whose time is that of reading the
//           values, and three sums of powers of deviations, one pass each. Covariance: means, centred copy and symmetric update, the update by OpenBLAS held to SSE3 (loaded at
//           run time where it is installed) or by Eigen. Five quantiles: std::nth_element, each on what lies above the
//           last one. Stream quantiles have no peer with a bound: their rows tell the worst rank and the memory
//           instead.
#include <Eigen/Core>
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "orin/summary_stats.h"
#include "service/late_binding.h"

#if !defined(_WIN32)
#include <dlfcn.h>
#include <malloc.h>
#include <time.h>
#endif

namespace {

// Seconds: where the system tells it, the time that this thread had a processor, so that other programs do not count.
double seconds() {
#if defined(_WIN32)
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
#else
  timespec time;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
#endif
}

struct Contender {
  std::string name;
  std::function<double()> call;  // returns a number to compare
};

// Times everybody, the first being ours, and prints a row.
void race(const std::string& what, double values, double tolerance, const std::vector<Contender>& contenders) {
  constexpr int rounds = 25;
  std::vector<std::vector<double>> times(contenders.size());
  std::vector<double> results(contenders.size());
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t k = 0; k < contenders.size(); ++k) {
      const double start = seconds();
      results[k] = contenders[k].call();
      times[k].push_back((seconds() - start) * 1e9 / values);
    }
  }
  double best_peer = INFINITY;
  bool right = true;
  std::string peers;
  for (std::size_t k = 0; k < contenders.size(); ++k) {
    std::sort(times[k].begin(), times[k].end());
    right = right && std::fabs(results[k] - results[0]) <= tolerance * std::fabs(results[0]);
    if (k == 0) continue;
    best_peer = std::min(best_peer, times[k][0]);
    char text[80];
    std::snprintf(text, sizeof text, "  %s %.3f (%.3f)", contenders[k].name.c_str(), times[k][0], times[k][rounds / 2]);
    peers += text;
  }
  std::printf("%-34s %7.3f (%7.3f)  %5.2f  %s |%s\n", what.c_str(), times[0][0], times[0][rounds / 2],
              best_peer / times[0][0], right ? "     " : "WRONG", peers.c_str());
  std::fflush(stdout);
}

// Kilobytes that the process has from the allocator, 0 where the system does not tell.
double kilobytes_in_use() {
#if defined(_WIN32)
  return 0;
#else
  const auto info = mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd) / 1024;
#endif
}

template <class T>
struct Kernels;
template <>
struct Kernels<double> {
  static constexpr const char* name = "double";
  static constexpr auto create = &__jundSSNewTask;
  static constexpr auto edit = &__jundSSEditTask;
  static constexpr auto basic = &_jundSSBasic;
  static constexpr auto min_max = &_jundSSMinmax;
  static constexpr auto quantiles = &_jundSSQuantiles;
};
template <>
struct Kernels<float> {
  static constexpr const char* name = "float";
  static constexpr auto create = &__junsSSNewTask;
  static constexpr auto edit = &__junsSSEditTask;
  static constexpr auto basic = &_junsSSBasic;
  static constexpr auto min_max = &_junsSSMinmax;
  static constexpr auto quantiles = &_junsSSQuantiles;
};

const int variable_rows = 65536, observation_rows = 131072, one = 1;

void must(int status) {
  if (status == 0) return;
  std::printf("status %d\n", status);
  std::exit(1);
}

template <class T>
std::vector<T> normal_data(std::size_t n) {
  std::mt19937_64 generator(1);
  std::normal_distribution<double> normal(10, 1);
  std::vector<T> x(n);
  for (T& value : x) value = static_cast<T>(normal(generator));
  return x;
}

template <class T>
void one_variable() {
  using Array = Eigen::Array<T, Eigen::Dynamic, 1>;
  const int n = 1000000, orders_count = 5;
  const std::vector<T> x = normal_data<T>(n);
  const T orders[] = {T(0.05), T(0.25), T(0.5), T(0.75), T(0.95)};
  T results[10] = {}, quantiles[orders_count];
  std::vector<T> sorted(n);
  SSTask* task = nullptr;
  must(Kernels<T>::create(&task, &one, &n, &variable_rows, x.data(), nullptr, nullptr, 0));
  must(__jundSSEditMoments(task, results, nullptr, nullptr, nullptr, results + 1, results + 2, results + 3));
  const std::pair<int, int> places[] = {{14, 4}, {15, 5}, {16, 6}, {17, 7}};
  for (const auto& [slot, place] : places) must(Kernels<T>::edit(task, slot, results + place));
  must(__jundSSEditQuantiles(task, &orders_count, orders, quantiles, sorted.data(), &variable_rows));

  const Eigen::Map<const Array> values(x.data(), n);
  const std::string type = Kernels<T>::name;
  const double loose = sizeof(T) == 8 ? 1e-9 : 1e-2;  // Eigen's float sums lose digits
  race("mean, " + type, n, loose,
       {{"ours", [&] { return must(Kernels<T>::basic(task, ORIN_SS_MEAN, 1)), results[0]; }},
        {"Eigen", [&] { return values.mean(); }}});
  race("mean to kurtosis, " + type, n, loose,
       {{"ours",
         [&] {
           must(Kernels<T>::basic(task, ORIN_SS_KURTOSIS | ORIN_SS_SKEWNESS, 1));
           return results[1] + results[4] + results[5];
         }},
        {"Eigen", [&] {
           const T mean = values.mean();
           const auto d = values - mean;
           const T m2 = d.square().sum() / T(n - 1), m3 = d.cube().sum() / T(n), m4 = d.square().square().sum() / T(n);
           return m2 + m4 / (m2 * m2) - 3 + m3 / (m2 * std::sqrt(m2));
         }}});
  race(
      "minimum and maximum, " + type, n, 0,
      {{"ours",
        [&] { return must(Kernels<T>::min_max(task, ORIN_SS_MINIMUM | ORIN_SS_MAXIMUM, 1)), results[6] + results[7]; }},
       {"Eigen", [&] { return values.minCoeff() + values.maxCoeff(); }}});

  std::vector<T> copy(n);
  race("five quantiles, " + type, n, 0,
       {{"ours",
         [&] {
           must(Kernels<T>::quantiles(task, ORIN_SS_QUANTILES, 0));
           return quantiles[0] + quantiles[2] + quantiles[4];
         }},
        {"nth_element", [&] {
           std::copy(x.begin(), x.end(), copy.begin());
           auto from = copy.begin();
           double found[orders_count];
           for (int k = 0; k < orders_count; ++k) {
             const double h = static_cast<double>(orders[k]) * (n - 1), f = h - std::trunc(h);
             const auto place = copy.begin() + static_cast<std::ptrdiff_t>(h);
             std::nth_element(from, place, copy.end());
             from = place + 1;
             const T above = *std::min_element(from, copy.end());
             found[k] = static_cast<T>((1 - f) * *place + f * above);
           }
           return static_cast<T>(found[0]) + static_cast<T>(found[2]) + static_cast<T>(found[4]);
         }}});
  race("order statistics, " + type, n, 0,
       {{"ours", [&] { return must(Kernels<T>::quantiles(task, ORIN_SS_ORDER_STATISTICS, 0)), sorted[12345]; }},
        {"std::sort", [&] {
           std::copy(x.begin(), x.end(), copy.begin());
           std::sort(copy.begin(), copy.end());
           return copy[12345];
         }}});
  must(__junSSDeleteTask(&task));
}

// A routine of OpenBLAS on its SSE3 kernels, null where it is not installed.
using Syrk = void(const char*, const char*, const int*, const int*, const double*, const double*, const int*,
                  const double*, double*, const int*);
Syrk* openblas_dsyrk() {
#if defined(_WIN32)
  return nullptr;
#else
  setenv("OPENBLAS_CORETYPE", "Prescott", 1);
  setenv("OPENBLAS_NUM_THREADS", "1", 1);
  void* const library = dlopen("libopenblas.so.0", RTLD_NOW | RTLD_LOCAL);
  return library == nullptr ? nullptr : reinterpret_cast<Syrk*>(dlsym(library, "dsyrk_"));
#endif
}

void covariance(bool by_observation) {
  using Matrix = Eigen::MatrixXd;
  const int p = 20, n = 100000;
  const std::vector<double> x = normal_data<double>(static_cast<std::size_t>(p) * n);
  std::vector<double> mean(p), ours(p * p);
  const int& storage = by_observation ? observation_rows : variable_rows;
  SSTask* task = nullptr;
  must(__jundSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, nullptr, 0));
  must(__jundSSEditCovCor(task, mean.data(), ours.data(), &storage, nullptr, nullptr));

  // Column-major: p by n when an observation is together, n by p when a variable is.
  const Eigen::Map<const Matrix> data(x.data(), by_observation ? p : n, by_observation ? n : p);
  Matrix centred(data.rows(), data.cols()), product(p, p);
  const auto centre = [&] {
    if (by_observation) {
      centred = data.colwise() - data.rowwise().mean().eval();
    } else {
      centred = data.rowwise() - data.colwise().mean().eval();
    }
  };
  std::vector<Contender> contenders{
      {"ours", [&] { return must(_jundSSBasic(task, ORIN_SS_COVARIANCE, 1)), ours[0] + ours[p * p - 1]; }}};
  if (Syrk* const dsyrk = openblas_dsyrk()) {
    contenders.push_back({"OpenBLAS", [&, dsyrk] {
                            const double alpha = 1.0 / (n - 1), beta = 0;
                            const int rows = static_cast<int>(data.rows());
                            centre();
                            dsyrk("L", by_observation ? "N" : "T", &p, &n, &alpha, centred.data(), &rows, &beta,
                                  product.data(), &p);
                            return product(0, 0) + product(p - 1, p - 1);
                          }});
  }
  contenders.push_back({"Eigen", [&] {
                          centre();
                          product.setZero();
                          auto lower = product.selfadjointView<Eigen::Lower>();
                          if (by_observation) {
                            lower.rankUpdate(centred, 1.0 / (n - 1));
                          } else {
                            lower.rankUpdate(centred.transpose(), 1.0 / (n - 1));
                          }
                          return product(0, 0) + product(p - 1, p - 1);
                        }});
  race(std::string("covariance p = 20, ") + (by_observation ? "observation" : "variable") + " rows",
       static_cast<double>(p) * n, 1e-10, contenders);
  must(__junSSDeleteTask(&task));
}

void stream(const char* kind, const std::vector<double>& x) {
  const int n = static_cast<int>(x.size()), count = 99;
  std::vector<double> orders, results(count);
  for (int k = 1; k <= count; ++k) orders.push_back(k / 100.0);
  const double eps = 1e-3;
  std::vector<double> sorted = x;
  std::sort(sorted.begin(), sorted.end());
  std::vector<double> times;
  double worst = 0, memory = 0;
  for (int round = 0; round < 9; ++round) {
    SSTask* task = nullptr;
    must(__jundSSNewTask(&task, &one, &n, &variable_rows, x.data(), nullptr, nullptr, 0));
    must(__jundSSEditStreamQuantiles(task, &count, orders.data(), results.data(), &one, &eps));
    const double before = kilobytes_in_use(), start = seconds();
    must(_jundSSStreamQuantiles(task, ORIN_SS_STREAM_QUANTILES, 0));
    times.push_back((seconds() - start) * 1e9 / n);
    memory = kilobytes_in_use() - before;
    must(__junSSDeleteTask(&task));
  }
  for (std::size_t k = 0; k < count; ++k) {
    const double h = orders[k] * (n - 1);
    const auto range = std::equal_range(sorted.begin(), sorted.end(), results[k]);
    const double low = static_cast<double>(range.first - sorted.begin());
    const double high = static_cast<double>(range.second - sorted.begin()) - 1;
    worst = std::max({worst, low - h, h - high});
  }
  std::sort(times.begin(), times.end());
  std::printf("%-34s %7.3f (%7.3f)         %s | worst rank %.0f of %.0f allowed, %.0f KB kept\n",
              (std::string("stream, ") + kind).c_str(), times[0], times[4], worst <= eps * n ? "     " : "WRONG", worst,
              eps * n, memory);
}

}  // namespace

int main() {
  std::printf("%-34s %7s (%7s)  %5s        | peers: minimum (median), ns per value\n", "", "minimum", "median",
              "ratio");
  one_variable<double>();
  one_variable<float>();
  covariance(false);
  covariance(true);
  std::vector<double> x = normal_data<double>(1000000);
  stream("eps 1e-3, random", x);
  std::sort(x.begin(), x.end());
  stream("eps 1e-3, ascending", x);
  std::reverse(x.begin(), x.end());
  stream("eps 1e-3, descending", x);
  for (double& value : x) value = std::trunc(value);
  stream("eps 1e-3, few values", x);
}
