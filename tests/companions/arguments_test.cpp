// arguments_test: which argument lists are refused, and as what, beside the reference BLAS and LAPACK.
// SPDX-License-Identifier: MIT
//
// Calls are drawn with flags, sizes and leading dimensions right and wrong in all combinations. The reference reports
// the first bad argument to XERBLA, which this program replaces; accepted calls must also give the reference's results.
#include <gtest/gtest.h>

#include <array>

#include "tests/companions/sequential.h"

namespace {

int32_t refused_argument;  // what the reference complained about last, 0 if it did not

#define ORIN_EVERY_ROUTINE(X) X(gemm) X(gemv) X(syrk) X(syr) X(trmm) X(potrf) X(potri) X(trtri) X(syev) X(spevd)

}  // namespace

extern "C" void xerbla_(const char*, const int32_t* argument, std::size_t) { refused_argument = *argument; }

// The reference's routines have the types of the entries under test.
#define ORIN_REFERENCE(routine)                                                          \
  extern "C" std::remove_pointer_t<decltype(Sequential<double>::routine)> d##routine##_; \
  extern "C" std::remove_pointer_t<decltype(Sequential<float>::routine)> s##routine##_;
ORIN_EVERY_ROUTINE(ORIN_REFERENCE)

namespace {

template <class T>
struct Reference;
#define ORIN_MEMBER_D(routine) static constexpr auto routine = &d##routine##_;
#define ORIN_MEMBER_S(routine) static constexpr auto routine = &s##routine##_;
template <>
struct Reference<double> {
  ORIN_EVERY_ROUTINE(ORIN_MEMBER_D)
};
template <>
struct Reference<float> {
  ORIN_EVERY_ROUTINE(ORIN_MEMBER_S)
};

// Every array and scalar a call may use; two of them are handed to the two implementations.
template <class T>
struct Operands {
  std::array<T, 64> a, b, c, work;
  std::array<int32_t, 64> iwork{};
  int32_t info = 0;

  explicit Operands(Draw& draw) {
    for (auto* array : {&a, &b, &c, &work})
      for (T& x : *array) x = draw.value<T>();
    for (std::size_t i = 0; i < a.size(); i += 1)
      a[i] += i % 5 == 0 ? T(4) : T(0);  // for some shapes positive definite
  }

  // The largest difference in a, b and c, relative to the largest element where that is above 1; columns of c
  // (eigenvectors) are determined up to their signs only.
  T distance(const Operands& other) const {
    T worst = 0, largest = 1;
    for (std::size_t i = 0; i < a.size(); ++i)
      for (const auto& [x, y] :
           {std::pair{a[i], other.a[i]}, {b[i], other.b[i]}, {std::fabs(c[i]), std::fabs(other.c[i])}}) {
        worst = !(std::fabs(x - y) <= worst) ? std::fabs(x - y) : worst;
        largest = std::max(largest, std::fabs(y));
      }
    return worst / largest;
  }
  bool same_bits(const Operands& other) const { return a == other.a && b == other.b && c == other.c; }
};

template <class T>
class Arguments : public testing::Test {
 protected:
  // Draws calls; `call(routines, draw, operands)` makes one with either implementation from the same draws.
  template <class Call>
  void compare(unsigned seed, Call call) {
    std::array<int, 16> refusals{};
    int accepted = 0;
    for (unsigned round = 0; round < 4000; ++round) {
      const unsigned key = seed * 100000 + round;
      Draw contents(key);
      Operands<T> expected(contents), result = expected;
      Draw first(key), second(key);
      refused_argument = 0;
      call(Reference<T>(), first, expected);
      call(Sequential<T>(), second, result);
      ++refusals[static_cast<std::size_t>(refused_argument)];
      ASSERT_EQ(result.info, expected.info) << "round " << round;
      if (refused_argument != 0) {
        ASSERT_TRUE(result.same_bits(expected)) << "round " << round << " argument " << refused_argument;
      } else if (result.info == 0) {
        ++accepted;
        ASSERT_LE(result.distance(expected), 400 * Sequential<T>::u) << "round " << round;
      }
    }
    EXPECT_GT(accepted, 20);
    for (const int argument : refusable) EXPECT_GT(refusals[static_cast<std::size_t>(argument)], 0) << argument;
  }
  std::vector<int> refusable;  // the arguments that can be wrong: each must have been at least once
};
using Elements = testing::Types<double, float>;
TYPED_TEST_SUITE(Arguments, Elements);

char trans(Draw& draw) { return draw.one_of({'N', 'n', 'T', 't', 'C', 'c', 'N', 'X'}); }
char uplo(Draw& draw) { return draw.one_of({'U', 'u', 'L', 'l', 'L', 'U', 'l', '\x0C'}); }
char diag(Draw& draw) { return draw.one_of({'U', 'u', 'N', 'n', 'N', 'N', 'n', 'T'}); }
char jobz(Draw& draw) { return draw.one_of({'N', 'n', 'V', 'v', 'V', 'V', 'v', 'A'}); }
int size(Draw& draw) { return draw.one_of({-1, 0, 1, 2, 3, 4, 2, 3, 4}); }
int leading(Draw& draw) { return draw.one_of({-1, 0, 1, 2, 3, 4, 5, 4, 5, 5}); }
int increment(Draw& draw) { return draw.one_of({-2, -1, 0, 1, 1, 2}); }
template <class T>
T factor(Draw& draw) {
  return draw.one_of({T(0), T(1), T(-0.5)});
}

TYPED_TEST(Arguments, Gemm) {
  using T = TypeParam;
  this->refusable = {1, 2, 3, 4, 5, 8, 10, 13};
  this->compare(1, [](auto routines, Draw& draw, Operands<T>& on) {
    const char ta = trans(draw), tb = trans(draw);
    const int m = size(draw), n = size(draw), k = size(draw), lda = leading(draw), ldb = leading(draw),
              ldc = leading(draw);
    const T alpha = factor<T>(draw), beta = factor<T>(draw);
    routines.gemm(&ta, &tb, &m, &n, &k, &alpha, on.a.data(), &lda, on.b.data(), &ldb, &beta, on.c.data(), &ldc);
  });
}

TYPED_TEST(Arguments, Gemv) {
  using T = TypeParam;
  this->refusable = {1, 2, 3, 6, 8, 11};
  this->compare(2, [](auto routines, Draw& draw, Operands<T>& on) {
    const char ta = trans(draw);
    const int m = size(draw), n = size(draw), lda = leading(draw), incx = increment(draw), incy = increment(draw);
    const T alpha = factor<T>(draw), beta = factor<T>(draw);
    routines.gemv(&ta, &m, &n, &alpha, on.a.data(), &lda, on.b.data(), &incx, &beta, on.c.data(), &incy);
  });
}

TYPED_TEST(Arguments, SyrkAndSyr) {
  using T = TypeParam;
  this->refusable = {1, 2, 3, 4, 7, 10};
  this->compare(3, [](auto routines, Draw& draw, Operands<T>& on) {
    const char ul = uplo(draw), ta = trans(draw);
    const int n = size(draw), k = size(draw), lda = leading(draw), ldc = leading(draw);
    const T alpha = factor<T>(draw), beta = factor<T>(draw);
    routines.syrk(&ul, &ta, &n, &k, &alpha, on.a.data(), &lda, &beta, on.c.data(), &ldc);
  });
  this->refusable = {1, 2, 5, 7};
  this->compare(4, [](auto routines, Draw& draw, Operands<T>& on) {
    const char ul = uplo(draw);
    const int n = size(draw), incx = increment(draw), lda = leading(draw);
    const T alpha = factor<T>(draw);
    routines.syr(&ul, &n, &alpha, on.b.data(), &incx, on.a.data(), &lda);
  });
}

TYPED_TEST(Arguments, Trmm) {
  using T = TypeParam;
  this->refusable = {1, 2, 3, 4, 5, 6, 9, 11};
  this->compare(5, [](auto routines, Draw& draw, Operands<T>& on) {
    const char side = draw.one_of({'L', 'l', 'R', 'r', 'r', 'M'}), ul = uplo(draw), ta = trans(draw), di = diag(draw);
    const int m = size(draw), n = size(draw), lda = leading(draw), ldb = leading(draw);
    const T alpha = factor<T>(draw);
    routines.trmm(&side, &ul, &ta, &di, &m, &n, &alpha, on.a.data(), &lda, on.b.data(), &ldb);
  });
}

TYPED_TEST(Arguments, FactorsAndInverses) {
  using T = TypeParam;
  this->refusable = {1, 2, 4};
  for (const bool inverse : {false, true})
    this->compare(6 + inverse, [=](auto routines, Draw& draw, Operands<T>& on) {
      const char ul = uplo(draw);
      const int n = size(draw), lda = leading(draw);
      (inverse ? routines.potri : routines.potrf)(&ul, &n, on.a.data(), &lda, &on.info);
    });
  this->refusable = {1, 2, 3, 5};
  this->compare(8, [](auto routines, Draw& draw, Operands<T>& on) {
    const char ul = uplo(draw), di = diag(draw);
    const int n = size(draw), lda = leading(draw), zero = draw.below(60);
    on.a[static_cast<std::size_t>(zero)] = 0;
    routines.trtri(&ul, &di, &n, on.a.data(), &lda, &on.info);
  });
}

// Eigenvectors are compared in c, the destroyed matrix is not.
TYPED_TEST(Arguments, Eigensolvers) {
  using T = TypeParam;
  this->refusable = {1, 2, 3, 5, 8};
  this->compare(9, [](auto routines, Draw& draw, Operands<T>& on) {
    const char jz = jobz(draw), ul = uplo(draw);
    const int n = size(draw), lda = leading(draw), lwork = draw.one_of({-2, -1, 0, 1, 3, 8, 11, 64, 64});
    routines.syev(&jz, &ul, &n, on.c.data(), &lda, on.b.data(), on.work.data(), &lwork, &on.info);
    if (jz == 'N' || jz == 'n') on.c.fill(on.info == 0 && n > 0 ? T(0) : on.c[0]);
  });
  this->refusable = {1, 2, 3, 7, 9, 11};
  this->compare(10, [](auto routines, Draw& draw, Operands<T>& on) {
    const char jz = jobz(draw), ul = uplo(draw);
    const int n = size(draw), ldz = leading(draw);
    const int lwork = draw.one_of({-2, -1, 0, 1, 8, 41, 64, 64}), liwork = draw.one_of({-2, -1, 0, 1, 3, 23, 64, 64});
    const auto ap = on.a;
    routines.spevd(&jz, &ul, &n, on.a.data(), on.b.data(), on.c.data(), &ldz, on.work.data(), &lwork, on.iwork.data(),
                   &liwork, &on.info);
    if (on.info == 0) on.a = ap;
    if (on.info == 0 && (lwork == -1 || liwork == -1)) on.b[0] = on.work[0] + static_cast<T>(on.iwork[0]);
  });
}

}  // namespace
