// vector_math_peers: what a user would call instead, by function name.
// SPDX-License-Identifier: MIT
//
// glibc     the scalar function in a loop
// SLEEF     the SSE2 functions; u05, u10 and u15 promise about 1 ulp or less, u35 promises 3.5
// libmvec   glibc's vector functions of 128 bits, 4 ulp; inside they use SSE4.1
// xsimd     its batches; Eigen: array expressions; both built for SSE2 like everything here
#include "bench/vector_math_peers.h"

#if !defined(_WIN32)
#include <emmintrin.h>
#include <sleef.h>

#include <Eigen/Core>
#include <cmath>
#include <xsimd/xsimd.hpp>

#define GLIBC(F, name)
#define SLEEF(F, name, accuracy)
#define EIGEN(F, name)
#define EIGEN2(F, name)
#define XSIMD(F, name)
#define XSIMD2(F, name)
#define GLIBC2(F, name)
#define SLEEF2(F, name, accuracy)
#define LIBMVEC2(F, name)                     \
  __m128d _ZGVbN2vv_##name(__m128d, __m128d); \
  __m128 _ZGVbN4vv_##name##f(__m128, __m128);
#define LIBMVEC(F, name)            \
  __m128d _ZGVbN2v_##name(__m128d); \
  __m128 _ZGVbN4v_##name##f(__m128);
extern "C" {
#include "bench/vector_math_peers.def"
}
#undef LIBMVEC
#undef LIBMVEC2

namespace {

template <class T, auto f>
void loop(std::int32_t n, const T* a, const T* b, T* r) {
  for (std::int32_t i = 0; i < n; ++i) {
    if constexpr (requires(T x) { f(x); })
      r[i] = f(a[i]);
    else
      r[i] = f(a[i], b[i]);
  }
}
template <auto f>
void pairs(std::int32_t n, const double* a, const double* b, double* r) {
  for (std::int32_t i = 0; i < n; i += 2) {
    if constexpr (requires(__m128d x) { f(x); })
      _mm_storeu_pd(r + i, f(_mm_loadu_pd(a + i)));
    else
      _mm_storeu_pd(r + i, f(_mm_loadu_pd(a + i), _mm_loadu_pd(b + i)));
  }
}
template <auto f>
void quads(std::int32_t n, const float* a, const float* b, float* r) {
  for (std::int32_t i = 0; i < n; i += 4) {
    if constexpr (requires(__m128 x) { f(x); })
      _mm_storeu_ps(r + i, f(_mm_loadu_ps(a + i)));
    else
      _mm_storeu_ps(r + i, f(_mm_loadu_ps(a + i), _mm_loadu_ps(b + i)));
  }
}
// Functions with two results; the second goes to a vector of its own.
template <class T>
T* second_result(std::int32_t n) {
  static std::vector<T> other;
  other.resize(static_cast<std::size_t>(n));
  return other.data();
}
template <class T, auto f>
void loop_of_two(std::int32_t n, const T* a, const T*, T* r) {
  T* const other = second_result<T>(n);
  for (std::int32_t i = 0; i < n; ++i) f(a[i], r + i, other + i);
}
template <auto f>
void pairs_of_two(std::int32_t n, const double* a, const double*, double* r) {
  double* const other = second_result<double>(n);
  for (std::int32_t i = 0; i < n; i += 2) {
    const auto both = f(_mm_loadu_pd(a + i));
    _mm_storeu_pd(r + i, both.x);
    _mm_storeu_pd(other + i, both.y);
  }
}
template <auto f>
void quads_of_two(std::int32_t n, const float* a, const float*, float* r) {
  float* const other = second_result<float>(n);
  for (std::int32_t i = 0; i < n; i += 4) {
    const auto both = f(_mm_loadu_ps(a + i));
    _mm_storeu_ps(r + i, both.x);
    _mm_storeu_ps(other + i, both.y);
  }
}
template <class T, class Expression>
void arrays(std::int32_t n, const T* a, [[maybe_unused]] const T* b, T* r) {
  using Array = Eigen::Array<T, Eigen::Dynamic, 1>;
  using Argument = Eigen::Map<const Array>;
  if constexpr (requires { Expression()(Argument(a, n)); })
    Eigen::Map<Array>(r, n) = Expression()(Argument(a, n));
  else
    Eigen::Map<Array>(r, n) = Expression()(Argument(a, n), Argument(b, n));
}
template <class T, class Function>
void batches(std::int32_t n, const T* a, const T* b, T* r) {
  using Batch = xsimd::batch<T, xsimd::sse2>;
  for (std::int32_t i = 0; i < n; i += static_cast<std::int32_t>(Batch::size)) {
    if constexpr (requires(Batch x) { Function()(x); })
      Function()(Batch::load_unaligned(a + i)).store_unaligned(r + i);
    else
      Function()(Batch::load_unaligned(a + i), Batch::load_unaligned(b + i)).store_unaligned(r + i);
  }
}
template <class T>
void batches_of_two(std::int32_t n, const T* a, const T*, T* r) {
  using Batch = xsimd::batch<T, xsimd::sse2>;
  T* const other = second_result<T>(n);
  for (std::int32_t i = 0; i < n; i += static_cast<std::int32_t>(Batch::size)) {
    const auto both = xsimd::sincos(Batch::load_unaligned(a + i));
    both.first.store_unaligned(r + i);
    both.second.store_unaligned(other + i);
  }
}
auto plus(const auto& a, const auto& b) { return a + b; }
auto minus(const auto& a, const auto& b) { return a - b; }
auto times(const auto& a, const auto& b) { return a * b; }
auto over(const auto& a, const auto& b) { return a / b; }

#undef EIGEN
#define EIGEN(F, name)                                       \
  struct Eigen##F {                                          \
    auto operator()(const auto& a) const { return name(a); } \
  };
#undef EIGEN2
#define EIGEN2(F, name)                                                        \
  struct Eigen##F {                                                            \
    auto operator()(const auto& a, const auto& b) const { return name(a, b); } \
  };
#undef XSIMD
#define XSIMD(F, name)                                              \
  struct Xsimd##F {                                                 \
    auto operator()(const auto& a) const { return xsimd::name(a); } \
  };
#undef XSIMD2
#define XSIMD2(F, name)                                                               \
  struct Xsimd##F {                                                                   \
    auto operator()(const auto& a, const auto& b) const { return xsimd::name(a, b); } \
  };
#undef GLIBC
#undef SLEEF
#define GLIBC(F, name)
#define SLEEF(F, name, accuracy)
#define LIBMVEC(F, name)
#define LIBMVEC2(F, name)
#include "bench/vector_math_peers.def"

constexpr int u05 = 1, u10 = 1, u15 = 1, u35 = 4;

}  // namespace

#undef GLIBC
#undef GLIBC2
#undef SLEEF
#undef SLEEF2
#undef LIBMVEC
#undef LIBMVEC2
#undef EIGEN
#undef EIGEN2
#undef XSIMD
#undef XSIMD2
#define EIGEN2(F, name) EIGEN(F, name)
#define XSIMD2(F, name) XSIMD(F, name)
#define GLIBC2(F, name) {#F, "glibc", 1, true, loop<double, static_cast<double (*)(double, double)>(name)>},
#define SLEEF2(F, name, accuracy) SLEEF(F, name, accuracy)
#define LIBMVEC2(F, name) {#F, "libmvec", 4, false, pairs<_ZGVbN2vv_##name>},
#define GLIBC(F, name) {#F, "glibc", 1, true, loop<double, static_cast<double (*)(double)>(name)>},
#define SLEEF(F, name, accuracy) {#F, "SLEEF " #accuracy, accuracy, false, pairs<Sleef_##name##d2_##accuracy##sse2>},
#define LIBMVEC(F, name) {#F, "libmvec", 4, false, pairs<_ZGVbN2v_##name>},
#define EIGEN(F, name) {#F, "Eigen", 4, false, arrays<double, Eigen##F>},
#define XSIMD(F, name) {#F, "xsimd", 4, false, batches<double, Xsimd##F>},
template <>
std::vector<Peer<double>> peers() {
  return {
      {"SinCos", "glibc", 1, true, loop_of_two<double, sincos>},
      {"SinCos", "SLEEF u10", u10, false, pairs_of_two<Sleef_sincosd2_u10sse2>},
      {"SinCos", "SLEEF u35", u35, false, pairs_of_two<Sleef_sincosd2_u35sse2>},
      {"SinCos", "xsimd", 4, false, batches_of_two<double>},
#include "bench/vector_math_peers.def"
  };
}

#undef GLIBC
#undef GLIBC2
#undef SLEEF
#undef SLEEF2
#undef LIBMVEC
#undef LIBMVEC2
#undef EIGEN
#undef XSIMD
#define GLIBC2(F, name) GLIBC(F, name)
#define SLEEF2(F, name, accuracy) SLEEF(F, name, accuracy)
#define LIBMVEC2(F, name) {#F, "libmvec", 4, false, quads<_ZGVbN4vv_##name##f>},
#define GLIBC(F, name) {#F, "glibc", 1, true, loop<float, name##f>},
#define SLEEF(F, name, accuracy) {#F, "SLEEF " #accuracy, accuracy, false, quads<Sleef_##name##f4_##accuracy##sse2>},
#define LIBMVEC(F, name) {#F, "libmvec", 4, false, quads<_ZGVbN4v_##name##f>},
#define EIGEN(F, name) {#F, "Eigen", 4, false, arrays<float, Eigen##F>},
#define XSIMD(F, name) {#F, "xsimd", 4, false, batches<float, Xsimd##F>},
template <>
std::vector<Peer<float>> peers() {
  return {
      {"SinCos", "glibc", 1, true, loop_of_two<float, sincosf>},
      {"SinCos", "SLEEF u10", u10, false, quads_of_two<Sleef_sincosf4_u10sse2>},
      {"SinCos", "SLEEF u35", u35, false, quads_of_two<Sleef_sincosf4_u35sse2>},
      {"SinCos", "xsimd", 4, false, batches_of_two<float>},
#include "bench/vector_math_peers.def"
  };
}

#else

template <>
std::vector<Peer<double>> peers() {
  return {};
}
template <>
std::vector<Peer<float>> peers() {
  return {};
}

#endif
