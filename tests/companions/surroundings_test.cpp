// surroundings_test: linear algebra on several threads, without memory and on stacks of poor alignment.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "orin/companions.h"
#include "tests/companions/shifted_stack.h"
#include "tests/support/threads.h"

#if !defined(_WIN32)
#include <sys/resource.h>
#endif

namespace {

// One call of most routines on fixed data, without memory of its own; the results can be compared bit by bit.
class Workload {
 public:
  Workload() : a_(n * depth), b_(n * depth), c_(n * n), d_(n * n), w_(n), work_(3 * n) {}

  void run() {
    const double one = 1, half = 0.5;
    const int32_t k = depth, inc = 1, room = 3 * n;
    for (int32_t i = 0; i < n * k; ++i) {
      a_[static_cast<std::size_t>(i)] = (i * 37 % 101 - 50) / 64.0;
      b_[static_cast<std::size_t>(i)] = (i * 53 % 97 - 48) / 128.0;
    }
    std::memset(c_.data(), 0, c_.size() * sizeof(double));
    orin_blas_dgemm("N", "T", &n, &n, &k, &one, a_.data(), &n, b_.data(), &n, &half, c_.data(), &n);
    d_ = c_;
    orin_blas_dtrmm("L", "U", "N", "N", &n, &n, &half, a_.data(), &n, c_.data(), &n);
    orin_blas_dtrmm("R", "L", "T", "U", &n, &n, &half, b_.data(), &n, d_.data(), &n);
    orin_blas_dgemv("T", &n, &n, &one, c_.data(), &n, b_.data(), &inc, &half, d_.data(), &inc);
    orin_blas_dsyrk("L", "N", &n, &k, &one, a_.data(), &n, &one, c_.data(), &n);
    orin_lapack_dsyev("V", "L", &n, c_.data(), &n, w_.data(), work_.data(), &room, &info_[0]);
    for (int32_t i = 0; i < n; ++i) d_[static_cast<std::size_t>(i) * (n + 1)] = 3e6;
    orin_lapack_dpotrf("U", &n, d_.data(), &n, &info_[1]);
    orin_lapack_dpotri("U", &n, d_.data(), &n, &info_[2]);
  }

  bool succeeded() const { return info_[0] == 0 && info_[1] == 0 && info_[2] == 0; }
  bool operator==(const Workload& other) const { return c_ == other.c_ && d_ == other.d_ && w_ == other.w_; }

 private:
  static constexpr int32_t n = 150, depth = 600;
  std::vector<double> a_, b_, c_, d_, w_, work_;
  int32_t info_[3] = {99, 99, 99};
};

TEST(Surroundings, ThreadsDoNotDisturbEachOther) {
  Workload alone;
  alone.run();
  ASSERT_TRUE(alone.succeeded());
  std::vector<Workload> together(4);
  run_threads(4, [&](int thread) {
    for (int repeat = 0; repeat < 3; ++repeat) together[static_cast<std::size_t>(thread)].run();
  });
  for (const Workload& one : together) EXPECT_TRUE(one == alone);
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool memory_can_run_out = false;  // the sanitizers' allocators end the process instead
#else
constexpr bool memory_can_run_out = true;
#endif

// Takes all memory that malloc has to give in pieces of 8 KB and more.
class Famine {
 public:
  Famine() {
#if !defined(_WIN32)
    getrlimit(RLIMIT_AS, &limit_);
    const rlimit none{1, limit_.rlim_max};
    setrlimit(RLIMIT_AS, &none);
#endif
    for (std::size_t size = std::size_t(256) << 20; size >= 8192; size /= 2)
      while (void* block = std::malloc(size)) {
        *static_cast<void**>(block) = blocks_;
        blocks_ = block;
      }
  }
  ~Famine() {
    while (blocks_ != nullptr) std::free(std::exchange(blocks_, *static_cast<void**>(blocks_)));
#if !defined(_WIN32)
    setrlimit(RLIMIT_AS, &limit_);
#endif
  }

 private:
  void* blocks_ = nullptr;
#if !defined(_WIN32)
  rlimit limit_;
#endif
};

TEST(Surroundings, NoMemoryNoDifference) {
  if (!memory_can_run_out) GTEST_SKIP() << "memory cannot run out here";
  Workload plenty, none;
  plenty.run();
  void* scarce;
  {
    const Famine famine;
    scarce = orin_serv_allocate(8192, 64);
    Workload* const working = &none;
    working->run();
  }
  EXPECT_EQ(scarce, nullptr);
  EXPECT_TRUE(none.succeeded());
  EXPECT_TRUE(none == plenty);
}

TEST(Surroundings, StacksAlignedToFourBytes) {
  Workload aligned;
  aligned.run();
  for (int words = 0; words < 4; ++words) {
    Workload shifted;
    on_shifted_stack(
        words, [](void* load) { static_cast<Workload*>(load)->run(); }, &shifted);
    EXPECT_TRUE(shifted == aligned) << words;
  }
}

}  // namespace
