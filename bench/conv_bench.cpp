// conv_bench: full convolutions beside FFTW held to SSE2 and beside a tuned direct loop.
// SPDX-License-Identifier: MIT
//
// Method    minimum over rounds of the mean time of a call, contenders taking turns, inputs uniform in -1..1, warm
//           caches; every result is compared with a plain sum at sampled outputs first, and the row prints WRONG if it
//           is off.
// FFTW      is asked for SSE2 code by answering its own question whether the processor has AVX: the library calls
//           fftw_have_simd_avx through the dynamic linker, so the definitions below are the ones it finds. The first
//           line of the output says which codelets its plans use. Plans are made with FFTW_MEASURE outside the timed
//           call; the convolution runs them in the best of several ways: one transform at the next power of two, one
//           at the next length without large factors, or overlap-add in blocks of 2 to 64 times the shorter operand.
//           "in call" makes and destroys FFTW_ESTIMATE plans for one transform in the call.
// Loop      eight registers of outputs per tap, over a padded copy and taps spread over vectors, which it makes in the
//           call in memory that it keeps.
// Argument  direct, fft or planes: that part alone.
// 32 bits   the Windows build has no FFTW: only the module and the loop are timed.
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "orin/conv.h"

#if !defined(_WIN32)
#include <fftw3.h>
#define ORIN_BENCH_FFTW 1
#endif

namespace {

using Clock = std::chrono::steady_clock;

// Best time per call of each contender. They take turns, so that a busy machine disturbs all of them alike, each after
// a call that is not timed.
template <class... F>
std::array<double, sizeof...(F)> race(F&&... contenders) {
  const auto elapsed = [](auto& call, int calls) {
    const auto start = Clock::now();
    for (int i = 0; i < calls; ++i) call();
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
  };
  std::array<double, sizeof...(F)> best;
  best.fill(1e300);
  const std::array<double, sizeof...(F)> once{(elapsed(contenders, 1), elapsed(contenders, 1))...};
  double all = 0;
  for (const double time : once) all += std::max(time, 1000.0);
  const int rounds = std::clamp(static_cast<int>(300000 / all), 5, 60);
  for (int round = 0; round < rounds; ++round) {
    std::size_t i = 0;
    const auto turn = [&](auto& call) {
      const int calls = std::max(1, static_cast<int>(1000 / std::max(0.05, once[i])));
      elapsed(call, 1);
      best[i] = std::min(best[i], elapsed(call, calls) / calls);
      ++i;
    };
    (turn(contenders), ...);
  }
  return best;
}

template <class T>
struct Case {
  std::vector<T> x, y, z;

  Case(std::size_t n, std::size_t m) : x(n), y(m), z(n + m - 1) {
    std::mt19937 random(1);
    std::uniform_real_distribution<T> uniform(-1, 1);
    for (T& v : x) v = uniform(random);
    for (T& v : y) v = uniform(random);
  }

  bool right() const {
    double error = 0, norm = 0;
    for (std::size_t s = 0; s < 200; ++s) {
      const std::size_t j = s * (z.size() - 1) / 199;
      double sum = 0;
      for (std::size_t k = j >= y.size() ? j - y.size() + 1 : 0; k <= std::min(j, x.size() - 1); ++k)
        sum += static_cast<double>(x[k]) * static_cast<double>(y[j - k]);
      error = std::max(error, std::abs(sum - static_cast<double>(z[j])));
      norm = std::max(norm, std::abs(sum));
    }
    return error <= norm * (sizeof(T) == 4 ? 1e-4 : 1e-12);
  }
};

// --- The module ------------------------------------------------------------------------------------------------------

template <class T>
std::int32_t kernel(Case<T>& c, bool fft) {
  constexpr bool in_double = sizeof(T) == 8;
  const auto run = fft ? (in_double ? _junConvDDFft1D_dec : _junConvSSFft1D_dec)
                       : (in_double ? _junConvDDDirect1D_dec : _junConvSSDirect1D_dec);
  return run(c.x.data(), 1, c.y.data(), 1, c.z.data(), 1, static_cast<std::int32_t>(c.x.size()),
             static_cast<std::int32_t>(c.y.size()), 0, static_cast<std::int32_t>(c.z.size()), 1);
}

// --- The loop --------------------------------------------------------------------------------------------------------

// 16 bytes of numbers: in a register, and anywhere in memory.
template <class T>
struct Vector {
  typedef T Register __attribute__((vector_size(16)));
  typedef T Memory __attribute__((vector_size(16), aligned(alignof(T)), may_alias));
  static constexpr std::size_t lanes = 16 / sizeof(T);

  static Register load(const T* p) { return *reinterpret_cast<const Memory*>(p); }
  static void store(T* p, Register v) { *reinterpret_cast<Memory*>(p) = v; }
};

template <class T>
class Loop {
  using Vec = Vector<T>;
  static constexpr std::size_t tile = 8 * Vec::lanes;

 public:
  explicit Loop(const Case<T>& c)
      : padded_(c.x.size() + 2 * c.y.size() + tile), taps_(c.y.size() * Vec::lanes), full_(c.z.size() + tile) {}

  void run(Case<T>& c) {
    std::copy(c.x.begin(), c.x.end(), padded_.begin() + static_cast<std::ptrdiff_t>(c.y.size()) - 1);
    for (std::size_t k = 0; k < c.y.size(); ++k)
      std::fill_n(taps_.begin() + static_cast<std::ptrdiff_t>(k * Vec::lanes), Vec::lanes, c.y[c.y.size() - 1 - k]);
    for (std::size_t j = 0; j < c.z.size(); j += tile) {
      const T *p = padded_.data() + j, *h = taps_.data();
      typename Vec::Register a0{}, a1{}, a2{}, a3{}, a4{}, a5{}, a6{}, a7{};
      for (std::size_t k = 0; k < c.y.size(); ++k, ++p, h += Vec::lanes) {
        const T* q = p;
        asm("" : "+r"(q));
        const auto tap = Vec::load(h);
        a0 = a0 + tap * Vec::load(q + 0 * Vec::lanes);
        a1 = a1 + tap * Vec::load(q + 1 * Vec::lanes);
        a2 = a2 + tap * Vec::load(q + 2 * Vec::lanes);
        a3 = a3 + tap * Vec::load(q + 3 * Vec::lanes);
        a4 = a4 + tap * Vec::load(q + 4 * Vec::lanes);
        a5 = a5 + tap * Vec::load(q + 5 * Vec::lanes);
        a6 = a6 + tap * Vec::load(q + 6 * Vec::lanes);
        a7 = a7 + tap * Vec::load(q + 7 * Vec::lanes);
      }
      T* out = full_.data() + j;
      for (const auto& a : {a0, a1, a2, a3, a4, a5, a6, a7}) Vec::store(out, a), out += Vec::lanes;
    }
    std::copy_n(full_.begin(), c.z.size(), c.z.begin());
  }

 private:
  std::vector<T> padded_, taps_, full_;
};

// --- FFTW ------------------------------------------------------------------------------------------------------------

#if defined(ORIN_BENCH_FFTW)

template <class T>
struct Fftw;

#define ORIN_BENCH_FFTW_NAMES(T, prefix)                       \
  template <>                                                  \
  struct Fftw<T> {                                             \
    using Complex = prefix##_complex;                          \
    using Plan = prefix##_plan;                                \
    static constexpr auto allocate = prefix##_malloc;          \
    static constexpr auto release = prefix##_free;             \
    static constexpr auto forward = prefix##_plan_dft_r2c_1d;  \
    static constexpr auto backward = prefix##_plan_dft_c2r_1d; \
    static constexpr auto execute = prefix##_execute;          \
    static constexpr auto destroy = prefix##_destroy_plan;     \
    static constexpr auto text = prefix##_sprint_plan;         \
  };
ORIN_BENCH_FFTW_NAMES(double, fftw)
ORIN_BENCH_FFTW_NAMES(float, fftwf)
#undef ORIN_BENCH_FFTW_NAMES

// fa := fa fb scale
template <class Complex, class T>
void multiply(Complex* fa, const Complex* fb, std::size_t bins, T scale) {
  for (std::size_t i = 0; i < bins; ++i) {
    const T re = fa[i][0] * fb[i][0] - fa[i][1] * fb[i][1], im = fa[i][0] * fb[i][1] + fa[i][1] * fb[i][0];
    fa[i][0] = re * scale;
    fa[i][1] = im * scale;
  }
}

// A convolution with transforms of one length: at once, or overlap-add when the result is longer.
template <class T>
class Planned {
  using F = Fftw<T>;

 public:
  Planned(std::size_t length, unsigned effort)
      : length_(length),
        bins_(length / 2 + 1),
        a_(static_cast<T*>(F::allocate(length * sizeof(T)))),
        b_(static_cast<T*>(F::allocate(length * sizeof(T)))),
        fa_(static_cast<typename F::Complex*>(F::allocate(bins_ * 2 * sizeof(T)))),
        fb_(static_cast<typename F::Complex*>(F::allocate(bins_ * 2 * sizeof(T)))),
        forward_a_(F::forward(static_cast<int>(length), a_, fa_, effort)),
        forward_b_(F::forward(static_cast<int>(length), b_, fb_, effort)),
        backward_(F::backward(static_cast<int>(length), fa_, a_, effort)) {}
  ~Planned() {
    F::destroy(forward_a_), F::destroy(forward_b_), F::destroy(backward_);
    F::release(a_), F::release(b_), F::release(fa_), F::release(fb_);
  }
  Planned(const Planned&) = delete;
  Planned& operator=(const Planned&) = delete;

  void run(Case<T>& c) {
    const auto &longer = c.x.size() >= c.y.size() ? c.x : c.y, &shorter = c.x.size() >= c.y.size() ? c.y : c.x;
    pad(shorter.data(), shorter.size(), b_);
    F::execute(forward_b_);
    const std::size_t block = length_ >= c.z.size() ? longer.size() : length_ - shorter.size() + 1;
    for (std::size_t at = 0; at < longer.size(); at += block) {
      const std::size_t count = std::min(block, longer.size() - at);
      pad(longer.data() + at, count, a_);
      F::execute(forward_a_);
      multiply(fa_, fb_, bins_, T(1) / static_cast<T>(length_));
      F::execute(backward_);
      const std::size_t overlap = at == 0 ? 0 : shorter.size() - 1, total = count + shorter.size() - 1;
      T* out = c.z.data() + at;
      for (std::size_t i = 0; i < overlap; ++i) out[i] += a_[i];
      std::copy(a_ + overlap, a_ + total, out + overlap);
    }
  }

  std::string text() const {
    char* plan = F::text(forward_a_);
    std::string copy(plan);
    std::free(plan);
    return copy;
  }

 private:
  void pad(const T* data, std::size_t count, T* to) {
    std::copy_n(data, count, to);
    std::fill(to + count, to + length_, T(0));
  }

  std::size_t length_, bins_;
  T *a_, *b_;
  typename F::Complex *fa_, *fb_;
  typename F::Plan forward_a_, forward_b_, backward_;
};

std::size_t smooth_from(std::size_t n) {
  for (;; ++n) {
    std::size_t rest = n;
    for (std::size_t factor : {2, 3, 5, 7})
      while (rest % factor == 0) rest /= factor;
    if (rest == 1 && n % 2 == 0) return n;
  }
}
std::size_t power_from(std::size_t n) {
  std::size_t power = 4;
  while (power < n) power *= 2;
  return power;
}

// The best of the ways to use transforms.
template <class T>
std::unique_ptr<Planned<T>> best_plan(Case<T>& c) {
  const std::size_t shorter = std::min(c.x.size(), c.y.size());
  std::vector<std::size_t> lengths;
  if (c.z.size() < 1000000) lengths = {power_from(c.z.size()), smooth_from(c.z.size())};
  for (std::size_t length = power_from(2 * shorter); length <= 64 * shorter && length < c.z.size(); length *= 2)
    lengths.push_back(length);
  std::unique_ptr<Planned<T>> best;
  double best_time = 1e300;
  for (const std::size_t length : lengths) {
    auto plan = std::make_unique<Planned<T>>(length, FFTW_MEASURE);
    plan->run(c);
    if (!c.right()) std::puts("WRONG: FFTW");
    const double time = race([&] { plan->run(c); })[0];
    if (time < best_time) best_time = time, best = std::move(plan);
  }
  return best;
}

#endif

// --- Rows ------------------------------------------------------------------------------------------------------------

struct Means {
  double log_sum = 0, worst = 0;
  int count = 0;
  void take(double ratio) { log_sum += std::log(ratio), worst = std::max(worst, ratio), ++count; }
  double mean() const { return std::exp(log_sum / count); }
};

template <class T>
void transforms(const char* type) {
  constexpr std::size_t sizes[][2] = {{600, 400},     {1000, 100},      {4096, 4096}, {100000, 1000},
                                      {1000000, 64},  {1000000, 10000}, {512, 512},   {2048, 2048},
                                      {16384, 16384}, {10000, 100},     {20000, 500}};
  Means planned, in_call;
  std::printf("\n%s by FFT, microseconds per call\n%18s %12s %12s %12s %8s %8s\n", type, "N x M", "module", "FFTW SSE2",
              "plan in call", "ratio", "ratio");
  for (const auto& size : sizes) {
    Case<T> c(size[0], size[1]);
    kernel(c, true);
    const bool right = c.right();
    std::printf("%9zu x %-6zu", size[0], size[1]);
#if defined(ORIN_BENCH_FFTW)
    const auto plan = best_plan(c);
    const auto [ours, theirs] = race([&] { kernel(c, true); }, [&] { plan->run(c); });
    const double both = race([&] { Planned<T>(power_from(c.z.size()), FFTW_ESTIMATE).run(c); })[0];
    planned.take(ours / theirs), in_call.take(both / ours);
    std::printf(" %12.2f %12.2f %12.2f %8.2f %8.1f", ours, theirs, both, ours / theirs, both / ours);
#else
    std::printf(" %12.2f", race([&] { kernel(c, true); })[0]);
#endif
    std::printf("%s\n", right ? "" : " WRONG");
    std::fflush(stdout);
  }
  if (planned.count > 0)
    std::printf("geometric mean: module / FFTW %.2f (worst %.2f), plan in call / module %.1f\n", planned.mean(),
                planned.worst, in_call.mean());
}

template <class T>
void direct_sums(const char* type) {
  constexpr std::size_t sizes[][2] = {{100, 100}, {300, 30},    {600, 400},   {1000, 100},
                                      {4096, 16}, {100000, 64}, {1000000, 64}};
  Means means;
  std::printf("\n%s by direct sums, microseconds per call\n%18s %12s %12s %8s\n", type, "N x M", "module", "loop",
              "ratio");
  for (const auto& size : sizes) {
    Case<T> c(size[0], size[1]);
    Loop<T> loop(c);
    loop.run(c);
    if (!c.right()) std::puts("WRONG: loop");
    kernel(c, false);
    const bool right = c.right();
    const auto [ours, theirs] = race([&] { kernel(c, false); }, [&] { loop.run(c); });
    means.take(ours / theirs);
    std::printf("%9zu x %-6zu %12.2f %12.2f %8.2f%s\n", size[0], size[1], ours, theirs, ours / theirs,
                right ? "" : " WRONG");
  }
  std::printf("geometric mean: module / loop %.2f (worst %.2f)\n", means.mean(), means.worst);
}

#if defined(ORIN_BENCH_FFTW)
// Planes: the module beside FFTW's two-dimensional transforms at the next smooth lengths, double.
void planes() {
  std::printf("\ndouble, two dimensions by FFT, microseconds per call\n%24s %12s %12s %8s\n", "N x M", "module",
              "FFTW SSE2", "ratio");
  for (const auto& size : {std::pair{512, 15}, {1024, 64}, {200, 40}}) {
    const std::int32_t n[2] = {size.first, size.first}, m[2] = {size.second, size.second};
    const std::int32_t l[2] = {n[0] + m[0] - 1, n[0] + m[0] - 1}, xs[2] = {1, n[0]}, ys[2] = {1, m[0]},
                       zs[2] = {1, l[0]};
    const std::int32_t zero[2] = {0, 0}, one[2] = {1, 1};
    std::vector<double> x(static_cast<std::size_t>(n[0]) * static_cast<std::size_t>(n[0]), 0.5),
        y(static_cast<std::size_t>(m[0]) * static_cast<std::size_t>(m[0]), 0.25),
        z(static_cast<std::size_t>(l[0]) * static_cast<std::size_t>(l[0]));
    const int p = static_cast<int>(smooth_from(static_cast<std::size_t>(l[0]))), bins = p / 2 + 1;
    const auto total = static_cast<std::size_t>(p) * static_cast<std::size_t>(p);
    const auto total_bins = static_cast<std::size_t>(p) * static_cast<std::size_t>(bins);
    double *a = fftw_alloc_real(total), *b = fftw_alloc_real(total);
    fftw_complex *fa = fftw_alloc_complex(total_bins), *fb = fftw_alloc_complex(total_bins);
    fftw_plan pa = fftw_plan_dft_r2c_2d(p, p, a, fa, FFTW_MEASURE),
              pb = fftw_plan_dft_r2c_2d(p, p, b, fb, FFTW_MEASURE),
              back = fftw_plan_dft_c2r_2d(p, p, fa, a, FFTW_MEASURE);
    const auto module = [&] { _junConvDDFftAll_dec(2, x.data(), n, xs, y.data(), m, ys, z.data(), l, zs, zero, one); };
    const auto peer = [&] {
      std::fill_n(a, total, 0.0), std::fill_n(b, total, 0.0);
      for (int i = 0; i < n[0]; ++i) std::copy_n(x.data() + i * n[0], n[0], a + i * p);
      for (int i = 0; i < m[0]; ++i) std::copy_n(y.data() + i * m[0], m[0], b + i * p);
      fftw_execute(pa), fftw_execute(pb);
      multiply(fa, fb, total_bins, 1.0 / (static_cast<double>(p) * p));
      fftw_execute(back);
      for (int i = 0; i < l[0]; ++i) std::copy_n(a + i * p, l[0], z.data() + i * l[0]);
    };
    const auto [ours, theirs] = race(module, peer);
    std::printf("%6d^2 x %4d^2 %18.1f %12.1f %8.2f\n", n[0], m[0], ours, theirs, ours / theirs);
    fftw_destroy_plan(pa), fftw_destroy_plan(pb), fftw_destroy_plan(back);
    fftw_free(a), fftw_free(b), fftw_free(fa), fftw_free(fb);
  }
}
#endif

}  // namespace

#if defined(ORIN_BENCH_FFTW)
extern "C" int fftw_have_simd_avx() { return 0; }
extern "C" int fftwf_have_simd_avx() { return 0; }
#endif

int main(int count, char** argument) {
  const auto asked = [&](const char* part) { return count < 2 || std::strcmp(argument[1], part) == 0; };
#if defined(ORIN_BENCH_FFTW)
  const std::string plans = Planned<double>(4096, FFTW_MEASURE).text() + Planned<float>(4096, FFTW_MEASURE).text();
  std::printf("FFTW's plans use SSE2 code: %s, AVX code: %s\n", plans.find("sse2") != std::string::npos ? "yes" : "no",
              plans.find("avx") != std::string::npos ? "yes" : "no");
#endif
  if (asked("direct")) direct_sums<double>("double"), direct_sums<float>("float");
  if (asked("fft")) transforms<double>("double"), transforms<float>("float");
#if defined(ORIN_BENCH_FFTW)
  if (asked("planes")) planes();
#endif
  return 0;
}
