// references: the generators once more, one output at a time, in plain integer arithmetic.
// SPDX-License-Identifier: MIT
#include "tests/rng/generators/references.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <deque>
#include <random>

#include "rng/data/mt2203_parameters.h"
#include "rng/data/sobol_directions.h"
#include "rng/data/wh_parameters.h"

namespace references {
namespace {

Output word_output(uint32_t w) { return {{w}, std::ldexp(static_cast<long double>(w), -32)}; }

Generator mcg31m1(uint64_t x) {
  return [x]() mutable {
    const auto now = static_cast<uint32_t>(x);
    x = x * 1132489760 % 2147483647;
    return Output{{now}, now / 2147483647.0L};
  };
}

Generator mcg59(uint64_t x) {
  return [x]() mutable {
    const uint64_t now = x;
    x = x * 302875106592253 % (uint64_t{1} << 59);
    const auto low = static_cast<uint32_t>(now), high = static_cast<uint32_t>(now >> 32);
    return Output{{low, high}, std::ldexp(static_cast<long double>(now), -59)};
  };
}

Generator wh(std::size_t set, std::array<uint64_t, 4> x) {
  return [set, x]() mutable {
    Output now{};
    for (std::size_t i = 0; i < 4; ++i) {
      const uint64_t m = orin::rng::wh_moduli[set][i];
      now.words[i] = static_cast<uint32_t>(x[i]);
      now.u += static_cast<long double>(x[i]) / static_cast<long double>(m);
      x[i] = x[i] * orin::rng::wh_multipliers[set][i] % m;
    }
    now.u -= std::floor(now.u);
    return now;
  };
}

Generator mrg32k3a(std::array<int64_t, 3> x, std::array<int64_t, 3> y) {  // oldest first
  return [x, y]() mutable {
    const int64_t m1 = 4294967087, m2 = 4294944443;
    const auto shift = [](std::array<int64_t, 3>& v, int64_t next, int64_t m) {
      v = {v[1], v[2], next < 0 ? next + m : next};
    };
    shift(x, (1403580 * x[1] - 810728 * x[0]) % m1, m1);
    shift(y, (527612 * y[2] - 1370589 * y[0]) % m2, m2);
    const int64_t z = x[2] < y[2] ? x[2] - y[2] + m1 : x[2] - y[2];
    return Output{{static_cast<uint32_t>(z)}, static_cast<long double>(z) / static_cast<long double>(m1)};
  };
}

Generator r250(std::deque<uint32_t> x) {
  return [x = std::move(x)]() mutable {
    x.push_back(x[147] ^ x[0]);
    x.pop_front();
    return word_output(x.back());
  };
}

std::deque<uint32_t> r250_table(uint32_t seed) {
  std::deque<uint32_t> x;
  for (uint32_t s = seed * 69069; x.size() < 250; s *= 69069) x.push_back(s);
  for (uint32_t k = 0; k < 32; ++k) {
    uint32_t& word = x[3 + 7 * k];
    word = (word & 0xFFFFFFFF >> k) | 0x80000000 >> k;
  }
  return x;
}

Generator mt19937(uint32_t seed) {
  return [engine = std::mt19937(seed)]() mutable { return word_output(static_cast<uint32_t>(engine())); };
}

Generator mt2203(std::size_t set, uint32_t seed) {
  const auto& p = orin::rng::mt2203_parameters[set];
  std::deque<uint32_t> x{seed};
  while (x.size() < 69) x.push_back(1812433253U * (x.back() ^ (x.back() >> 30)) + static_cast<uint32_t>(x.size()));
  return [x, p = std::to_array(p)]() mutable {
    const uint32_t y = (x[0] & 0xFFFFFFE0) | (x[1] & 0x1F);
    x.push_back(x[34] ^ (y >> 1) ^ (y % 2 != 0 ? p[0] : 0));
    x.pop_front();
    uint32_t t = x.back();
    t ^= t >> 12;
    t ^= t << 7 & p[1];
    t ^= t << 15 & p[2];
    return word_output(t ^ t >> 18);
  };
}

using Quad = std::array<uint32_t, 4>;
Quad left_by_a_byte(const Quad& q) {
  return {q[0] << 8, q[1] << 8 | q[0] >> 24, q[2] << 8 | q[1] >> 24, q[3] << 8 | q[2] >> 24};
}
Quad right_by_a_byte(const Quad& q) {
  return {q[0] >> 8 | q[1] << 24, q[1] >> 8 | q[2] << 24, q[2] >> 8 | q[3] << 24, q[3] >> 8};
}

// One word after the other.
Generator sfmt19937(uint32_t seed) {
  std::deque<Quad> w(156);
  uint32_t last = seed;
  for (uint32_t i = 0; i < 624; ++i) {
    if (i != 0) last = 1812433253U * (last ^ (last >> 30)) + i;
    w[i / 4][i % 4] = last;
  }
  if ((std::popcount(w[0][0] & 1) + std::popcount(w[0][3] & 0x13C9E684)) % 2 == 0) w[0][0] ^= 1;
  std::size_t next = 4;
  return [w, next]() mutable {
    if (next == 4) {
      const Quad mask = {0xDFFFFFEF, 0xDDFECB7F, 0xBFFAFFFF, 0xBFFFFFF6};
      const Quad a = left_by_a_byte(w[0]), c = right_by_a_byte(w[154]);
      Quad r{};
      for (std::size_t i = 0; i < 4; ++i) r[i] = w[0][i] ^ a[i] ^ (w[122][i] >> 11 & mask[i]) ^ c[i] ^ w[155][i] << 18;
      w.push_back(r);
      w.pop_front();
      next = 0;
    }
    return word_output(w.back()[next++]);
  };
}

Generator quasi(uint32_t dimension, std::array<uint32_t, 32> (*columns_of)(uint32_t)) {
  std::vector<std::array<uint32_t, 32>> columns;
  for (uint32_t j = 0; j < dimension; ++j) columns.push_back(columns_of(j));
  return [columns, point = uint32_t{1}, j = std::size_t{0}]() mutable {
    uint32_t x = 0;
    for (uint32_t c = 0; c < 32; ++c)
      if ((point ^ point >> 1) >> c & 1) x ^= columns[j][c];
    if (++j == columns.size()) j = 0, ++point;
    return word_output(x);
  };
}

}  // namespace

std::array<uint32_t, 32> sobol_columns(uint32_t dimension) {
  const auto& row = orin::rng::sobol_dimensions[dimension];
  const auto degree = static_cast<std::size_t>(std::bit_width(row.polynomial)) - 1;
  std::array<uint64_t, 32> m{};
  for (std::size_t c = 0; c < 32; ++c) {
    if (degree == 0 || c < degree) {
      m[c] = degree == 0 ? 1 : row.first[c];
      continue;
    }
    m[c] = m[c - degree] ^ m[c - degree] << degree;
    for (std::size_t i = 1; i < degree; ++i) m[c] ^= (row.polynomial >> (degree - i) & 1) * m[c - i] << i;
  }
  std::array<uint32_t, 32> v{};
  for (std::size_t c = 0; c < 32; ++c) v[c] = static_cast<uint32_t>(m[c] << (31 - c));
  return v;
}

uint64_t irreducible_polynomial(uint32_t dimension) {
  static const std::vector<uint64_t> list = [] {  // all products of smaller polynomials struck out
    std::vector<bool> product(4096);
    std::vector<uint64_t> rest;
    for (uint32_t p = 2; p < product.size(); ++p) {
      if (!product[p]) rest.push_back(p);
      for (uint32_t q = 2; std::bit_width(p) + std::bit_width(q) <= 13; ++q) {
        uint32_t r = 0;
        for (int i = 0; i < 12; ++i) r ^= (q >> i & 1) * p << i;
        product[r] = true;
      }
    }
    return rest;
  }();
  return list[dimension];
}

std::array<uint32_t, 32> niederreiter_columns(uint32_t dimension) {
  const uint64_t p = irreducible_polynomial(dimension);
  const auto e = static_cast<uint32_t>(std::bit_width(p)) - 1;
  std::array<uint32_t, 32> v{};
  uint64_t power = 1;
  for (uint32_t q = 0; q * e < 32; ++q) {
    uint64_t next = 0;
    for (uint32_t i = 0; i <= e; ++i) next ^= (p >> i & 1) * power << i;
    power = next;
    const auto degree = static_cast<uint32_t>(std::bit_width(power)) - 1;
    // V[qe] = 1 is the only one of the first degree terms; the others follow the recurrence of the power.
    std::array<uint32_t, 64> laurent{};
    laurent[q * e] = 1;
    for (uint32_t r = degree; r < 64; ++r)
      for (uint32_t i = 0; i < degree; ++i)
        laurent[r] ^= static_cast<uint32_t>(power >> i & 1) & laurent[r - degree + i];
    for (uint32_t u = 0; u < e && q * e + u < 32; ++u)
      for (uint32_t c = 0; c < 32; ++c) v[c] |= laurent[c + u] << (31 - (q * e + u));
  }
  return v;
}

const std::vector<Family>& families() {
  const auto start = [](auto make, auto... arguments) { return [=]() -> Generator { return make(arguments...); }; };
  static const std::vector<Family> list = {
      {"MCG31M1", JUN_BRNG_MCG31M1, {20240613}, 1, start(mcg31m1, 20240613U), true, true},
      {"MCG59", JUN_BRNG_MCG59, {0x89ABCDEF, 0x1234567}, 2, start(mcg59, 0x123456789ABCDEFU), true, true},
      {"WH0", JUN_BRNG_WH, {5, 6, 7, 8}, 4, start(wh, 0U, std::array<uint64_t, 4>{5, 6, 7, 8}), true, true},
      {"WH272", JUN_BRNG_WH + 272, {}, 4, start(wh, 272U, std::array<uint64_t, 4>{1, 1, 1, 1}), true, true},
      {"MRG32K3A",
       JUN_BRNG_MRG32K3A,
       {1, 2, 3, 4, 5, 6},
       1,
       start(mrg32k3a, std::array<int64_t, 3>{1, 2, 3}, std::array<int64_t, 3>{4, 5, 6}),
       true,
       false},
      {"R250", JUN_BRNG_R250, {77}, 1, start(r250, r250_table(77)), false, false},
      {"MT19937", JUN_BRNG_MT19937, {4357}, 1, start(mt19937, 4357U), false, false},
      {"MT2203_0", JUN_BRNG_MT2203, {31}, 1, start(mt2203, 0U, 31U), false, false},
      {"MT2203_6023", JUN_BRNG_MT2203 + 6023, {}, 1, start(mt2203, 6023U, 1U), false, false},
      {"SFMT19937", JUN_BRNG_SFMT19937, {1234}, 1, start(sfmt19937, 1234U), false, false, 4},
      {"Sobol1", JUN_BRNG_SOBOL, {}, 1, start(quasi, 1U, sobol_columns), true, false},
      {"Sobol10", JUN_BRNG_SOBOL, {10}, 1, start(quasi, 10U, sobol_columns), true, false},
      {"Sobol40", JUN_BRNG_SOBOL, {40}, 1, start(quasi, 40U, sobol_columns), true, false},
      {"Niederr3", JUN_BRNG_NIEDERR, {3}, 1, start(quasi, 3U, niederreiter_columns), true, false},
      {"Niederr318", JUN_BRNG_NIEDERR, {318}, 1, start(quasi, 318U, niederreiter_columns), true, false},
  };
  return list;
}

Stream new_stream(int32_t brng, const std::vector<uint32_t>& seeds) {
  void* stream = nullptr;
  EXPECT_EQ(__junNewStreamEx(&stream, brng, static_cast<int32_t>(seeds.size()), seeds.data()), JUN_RNG_OK);
  return Stream(stream);
}

Stream copy_of(const Stream& stream) {
  void* copy = nullptr;
  EXPECT_EQ(__junCopyStream(&copy, stream.get()), JUN_RNG_OK);
  return Stream(copy);
}

template <>
std::vector<double> uniforms(const Stream& stream, std::size_t n, double a, double b) {
  std::vector<double> r(n);
  EXPECT_EQ(row_of(stream).dBRng(stream.get(), static_cast<int32_t>(n), r.data(), a, b), JUN_RNG_OK);
  return r;
}

template <>
std::vector<float> uniforms(const Stream& stream, std::size_t n, float a, float b) {
  std::vector<float> r(n);
  EXPECT_EQ(row_of(stream).sBRng(stream.get(), static_cast<int32_t>(n), r.data(), a, b), JUN_RNG_OK);
  return r;
}

std::vector<uint32_t> raw(const Stream& stream, std::size_t n, std::size_t words) {
  std::vector<uint32_t> r(n * words);
  EXPECT_EQ(row_of(stream).iBRng(stream.get(), static_cast<int32_t>(n), r.data()), JUN_RNG_OK);
  return r;
}

}  // namespace references
