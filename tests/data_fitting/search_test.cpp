// search_test: every search method against plain walks, on partitions good and bad, between guard pages.
// SPDX-License-Identifier: MIT
#include <algorithm>
#include <functional>

#include "tests/data_fitting/api.h"
#include "tests/support/guard_pages.h"

namespace {

template <class T>
constexpr T inf = std::numeric_limits<T>::infinity();
template <class T>
constexpr T nan_value = std::numeric_limits<T>::quiet_NaN();

// --- The methods as their descriptions tell them ---------------------------------------------------------------------

template <class T>
int64_t plain_uniform(int64_t nx, T x0, T r, T s) {
  if (!(s >= x0)) return 0;
  const T place = (s - x0) * r;
  if (place <= -1) return 0;  // a negative multiplier: no cell is below the first
  if (!(place < T(1e18))) return nx;
  return std::min(static_cast<int64_t>(place) + 1, nx);
}

template <class T>
int64_t plain_quasi_uniform(const std::vector<T>& x, T r, T s) {
  const int64_t nx = static_cast<int64_t>(x.size());
  const auto at = [&x](int64_t i) { return x.at(static_cast<std::size_t>(i)); };
  int64_t c = plain_uniform(nx, x[0], r, s);
  if (c == nx) {
    while (c > 0 && at(c - 1) > s) --c;
  } else if (s > at(c)) {
    while (c < nx && at(c) <= s) ++c;
  } else {
    while (c > 0 && at(c - 1) > s) --c;
  }
  return c;
}

template <class T>
int64_t plain_sorted(const std::vector<T>& x, int64_t& p, T s) {
  const int64_t nx = static_cast<int64_t>(x.size());
  const auto at = [&x](int64_t i) { return x.at(static_cast<std::size_t>(i)); };
  if (p < nx - 16) {
    int64_t lo = p, hi = nx;
    do {
      const int64_t mid = (lo + hi) / 2;
      (at(mid) > s ? hi : lo) = mid;
    } while (lo < hi - 16);
    p = lo;
  }
  while (p < nx && at(p) <= s) ++p;
  return p;
}

template <class T>
int64_t plain_hybrid(const std::vector<T>& x, T s) {
  const int64_t nx = static_cast<int64_t>(x.size());
  const auto at = [&x](int64_t i) { return x.at(static_cast<std::size_t>(i)); };
  if (s >= at(nx - 1)) return nx;
  if (s < at(0)) return 0;
  const int64_t m = nx / 2;
  int64_t lo = at(m) > s ? 0 : m - 1, hi = at(m) > s ? m : nx - 1;
  while (lo < hi - 40) {
    const int64_t mid = (lo + hi) / 2;
    (at(mid) > s ? hi : lo) = mid;
  }
  while (lo < hi && at(lo) <= s) ++lo;
  return lo;
}

template <class T>
int64_t plain_peak(const std::vector<T>& x, T peak, T s) {
  const int64_t nx = static_cast<int64_t>(x.size());
  const auto at = [&x](int64_t i) { return x.at(static_cast<std::size_t>(i)); };
  int64_t c = static_cast<int64_t>(peak);
  if (c < nx && s >= at(c)) {
    while (c < nx && at(c) <= s) ++c;
  } else if (c < nx && s < at(c) && c > 0 && at(c - 1) > s) {
    while (c > 0 && at(c - 1) > s) --c;
  } else if (c >= nx && at(nx - 1) > s) {
    for (c = nx - 1; c > 0 && at(c - 1) > s;) --c;
  }
  return c;
}

// --- Partitions and sites --------------------------------------------------------------------------------------------

enum Kind { uniform_points, random_points, clustered_points, repeated_points, descending_points, kinds };

template <class T>
std::vector<T> partition(Kind kind, std::size_t n) {
  std::vector<T> x = kind == uniform_points ? uniform_partition<T>(n, -0.7, 0.1) : random_partition<T>(n, 3);
  for (std::size_t i = 0; i < n; ++i) {
    if (kind == clustered_points) x[i] = static_cast<T>(std::pow(0.9, static_cast<double>(n - 1 - i)));
    if (kind == repeated_points) x[i] = x[i - i % 3];
  }
  if (kind == descending_points) std::reverse(x.begin(), x.end());
  return x;
}

// Every point with its neighbours on both sides, the special values, and random sites up to the wanted number.
template <class T>
std::vector<T> sites_of(const std::vector<T>& x, std::size_t wanted) {
  std::vector<T> sites = {
      nan_value<T>, -inf<T>, inf<T>, std::numeric_limits<T>::max(), -nan_value<T>, std::numeric_limits<T>::lowest()};
  for (const T p : x) sites.insert(sites.end(), {p, std::nextafter(p, -inf<T>), std::nextafter(p, inf<T>)});
  const auto [low, high] = std::minmax_element(x.begin(), x.end());
  std::mt19937 random(5);
  std::uniform_real_distribution<double> site(2.0 * *low - 1.0 * *high, 2.0 * *high - 1.0 * *low);
  std::shuffle(sites.begin(), sites.end(), random);
  if (sites.size() > wanted) sites.resize(wanted);
  while (sites.size() < wanted) sites.push_back(static_cast<T>(site(random)));
  return sites;
}

// Runs a method on arrays that touch inaccessible pages, in both widths of cells, and compares with the plain walk.
template <class T>
void check(const std::vector<T>& x, const std::vector<T>& sites,
           const std::function<int32_t(int64_t, const T*, int64_t, const T*, void*, int64_t)>& method,
           const std::function<int64_t(T)>& plain) {
  const std::size_t n = sites.size();
  std::vector<int64_t> expected(n);
  std::transform(sites.begin(), sites.end(), expected.begin(), plain);
  for (const auto side : {GuardedArray<T>::at_end, GuardedArray<T>::at_start}) {
    GuardedArray<T> gx(x.size(), side), gs(n, side);
    std::copy(x.begin(), x.end(), gx.begin());
    std::copy(sites.begin(), sites.end(), gs.begin());
    GuardedArray<int32_t> narrow(n);
    GuardedArray<int64_t> wide(n);
    const auto nx = static_cast<int64_t>(x.size()), nsite = static_cast<int64_t>(n);
    ASSERT_EQ(method(nx, gx.data(), nsite, gs.data(), narrow.data(), side == 0 ? 2 : 1), ORIN_DF_OK);
    ASSERT_EQ(method(nx, gx.data(), nsite, gs.data(), wide.data(), side == 0 ? 3 : 0x107), ORIN_DF_OK);
    for (std::size_t i = 0; i < n; ++i) {
      ASSERT_EQ(wide[i], expected[i]) << "site " << sites[i] << " of " << n << ", nx " << nx;
      ASSERT_EQ(narrow[i], expected[i]);
    }
    EXPECT_TRUE(narrow.surroundings_intact() && wide.surroundings_intact());
  }
}

template <class T>
class Search : public testing::Test {
 protected:
  static constexpr std::size_t point_counts[] = {2, 3, 5, 16, 17, 40, 41, 79, 200, 1000};
  static constexpr std::size_t site_counts[] = {1, 3, 9, 100, 3500};

  // body(x, sites) for every kind and size.
  template <class Body>
  void sweep(Body body) {
    for (int kind = 0; kind < kinds; ++kind) {
      for (const std::size_t nx : point_counts) {
        const std::vector<T> x = partition<T>(static_cast<Kind>(kind), nx);
        for (const std::size_t nsite : site_counts) {
          SCOPED_TRACE(testing::Message() << "kind " << kind << " nx " << nx);
          body(x, sites_of(x, nsite));
        }
      }
    }
  }
};
TYPED_TEST_SUITE(Search, Precisions);

TYPED_TEST(Search, UniformAndQuasiUniform) {
  using T = TypeParam;
  this->sweep([](const std::vector<T>& x, const std::vector<T>& sites) {
    if (x.front() == x.back()) return;  // no multiplier
    const auto nx = static_cast<int64_t>(x.size());
    const T r = static_cast<T>(nx - 1) / (x.back() - x.front());
    check<T>(
        {x[0]}, sites,
        [nx, r](int64_t, const T* first, int64_t nsite, const T* site, void* cell, int64_t flags) {
          return Api<T>::uniform(nx, first, nsite, site, r, cell, flags);
        },
        [&](T s) { return plain_uniform(nx, x[0], r, s); });
    check<T>(
        x, sites,
        [r](int64_t count, const T* points, int64_t nsite, const T* site, void* cell, int64_t flags) {
          return Api<T>::quasi_uniform(count, points, nsite, site, r, cell, flags);
        },
        [&](T s) { return plain_quasi_uniform(x, r, s); });
  });
}

// Cells beyond 32 bits, and beyond the integers that a float holds.
TYPED_TEST(Search, UniformWithVeryManyPoints) {
  using T = TypeParam;
  const T x0 = 0;
  for (const int64_t nx : {(int64_t{1} << 24) + 3, int64_t{1} << 31, (int64_t{1} << 31) + 99, int64_t{1} << 40}) {
    std::vector<T> sites;
    for (int k = 0; k < 40; ++k) sites.push_back(static_cast<T>(nx) * static_cast<T>(k) / 32 + static_cast<T>(k));
    std::vector<int64_t> cell(sites.size());
    ASSERT_EQ(Api<T>::uniform(nx, &x0, 40, sites.data(), 1, cell.data(), 3), ORIN_DF_OK);
    for (std::size_t i = 0; i < sites.size(); ++i) EXPECT_EQ(cell[i], plain_uniform<T>(nx, 0, 1, sites[i])) << nx;
  }
}

TYPED_TEST(Search, GeneralPartition) {
  using T = TypeParam;
  this->sweep([](const std::vector<T>& x, const std::vector<T>& sites) {
    check<T>(x, sites, Api<T>::hybrid, [&](T s) { return plain_hybrid(x, s); });
    if (!std::is_sorted(x.begin(), x.end())) return;
    for (const T s : sites) {
      if (s != s) continue;
      ASSERT_EQ(plain_hybrid(x, s), std::upper_bound(x.begin(), x.end(), s) - x.begin()) << "the plain walk itself";
    }
  });
}

TYPED_TEST(Search, SortedSites) {
  using T = TypeParam;
  this->sweep([](const std::vector<T>& x, std::vector<T> sites) {
    for (const bool sorted : {true, false}) {
      if (sorted) std::sort(sites.begin(), sites.end(), [](T a, T b) { return b != b ? a == a : a < b; });
      for (const int32_t start : {0, static_cast<int32_t>(x.size() / 2), static_cast<int32_t>(x.size())}) {
        int64_t p = start;
        int32_t position = start;
        check<T>(
            x, sites,
            [&](int64_t nx, const T* points, int64_t nsite, const T* site, void* cell, int64_t flags) {
              // In two pieces, so that the position is carried.
              position = start;
              const int64_t half = nsite / 2;
              const std::ptrdiff_t width = (flags & 3) == 3 ? 8 : 4;
              const int32_t status = Api<T>::sorted(nx, points, half, site, &position, cell, flags);
              if (status != 0) return status;
              return Api<T>::sorted(nx, points, nsite - half, site + half, &position,
                                    static_cast<char*>(cell) + half * width, flags);
            },
            [&](T s) { return plain_sorted(x, p, s); });
        EXPECT_EQ(position, p);
      }
    }
  });
}

TYPED_TEST(Search, FromAPeak) {
  using T = TypeParam;
  this->sweep([](const std::vector<T>& x, const std::vector<T>& sites) {
    for (const double place : {0.0, 0.4, 1.0}) {
      const T peak = static_cast<T>(place * static_cast<double>(x.size())) + (place < 1 ? T{0.7f} : T{0});
      check<T>(
          x, sites,
          [peak](int64_t nx, const T* points, int64_t nsite, const T* site, void* cell, int64_t flags) {
            return Api<T>::peak(nx, points, nsite, site, peak, cell, flags);
          },
          [&](T s) { return plain_peak(x, peak, s); });
    }
  });
}

template <class T>
struct Seen {
  const T* site = nullptr;
  int64_t n = 0;
  int32_t result = 0;
  static int32_t ORIN_CALL search(int64_t n, const int64_t* user, const T* site, void* cell, void* parameters) {
    auto* seen = static_cast<Seen*>(parameters);
    EXPECT_EQ(user, nullptr);
    seen->site = site;
    seen->n = n;
    for (int64_t i = 0; i < n; ++i) static_cast<int32_t*>(cell)[i] = 42;
    return seen->result;
  }
};

TYPED_TEST(Search, CallersOwn) {
  using T = TypeParam;
  const T x[] = {0, 1}, site[] = {5, 6, 7};
  int32_t cell[3] = {};
  for (auto* method : {Api<T>::user, Api<T>::uniform_user}) {
    Seen<T> seen;
    for (const int32_t result : {0, 3, -77}) {
      seen.result = result;
      EXPECT_EQ(method(2, x, 3, site, Seen<T>::search, &seen, cell, 0), result < 0 ? result : 0);
      EXPECT_TRUE(seen.site == site && seen.n == 3 && cell[2] == 42);
    }
    seen = {};
    EXPECT_EQ(method(2, x, 0, site, Seen<T>::search, &seen, cell, 0), ORIN_DF_OK);
    EXPECT_EQ(seen.n, 0);
  }
}

// On a partition and sites where the methods differ, the dispatcher gives the cells of the one it must choose.
TYPED_TEST(Search, Dispatcher) {
  using T = TypeParam;
  using A = Api<T>;
  const std::vector<T> x = random_partition<T>(300, 9);
  std::vector<T> sites = sites_of(x, 2000);
  const int64_t n = static_cast<int64_t>(sites.size());
  const T r = T{299} / (x.back() - x.front());
  const T near[] = {150, 1}, far[] = {150, 2};
  Seen<T> seen;
  std::vector<int32_t> cell(sites.size());
  EXPECT_EQ(A::search(nullptr, n, sites.data(), 0, nullptr, cell.data(), 0, nullptr, nullptr), ORIN_DF_NULL_TASK);
  const auto run = [&](int64_t xhint, int64_t sitehint, const T* data_hint, bool own) {
    Fit<T> fit(x, 0, xhint);
    std::fill(cell.begin(), cell.end(), -1);
    EXPECT_EQ(A::search(fit.task, n, sites.data(), sitehint, data_hint, cell.data(), 0, own ? Seen<T>::search : nullptr,
                        &seen),
              ORIN_DF_OK);
  };
  const auto expect = [&](const char* method, const std::function<int64_t(T)>& plain) {
    for (std::size_t i = 0; i < sites.size(); ++i) ASSERT_EQ(cell[i], plain(sites[i])) << method << ' ' << sites[i];
  };
  run(4, 64, near, true);
  expect("own", [](T) { return 42; });
  run(4, 64, near, false);
  expect("uniform", [&](T s) { return plain_uniform(300, x[0], r, s); });
  run(2, 64, near, false);
  expect("quasi-uniform", [&](T s) { return plain_quasi_uniform(x, r, s); });
  int64_t p = 0;
  run(1, 64 + 1, near, false);
  expect("sorted", [&](T s) { return plain_sorted(x, p, s); });
  run(0, 1, near, false);
  expect("near", [&](T s) { return s == s ? plain_hybrid(x, s) : 150; });
  run(0, 0, far, false);
  expect("general", [&](T s) { return plain_hybrid(x, s); });
  run(1, 0, nullptr, false);
  expect("general", [&](T s) { return plain_hybrid(x, s); });
}

TYPED_TEST(Search, NoSites) {
  using T = TypeParam;
  int32_t position = 5;
  for (const int64_t n : {int64_t{0}, int64_t{-4}}) {
    EXPECT_EQ(Api<T>::uniform(9, nullptr, n, nullptr, 1, nullptr, 0), ORIN_DF_OK);
    EXPECT_EQ(Api<T>::quasi_uniform(9, nullptr, n, nullptr, 1, nullptr, 0), ORIN_DF_OK);
    EXPECT_EQ(Api<T>::sorted(9, nullptr, n, nullptr, &position, nullptr, 0), ORIN_DF_OK);
    EXPECT_EQ(Api<T>::hybrid(9, nullptr, n, nullptr, nullptr, 0), ORIN_DF_OK);
    EXPECT_EQ(Api<T>::peak(9, nullptr, n, nullptr, 1, nullptr, 0), ORIN_DF_OK);
  }
  EXPECT_EQ(position, 5);
}

}  // namespace
