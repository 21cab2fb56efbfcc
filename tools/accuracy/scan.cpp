// scan: the search for the worst errors of a function's three kernels.
// SPDX-License-Identifier: MIT
#include "tools/accuracy/scan.h"

#include <array>
#include <deque>
#include <thread>

#include "tools/accuracy/random.h"
#include "tools/accuracy/root_truths.h"

namespace accuracy {

using namespace orin::vector_math;

MpfrFunction truth_of(const Promise& promise) {
  struct {
    const char* function;
    int result;
    MpfrFunction truth;
  } const truths[] = {
#define ORIN_CATALOG(F, result, truth, ...) {#F, result, truth},
#include "vector_math/catalog.def"
#undef ORIN_CATALOG
  };
  for (const auto& row : truths)
    if (std::strcmp(row.function, promise.function) == 0 && row.result == promise.result) return row.truth;
  std::abort();
}

namespace {

constexpr int block = 1024;
constexpr std::size_t kept = 64;

// The largest `kept` of what is offered.
template <class T>
class Worst {
 public:
  void offer(Point<T> point, double error) {
    if (error <= floor_) return;
    entries_.push_back({point, error});
    if (entries_.size() >= 2 * kept) shrink();
  }
  void shrink() {
    std::sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) {
      return a.error != b.error ? a.error > b.error : place(a) < place(b);
    });
    const auto same = [](const Entry& a, const Entry& b) { return place(a) == place(b); };
    entries_.erase(std::unique(entries_.begin(), entries_.end(), same), entries_.end());
    if (entries_.size() > kept) entries_.resize(kept);
    if (entries_.size() == kept) floor_ = entries_.back().error;
  }
  void merge(const Worst& other) {
    for (const Entry& entry : other.entries_) offer(entry.point, entry.error);
  }
  // What is not above this is not among them.
  double floor() const { return floor_; }
  std::vector<Point<T>> points() {
    shrink();
    std::vector<Point<T>> out;
    for (const Entry& entry : entries_) out.push_back(entry.point);
    return out;
  }

 private:
  struct Entry {
    Point<T> point;
    double error;
  };
  static std::pair<std::int64_t, std::int64_t> place(const Entry& entry) {
    return {ordinal(entry.point.a), ordinal(entry.point.b)};
  }
  std::vector<Entry> entries_;
  double floor_ = 0;
};

// The inverse spacings of T by exponent field less one (the field 0 counts as 1).
template <class T>
struct Spacings {
  static constexpr int count = 2 * std::numeric_limits<T>::max_exponent - 2;
  Wide<T> inverse[count];

  Spacings() {
    for (int k = 0; k < count; ++k) inverse[k] = std::ldexp(Wide<T>(1), -lowest_spacing<T> - k);
  }
};

template <class T>
class Scanner {
 public:
  // With a `reference`, the function in twice the precision, its high-accuracy kernel finds the candidates.
  Scanner(const RealFunction<T>& function, const RealFunction<double>* reference)
      : function_(function), reference_(reference) {}

  // A function with a scalar sees one second argument for each block.
  void add(Point<T> x) {
    a_[filled_] = x.a;
    b_[filled_] = function_.shape == RealFunction<T>::Shape::scalar && filled_ > 0 ? b_[0] : x.b;
    if (++filled_ == block) flush();
  }
  void flush() {
    if (filled_ == 0) return;
    find_exact();
    for (int grade = 0; grade < grades; ++grade) {
      if (function_.first_with_kernel_of(grade) < grade) continue;
      function_.call(grade, filled_, a_, b_, results_);
      find_suspects(grade);
      for (int i = 0; i < filled_; ++i)
        if (suspect_[i]) judge(grade, {a_[i], b_[i]}, results_[i], exact_[i]);
    }
    count_ += filled_;
    filled_ = 0;
  }
  void merge(Scanner& other) {
    other.flush();
    count_ += other.count_;
    for (int grade = 0; grade < grades; ++grade) {
      ulp_[grade].merge(other.ulp_[grade]);
      subnormal_[grade].merge(other.subnormal_[grade]);
      relative_[grade].merge(other.relative_[grade]);
    }
  }
  // Neighbours near and far of the worst arguments so far, again and again.
  void climb(Random& random, int rounds) {
    for (int round = 0; round < rounds; ++round) {
      std::vector<Point<T>> starts;
      for (int grade = 0; grade < grades; ++grade)
        for (Worst<T>* worst : {&ulp_[grade], &subnormal_[grade]})
          for (const Point<T>& x : worst->points()) starts.push_back(x);
      for (const Point<T>& start : starts) {
        for (int k = 0; k < 128; ++k) {
          const Point<T> x = {near(start.a, random),
                              function_.inputs() == 2 && k % 2 == 1 ? near(start.b, random) : start.b};
          if (std::isfinite(x.a) && std::isfinite(x.b)) add(x);
        }
        if (function_.shape == RealFunction<T>::Shape::scalar) flush();
      }
      flush();
    }
  }

  ScanResult<T> result() {
    flush();
    ScanResult<T> out;
    out.arguments = count_;
    Truth truth(*function_.promise);
    const auto findings = [&](int grade, Worst<T>& worst) {
      std::vector<Finding<T>> all;
      for (const Point<T>& x : worst.points()) {
        const T y = function_.call(grade, x.a, x.b);
        truth.set(x);
        all.push_back({x, std::fabs(truth.excess_over(y)), truth.relative_error(y)});
      }
      return all;
    };
    for (int grade = 0; grade < grades; ++grade) {
      const int same = function_.first_with_kernel_of(grade);
      out.by_ulp[grade] = findings(grade, ulp_[same]);
      out.subnormal[grade] = findings(grade, subnormal_[same]);
      out.by_relative[grade] = findings(grade, relative_[same]);
      for (auto* list : {&out.by_ulp[grade], &out.subnormal[grade]})
        std::sort(list->begin(), list->end(), [](const auto& a, const auto& b) { return a.ulp > b.ulp; });
      std::sort(out.by_relative[grade].begin(), out.by_relative[grade].end(),
                [](const auto& a, const auto& b) { return a.relative > b.relative; });
    }
    return out;
  }

 private:
  static T near(T x, Random& random) {
    const auto distance = static_cast<std::int64_t>(random.next() >> (1 + random.next() % 63)) %
                          (INT64_C(1) << (sizeof(T) == 8 ? 50 : 28));
    return from_ordinal<T>(ordinal(x) + (random.next() % 2 == 0 ? distance : -distance));
  }

  void find_exact() {
    if constexpr (sizeof(T) == 4) {
      if (reference_ != nullptr) {
        double wide[block];
        std::copy_n(a_, filled_, wide);
        reference_->call(static_cast<int>(Grade::ha), filled_, wide, nullptr, exact_);
        return;
      }
    }
    for (int i = 0; i < filled_; ++i)
      exact_[i] = function_.quick(static_cast<Wide<T>>(a_[i]), static_cast<Wide<T>>(b_[i]));
  }

  // Marks what may belong to the worst, with few operations for the many that do not.
  void find_suspects(int grade) {
    const double floor = ulp_[grade].floor(), subnormal_floor = subnormal_[grade].floor(),
                 relative_floor = relative_[grade].floor();
    for (int i = 0; i < filled_; ++i) {
      const Wide<T> magnitude = std::fabs(exact_[i]);
      const bool normal = magnitude >= static_cast<Wide<T>>(std::numeric_limits<T>::min());
      const Wide<T> difference = std::fabs(static_cast<Wide<T>>(results_[i]) - exact_[i]);
      const auto bits = std::bit_cast<BitsOf<T>>(std::min(std::fabs(results_[i]), static_cast<T>(magnitude)));
      const Wide<T> in_ulp = difference * spacings_.inverse[spacing_index(bits)];
      suspect_[i] = !(in_ulp <= (normal ? floor : subnormal_floor)) || !(difference <= relative_floor * magnitude);
    }
  }

  // The index into the spacings for a finite magnitude with these bits; the last one for what is not finite.
  static int spacing_index(BitsOf<T> magnitude) {
    const int field = static_cast<int>(magnitude >> (std::numeric_limits<T>::digits - 1));
    return std::clamp(field - 1, 0, Spacings<T>::count - 1);
  }

  void judge(int grade, Point<T> x, T result, Wide<T> exact) {
    const T nearest = static_cast<T>(exact);
    if (!std::isfinite(result) || !std::isfinite(nearest)) {
      if (result != nearest && !(std::isnan(result) && std::isnan(nearest)))
        ulp_[grade].offer(x, std::numeric_limits<double>::infinity());
      return;
    }
    // The spacing is taken from the smaller of the two: a result at a power of two may stand for a value below it.
    const T smaller = std::min(std::fabs(result), std::fabs(nearest));
    const Wide<T> difference = std::fabs(static_cast<Wide<T>>(result) - exact);
    const double in_ulp =
        static_cast<double>(difference * spacings_.inverse[spacing_index(std::bit_cast<BitsOf<T>>(smaller))]);
    const bool normal = std::fabs(exact) >= static_cast<Wide<T>>(std::numeric_limits<T>::min());
    (normal ? ulp_ : subnormal_)[grade].offer(x, in_ulp);
    if (smaller >= std::numeric_limits<T>::min())
      relative_[grade].offer(x, static_cast<double>(difference / std::fabs(exact)));
  }

  inline static const Spacings<T> spacings_;
  const RealFunction<T>& function_;
  const RealFunction<double>* const reference_;
  T a_[block], b_[block], results_[block];
  bool suspect_[block];
  Wide<T> exact_[block];
  int filled_ = 0;
  std::int64_t count_ = 0;
  std::array<Worst<T>, grades> ulp_, subnormal_, relative_;
};

// Thread `part` of `parts` takes its share of the sampled arguments.
template <class T>
void sample(Scanner<T>& scanner, const RealFunction<T>& function, std::int64_t samples, int part, int parts) {
  Random random(static_cast<std::uint64_t>(part) + 1);
  const double low = function.low(), high = function.high();
  const double second_low = function.promise->second_low, second_high = function.promise->second_high;
  const bool two = function.inputs() == 2;
  const std::int64_t share = samples / parts;
  const auto within = [&](double from, double to) { return static_cast<T>(from + (to - from) * random.uniform()); };
  const auto any = [&] { return std::bit_cast<T>(static_cast<BitsOf<T>>(random.next())); };
  for (std::int64_t k = 0; k < share; ++k) {
    const double progress = static_cast<double>(k * parts + part) / static_cast<double>(samples);
    switch (k % 4) {
      case 0:
        scanner.add({any(), two ? any() : T(0)});
        break;
      case 1:
        scanner.add({static_cast<T>(low + (high - low) * progress), two ? within(second_low, second_high) : T(0)});
        break;
      default:
        scanner.add({within(low, high), two ? within(second_low, second_high) : T(0)});
    }
  }
  scanner.flush();
  scanner.climb(random, 30);
}

template <class T>
void exhaust(Scanner<T>& scanner, int part, int parts) {
  constexpr std::uint64_t all = UINT64_C(1) << 32;
  for (std::uint64_t bits = all * static_cast<unsigned>(part) / static_cast<unsigned>(parts);
       bits < all * static_cast<unsigned>(part + 1) / static_cast<unsigned>(parts); ++bits)
    scanner.add({std::bit_cast<T>(static_cast<BitsOf<T>>(bits))});
  scanner.flush();
}

}  // namespace

template <class T>
ScanResult<T> scan(const RealFunction<T>& function, std::int64_t samples, int threads) {
  const std::vector<RealFunction<double>> doubles = real_functions<double>();
  const auto twin = std::find_if(doubles.begin(), doubles.end(),
                                 [&](const auto& other) { return other.promise == function.promise; });
  const bool has_reference = samples == 0 && twin != doubles.end();
  std::deque<Scanner<T>> scanners;
  for (int part = 0; part < threads; ++part) scanners.emplace_back(function, has_reference ? &*twin : nullptr);
  std::vector<std::thread> running;
  for (int part = 0; part < threads; ++part)
    running.emplace_back([&, part] {
      _korSetMode(KOR_HA | KOR_ERRMODE_IGNORE | KOR_FTZDAZ_OFF);
      if (samples > 0)
        sample(scanners[static_cast<std::size_t>(part)], function, samples, part, threads);
      else
        exhaust(scanners[static_cast<std::size_t>(part)], part, threads);
      mpfr_free_cache();
    });
  for (std::thread& thread : running) thread.join();
  for (std::size_t k = 1; k < scanners.size(); ++k) scanners[0].merge(scanners[k]);
  return scanners[0].result();
}

template ScanResult<float> scan(const RealFunction<float>&, std::int64_t, int);
template ScanResult<double> scan(const RealFunction<double>&, std::int64_t, int);

}  // namespace accuracy
