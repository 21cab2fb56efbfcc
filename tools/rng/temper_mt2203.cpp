// temper_mt2203: chooses the tempering masks of the twisters of period 2^2203 - 1, measures equidistribution.
// SPDX-License-Identifier: MIT
//
// Method    Tempering y ^= y >> 12; y ^= (y << 7) & b; y ^= (y << 15) & c; y ^= y >> 18. k(v) is the largest k for
//           which the top v bits of k consecutive outputs take every value equally often over the period; floor(2203 /
//           v) bounds it. The vectors of top-v-bit output series, with the unit vectors, span a lattice over GF(2)[t];
//           k(v) is the least -degree in a reduced basis. The basis is reduced for v = 32 and carried down by dropping
//           the last coordinate. A lattice vector is held as leading coefficient, -degree and the generator state
//           whose coming outputs are the rest of the series, so multiplying by t is one step of the generator.
//           Masks: a hill climb over the bits of b and c, minimising the total defect, the sum over v of floor(2203 /
//           v) - k(v). In a second pass the sets above a limit climb once more, from the best of the masks that served
//           other sets.
// Data      reads "set coefficient" lines, appends "set coefficient b c defect" lines; a restart goes on where the
//           output ends. With --table it prints rng/data/mt2203_parameters.h from such a file, with --report the
//           values k(v) over all sets.
// Source    R. Couture, P. L'Ecuyer, Lattice computations for random numbers, Math. Comp. 69 (2000); S. Harase, M.
//           Matsumoto, M. Saito, Fast lattice reduction for F2-linear pseudorandom number generators, Math. Comp. 80
//           (2011)
// Use       g++ -O3 -std=c++20 -msse2 -pthread temper_mt2203.cpp -o temper_mt2203
//           ./temper_mt2203 IN OUT [trials [threads]];  ./temper_mt2203 --improve OUT OUT2 LIMIT [trials [threads]]
//           ./temper_mt2203 --table OUT > ../../rng/data/mt2203_parameters.h;  ./temper_mt2203 --report OUT

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace {

constexpr int mersenne_exponent = 2203;
constexpr std::size_t state_words = 69;
constexpr std::size_t middle_word = 34;
constexpr std::uint32_t low_mask = 0x1f;

struct Masks {
  std::uint32_t b, c;
};

struct SeriesVector {  // t^order * vector = leading + series of the outputs that state is about to give
  alignas(16) std::array<std::uint32_t, 72> state{};
  std::uint32_t leading = 0;
  int order = 0;

  [[nodiscard]] bool is_zero() const {
    __m128i any = _mm_set_epi32(0, 0, 0, static_cast<int>(state[0] & ~low_mask));
    std::uint32_t rest = state[1] | state[2] | state[3];
    for (std::size_t i = 4; i < state.size(); i += 4)
      any = _mm_or_si128(any, _mm_load_si128(reinterpret_cast<const __m128i*>(&state[i])));
    alignas(16) std::array<std::uint32_t, 4> lanes;
    _mm_store_si128(reinterpret_cast<__m128i*>(lanes.data()), any);
    return (rest | lanes[0] | lanes[1] | lanes[2] | lanes[3]) == 0;
  }
  void add_state(const SeriesVector& other) {
    for (std::size_t i = 0; i < state.size(); i += 4) {
      auto* p = reinterpret_cast<__m128i*>(&state[i]);
      _mm_store_si128(
          p, _mm_xor_si128(_mm_load_si128(p), _mm_load_si128(reinterpret_cast<const __m128i*>(&other.state[i]))));
    }
  }
  std::uint32_t step(std::uint32_t a, Masks m) {  // next output
    const std::uint32_t mixed = (state[0] & ~low_mask) | (state[1] & low_mask);
    const std::uint32_t x = state[middle_word] ^ (mixed >> 1) ^ ((0U - (mixed & 1)) & a);
    std::memmove(state.data(), state.data() + 1, (state_words - 1) * sizeof(std::uint32_t));
    state[state_words - 1] = x;
    std::uint32_t y = x ^ (x >> 12);
    y ^= (y << 7) & m.b;
    y ^= (y << 15) & m.c;
    return y ^ (y >> 18);
  }
  // Multiplies by t until the leading coefficient shows in the top bits. False: the vector is zero.
  bool normalise(std::uint32_t a, Masks m, std::uint32_t top_bits) {
    leading &= top_bits;
    if (!leading && is_zero()) return false;
    while (!leading) {
      leading = step(a, m) & top_bits;
      ++order;
    }
    return true;
  }
};

// A combination of the basis whose leading coefficients cancel (bit i: vector i), or 0.
std::uint64_t dependency(const std::vector<SeriesVector>& basis) {
  std::array<std::uint32_t, 32> value{};
  std::array<std::uint64_t, 32> combination{};
  for (std::size_t i = 0; i < basis.size(); ++i) {
    std::uint32_t x = basis[i].leading;
    std::uint64_t used = 1ULL << i;
    while (x) {
      const auto top = static_cast<std::size_t>(31 - std::countl_zero(x));
      if (!value[top]) {
        value[top] = x;
        combination[top] = used;
        break;
      }
      x ^= value[top];
      used ^= combination[top];
    }
    if (!x) return used;
  }
  return 0;
}

void reduce(std::vector<SeriesVector>& basis, std::uint32_t a, Masks m, std::uint32_t top_bits) {
  while (const std::uint64_t used = dependency(basis)) {
    std::size_t longest = 64;
    for (std::uint64_t rest = used; rest; rest &= rest - 1) {
      const auto i = static_cast<std::size_t>(std::countr_zero(rest));
      if (longest == 64 || basis[i].order < basis[longest].order) longest = i;
    }
    SeriesVector& w = basis[longest];
    for (std::uint64_t rest = used & ~(1ULL << longest); rest; rest &= rest - 1)
      w.add_state(basis[static_cast<std::size_t>(std::countr_zero(rest))]);
    w.leading = 0;
    if (!w.normalise(a, m, top_bits)) basis.erase(basis.begin() + static_cast<std::ptrdiff_t>(longest));
  }
}

// k(1) .. k(32)
std::array<int, 33> equidistribution(std::uint32_t a, Masks m) {
  std::vector<SeriesVector> basis(33);
  for (int i = 0; i < 32; ++i) basis[static_cast<std::size_t>(i)].leading = 1U << i;
  std::array<int, 33> k{};
  basis[32].state[state_words - 1] = 1;
  basis[32].normalise(a, m, ~0U);
  for (int v = 32; v > 0; --v) {
    const std::uint32_t top_bits = ~0U << (32 - v);
    for (std::size_t i = 0; i < basis.size();) {
      if (basis[i].normalise(a, m, top_bits))
        ++i;
      else
        basis.erase(basis.begin() + static_cast<std::ptrdiff_t>(i));
    }
    reduce(basis, a, m, top_bits);
    int least = mersenne_exponent;
    for (const SeriesVector& w : basis) least = w.order < least ? w.order : least;
    k[static_cast<std::size_t>(v)] = least;
  }
  return k;
}

int total_defect(std::uint32_t a, Masks m) {
  const std::array<int, 33> k = equidistribution(a, m);
  int defect = 0;
  for (int v = 1; v <= 32; ++v) defect += mersenne_exponent / v - k[static_cast<std::size_t>(v)];
  return defect;
}

std::uint32_t next_random(std::uint64_t& s) {
  s = s * 6364136223846793005ULL + 1442695040888963407ULL;
  return static_cast<std::uint32_t>(s >> 32);
}

struct Choice {
  Masks masks;
  int defect;
};

// Only bits that a left shift reaches matter: b from bit 7 on, c from bit 15 on.
Choice climb(int set, std::uint32_t a, Choice best, int trials) {
  std::uint64_t seed = static_cast<std::uint64_t>(set) + 1;
  for (int t = 0; t < trials; ++t) {
    Masks m = best.masks;
    for (int flips = 1 + static_cast<int>(next_random(seed) % 3); flips > 0; --flips) {
      const std::uint32_t bit = next_random(seed) % 42;
      if (bit < 25)
        m.b ^= 1U << (7 + bit);
      else
        m.c ^= 1U << (15 + bit - 25);
    }
    const int defect = total_defect(a, m);
    if (defect <= best.defect) best = {m, defect};
  }
  return best;
}

// The best of several starts, then a climb.
Choice choose(int set, std::uint32_t a, const std::vector<Masks>& starts, int trials) {
  Choice best{starts.front(), total_defect(a, starts.front())};
  for (std::size_t i = 1; i < starts.size(); ++i) {
    const Choice other{starts[i], total_defect(a, starts[i])};
    if (other.defect < best.defect) best = other;
  }
  return climb(set, a, best, trials - static_cast<int>(starts.size()));
}

struct Row {
  std::uint32_t a;
  Masks masks;
  int defect;
};

std::map<int, Row> read_rows(const char* name) {
  std::map<int, Row> rows;
  if (std::FILE* file = std::fopen(name, "r")) {
    int set, defect;
    unsigned a, b, c;
    while (std::fscanf(file, "%d %x %x %x %d", &set, &a, &b, &c, &defect) == 5) rows[set] = {a, {b, c}, defect};
    std::fclose(file);
  }
  return rows;
}

int print_table(const std::map<int, Row>& rows) {
  constexpr std::size_t set_count = 6024;
  if (rows.size() != set_count) {
    std::fprintf(stderr, "%zu sets of %zu\n", rows.size(), set_count);
    return 1;
  }
  std::vector<int> defects;
  for (const auto& [set, row] : rows) defects.push_back(row.defect);
  std::sort(defects.begin(), defects.end());
  std::puts(
      "// mt2203_parameters: twist coefficient and tempering masks b, c of 6024 twisters of period 2^2203 - 1.\n// "
      "SPDX-License-Identifier: MIT\n//");
  std::puts("// Made by tools/rng/find_mt2203.cpp (coefficients, proven) and tools/rng/temper_mt2203.cpp (masks).");
  std::printf("// Total defect of equidistribution: %d at best, %d in the middle, %d at worst.\n", defects.front(),
              defects[set_count / 2], defects.back());
  std::puts(
      "#ifndef ORIN_RNG_DATA_MT2203_PARAMETERS_H\n#define ORIN_RNG_DATA_MT2203_PARAMETERS_H\n\n#include "
      "<cstdint>\n\nnamespace orin::rng {\n");
  std::printf("// clang-format off\ninline constexpr uint32_t mt2203_parameters[%zu][3] = {\n", set_count);
  int column = 0;
  for (const auto& [set, row] : rows) {
    std::printf("%s{0x%08x, 0x%08x, 0x%08x},%s", column == 0 ? "    " : " ", row.a, row.masks.b, row.masks.c,
                column == 2 ? "\n" : "");
    column = (column + 1) % 3;
  }
  std::puts("};\n// clang-format on\n\n}  // namespace orin::rng\n\n#endif");
  return 0;
}

// Equidistribution of all sets, as the table of docs/rng_quality.md.
int print_report(const std::map<int, Row>& rows) {
  std::array<std::vector<int>, 33> k;
  for (const auto& [set, row] : rows) {
    const std::array<int, 33> of_set = equidistribution(row.a, row.masks);
    for (std::size_t v = 1; v <= 32; ++v) k[v].push_back(of_set[v]);
  }
  std::puts("| v | bound | best k(v) | median | worst |\n|---|---|---|---|---|");
  for (std::size_t v = 1; v <= 32; ++v) {
    std::sort(k[v].begin(), k[v].end());
    std::printf("| %zu | %d | %d | %d | %d |\n", v, mersenne_exponent / static_cast<int>(v), k[v].back(),
                k[v][k[v].size() / 2], k[v].front());
  }
  return 0;
}

// Masks that served the best sets of a file, for the sets that are worse than `limit`.
std::vector<Masks> proven_masks(const std::map<int, Row>& rows, std::size_t count) {
  std::vector<Row> best;
  for (const auto& [set, row] : rows) best.push_back(row);
  std::stable_sort(best.begin(), best.end(), [](const Row& x, const Row& y) { return x.defect < y.defect; });
  std::vector<Masks> masks;
  for (std::size_t i = 0; i < best.size() && masks.size() < count; ++i) masks.push_back(best[i].masks);
  return masks;
}

int usage() {
  std::puts(
      "temper_mt2203 IN OUT [trials [threads]]   masks for every set of IN that OUT lacks\n"
      "temper_mt2203 --improve ROWS OUT LIMIT [trials [threads]]   those of ROWS, the sets above LIMIT once more\n"
      "temper_mt2203 --table ROWS   the data file\n"
      "temper_mt2203 --report ROWS   k(v) over all sets");
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<char*> words(argv + 1, argv + argc);
  const std::string mode = words.empty() ? "" : words[0];
  if (words.size() < 2) return usage();
  if (mode == "--table") return print_table(read_rows(words[1]));
  if (mode == "--report") return print_report(read_rows(words[1]));
  const bool improve = mode == "--improve";
  const std::size_t options = improve ? 4 : 2;
  if (words.size() < options) return usage();
  const int trials = words.size() > options ? std::atoi(words[options]) : 200;
  const int thread_count = words.size() > options + 1 ? std::atoi(words[options + 1]) : 2;
  const char* out_name = improve ? words[2] : words[1];

  std::vector<Masks> starts = {{0x9d2c5680U, 0xefc60000U}};
  std::map<int, Row> todo, done = read_rows(out_name);
  if (improve) {
    const std::map<int, Row> rows = read_rows(words[1]);
    starts = proven_masks(rows, 30);
    for (const auto& [set, row] : rows)
      if (!done.contains(set)) todo[set] = row;
  } else {
    std::FILE* in = std::fopen(words[0], "r");
    if (!in) return 1;
    int set;
    unsigned a;
    while (std::fscanf(in, "%d %x", &set, &a) == 2)
      if (!done.contains(set)) todo[set].a = a;
    std::fclose(in);
  }
  const int limit = improve ? std::atoi(words[3]) : -1;
  std::FILE* out = std::fopen(out_name, "a");
  if (!out) return 1;
  const std::vector<std::pair<int, Row>> sets(todo.begin(), todo.end());
  std::atomic<std::size_t> next{0};
  std::mutex writing;
  std::vector<std::thread> workers;
  for (int t = 0; t < thread_count; ++t)
    workers.emplace_back([&] {
      for (std::size_t i; (i = next++) < sets.size();) {
        const auto& [set, row] = sets[i];
        Choice choice{row.masks, row.defect};
        if (!improve || row.defect > limit) {
          choice = choose(set, row.a, starts, trials);
          if (improve && choice.defect > row.defect) choice = {row.masks, row.defect};
        }
        const std::lock_guard guard(writing);
        std::fprintf(out, "%d %08x %08x %08x %d\n", set, row.a, choice.masks.b, choice.masks.c, choice.defect);
        std::fflush(out);
      }
    });
  for (std::thread& w : workers) w.join();
  std::fclose(out);
  return 0;
}
