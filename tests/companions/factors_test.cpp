// factors_test: Cholesky factors, inverses and eigensystems, by the equations that define them.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/companions/sequential.h"

namespace {

const auto everywhere = [](int, int) { return true; };

template <class T>
class Factors : public testing::Test {};
using Elements = testing::Types<double, float>;
TYPED_TEST_SUITE(Factors, Elements);

// Fills the named triangle with that of R R' / n + I / 4 and the other one with NaN; returns the whole in extended
// precision.
template <class T>
std::vector<Real> set_positive_definite(Matrix<T>& a, char uplo, Draw& draw) {
  const int n = a.rows;
  std::vector<Real> r(static_cast<std::size_t>(n * n)), whole(r.size());
  for (Real& x : r) x = draw.value<T>();
  for (int j = 0; j < n; ++j)
    for (int i = 0; i <= j; ++i) {
      Real sum = i == j ? 0.25L : 0;
      for (int p = 0; p < n; ++p)
        sum += r[static_cast<std::size_t>(i * n + p)] * r[static_cast<std::size_t>(j * n + p)] / n;
      whole[static_cast<std::size_t>(i * n + j)] = whole[static_cast<std::size_t>(j * n + i)] = static_cast<T>(sum);
    }
  for (int j = 0; j < n; ++j)
    for (int i = 0; i < n; ++i)
      a(i, j) = in_triangle(uplo, i, j) ? static_cast<T>(whole[static_cast<std::size_t>(i * n + j)]) : T(nan_real);
  a.remember();
  return whole;
}

// Element (i, j) of the lower triangular matrix that is stored in the named triangle, as it is or transposed.
template <class T>
Real lower(Matrix<T>& a, char uplo, int i, int j) {
  return i < j ? 0 : names_lower(uplo) ? a(i, j) : a(j, i);
}

TYPED_TEST(Factors, CholeskyAndInverse) {
  using T = TypeParam;
  Draw draw(11);
  for (const int n : {0, 1, 2, 3, 7, 20, 32, 33, 64, 65, 100, 150})
    for (const char uplo : {'L', 'l', 'U', 'u'}) {
      SCOPED_TRACE(testing::Message() << uplo << n);
      const auto triangle = [=](int i, int j) { return in_triangle(uplo, i, j); };
      Matrix<T> a(n, n, draw, draw.below(3));
      const std::vector<Real> whole = set_positive_definite(a, uplo, draw);
      int32_t info = 99;
      Sequential<T>::potrf(&uplo, &n, a.data(), &a.leading, &info);
      ASSERT_EQ(info, 0);
      ASSERT_TRUE(a.kept_but(triangle));
      for (int j = 0; j < n; ++j)
        for (int i = j; i < n; ++i) {  // |A - L L'| <= (n + 1) u |L| |L'|
          Real sum = 0, size = 0;
          for (int p = 0; p <= j; ++p) {
            const Real term = lower(a, uplo, i, p) * lower(a, uplo, j, p);
            sum += term;
            size += std::fabs(term);
          }
          ASSERT_LE(std::fabs(sum - whole[static_cast<std::size_t>(i * n + j)]), (n + 2) * Sequential<T>::u * size)
              << i << ' ' << j;
        }
      Sequential<T>::potri(&uplo, &n, a.data(), &a.leading, &info);
      ASSERT_EQ(info, 0);
      ASSERT_TRUE(a.kept_but(triangle));
      Real worst = 0;
      for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
          Real sum = i == j ? -1 : 0;
          for (int p = 0; p < n; ++p)
            sum += whole[static_cast<std::size_t>(i * n + p)] * lower(a, uplo, std::max(p, j), std::min(p, j));
          worst = std::max(worst, std::fabs(sum));
        }
      ASSERT_LE(worst, 50 * (n + 1) * Sequential<T>::u);  // the condition number is below 10
    }
}

TYPED_TEST(Factors, CholeskyNamesTheFirstBadMinor) {
  using T = TypeParam;
  Draw draw(12);
  for (const int n : {1, 5, 40, 70})
    for (const char uplo : {'L', 'U'})
      for (const T pivot : {T(-3), T(0), T(nan_real)})
        for (const int bad : {1, n / 2 + 1, n}) {
          Matrix<T> a(n, n, draw);
          a.set(0);
          a.set(1, [](int i, int j) { return i == j; });
          a.set(pivot, [=](int i, int j) { return i == j && i == bad - 1; });
          int32_t info = 99;
          Sequential<T>::potrf(&uplo, &n, a.data(), &a.leading, &info);
          ASSERT_EQ(info, bad) << uplo << n << ' ' << pivot;
          Sequential<T>::potri(&uplo, &n, a.data(), &a.leading, &info);
          ASSERT_EQ(info, pivot == 0 ? bad : 0) << uplo << n << ' ' << pivot;
        }
}

TYPED_TEST(Factors, TriangularInverse) {
  using T = TypeParam;
  Draw draw(13);
  for (const int n : {0, 1, 2, 6, 31, 32, 33, 90})
    for (const char uplo : {'L', 'l', 'U', 'u'})
      for (const char diag : {'N', 'n', 'U', 'u'}) {
        SCOPED_TRACE(testing::Message() << uplo << diag << n);
        const bool unit = diag == 'U' || diag == 'u';
        const auto stored = [=](int i, int j) { return in_triangle(uplo, i, j) && !(unit && i == j); };
        Matrix<T> a(n, n, draw, draw.below(3));
        for (int j = 0; j < n; ++j)
          for (int i = 0; i < n; ++i) a(i, j) = i == j ? T(1.5) + draw.value<T>() / 2 : a(i, j) / static_cast<T>(n);
        a.set(T(nan_real), [&](int i, int j) { return !stored(i, j); });
        int32_t info = 99;
        Sequential<T>::trtri(&uplo, &diag, &n, a.data(), &a.leading, &info);
        ASSERT_EQ(info, 0);
        ASSERT_TRUE(a.kept_but(stored));
        const auto inverse = [&](int i, int j) { return unit && i == j ? Real(1) : lower(a, uplo, i, j); };
        const auto original = [&](int i, int j) {
          return unit && i == j ? Real(1) : Real(names_lower(uplo) ? a.before(i, j) : a.before(j, i));
        };
        for (int j = 0; j < n; ++j)
          for (int i = j; i < n; ++i) {
            Real sum = i == j ? -1 : 0;
            for (int p = j; p <= i; ++p) sum += original(i, p) * inverse(p, j);
            ASSERT_LE(std::fabs(sum), 20 * (n + 1) * Sequential<T>::u) << i << ' ' << j;
          }
        if (n == 0 || unit) continue;
        const int zero = draw.below(n);
        a.set(T(-0.0), [=](int i, int j) { return i == zero && j == zero; });
        Sequential<T>::trtri(&uplo, &diag, &n, a.data(), &a.leading, &info);
        ASSERT_EQ(info, zero + 1);
        ASSERT_TRUE(a.kept());
      }
}

// A symmetric matrix, the solver's answers for it in all forms, and how well they fit.
template <class T>
struct Eigensystem {
  Eigensystem(int order, Draw& d) : n(order), draw(d), whole(static_cast<std::size_t>(n * n)) {}

  template <class Fill>
  void fill(Fill element) {
    for (int j = 0; j < n; ++j)
      for (int i = 0; i <= j; ++i) at(i, j) = at(j, i) = static_cast<T>(element(i, j));
  }
  T& at(int i, int j) { return whole[static_cast<std::size_t>(i * n + j)]; }

  // Every form of the call; eigenvalues, residuals and orthogonality within `slack` n u |A|.
  void check(Real slack) {
    Real norm = 0;
    for (const T x : whole) norm = std::max(norm, std::fabs(Real(x)));
    const Real bound =
        slack * n * Sequential<T>::u * norm * std::sqrt(Real(n)) + n * Real(std::numeric_limits<T>::denorm_min());
    std::vector<T> first;
    for (const char* flags : {"Vl", "vU", "NL", "nu"})
      for (const bool packed : {false, true}) {
        const char jobz = flags[0], uplo = flags[1];
        SCOPED_TRACE(testing::Message() << jobz << uplo << n << (packed ? " packed" : " full"));
        const bool vectors = jobz == 'V' || jobz == 'v';
        Matrix<T> z(n, n, draw, draw.below(3)), w(n, 1, draw);
        if (packed)
          solve_packed(jobz, uplo, w, z);
        else
          solve_full(jobz, uplo, w, z);
        ASSERT_TRUE(z.kept_but([&](int i, int j) { return vectors || (!packed && in_triangle(uplo, i, j)); }));
        ASSERT_TRUE(w.kept_but(everywhere));
        ASSERT_TRUE(std::is_sorted(w.data(), w.data() + n));
        if (first.empty()) first.assign(w.data(), w.data() + n);
        for (int j = 0; j < n; ++j) ASSERT_LE(std::fabs(Real(w(j, 0)) - first[static_cast<std::size_t>(j)]), bound);
        if (vectors) check_vectors(w, z, bound);
      }
    values = first;
  }

  const int n;
  Draw& draw;
  std::vector<T> whole, values;

 private:
  void solve_full(char jobz, char uplo, Matrix<T>& w, Matrix<T>& z) {
    const int32_t room = std::max(1, 3 * n - 1);
    Matrix<T> work(room, 1, draw);
    for (int j = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) z(i, j) = in_triangle(uplo, i, j) ? at(i, j) : T(nan_real);
    z.remember();
    int32_t info = 99;
    Sequential<T>::syev(&jobz, &uplo, &n, z.data(), &z.leading, w.data(), work.data(), &room, &info);
    ASSERT_EQ(info, 0);
    ASSERT_TRUE(work.kept_but(everywhere));
  }

  void solve_packed(char jobz, char uplo, Matrix<T>& w, Matrix<T>& z) {
    const bool vectors = jobz == 'V' || jobz == 'v';
    const int32_t room = n < 2     ? 1
                         : vectors ? 1 + 6 * n + n * n
                                   : 2 * n,
                  integer_room = vectors && n > 1 ? 3 + 5 * n : 1;
    Matrix<T> work(room, 1, draw), ap(n * (n + 1) / 2, 1, draw);
    std::vector<int32_t> iwork(static_cast<std::size_t>(integer_room));
    for (int j = 0, place = 0; j < n; ++j)
      for (int i = 0; i < n; ++i)
        if (in_triangle(uplo, i, j)) ap(place++, 0) = at(i, j);
    int32_t info = 99;
    Sequential<T>::spevd(&jobz, &uplo, &n, ap.data(), w.data(), z.data(), &z.leading, work.data(), &room, iwork.data(),
                         &integer_room, &info);
    ASSERT_EQ(info, 0);
    ASSERT_TRUE(work.kept_but(everywhere) && ap.kept_but(everywhere));
    // What is left of the triangle has the tridiagonal matrix on its two diagonals: trace and squares agree with A's.
    Real trace = 0, squares = 0;
    for (int j = 0, place = 0; j < n; ++j)
      for (int i = 0; i < n; ++i) {
        if (!in_triangle(uplo, i, j)) continue;
        const Real t = ap(place++, 0);
        if (i == j) trace += t;
        if (std::abs(i - j) < 2) squares += (i == j ? 1 : 2) * t * t;
        trace -= i == j ? at(i, j) : 0;
        squares -= Real(i == j ? 1 : 2) * at(i, j) * at(i, j);
      }
    Real norm = 0;
    for (const T x : whole) norm += Real(x) * x;
    if (!(norm > 1e-20L && norm < 1e20L)) return;  // the matrix was scaled on the way
    ASSERT_LE(std::fabs(trace), 20 * n * Sequential<T>::u * std::sqrt(norm));
    ASSERT_LE(std::fabs(squares), 20 * n * Sequential<T>::u * norm);
  }

  void check_vectors(Matrix<T>& w, Matrix<T>& z, Real bound) {
    for (int j = 0; j < n; ++j) {
      Real worst = 0, skew = 0;
      for (int i = 0; i < n; ++i) {
        Real residual = -Real(w(j, 0)) * z(i, j), along = i == j ? -1 : 0;
        for (int p = 0; p < n; ++p) {
          residual += Real(at(i, p)) * z(p, j);
          along += Real(z(p, i)) * z(p, j);
        }
        worst = std::max(worst, std::fabs(residual));
        skew = std::max(skew, std::fabs(along));
      }
      ASSERT_LE(worst, bound) << j;
      ASSERT_LE(skew, 10 * n * Sequential<T>::u) << j;
    }
  }
};

TYPED_TEST(Factors, EigensystemsOfRandomAndSpecialMatrices) {
  using T = TypeParam;
  Draw draw(14);
  const T tiny = std::numeric_limits<T>::min() * 4, subnormal = std::numeric_limits<T>::denorm_min() * 3000,
          huge = std::numeric_limits<T>::max() / 64;
  for (const int n : {0, 1, 2, 3, 4, 8, 21, 45, 130}) {
    Eigensystem<T> system(n, draw);
    for (const T scale : {T(1), tiny, subnormal, huge}) {
      system.fill([&](int, int) { return scale * draw.value<T>(); });
      system.check(8);
      if (n > 100) break;
    }
    if (n > 100) break;
    system.fill([](int, int) { return 1; });  // rank one: n and zeros
    system.check(8);
    system.fill([](int i, int j) { return i == j ? i % 3 : 0; });  // clusters, no work at all
    system.check(0);
    system.fill([](int i, int j) { return i == j ? 0.5L : 1 / (Real(1) + i + j); });  // quickly decaying
    system.check(8);
    system.fill([](int i, int j) { return i == j ? 2 : std::abs(i - j) == 1 ? -1 : 0; });
    system.check(8);
    for (int j = 0; j < n; ++j) {
      const Real s = std::sin((j + 1) * 3.141592653589793238462643L / (2 * (n + 1)));
      ASSERT_LE(std::fabs(system.values[static_cast<std::size_t>(j)] - 4 * s * s), 8 * n * Sequential<T>::u) << n;
    }
  }
}

TYPED_TEST(Factors, EigensolverReportsWhatIsNotFinite) {
  using T = TypeParam;
  for (const T bad : {T(nan_real), std::numeric_limits<T>::infinity()})
    for (const char jobz : {'N', 'V'}) {
      const int32_t n = 3, room = 40, integers = 40;
      T a[9] = {1, 2, bad, 2, 1, 0, bad, 0, 1}, ap[6] = {1, 2, bad, 1, 0, 1}, w[3], z[9], work[40];
      int32_t info = 0, iwork[40];
      Sequential<T>::syev(&jobz, "L", &n, a, &n, w, work, &room, &info);
      EXPECT_GT(info, 0);
      info = 0;
      Sequential<T>::spevd(&jobz, "L", &n, ap, w, z, &n, work, &room, iwork, &integers, &info);
      EXPECT_GT(info, 0);
    }
}

// The documented sizes, asked for and one short.
TYPED_TEST(Factors, WorkspaceQueries) {
  using T = TypeParam;
  for (const int32_t n : {0, 1, 2, 50, 5000})
    for (const char jobz : {'N', 'V'}) {
      const bool large = n >= 2, vectors = jobz == 'V';
      const int32_t query = -1, leading = std::max(1, n), least = std::max(1, 3 * n - 1);
      const int32_t packed_least = !large ? 1 : vectors ? 1 + 6 * n + n * n : 2 * n;
      const int32_t integer_least = large && vectors ? 3 + 5 * n : 1;
      const int32_t plenty = INT32_MAX, short_of = least - 1, packed_short = packed_least - 1,
                    integer_short = integer_least - 1;
      T nothing = 7, work = 0;
      int32_t info = 99, iwork = 0;
      Sequential<T>::syev(&jobz, "U", &n, &nothing, &leading, &nothing, &work, &query, &info);
      EXPECT_EQ(info, 0);
      EXPECT_GE(static_cast<std::int64_t>(work), least);
      Sequential<T>::syev(&jobz, "U", &n, &nothing, &leading, &nothing, &work, &short_of, &info);
      EXPECT_EQ(info, short_of == -1 ? 0 : -8);
      for (const auto& [lwork, liwork] : {std::pair{query, plenty}, {plenty, query}, {query, query}}) {
        work = 0, iwork = 0;
        Sequential<T>::spevd(&jobz, "U", &n, &nothing, &nothing, &nothing, &leading, &work, &lwork, &iwork, &liwork,
                             &info);
        EXPECT_EQ(info, 0);
        EXPECT_GE(static_cast<std::int64_t>(work), packed_least);
        EXPECT_LE(work, packed_least * (1 + 4 * Sequential<T>::u));
        EXPECT_EQ(iwork, integer_least);
      }
      Sequential<T>::spevd(&jobz, "U", &n, &nothing, &nothing, &nothing, &leading, &work, &packed_short, &iwork,
                           &integer_short, &info);
      EXPECT_EQ(info, -9);
      Sequential<T>::spevd(&jobz, "U", &n, &nothing, &nothing, &nothing, &leading, &work, &packed_least, &iwork,
                           &integer_short, &info);
      EXPECT_EQ(info, -11);
      EXPECT_EQ(nothing, T(7));
    }
}

}  // namespace
