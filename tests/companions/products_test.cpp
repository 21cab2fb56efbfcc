// products_test: matrix and vector products beside sums in extended precision.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <functional>

#include "tests/companions/sequential.h"

namespace {

using Element = std::function<Real(int, int)>;

// The largest error of result(i, j) = alpha sum_p a(i, p) b(p, j) + beta c(i, j), in units of the error bound.
template <class T, class Chosen>
Real worst_error(Matrix<T>& result, int depth, T alpha, const Element& a, const Element& b, T beta, Chosen chosen) {
  Real worst = 0;
  for (int j = 0; j < result.columns; ++j)
    for (int i = 0; i < result.rows; ++i) {
      if (!chosen(i, j)) continue;
      Real sum = beta == 0 ? 0 : Real(beta) * result.before(i, j), size = std::fabs(sum);
      for (int p = 0; p < depth && alpha != 0; ++p) {
        const Real term = a(i, p) * b(p, j) * alpha;
        sum += term;
        size += std::fabs(term);
      }
      const Real error = std::fabs(result(i, j) - sum), bound = (depth + 3) * Sequential<T>::u * size;
      if (!(error <= bound)) worst = std::max(worst, bound > 0 && error == error ? error / bound : Real(1e9));
    }
  return worst;
}

template <class T>
Element element(Matrix<T>& m, bool transposed = false) {
  return [&m, transposed](int i, int j) { return Real(transposed ? m(j, i) : m(i, j)); };
}

const auto everywhere = [](int, int) { return true; };
int some_size(Draw& draw) { return draw.one_of({0, 1, 2, 3, 4, 5, 7, 8, 9, 16, 17, 33, 70, 130}); }
template <class T>
T some_factor(Draw& draw) {
  return draw.one_of({T(0), T(1), T(-1), T(0.7), T(-2.5)});
}

template <class T>
class Products : public testing::Test {};
using Elements = testing::Types<double, float>;
TYPED_TEST_SUITE(Products, Elements);

TYPED_TEST(Products, Gemm) {
  using T = TypeParam;
  Draw draw(1);
  for (int round = 0; round < 400; ++round) {
    const char transa = draw.one_of({'N', 'n', 'T', 't', 'C', 'c'}),
               transb = draw.one_of({'N', 'n', 'T', 't', 'C', 'c'});
    const int m = some_size(draw), n = some_size(draw), k = round % 20 == 0 ? 600 : some_size(draw);
    const T alpha = some_factor<T>(draw), beta = some_factor<T>(draw);
    Matrix<T> a(transposes(transa) ? k : m, transposes(transa) ? m : k, draw, draw.below(4));
    Matrix<T> b(transposes(transb) ? n : k, transposes(transb) ? k : n, draw, draw.below(4));
    Matrix<T> c(m, n, draw, draw.below(4));
    if (alpha == 0) a.set(T(nan_real)), b.set(T(nan_real));
    if (beta == 0) c.set(T(nan_real));
    Sequential<T>::gemm(&transa, &transb, &m, &n, &k, &alpha, a.data(), &a.leading, b.data(), &b.leading, &beta,
                        c.data(), &c.leading);
    SCOPED_TRACE(testing::Message() << transa << transb << ' ' << m << ' ' << n << ' ' << k << ' ' << alpha << ' '
                                    << beta);
    ASSERT_LE(
        worst_error(c, k, alpha, element(a, transposes(transa)), element(b, transposes(transb)), beta, everywhere), 1);
    ASSERT_TRUE(a.kept() && b.kept() && c.kept_but(everywhere));
  }
}

TYPED_TEST(Products, Syrk) {
  using T = TypeParam;
  Draw draw(2);
  for (int round = 0; round < 300; ++round) {
    const char uplo = draw.one_of({'U', 'u', 'L', 'l'}), trans = draw.one_of({'N', 'n', 'T', 't', 'C', 'c'});
    const int n = some_size(draw), k = round % 20 == 0 ? 600 : some_size(draw);
    const T alpha = some_factor<T>(draw), beta = some_factor<T>(draw);
    Matrix<T> a(transposes(trans) ? k : n, transposes(trans) ? n : k, draw, draw.below(4)),
        c(n, n, draw, draw.below(4));
    const auto triangle = [=](int i, int j) { return in_triangle(uplo, i, j); };
    if (alpha == 0) a.set(T(nan_real));
    if (beta == 0) c.set(T(nan_real));
    Sequential<T>::syrk(&uplo, &trans, &n, &k, &alpha, a.data(), &a.leading, &beta, c.data(), &c.leading);
    SCOPED_TRACE(testing::Message() << uplo << trans << ' ' << n << ' ' << k << ' ' << alpha << ' ' << beta);
    const bool turned = transposes(trans);
    ASSERT_LE(worst_error(c, k, alpha, element(a, turned), element(a, !turned), beta, triangle), 1);
    ASSERT_TRUE(a.kept() && c.kept_but(triangle));
  }
}

TYPED_TEST(Products, Trmm) {
  using T = TypeParam;
  Draw draw(3);
  for (int round = 0; round < 400; ++round) {
    const char side = draw.one_of({'L', 'l', 'R', 'r'}), uplo = draw.one_of({'U', 'u', 'L', 'l'});
    const char transa = draw.one_of({'N', 'n', 'T', 't', 'C', 'c'}), diag = draw.one_of({'U', 'u', 'N', 'n'});
    const int m = some_size(draw), n = some_size(draw);
    const T alpha = some_factor<T>(draw);
    const bool left = names_lower(side), unit = diag == 'U' || diag == 'u';
    Matrix<T> a(left ? m : n, left ? m : n, draw, draw.below(4)), b(m, n, draw, draw.below(4));
    const auto stored = [=](int i, int j) { return alpha != 0 && in_triangle(uplo, i, j) && !(unit && i == j); };
    a.set(T(nan_real), [&](int i, int j) { return !stored(i, j); });
    if (alpha == 0) b.set(T(nan_real));
    Sequential<T>::trmm(&side, &uplo, &transa, &diag, &m, &n, &alpha, a.data(), &a.leading, b.data(), &b.leading);
    SCOPED_TRACE(testing::Message() << side << uplo << transa << diag << ' ' << m << ' ' << n << ' ' << alpha);
    const Element factor = [&](int i, int j) {
      if (transposes(transa)) std::swap(i, j);
      return stored(i, j) ? Real(a(i, j)) : Real(unit && i == j);
    };
    const Element original = [&](int i, int j) { return Real(b.before(i, j)); };
    ASSERT_LE(worst_error(b, left ? m : n, alpha, left ? factor : original, left ? original : factor, T(0), everywhere),
              1);
    ASSERT_TRUE(a.kept() && b.kept_but(everywhere));
  }
}

// A vector with an increment is a row of a matrix, its elements numbered backwards where the increment is negative.
TYPED_TEST(Products, VectorsWithIncrements) {
  using T = TypeParam;
  Draw draw(4);
  for (int round = 0; round < 400; ++round) {
    const char trans = draw.one_of({'N', 'n', 'T', 't', 'C', 'c'}), uplo = draw.one_of({'U', 'u', 'L', 'l'});
    const int m = round % 20 == 0 ? 1100 : some_size(draw), n = some_size(draw);
    const int incx = draw.one_of({1, -1, 2, -3}), incy = draw.one_of({1, -1, 2, -3});
    const T alpha = some_factor<T>(draw), beta = some_factor<T>(draw);
    const int depth = transposes(trans) ? m : n, length = transposes(trans) ? n : m;
    const auto at = [](int i, int count, int increment) { return increment > 0 ? i : count - 1 - i; };
    Matrix<T> a(m, n, draw, draw.below(4)), x(1, depth, draw, std::abs(incx) - 1),
        y(1, length, draw, std::abs(incy) - 1);
    if (alpha == 0) a.set(T(nan_real)), x.set(T(nan_real));
    if (beta == 0) y.set(T(nan_real));
    Sequential<T>::gemv(&trans, &m, &n, &alpha, a.data(), &a.leading, x.data(), &incx, &beta, y.data(), &incy);
    SCOPED_TRACE(testing::Message() << trans << uplo << ' ' << m << ' ' << n << ' ' << incx << ' ' << incy << ' '
                                    << alpha);
    const Element across = [&](int, int p) { return Real(x(0, at(p, depth, incx))); };
    const Element down = [&](int p, int j) {
      const int i = at(j, length, incy);
      return Real(transposes(trans) ? a(p, i) : a(i, p));
    };
    const bool idle = m == 0 || n == 0;
    const auto worked_on = [=](int, int) { return !idle; };
    ASSERT_LE(worst_error(y, depth, alpha, across, down, beta, worked_on), 1);
    ASSERT_TRUE(a.kept() && x.kept() && y.kept_but(worked_on));

    Matrix<T> c(depth, depth, draw, draw.below(4));
    if (depth > 200) continue;
    const auto triangle = [=](int i, int j) { return in_triangle(uplo, i, j); };
    Sequential<T>::syr(&uplo, &depth, &alpha, x.data(), &incx, c.data(), &c.leading);
    const Element tall = [&](int i, int) { return across(0, i); };
    const Element wide = [&](int, int j) { return across(0, j); };
    ASSERT_LE(worst_error(c, 1, alpha, tall, wide, T(1), triangle), 1);
    ASSERT_TRUE(x.kept() && c.kept_but(triangle));
  }
}

// FNV-1a over the bits of a product: the same on every target.
template <class T>
std::uint64_t product_digest(int m, int n, int k) {
  Draw draw(5);
  Matrix<T> a(m, k, draw), b(k, n, draw), c(m, n, draw);
  const T alpha = T(0.3), beta = T(-1.1);
  Sequential<T>::gemm("N", "N", &m, &n, &k, &alpha, a.data(), &m, b.data(), &k, &beta, c.data(), &m);
  Sequential<T>::syrk("L", "N", &m, &k, &alpha, a.data(), &m, &beta, c.data(), &m);
  std::uint64_t digest = 0xCBF29CE484222325u;
  const auto* bytes = reinterpret_cast<const unsigned char*>(c.data());
  for (std::size_t i = 0; i < sizeof(T) * static_cast<std::size_t>(m * n); ++i)
    digest = (digest ^ bytes[i]) * 0x100000001B3u;
  return digest;
}

TEST(ProductBits, AreTheSameOnEveryTarget) {
  EXPECT_EQ(product_digest<double>(200, 201, 700), 8332156191707328041u);
  EXPECT_EQ(product_digest<float>(200, 201, 700), 18240071210441915780u);
}

// An element does not depend on the block of the matrix it is computed with.
TYPED_TEST(Products, ElementsDoNotDependOnTheirPlace) {
  using T = TypeParam;
  Draw draw(6);
  const int m = 150, n = 140, k = 300;
  const T one = 1, zero = 0;
  Matrix<T> a(m, k, draw), b(k, n, draw), whole(m, n, draw);
  Sequential<T>::gemm("N", "N", &m, &n, &k, &one, a.data(), &m, b.data(), &k, &zero, whole.data(), &m);
  for (int round = 0; round < 100; ++round) {
    const int i0 = draw.below(m), j0 = draw.below(n), rows = 1 + draw.below(m - i0), columns = 1 + draw.below(n - j0);
    Matrix<T> part(rows, columns, draw, draw.below(3));
    Sequential<T>::gemm("N", "N", &rows, &columns, &k, &one, &a(i0, 0), &m, &b(0, j0), &k, &zero, part.data(),
                        &part.leading);
    for (int j = 0; j < columns; ++j)
      for (int i = 0; i < rows; ++i) ASSERT_EQ(part(i, j), whole(i0 + i, j0 + j)) << rows << ' ' << columns;
  }
}

}  // namespace
