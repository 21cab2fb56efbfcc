// vector_math_bench: every vector function and grade beside its peers.
// SPDX-License-Identifier: MIT
//
// Method    arguments uniform in the catalog's usual range, arrays on cache lines, warm caches; contenders take turns,
//           minimum and median over 31 rounds of the mean time per element. n = 1000 sits in L1 with branches the
//           processor has learnt; n = 16000 is too long to learn by heart; n = 1 and 8 are nanoseconds per call.
//           "special" has one argument in 64 from the special ones. Results are compared with long double first: a row
//           that is off prints WRONG.
// Complex   beside the standard library's std::complex in a loop; parts uniform in the usual square
// Classes   HA stands beside the peers that promise 1 ulp, LA beside all of them, EP beside this library's own LA.
// Options   --costs       relative cost per element and grade, in units in which the double HA exponential is 26.45
//           --times       a plain list "name grade ns" for n = 1000, as --other reads it
//           --other FILE  times of another build, to print beside these
//           NAME...       only these functions
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "bench/vector_math_peers.h"
#include "vector_math/catalog.h"
#include "vector_math/complex_catalog.h"

namespace {

using namespace orin::vector_math;
using Clock = std::chrono::steady_clock;

struct Time {
  double best, median;  // ns
};

// ns per call of each contender. They take turns, so that a busy machine disturbs all of them alike.
std::vector<Time> race(const std::vector<std::function<void()>>& contenders) {
  const auto elapsed = [](const std::function<void()>& call, int calls) {
    const auto start = Clock::now();
    for (int i = 0; i < calls; ++i) call();
    return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
  };
  std::vector<int> calls;
  for (const auto& call : contenders) {
    elapsed(call, 3);
    calls.push_back(std::max(1, static_cast<int>(200000 / (elapsed(call, 10) / 10 + 1))));
  }
  std::vector<std::vector<double>> times(contenders.size());
  for (int round = 0; round < 61; ++round)
    for (std::size_t k = 0; k < contenders.size(); ++k) times[k].push_back(elapsed(contenders[k], calls[k]) / calls[k]);
  std::vector<Time> out;
  for (auto& list : times) {
    std::sort(list.begin(), list.end());
    out.push_back({list.front(), list[list.size() / 2]});
  }
  return out;
}

// Arrays begin on a cache line, whatever the target's allocator does.
template <class T>
struct OnCacheLine {
  using value_type = T;
  static constexpr std::align_val_t line{64};

  OnCacheLine() = default;
  template <class Other>
  OnCacheLine(OnCacheLine<Other>) {}
  T* allocate(std::size_t n) { return static_cast<T*>(::operator new(n * sizeof(T), line)); }
  void deallocate(T* p, std::size_t) { ::operator delete(p, line); }
  bool operator==(const OnCacheLine&) const = default;
};
template <class T>
using Array = std::vector<T, OnCacheLine<T>>;

// The times of all kernels of one function, and of its peers.
template <class T>
class Contest {
 public:
  explicit Contest(const RealFunction<T>& function) : function_(function) {
    for (const Peer<T>& peer : peers<T>())
      if (std::strcmp(peer.function, function.function) == 0) peers_.push_back(peer);
  }

  // Per element; kernels first, then peers (scalar ones only where n is no multiple of four).
  std::vector<Time> per_element(std::int32_t n, bool with_peers, bool with_specials = false) {
    const Array<T> a = arguments(n, with_specials), b = second_arguments(n);
    Array<T> r(a.size());
    std::vector<std::function<void()>> contenders;
    for (int grade = 0; grade < grades; ++grade)
      contenders.push_back([&, grade] { function_.call(grade, n, a.data(), b.data(), r.data()); });
    if (with_peers)
      for (const Peer<T>& peer : peers_)
        if (peer.scalar || n % 4 == 0)
          contenders.push_back([&, call = peer.call] { call(n, a.data(), b.data(), r.data()); });
    std::vector<Time> times = race(contenders);
    for (Time& time : times) time = {time.best / n, time.median / n};
    return times;
  }

  const std::vector<Peer<T>>& peers_of() const { return peers_; }

  // Whether the grade's results are those of the quick reference, within its bound and the reference's own.
  bool correct(int grade) const {
    const Array<T> a = arguments(1000, false);
    Array<T> b = second_arguments(1000), r(a.size());
    function_.call(grade, 1000, a.data(), b.data(), r.data());
    if (function_.shape == RealFunction<T>::Shape::scalar) std::fill(b.begin(), b.end(), b[0]);
    const double ulp = std::ldexp(1.0, 1 - std::numeric_limits<T>::digits);
    const double bound = Grade(grade) == Grade::ha ? ulp : function_.relative_bound(Grade(grade));
    for (std::size_t i = 0; i < a.size(); ++i) {
      const long double exact = function_.quick(static_cast<long double>(a[i]), static_cast<long double>(b[i]));
      if (!(std::fabs(static_cast<long double>(r[i]) - exact) <= bound * 1.01L * std::fabs(exact))) return false;
    }
    return true;
  }

 private:
  static Array<T> uniform(std::int32_t n, double low, double high, unsigned seed) {
    std::mt19937 random(seed);
    Array<T> values(static_cast<std::size_t>(n));
    for (T& x : values) x = static_cast<T>(low + (high - low) * (static_cast<double>(random()) + 0.5) * 0x1p-32);
    return values;
  }
  Array<T> arguments(std::int32_t n, bool with_specials) const {
    Array<T> a = uniform(n, function_.promise->usual_low, function_.promise->usual_high, 1);
    if (with_specials)
      for (std::size_t i = 0; i < a.size(); i += 64) a[i] = i % 128 == 0 ? std::numeric_limits<T>::infinity() : T(1e30);
    return a;
  }
  Array<T> second_arguments(std::int32_t n) const {
    return uniform(n, function_.promise->second_low, function_.promise->second_high, 2);
  }

  const RealFunction<T>& function_;
  std::vector<Peer<T>> peers_;
};

// The same of a complex function; the one contender beside the kernels is std::complex in a loop.
template <class T>
class ComplexContest {
  using Function = ComplexFunction<T>;
  using Z = std::complex<T>;

 public:
  explicit ComplexContest(const Function& function) : function_(function) {}

  // Per element: kernels first, then the loop.
  std::vector<Time> per_element(std::int32_t n, bool with_loop) const {
    const Array<Z> a = arguments(n, 1), b = arguments(n, 2);
    Array<T> real(a.size());
    for (std::size_t i = 0; i < a.size(); ++i) real[i] = a[i].real();
    const void* first =
        function_.shape == Function::Shape::from_real ? static_cast<const void*>(real.data()) : a.data();
    Array<Z> r(a.size());
    std::vector<std::function<void()>> contenders;
    for (int grade = 0; grade < grades; ++grade)
      contenders.push_back([&, grade] { function_.call(grade, n, first, b.data(), r.data()); });
    if (with_loop) contenders.push_back([&] { loop(a, b, r); });
    std::vector<Time> times = race(contenders);
    for (Time& time : times) time = {time.best / n, time.median / n};
    return times;
  }
  // Whether the grade's results are those of the reference in long double, within its bound.
  bool correct(int grade) const {
    using Wide = std::complex<long double>;
    const Array<Z> a = arguments(1000, 1), b = arguments(1000, 2);
    Array<Wide> exact(a.size());
    loop(Array<Wide>(a.begin(), a.end()), Array<Wide>(b.begin(), b.end()), exact);
    const long double ulp = std::ldexp(1.0L, 1 - std::numeric_limits<T>::digits);
    for (std::size_t i = 0; i < a.size(); ++i) {
      const auto r = function_.call(grade, {a[i].real(), a[i].imag()}, {b[i].real(), b[i].imag()});
      const long double error = std::abs(Wide(r.re, r.im) - exact[i]);
      if (!(error <= function_.bound(Grade(grade)) * 1.01L * ulp * std::abs(exact[i]))) return false;
    }
    return true;
  }

 private:
  Array<Z> arguments(std::int32_t n, unsigned seed) const {
    std::mt19937 random(seed);
    const auto part = [&] {
      return static_cast<T>(function_.promise->usual * (static_cast<double>(random()) * 0x1p-31 - 1));
    };
    Array<Z> values(static_cast<std::size_t>(n));
    for (Z& z : values) {
      const T re = part();
      z = {re, part()};
    }
    return values;
  }
  template <class W>
  void loop(const Array<W>& a, const Array<W>& b, Array<W>& r) const {
    const auto run = [&](auto reference) {
      for (std::size_t i = 0; i < a.size(); ++i) {
        if constexpr (requires { reference(a[i]); })
          r[i] = reference(a[i]);
        else
          r[i] = reference(a[i], b[i]);
      }
    };
#define ORIN_COMPLEX_CATALOG(F, truth, quick, ...) \
  if (std::strcmp(function_.function, #F) == 0)    \
    run([](auto... z) -> decltype(complex_reference::quick(z...)) { return complex_reference::quick(z...); });
#include "vector_math/complex_catalog.def"
#undef ORIN_COMPLEX_CATALOG
  }

  const Function& function_;
};

template <class T>
void print_contest(const ComplexFunction<T>& function, const struct Options&) {
  const ComplexContest<T> contest(function);
  const auto one = contest.per_element(1, true), eight = contest.per_element(8, true);
  const auto cached = contest.per_element(1000, true), fresh = contest.per_element(16000, true);
  const auto line = [&](const char* who, std::size_t k) {
    std::printf("%-9s %-10s %7.3f %7.3f %7.3f %7.1f %7.1f", function.name, who, cached[k].best, cached[k].median,
                fresh[k].best, one[k].best, 8 * eight[k].best);
  };
  line("std", grades);
  std::puts("");
  for (const Grade grade : {Grade::ha, Grade::la, Grade::ep}) {
    const auto g = static_cast<std::size_t>(grade);
    line(grade_names[g], g);
    std::printf("%*s  %5.2f %5.2f std%s\n", 22, "", cached[grades].best / cached[g].best,
                fresh[grades].best / fresh[g].best, contest.correct(static_cast<int>(g)) ? "" : "  WRONG");
  }
  std::fflush(stdout);
}

struct Options {
  bool costs = false, times = false;
  std::map<std::string, double> other;
  std::vector<std::string> functions;

  bool wants(const char* function) const {
    return functions.empty() || std::find(functions.begin(), functions.end(), function) != functions.end();
  }
};

template <class T>
void print_contest(const RealFunction<T>& function, const Options& options) {
  Contest<T> contest(function);
  const auto one = contest.per_element(1, true), eight = contest.per_element(8, true);
  const auto cached = contest.per_element(1000, true), fresh = contest.per_element(16000, true);
  const auto special = contest.per_element(1000, false, true);
  std::size_t scalars = 0;
  for (std::size_t p = 0; p < contest.peers_of().size(); ++p) {
    const Peer<T>& peer = contest.peers_of()[p];
    const std::size_t k = grades + p;
    std::printf("%-9s %-10s %7.3f %7.3f %7.3f", function.name, peer.name, cached[k].best, cached[k].median,
                fresh[k].best);
    if (peer.scalar)
      std::printf(" %7.1f %7.1f\n", one[grades + scalars++].best, 8 * eight[k].best);
    else
      std::printf(" %7s %7.1f\n", "", 8 * eight[k].best);
  }
  for (const Grade grade : {Grade::ha, Grade::la, Grade::ep}) {
    const auto g = static_cast<std::size_t>(grade);
    const char* name = grade_names[g];
    std::printf("%-9s %-10s %7.3f %7.3f %7.3f %7.1f %7.1f %7.3f", function.name, name, cached[g].best, cached[g].median,
                fresh[g].best, one[g].best, 8 * eight[g].best, special[g].best);
    if (const auto other = options.other.find(std::string(function.label().c_str()) + " " + name);
        other != options.other.end())
      std::printf(" %7.3f %5.2f", other->second, other->second / cached[g].best);
    else
      std::printf(" %7s %5s", "", "");
    if (!contest.correct(static_cast<int>(g))) {
      std::printf("  WRONG\n");
      continue;
    }
    if (grade == Grade::ep) {
      const auto la = static_cast<std::size_t>(Grade::la);
      std::printf("  %5.2f %5.2f LA\n", cached[la].best / cached[g].best, fresh[la].best / fresh[g].best);
      continue;
    }
    // The fastest peer of the class, in each column its own.
    std::size_t best = 0, best_fresh = 0;
    for (std::size_t p = 0; p < contest.peers_of().size(); ++p) {
      if (grade == Grade::ha && contest.peers_of()[p].ulp > 1) continue;
      const std::size_t k = grades + p;
      if (best == 0 || cached[k].best < cached[best].best) best = k;
      if (best_fresh == 0 || fresh[k].best < fresh[best_fresh].best) best_fresh = k;
    }
    if (best != 0)
      std::printf("  %5.2f %5.2f %s", cached[best].best / cached[g].best, fresh[best_fresh].best / fresh[g].best,
                  contest.peers_of()[best - grades].name);
    std::printf("\n");
  }
  std::fflush(stdout);
}

template <class T>
Contest<T> contest_of(const RealFunction<T>&);
template <class T>
ComplexContest<T> contest_of(const ComplexFunction<T>&);
template <class Function>
using ContestOf = decltype(contest_of(std::declval<Function>()));

// The nanoseconds of a double HA exponential, the unit of the cost figures.
double unit_of_cost() {
  for (const auto& function : real_functions<double>())
    if (std::strcmp(function.function, "Exp") == 0)
      return Contest<double>(function).per_element(1000, false)[static_cast<std::size_t>(Grade::ha)].best / 26.45;
  return 1;
}

template <class Contest, class Function>
void print_list(const Function& function, const Options& options, double unit) {
  Contest contest(function);
  const auto times = contest.per_element(1000, false);
  if (options.costs) {
    std::printf("%-10s", function.name + 1);
    for (const Time& time : times) std::printf(" %8.2f", time.best / unit);
    std::printf("\n");
  } else {
    for (std::size_t g = 0; g < grades; ++g)
      std::printf("%s %s %.4f\n", function.label().c_str(), grade_names[g], times[g].best);
  }
}

Options parse(int count, char** words) {
  Options options;
  for (int k = 1; k < count; ++k) {
    if (std::strcmp(words[k], "--costs") == 0) {
      options.costs = true;
    } else if (std::strcmp(words[k], "--times") == 0) {
      options.times = true;
    } else if (std::strcmp(words[k], "--other") == 0 && k + 1 < count) {
      if (std::FILE* file = std::fopen(words[++k], "r")) {
        char name[80], grade[8];
        double time;
        while (std::fscanf(file, "%79s %7s %lf", name, grade, &time) == 3)
          options.other[std::string(name) + " " + grade] = time;
        std::fclose(file);
      }
    } else {
      options.functions.push_back(words[k]);
    }
  }
  return options;
}

}  // namespace

int main(int count, char** words) {
  const Options options = parse(count, words);
  _korSetMode(KOR_HA | KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF);
  const double unit = options.costs ? unit_of_cost() : 1;
  if (options.costs)
    std::puts("function         LA       HA       EP");
  else if (!options.times)
    std::puts(
        "                     n = 1000        16000     n=1     n=8 special  32-bit build  ahead of the best of its "
        "class\n"
        "function  who             ns  median      ns ns/call ns/call      ns      ns ratio   1000 16000");
  const auto all = [&](const auto& functions) {
    for (const auto& function : functions) {
      if (!options.wants(function.function) && !options.wants(function.name)) continue;
      if (options.costs || options.times)
        print_list<ContestOf<decltype(function)>>(function, options, unit);
      else
        print_contest(function, options);
    }
  };
  all(real_functions<double>());
  all(real_functions<float>());
  all(complex_functions<double>());
  all(complex_functions<float>());
}
