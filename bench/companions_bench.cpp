// companions_bench: dense linear algebra beside OpenBLAS held to SSE3 and beside Eigen.
// SPDX-License-Identifier: MIT
//
// Method    One thread, warm caches, uniform entries in [-1, 1]; the minimum over rounds of at least 0.1 s in all.
// Eigen is
//           compiled for SSE2 as the library is. OpenBLAS is loaded at run time, where it is installed, after
//           OPENBLAS_CORETYPE=Prescott has been set; its column is empty elsewhere.
// Prints    routine, size, microseconds of each, and how many times as fast as each rival the library is.
#include <Eigen/Cholesky>
#include <Eigen/Core>
#include <Eigen/Eigenvalues>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "orin/companions.h"

#if !defined(_WIN32)
#include <dlfcn.h>
#endif

namespace {

using Work = std::function<void()>;

double microseconds(const Work& work) {
  using Clock = std::chrono::steady_clock;
  double least = 1e30, total = 0;
  for (int rounds = 0; total < 1e5 || rounds < 5; ++rounds) {
    const auto start = Clock::now();
    work();
    const double time = std::chrono::duration<double, std::micro>(Clock::now() - start).count();
    least = std::min(least, time);
    total += time;
  }
  return least;
}

// A routine of OpenBLAS with the type of ours, null where it is not installed.
template <class Function>
Function rival([[maybe_unused]] Function ours, [[maybe_unused]] const std::string& name) {
#if defined(_WIN32)
  return nullptr;
#else
  static void* const library = [] {
    setenv("OPENBLAS_CORETYPE", "Prescott", 1);
    setenv("OPENBLAS_NUM_THREADS", "1", 1);
    void* handle = dlopen("libopenblas.so.0", RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) std::puts("OpenBLAS is not installed: no column for it");
    return handle;
  }();
  return library == nullptr ? nullptr : reinterpret_cast<Function>(dlsym(library, (name + "_").c_str()));
#endif
}

void print_row(const char* routine, int size, const Work& ours, const Work& openblas, const Work& eigen) {
  const double time = microseconds(ours), eigen_time = microseconds(eigen);
  std::printf("%-8s %6d %10.2f", routine, size, time);
  if (openblas) {
    const double openblas_time = microseconds(openblas);
    std::printf(" | OpenBLAS %10.2f %5.2f x", openblas_time, openblas_time / time);
  }
  std::printf(" | Eigen %10.2f %5.2f x\n", eigen_time, eigen_time / time);
}

#define ORIN_ROUTINES(T, p)                                                      \
  template <>                                                                    \
  struct Routines<T> {                                                           \
    static constexpr auto gemm = orin_blas_##p##gemm;                            \
    static constexpr auto syrk = orin_blas_##p##syrk;                            \
    static constexpr auto trmm = orin_blas_##p##trmm;                            \
    static constexpr auto gemv = orin_blas_##p##gemv;                            \
    static constexpr auto potrf = orin_lapack_##p##potrf;                        \
    static constexpr auto syev = orin_lapack_##p##syev;                          \
    static std::string name(const char* base) { return #p + std::string(base); } \
  };
template <class T>
struct Routines;
ORIN_ROUTINES(double, d)
ORIN_ROUTINES(float, s)

template <class T>
void bench(int n) {
  using Own = Routines<T>;
  using Square = Eigen::Matrix<T, Eigen::Dynamic, Eigen::Dynamic>;
  using Vector = Eigen::Matrix<T, Eigen::Dynamic, 1>;
  const Square a = Square::Random(n, n), b = Square::Random(n, n);
  const Square definite = a * a.transpose() + T(n) * Square::Identity(n, n), symmetric = a + a.transpose();
  Square c = Square::Zero(n, n);
  Vector x = Vector::Random(n), y = Vector::Zero(n), w(n), work(40 * n);
  const T one = 1, zero = 0;
  const int32_t inc = 1, room = 40 * n;
  int32_t info = 0;

  const auto gemm = [&](auto f) { f("N", "N", &n, &n, &n, &one, a.data(), &n, b.data(), &n, &zero, c.data(), &n); };
  const auto syrk = [&](auto f) { f("L", "N", &n, &n, &one, a.data(), &n, &zero, c.data(), &n); };
  const auto gemv = [&](auto f) { f("N", &n, &n, &one, a.data(), &n, x.data(), &inc, &zero, y.data(), &inc); };
  const auto trmm = [&](auto f) {
    c = b;
    f("L", "L", "N", "N", &n, &n, &one, a.data(), &n, c.data(), &n);
  };
  const auto potrf = [&](auto f) {
    c = definite;
    f("L", &n, c.data(), &n, &info);
  };
  const auto syev = [&](auto f) {
    c = symmetric;
    f("V", "L", &n, c.data(), &n, w.data(), work.data(), &room, &info);
  };
  const auto row = [&](const char* base, const auto& call, auto own, const Work& eigen, const Square& expected) {
    const auto other = rival(own, Own::name(base));
    c.setZero();
    call(own);
    if (!((c.template triangularView<Eigen::Lower>().toDenseMatrix() -
           expected.template triangularView<Eigen::Lower>().toDenseMatrix())
              .norm() <= 1e-4 * expected.norm()))
      std::printf("%s %d WRONG\n", base, n);
    print_row(
        Own::name(base).c_str(), n, [&] { call(own); }, other ? Work([&] { call(other); }) : Work(), eigen);
  };

  row(
      "gemm", gemm, Own::gemm, [&] { c.noalias() = a * b; }, a * b);
  row(
      "syrk", syrk, Own::syrk,
      [&] {
        c.setZero();
        c.template selfadjointView<Eigen::Lower>().rankUpdate(a);
      },
      a * a.transpose());
  row(
      "trmm", trmm, Own::trmm, [&] { c.noalias() = a.template triangularView<Eigen::Lower>() * b; },
      a.template triangularView<Eigen::Lower>() * b);
  row(
      "gemv", [&](auto f) { gemv(f), c.col(0) = y; }, Own::gemv, [&] { y.noalias() = a * x, c.col(0) = y; },
      [&] {
        Square first = Square::Zero(n, n);
        first.col(0) = a * x;
        return first;
      }());
  row(
      "potrf", potrf, Own::potrf,
      [&] {
        c = definite;
        Eigen::LLT<Eigen::Ref<Square>> factor(c);
      },
      definite.llt().matrixL());
  if (n > 300) return;
  // Eigenvectors have free signs: the residual is what is compared, with zero.
  row(
      "syev", [&](auto f) { syev(f); }, Own::syev,
      [&] {
        Eigen::SelfAdjointEigenSolver<Square> solver(symmetric);
        c = solver.eigenvectors();
      },
      [&] {
        syev(Own::syev);
        const Square residual = symmetric * c - c * w.asDiagonal();
        return residual.norm() <= 1e-4 * symmetric.norm() ? c : Square(Square::Zero(n, n));
      }());
}

}  // namespace

int main() {
  for (const int n : {8, 20, 50, 100, 200, 500}) bench<double>(n);
  for (const int n : {8, 20, 50, 100, 200, 500}) bench<float>(n);
}
