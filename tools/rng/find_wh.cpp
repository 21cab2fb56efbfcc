// find_wh: searches sets 1 to 272 of four small multiplicative generators that are added modulo 1.
// SPDX-License-Identifier: MIT
//
// Rules     Moduli: distinct primes of 16718909..16776971, none twice over all sets, none of set 0. Multipliers:
//           primitive roots among 112..127. The numbers (m-1)/2 of a set are pairwise coprime, so that the four
//           periods multiply up.
// Method    Primes from the top of the range down; a set takes the largest unused prime, then the next ones that agree
//           with it. The multiplier of a modulus is the admissible one with the largest product of S(2) .. S(8), S(t)
//           the length of the shortest vector of the dual lattice over its upper bound gamma(t)^(1/2) m^(1/t):
//           Lenstra-Lenstra-Lovasz reduction, then enumeration.
// Data      prints rng/data/wh_parameters.h
// Source    B. A. Wichmann, I. D. Hill, Applied Statistics 31 (1982) 188-190; N. M. Maclaren, Applied Statistics 38
//           (1989) 351-359; spectral test: D. E. Knuth, TAOCP 2, 3.3.4
// Use       g++ -O2 -std=c++20 find_wh.cpp -o find_wh && ./find_wh > ../../rng/data/wh_parameters.h

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <numeric>
#include <vector>

namespace {

constexpr std::uint32_t least_modulus = 16718909, most_modulus = 16776971;
constexpr std::uint32_t least_multiplier = 112, most_multiplier = 127;
constexpr int set_count = 273;
constexpr std::size_t dimension_count = 8;

struct Generator {
  std::uint32_t modulus, multiplier;
};
using Set = std::array<Generator, 4>;

constexpr Set first_set = {{{16770647, 125}, {16770643, 117}, {16770623, 127}, {16770617, 126}}};

std::uint64_t power(std::uint64_t x, std::uint32_t e, std::uint32_t m) {
  std::uint64_t r = 1;
  for (; e; e >>= 1, x = x * x % m)
    if (e & 1) r = r * x % m;
  return r;
}

std::vector<std::uint32_t> prime_factors(std::uint32_t n) {
  std::vector<std::uint32_t> factors;
  for (std::uint32_t p = 2; p * p <= n; ++p) {
    if (n % p) continue;
    factors.push_back(p);
    while (n % p == 0) n /= p;
  }
  if (n > 1) factors.push_back(n);
  return factors;
}

bool is_prime(std::uint32_t n) { return prime_factors(n).front() == n; }

bool is_primitive_root(std::uint32_t a, std::uint32_t m, const std::vector<std::uint32_t>& factors) {
  return std::ranges::none_of(factors, [=](std::uint32_t p) { return power(a, (m - 1) / p, m) == 1; });
}

// The lattice of the v with v[0] + v[1] a + ... + v[t-1] a^(t-1) = 0 (mod m), which the spectral test is about.
class DualLattice {
 public:
  DualLattice(std::uint32_t m, std::uint32_t a, std::size_t t) : t_(t) {
    basis_[0][0] = m;
    std::uint64_t a_power = 1;
    for (std::size_t i = 1; i < t; ++i) {
      a_power = a_power * a % m;
      basis_[i][0] = -static_cast<double>(a_power);
      basis_[i][i] = 1;
    }
  }
  // Square of the length of the shortest nonzero vector.
  double shortest_squared() {
    reduce();
    best_ = dot(basis_[0], basis_[0]);
    Vector x{};
    enumerate(t_, 0, x);
    return best_;
  }

 private:
  using Vector = std::array<double, dimension_count>;

  static double dot(const Vector& x, const Vector& y) { return std::inner_product(x.begin(), x.end(), y.begin(), 0.0); }
  static void subtract(Vector& x, double factor, const Vector& y) {
    for (std::size_t k = 0; k < dimension_count; ++k) x[k] -= factor * y[k];
  }
  void orthogonalise() {
    for (std::size_t i = 0; i < t_; ++i) {
      orthogonal_[i] = basis_[i];
      for (std::size_t j = 0; j < i; ++j) {
        mu_[i][j] = dot(basis_[i], orthogonal_[j]) / norm_[j];
        subtract(orthogonal_[i], mu_[i][j], orthogonal_[j]);
      }
      norm_[i] = dot(orthogonal_[i], orthogonal_[i]);
    }
  }
  void reduce() {
    orthogonalise();
    for (std::size_t i = 1; i < t_;) {
      for (std::size_t j = i; j-- > 0;) {
        const double q = std::nearbyint(mu_[i][j]);
        if (q == 0) continue;
        subtract(basis_[i], q, basis_[j]);
        orthogonalise();
      }
      if (norm_[i] < (0.99 - mu_[i][i - 1] * mu_[i][i - 1]) * norm_[i - 1]) {
        std::swap(basis_[i], basis_[i - 1]);
        orthogonalise();
        i = std::max<std::size_t>(i - 1, 1);
      } else {
        ++i;
      }
    }
  }
  // All coefficient vectors whose projected length stays below the best, the last `open` coordinates chosen before.
  void enumerate(std::size_t open, double length, Vector& x) {
    if (open == 0) {
      if (length > 0.5) best_ = std::min(best_, length);
      return;
    }
    const std::size_t i = open - 1;
    double centre = 0;
    for (std::size_t j = open; j < t_; ++j) centre -= x[j] * mu_[j][i];
    const double reach = std::sqrt(std::max(0.0, (best_ - length) / norm_[i]));
    for (double c = std::ceil(centre - reach - 1e-9); c <= centre + reach + 1e-9; ++c) {
      x[i] = c;
      enumerate(i, length + (c - centre) * (c - centre) * norm_[i], x);
    }
    x[i] = 0;
  }

  std::size_t t_;
  double best_ = 0;
  std::array<Vector, dimension_count> basis_{}, orthogonal_{}, mu_{};
  Vector norm_{};
};

// log of the product of S(2) .. S(8)
double spectral_figure(std::uint32_t m, std::uint32_t a) {
  static const double log2_gamma[] = {
      0, 0, 1 - std::log2(3.0) / 2, 1.0 / 3, 1.0 / 2, 3.0 / 5, 1 - std::log2(3.0) / 6, 6.0 / 7, 1};
  double figure = 0;
  for (std::size_t t = 2; t <= dimension_count; ++t)
    figure += std::log2(DualLattice(m, a, t).shortest_squared()) / 2 - log2_gamma[t] / 2 -
              std::log2(m) / static_cast<double>(t);
  return figure;
}

bool agree(std::uint32_t m1, std::uint32_t m2) { return std::gcd((m1 - 1) / 2, (m2 - 1) / 2) == 1; }

std::vector<Generator> admissible_generators() {
  std::vector<Generator> list;
  for (std::uint32_t m = most_modulus; m >= least_modulus; --m) {
    if (!is_prime(m) || std::ranges::any_of(first_set, [=](Generator g) { return g.modulus == m; })) continue;
    const std::vector<std::uint32_t> factors = prime_factors(m - 1);
    Generator best{m, 0};
    double best_figure = -1e300;
    for (std::uint32_t a = least_multiplier; a <= most_multiplier; ++a) {
      if (!is_primitive_root(a, m, factors)) continue;
      const double figure = spectral_figure(m, a);
      if (figure > best_figure) {
        best_figure = figure;
        best.multiplier = a;
      }
    }
    if (best.multiplier) list.push_back(best);
  }
  return list;
}

template <class Field>
void print_table(const char* type, const char* name, const std::vector<Set>& sets, Field field) {
  std::printf("inline constexpr %s %s[%d][4] = {\n", type, name, set_count);
  for (const Set& s : sets) std::printf("    {%u, %u, %u, %u},\n", field(s[0]), field(s[1]), field(s[2]), field(s[3]));
  std::puts("};");
}

}  // namespace

int main() {
  std::vector<Generator> unused = admissible_generators();
  std::vector<Set> sets = {first_set};
  while (sets.size() < set_count) {
    std::vector<std::size_t> chosen;
    for (std::size_t i = 0; i < unused.size() && chosen.size() < 4; ++i)
      if (std::ranges::all_of(chosen, [&](std::size_t j) { return agree(unused[i].modulus, unused[j].modulus); }))
        chosen.push_back(i);
    if (chosen.size() < 4) {
      std::fputs("find_wh: the primes of the range do not suffice\n", stderr);
      return 1;
    }
    Set set;
    for (std::size_t i = 4; i-- > 0;) {
      set[i] = unused[chosen[i]];
      unused.erase(unused.begin() + static_cast<std::ptrdiff_t>(chosen[i]));
    }
    sets.push_back(set);
  }
  std::puts(
      "// wh_parameters: moduli and multipliers of the 273 Wichmann-Hill sets.\n// SPDX-License-Identifier: MIT\n//");
  std::puts("// Made by tools/rng/find_wh.cpp (sets 1 to 272), where the rules stand.");
  std::puts(
      "#ifndef ORIN_RNG_DATA_WH_PARAMETERS_H\n#define ORIN_RNG_DATA_WH_PARAMETERS_H\n\n#include <cstdint>\n\nnamespace "
      "orin::rng {\n\n// clang-format off");
  print_table("uint32_t", "wh_moduli", sets, [](Generator g) { return g.modulus; });
  std::puts("");
  print_table("uint8_t", "wh_multipliers", sets, [](Generator g) { return g.multiplier; });
  std::puts("// clang-format on\n\n}  // namespace orin::rng\n\n#endif");
  return 0;
}
