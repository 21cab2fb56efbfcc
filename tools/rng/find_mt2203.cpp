// find_mt2203: searches the twist coefficients of the 6024 twisters of period 2^2203 - 1.
// SPDX-License-Identifier: MIT
//
// Method    Word recurrence x[k+69] = x[k+34] ^ ((upper 27 bits of x[k] | lower 5 bits of x[k+1]) A), 69 * 32 - 5 =
//           2203. Its characteristic polynomial is affine in the bits of the twist coefficient a. With u = t^69 + t^34
//           and v = t^68 + t^33:
//               phi_a = u^27 v^5 + sum (i < 5) a_i u^27 v^(4-i) + sum (i >= 5) a_i u^(31-i)
//           Set s owns the coefficients whose lower half is (s + 1) * 40503 mod 2^16 (one to one, so that no two sets
//           share one) and whose top bit is set; the 15 bits between are searched. Per set:
//           Sieve: every irreducible q up to degree 16 strikes out the affine space of the a with q | phi_a.
//           Proof: 2203 is prime and phi_a(0) = phi_a(1) = 1, so phi_a is irreducible if and only if t^(2^2203) = t
//           modulo phi_a. 2^2203 - 1 is prime, so irreducible means the full period.
//           Check: the recurrence is run and must satisfy phi_a.
// Data      appends "set coefficient" lines to the named file; a restart goes on where the file ends
// Source    M. Matsumoto, T. Nishimura, ACM TOMACS 8 (1998), appendix A (phi); Dynamic creation of pseudorandom number
//           generators, MCQMC 1998 (the idea of an embedded set number)
// Use       g++ -O3 -std=c++20 -mpclmul -msse4.1 -pthread find_mt2203.cpp -o find_mt2203
//           ./find_mt2203 FILE [first last [threads]]

#include <immintrin.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <numeric>
#include <thread>
#include <vector>

namespace {

constexpr int mersenne_exponent = 2203;
constexpr int state_words = 69;  // n of the recurrence
constexpr int middle_word = 34;  // m
constexpr int low_bits = 5;      // r
constexpr int word_bits = 32;    // w
constexpr int limb_count = 35;   // 64-bit limbs of a residue; R = t^2240
constexpr int sieve_degree = 16;
constexpr int first_free_bit = 16;  // bits 16..30 of a coefficient are searched
constexpr int free_bits = 15;

// ----------------------------------------------------------------------------------------------------------------
// polynomials over GF(2)

struct Residue {  // degree below 2240, bit i is the coefficient of t^i
  alignas(16) std::array<std::uint64_t, limb_count + 1> limb{};

  void flip(int exponent) { limb[static_cast<std::size_t>(exponent) / 64] ^= 1ULL << (exponent % 64); }
  [[nodiscard]] bool bit(int exponent) const {
    return limb[static_cast<std::size_t>(exponent) / 64] >> (exponent % 64) & 1;
  }
  Residue& operator^=(const Residue& other) {
    for (std::size_t i = 0; i < limb.size(); ++i) limb[i] ^= other.limb[i];
    return *this;
  }
  bool operator==(const Residue&) const = default;
};

// this * (t^hi + t^lo), lo <= hi; the product fits by construction of phi.
Residue times_binomial(const Residue& p, int hi, int lo) {
  Residue r;
  for (int i = 0; i <= mersenne_exponent; ++i) {
    if (!p.bit(i)) continue;
    r.flip(i + hi);
    r.flip(i + lo);
  }
  return r;
}

struct Characteristic {  // phi_a = constant + sum over set bits i of a: slope[i]
  Residue constant;
  std::array<Residue, word_bits> slope;

  Characteristic() {
    Residue power;  // u^j
    power.flip(0);
    for (int j = 0; j < word_bits - low_bits; ++j) {  // u^(31-i) belongs to bit i = 31 - j
      slope[static_cast<std::size_t>(word_bits - 1 - j)] = power;
      power = times_binomial(power, state_words, middle_word);
    }
    for (int i = low_bits - 1; i >= 0; --i) {  // u^27 v^(4-i)
      slope[static_cast<std::size_t>(i)] = power;
      power = times_binomial(power, state_words - 1, middle_word - 1);
    }
    constant = power;
  }
  [[nodiscard]] Residue of(std::uint32_t a) const {
    Residue phi = constant;
    for (std::size_t i = 0; i < word_bits; ++i)
      if (a >> i & 1) phi ^= slope[i];
    return phi;
  }
};

// Montgomery squaring modulo phi: y -> y^2 / R, R = t^2240. No carries over GF(2), so the half products are exact.
class Squarer {
 public:
  explicit Squarer(const Residue& phi) : phi_(phi) {
    // Newton over power series: inverse of phi modulo t^2240, doubling the precision from one bit (phi(0) = 1).
    inverse_.flip(0);
    for (int precision = 1; precision < 64 * limb_count; precision *= 2) {
      Residue square;
      spread_low(inverse_, square);
      Residue next;
      low_product(square, phi_, next);
      inverse_ = next;  // 1/phi = phi * (1/phi)^2 in characteristic 2
    }
  }
  void square(Residue& y) const {
    alignas(16) std::array<std::uint64_t, 2 * limb_count> wide;
    for (std::size_t i = 0; i < limb_count; ++i) {
      const __m128i v = _mm_cvtsi64_si128(static_cast<long long>(y.limb[i]));
      _mm_store_si128(reinterpret_cast<__m128i*>(&wide[2 * i]), _mm_clmulepi64_si128(v, v, 0));
    }
    Residue low;
    std::memcpy(low.limb.data(), wide.data(), limb_count * sizeof(std::uint64_t));
    Residue quotient;
    low_product(low, inverse_, quotient);
    high_product(quotient, phi_, y);
    for (std::size_t i = 0; i < limb_count; ++i) y.limb[i] ^= wide[limb_count + i];
  }
  // t * R modulo phi: shift and subtract.
  [[nodiscard]] Residue t_times_radix() const {
    Residue y;
    y.flip(0);
    for (int k = 0; k < 64 * limb_count + 1; ++k) {
      for (std::size_t i = limb_count; i > 0; --i) y.limb[i] = y.limb[i] << 1 | y.limb[i - 1] >> 63;
      y.limb[0] <<= 1;
      if (y.bit(mersenne_exponent)) y ^= phi_;
    }
    return y;
  }

 private:
  static void spread_low(const Residue& x, Residue& square) {  // x^2 modulo t^2240
    for (std::size_t i = 0; 2 * i < limb_count; ++i) {
      const __m128i v = _mm_cvtsi64_si128(static_cast<long long>(x.limb[i]));
      const __m128i s = _mm_clmulepi64_si128(v, v, 0);
      square.limb[2 * i] = static_cast<std::uint64_t>(_mm_cvtsi128_si64(s));
      if (2 * i + 1 < limb_count) square.limb[2 * i + 1] = static_cast<std::uint64_t>(_mm_extract_epi64(s, 1));
    }
  }
  static __m128i column(const Residue& x, const Residue& y, int sum, int from, int to) {
    __m128i even = _mm_setzero_si128();
    __m128i odd = _mm_setzero_si128();
    int i = from;
    for (; i < to; i += 2) {
      even = _mm_xor_si128(even, limb_product(x, i, y, sum - i));
      odd = _mm_xor_si128(odd, limb_product(x, i + 1, y, sum - i - 1));
    }
    if (i == to) even = _mm_xor_si128(even, limb_product(x, i, y, sum - i));
    return _mm_xor_si128(even, odd);
  }
  static __m128i limb_product(const Residue& x, int i, const Residue& y, int j) {
    const __m128i u = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(&x.limb[static_cast<std::size_t>(i)]));
    const __m128i v = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(&y.limb[static_cast<std::size_t>(j)]));
    return _mm_clmulepi64_si128(u, v, 0);
  }
  static void low_product(const Residue& x, const Residue& y, Residue& r) {  // x y modulo t^2240
    std::uint64_t carry = 0;
    for (int sum = 0; sum < limb_count; ++sum) {
      const __m128i c = column(x, y, sum, 0, sum);
      r.limb[static_cast<std::size_t>(sum)] = carry ^ static_cast<std::uint64_t>(_mm_cvtsi128_si64(c));
      carry = static_cast<std::uint64_t>(_mm_extract_epi64(c, 1));
    }
    r.limb[limb_count] = 0;
  }
  static void high_product(const Residue& x, const Residue& y, Residue& r) {  // floor(x y / t^2240)
    std::uint64_t carry =
        static_cast<std::uint64_t>(_mm_extract_epi64(column(x, y, limb_count - 1, 0, limb_count - 1), 1));
    Residue out;
    for (int sum = limb_count; sum < 2 * limb_count; ++sum) {
      const __m128i c =
          sum < 2 * limb_count - 1 ? column(x, y, sum, sum - limb_count + 1, limb_count - 1) : _mm_setzero_si128();
      out.limb[static_cast<std::size_t>(sum - limb_count)] = carry ^ static_cast<std::uint64_t>(_mm_cvtsi128_si64(c));
      carry = static_cast<std::uint64_t>(_mm_extract_epi64(c, 1));
    }
    r = out;
  }

  Residue phi_;
  Residue inverse_;
};

bool is_irreducible(const Residue& phi) {
  const Squarer modulo(phi);
  const Residue start = modulo.t_times_radix();
  Residue y = start;
  for (int i = 0; i < mersenne_exponent; ++i) modulo.square(y);
  return y == start;
}

// ----------------------------------------------------------------------------------------------------------------------------
// the sieve

struct SmallFactor {  // an irreducible q with the residues of constant and slopes
  int degree;
  std::uint32_t constant;
  std::array<std::uint32_t, word_bits> slope;
};

std::uint32_t multiply_modulo(std::uint32_t x, std::uint32_t y, std::uint32_t q, int degree) {
  std::uint32_t r = 0;
  for (; y; y >>= 1) {
    if (y & 1) r ^= x;
    x <<= 1;
    if (x >> degree & 1) x ^= q;
  }
  return r;
}

std::vector<SmallFactor> small_factors() {
  const std::uint32_t limit = 2U << sieve_degree;
  std::vector<bool> composite(limit);
  std::vector<SmallFactor> factors;
  for (std::uint32_t q = 2; q < limit; ++q) {
    if (composite[q]) continue;
    const int degree = 31 - __builtin_clz(q);
    if (degree <= sieve_degree / 2)
      for (std::uint32_t c = 2; c < limit >> degree; ++c) {
        std::uint32_t product = 0;
        for (int i = 0; i <= degree; ++i)
          if (q >> i & 1) product ^= c << i;
        if (product < limit) composite[product] = true;
      }
    if (degree < 2) continue;  // t and t + 1 divide no phi with the top bit of a set
    const auto times = [&](std::uint32_t x, std::uint32_t y) { return multiply_modulo(x, y, q, degree); };
    const auto power_of_t = [&](int e) {
      std::uint32_t r = 1;
      while (e-- > 0) r = times(2, r);
      return r;
    };
    const std::uint32_t u = power_of_t(state_words) ^ power_of_t(middle_word);
    const std::uint32_t v = power_of_t(state_words - 1) ^ power_of_t(middle_word - 1);
    SmallFactor f{degree, 0, {}};
    std::uint32_t power = 1;
    for (int i = word_bits - 1; i >= 0; --i) {
      f.slope[static_cast<std::size_t>(i)] = power;
      power = times(power, i >= low_bits ? u : v);
    }
    f.constant = power;
    factors.push_back(f);
  }
  return factors;
}

// Marks every choice of the free bits for which f divides phi: the solutions of an affine system over GF(2).
void strike_out(const SmallFactor& f, std::uint32_t fixed_bits, std::vector<bool>& struck) {
  std::uint32_t target = f.constant;
  for (std::size_t i = 0; i < word_bits; ++i)
    if (fixed_bits >> i & 1) target ^= f.slope[i];
  std::array<std::uint32_t, sieve_degree> pivot_value{};
  std::array<std::uint32_t, sieve_degree> pivot_choice{};
  std::array<std::uint32_t, free_bits> kernel{};
  std::size_t nullity = 0;
  const auto reduce = [&](std::uint32_t& value, std::uint32_t& choice) {
    while (value) {
      const std::size_t top = static_cast<std::size_t>(31 - __builtin_clz(value));
      if (!pivot_value[top]) return top;
      value ^= pivot_value[top];
      choice ^= pivot_choice[top];
    }
    return std::size_t{0};
  };
  for (int bit = 0; bit < free_bits; ++bit) {
    std::uint32_t value = f.slope[static_cast<std::size_t>(first_free_bit + bit)];
    std::uint32_t choice = 1U << bit;
    const std::size_t top = reduce(value, choice);
    if (value) {
      pivot_value[top] = value;
      pivot_choice[top] = choice;
    } else {
      kernel[nullity++] = choice;
    }
  }
  std::uint32_t solution = 0;
  reduce(target, solution);
  if (target) return;
  struck[solution] = true;
  for (std::uint32_t k = 1; k < 1U << nullity; ++k) {  // Gray code walk through the coset
    solution ^= kernel[static_cast<std::size_t>(__builtin_ctz(k))];
    struck[solution] = true;
  }
}

// -------------------------------------------------------------------------------------------------------------------------
// one set

// The words of the recurrence must satisfy phi from the second on (five bits of the first are no part of the state).
bool recurrence_satisfies(const Residue& phi, std::uint32_t a) {
  std::vector<std::uint32_t> x(mersenne_exponent + 40);
  std::uint32_t s = a;
  for (std::size_t k = 0; k < state_words; ++k)
    x[k] = s = 1812433253U * (s ^ (s >> 30)) + static_cast<std::uint32_t>(k);
  for (std::size_t k = state_words; k < x.size(); ++k) {
    const std::uint32_t y = (x[k - state_words] & ~0x1fU) | (x[k - state_words + 1] & 0x1fU);
    x[k] = x[k - state_words + middle_word] ^ (y >> 1) ^ (y & 1 ? a : 0U);
  }
  for (std::size_t start = 1; start < 35; ++start) {
    std::uint32_t sum = 0;
    for (int j = 0; j <= mersenne_exponent; ++j)
      if (phi.bit(j)) sum ^= x[start + static_cast<std::size_t>(j)];
    if (sum) return false;
  }
  return true;
}

std::uint32_t coefficient_of(int set, const Characteristic& characteristic, const std::vector<SmallFactor>& factors) {
  const std::uint32_t fixed_bits = 0x80000000U | (((static_cast<std::uint32_t>(set) + 1U) * 40503U) & 0xffffU);
  std::vector<bool> struck(1U << free_bits);
  for (const SmallFactor& f : factors) strike_out(f, fixed_bits, struck);
  for (std::uint32_t k = 0; k < 1U << free_bits; ++k) {
    const std::uint32_t choice = (k * 20021U + 13441U) & 0x7fffU;  // a fixed order without preference for small values
    if (struck[choice]) continue;
    const std::uint32_t a = fixed_bits | choice << first_free_bit;
    const Residue phi = characteristic.of(a);
    if (!is_irreducible(phi)) continue;
    if (!recurrence_satisfies(phi, a)) {
      std::fprintf(stderr, "set %d: the recurrence does not satisfy its polynomial\n", set);
      std::exit(1);
    }
    return a;
  }
  std::fprintf(stderr, "set %d: no coefficient\n", set);
  std::exit(1);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::puts("find_mt2203 FILE [first last [threads]]: appends the missing sets of first..last (0..6023) to FILE");
    return 2;
  }
  const int first = argc > 3 ? std::atoi(argv[2]) : 0;
  const int last = argc > 3 ? std::atoi(argv[3]) : 6023;
  const int thread_count = argc > 4 ? std::atoi(argv[4]) : 2;
  std::vector<bool> done(static_cast<std::size_t>(last) + 1);
  if (std::FILE* old = std::fopen(argv[1], "r")) {
    int set;
    unsigned a;
    while (std::fscanf(old, "%d %x", &set, &a) == 2)
      if (set >= 0 && set <= last) done[static_cast<std::size_t>(set)] = true;
    std::fclose(old);
  }
  std::FILE* file = std::fopen(argv[1], "a");
  if (!file) return 1;
  const Characteristic characteristic;
  const std::vector<SmallFactor> factors = small_factors();
  std::atomic<int> next{first};
  std::mutex writing;
  std::vector<std::thread> workers;
  for (int t = 0; t < thread_count; ++t)
    workers.emplace_back([&] {
      for (int set; (set = next++) <= last;) {
        if (done[static_cast<std::size_t>(set)]) continue;
        const std::uint32_t a = coefficient_of(set, characteristic, factors);
        const std::lock_guard guard(writing);
        std::fprintf(file, "%d %08x\n", set, a);
        std::fflush(file);
      }
    });
  for (std::thread& w : workers) w.join();
  std::fclose(file);
  return 0;
}
