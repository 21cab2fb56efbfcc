// rng_bench: uniform doubles, floats and raw words of every family beside what a user would take instead.
// SPDX-License-Identifier: MIT
//
// Method    arrays of 10,000 numbers in cache, warm; per call the mean over a batch of calls, then minimum and median
//           over the batches. All rows of a family are measured in turn within each batch, so that a slow spell hits
//           every row. A raw output of MCG59 has two words, of WH and SFMT19937 four.
// Check     loops of the same recurrence must give the module's numbers before they are timed, else the row prints
//           WRONG; other peers must give numbers in [0, 1) with the mean 1/2.
// Peers     a plain loop as a user writes it, compiled with -O3; Boost.Random; the standard library; the GNU Scientific
//           Library; dSFMT. The 32-bit build has the module, the loops and the standard library.
// Usage     rng_bench [FAMILY]
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "orin/rng.h"

#if !defined(_WIN32)
#define DSFMT_MEXP 19937
#define HAVE_SSE2 1
#include <dSFMT.h>
#include <gsl/gsl_qrng.h>
#include <gsl/gsl_rng.h>

#include <boost/random/mersenne_twister.hpp>
#include <boost/random/niederreiter_base2.hpp>
#include <boost/random/sobol.hpp>
#endif

namespace {

constexpr std::size_t count = 10000;

alignas(64) double doubles[count], reference[count];
alignas(64) float floats[count];
alignas(64) uint32_t words[4 * count];

struct Row {
  std::string name;
  std::function<void()> call;              // fills doubles, floats or words
  enum Sequence { other, same } sequence;  // same: the doubles must be those of the module
  std::vector<double> times;
};

double nanoseconds(const std::function<void()>& call, int calls) {
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < calls; ++i) call();
  const std::chrono::duration<double, std::nano> elapsed = std::chrono::steady_clock::now() - start;
  return elapsed.count() / calls / count;
}

void* new_stream(int32_t brng, std::vector<uint32_t> seeds) {
  void* stream = nullptr;
  if (__junNewStreamEx(&stream, brng, static_cast<int32_t>(seeds.size()), seeds.data()) != 0) std::abort();
  return stream;
}

struct Family {
  std::string name;
  int32_t brng;
  std::vector<uint32_t> seeds;
  std::vector<Row> peers;
};

bool wrong(const Row& row) {
  if (row.name.ends_with("words")) return false;
  row.call();
  double sum = 0;
  for (std::size_t i = 0; i < count; ++i) {
    if (!(doubles[i] >= 0 && doubles[i] < 1)) return true;
    if (row.sequence == Row::same && std::abs(doubles[i] - reference[i]) > 1e-15) return true;
    sum += doubles[i];
  }
  return std::abs(sum / count - 0.5) > 0.02;
}

void measure(Family& family) {
  const JunBrngProperties* table = nullptr;
  int32_t index = 0, sub_stream = 0;
  table = __junGetBrngBaseOffset(family.brng, &index, &sub_stream);
  const JunBrngProperties& row = table[index];
  void* fresh = new_stream(family.brng, family.seeds);
  row.dBRng(fresh, count, reference, 0, 1);
  __junDeleteStream(&fresh);

  void* stream = new_stream(family.brng, family.seeds);
  const int32_t n = count;
  std::vector<Row> rows = {
      {"doubles", [&] { row.dBRng(stream, n, doubles, 0, 1); }, Row::same, {}},
      {"doubles on [-1, 3)", [&] { row.dBRng(stream, n, doubles, -1, 3); }, Row::other, {}},
      {"floats", [&] { row.sBRng(stream, n, floats, 0, 1); }, Row::other, {}},
      {"floats on [-1, 3)", [&] { row.sBRng(stream, n, floats, -1, 3); }, Row::other, {}},
      {"raw", [&] { row.iBRng(stream, n, words); }, Row::other, {}},
  };
  const std::size_t own = rows.size();
  std::vector<bool> broken(own, false);
  for (Row& peer : family.peers) {
    rows.push_back(peer);
    broken.push_back(wrong(peer));
  }
  constexpr int batches = 41;
  for (Row& r : rows) nanoseconds(r.call, 2);
  for (int batch = 0; batch < batches; ++batch)
    for (Row& r : rows) r.times.push_back(nanoseconds(r.call, 12));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    std::vector<double>& t = rows[i].times;
    std::sort(t.begin(), t.end());
    std::printf("%-10s %-22s %8.3f %8.3f", i < own ? family.name.c_str() : "", rows[i].name.c_str(), t.front(),
                t[t.size() / 2]);
    std::printf("   %5.2f x doubles%s\n", t.front() / rows[0].times.front(), broken[i] ? "   WRONG" : "");
  }
  if (__junSkipAheadStream(stream, uint64_t{1} << 62) == 0) {
    const auto skip = [&] { __junSkipAheadStream(stream, (uint64_t{1} << 62) + 12345); };
    double best = 1e300;
    for (int i = 0; i < 50; ++i) best = std::min(best, nanoseconds(skip, 20) * count);
    std::printf("%-10s %-22s %8.3f us\n", "", "skip ahead by 2^62", best / 1000);
  }
  __junDeleteStream(&stream);
}

// --- Plain loops. Each begins where the module's stream begins and goes on from call to call. ------------------------

Row loop(std::string name, std::function<void()> call) { return {std::move(name), std::move(call), Row::same, {}}; }

Row mcg31m1_loop() {
  return loop("loop", [x = uint64_t{1}]() mutable {
    for (double& r : doubles) {
      r = static_cast<double>(x) * (1.0 / 2147483647);
      x = x * 1132489760 % 2147483647;
    }
  });
}

Row mcg59_loop() {
  return loop("loop", [x = uint64_t{1}]() mutable {
    for (double& r : doubles) {
      r = static_cast<double>(static_cast<int64_t>(x)) * 0x1p-59;
      x = x * 302875106592253 & ((uint64_t{1} << 59) - 1);
    }
  });
}

Row mrg32k3a_loop() {
  return loop("loop", [x0 = int64_t{1}, x1 = int64_t{1}, x2 = int64_t{1}, y0 = int64_t{1}, y1 = int64_t{1},
                       y2 = int64_t{1}]() mutable {
    for (double& r : doubles) {
      int64_t x = (1403580 * x1 - 810728 * x0) % 4294967087;
      if (x < 0) x += 4294967087;
      x0 = x1, x1 = x2, x2 = x;
      int64_t y = (527612 * y2 - 1370589 * y0) % 4294944443;
      if (y < 0) y += 4294944443;
      y0 = y1, y1 = y2, y2 = y;
      r = static_cast<double>(x < y ? x - y + 4294967087 : x - y) * (1.0 / 4294967087);
    }
  });
}

Row wh_loop() {
  return loop("loop", [x = std::vector<uint32_t>(4, 1)]() mutable {
    uint32_t a = x[0], b = x[1], c = x[2], d = x[3];
    for (double& r : doubles) {
      const double s = a * (1.0 / 16770647) + b * (1.0 / 16770643) + c * (1.0 / 16770623) + d * (1.0 / 16770617);
      r = s - static_cast<int>(s);
      a = a * 125 % 16770647, b = b * 117 % 16770643, c = c * 127 % 16770623, d = d * 126 % 16770617;
    }
    x = {a, b, c, d};
  });
}

// The numbers themselves are the history, as long as nobody else needs the array.
std::vector<uint32_t> r250_start() {
  std::vector<uint32_t> x(250 + count);
  uint32_t s = 1;
  for (std::size_t i = 0; i < 250; ++i) x[i] = s *= 69069;
  for (std::size_t k = 0; k < 32; ++k) x[3 + 7 * k] = (x[3 + 7 * k] & 0xFFFFFFFF >> k) | 0x80000000 >> k;
  return x;
}
void r250_step(uint32_t* x) {
  std::memmove(x, x + count, 250 * sizeof *x);
  for (std::size_t i = 250; i < 250 + count; i += 100)  // 100 words do not depend on each other
    for (std::size_t j = i; j < i + 100; ++j) x[j] = x[j - 103] ^ x[j - 250];
}
Row r250_loop() {
  return loop("loop", [x = r250_start(), first = true]() mutable {
    if (first) std::memmove(x.data() + count, x.data(), 250 * sizeof x[0]);
    first = false;
    r250_step(x.data());
    for (std::size_t i = 0; i < count; ++i) doubles[i] = x[250 + i] * 0x1p-32;
  });
}
Row r250_word_loop() {
  return loop("loop, words", [x = r250_start()]() mutable { r250_step(x.data()); });
}

Row std_mt() {
  return {"std words",
          [engine = std::mt19937(1)]() mutable {
            for (std::size_t i = 0; i < count; ++i) words[i] = static_cast<uint32_t>(engine());
          },
          Row::other,
          {}};
}

// Direction numbers of the module's own first points: v[c] = point 2^c ^ point 2^c - 1.
std::vector<std::vector<uint32_t>> columns_of(int32_t brng, uint32_t dimension, uint32_t bits) {
  void* stream = new_stream(brng, {dimension});
  std::vector<uint32_t> x(dimension * (std::size_t{1} << bits));
  __RegBrngsNew[(brng >> 20) - 1].iBRng(stream, static_cast<int32_t>(x.size() - dimension), x.data() + dimension);
  __junDeleteStream(&stream);
  std::vector<std::vector<uint32_t>> v(32, std::vector<uint32_t>(dimension));
  for (uint32_t c = 0; c < bits; ++c)
    for (uint32_t j = 0; j < dimension; ++j)
      v[c][j] = x[(std::size_t{1} << c) * dimension + j] ^ x[((std::size_t{1} << c) - 1) * dimension + j];
  return v;
}
Row quasi_loop(int32_t brng, uint32_t dimension) {
  return loop("loop", [v = columns_of(brng, dimension, 18), x = std::vector<uint32_t>(dimension), i = uint32_t{0},
                       dimension]() mutable {
    uint32_t* point = x.data();
    for (std::size_t k = 0; k < count; k += dimension) {
      const uint32_t* column = v[static_cast<std::size_t>(__builtin_ctz(++i))].data();
      for (std::size_t j = 0; j < dimension; ++j) {
        point[j] ^= column[j];
        doubles[k + j] = point[j] * 0x1p-32;
      }
    }
  });
}

// --- Libraries -------------------------------------------------------------------------------------------------------

#if !defined(_WIN32)
Row gsl(const char* name, const gsl_rng_type* type) {
  gsl_rng* generator = gsl_rng_alloc(type);
  return {name,
          [=] {
            for (double& r : doubles) r = gsl_rng_uniform(generator);
          },
          Row::other,
          {}};
}

Row gsl_points(const gsl_qrng_type* type, unsigned dimension) {
  gsl_qrng* generator = gsl_qrng_alloc(type, dimension);
  return {"GSL",
          [=] {
            for (std::size_t i = 0; i < count; i += dimension) gsl_qrng_get(generator, doubles + i);
          },
          Row::other,
          {}};
}

template <class Engine>
Row boost_points(Engine engine) {
  return {"Boost",
          [engine]() mutable {
            for (double& r : doubles) r = static_cast<double>(engine()) * 0x1p-32;
          },
          Row::other,
          {}};
}

Row boost_mt(bool raw, Row::Sequence sequence = Row::same) {
  return {raw ? "Boost words" : "Boost",
          [engine = boost::random::mt19937(1), raw]() mutable {
            if (raw) {
              for (std::size_t i = 0; i < count; ++i) words[i] = engine();
            } else {
              for (double& r : doubles) r = engine() * 0x1p-32;
            }
          },
          raw ? Row::other : sequence,
          {}};
}

Row dsfmt() {
  auto* state = new (std::align_val_t{16}) dsfmt_t;
  dsfmt_init_gen_rand(state, 1);
  return {"dSFMT", [=] { dsfmt_fill_array_close_open(state, doubles, count); }, Row::other, {}};
}
#endif

std::vector<Family> families() {
  std::vector<Family> list = {
      {"MCG31M1", JUN_BRNG_MCG31M1, {1}, {mcg31m1_loop()}},
      {"MCG59", JUN_BRNG_MCG59, {1}, {mcg59_loop()}},
      {"MRG32K3A", JUN_BRNG_MRG32K3A, {}, {mrg32k3a_loop()}},
      {"WH", JUN_BRNG_WH, {}, {wh_loop()}},
      {"R250", JUN_BRNG_R250, {1}, {r250_loop(), r250_word_loop()}},
      {"MT19937", JUN_BRNG_MT19937, {1}, {std_mt()}},
      {"MT2203", JUN_BRNG_MT2203 + 17, {1}, {}},
      {"SFMT19937", JUN_BRNG_SFMT19937, {1}, {}},
      {"Sobol10", JUN_BRNG_SOBOL, {10}, {quasi_loop(JUN_BRNG_SOBOL, 10)}},
      {"Niederr10", JUN_BRNG_NIEDERR, {10}, {quasi_loop(JUN_BRNG_NIEDERR, 10)}},
  };
#if !defined(_WIN32)
  const auto add = [&](const char* name, Row row) {
    for (Family& family : list)
      if (family.name == name) family.peers.push_back(std::move(row));
  };
  add("MCG31M1", gsl("GSL mrg", gsl_rng_mrg));
  add("MRG32K3A", gsl("GSL cmrg", gsl_rng_cmrg));
  add("R250", gsl("GSL r250", gsl_rng_r250));
  add("MT19937", boost_mt(false));
  add("MT19937", boost_mt(true));
  add("MT19937", gsl("GSL", gsl_rng_mt19937));
  add("MT2203", boost_mt(false, Row::other));
  add("SFMT19937", dsfmt());
  add("Sobol10", gsl_points(gsl_qrng_sobol, 10));
  add("Sobol10", boost_points(boost::random::sobol_engine<uint32_t, 32>(10)));
  add("Niederr10", gsl_points(gsl_qrng_niederreiter_2, 10));
  add("Niederr10", boost_points(boost::random::niederreiter_base2_engine<uint32_t, 32>(10)));
#endif
  return list;
}

}  // namespace

int main(int argc, char** argv) {
  std::printf("%-10s %-22s %8s %8s   ns per number, n = %zu\n", "family", "row", "minimum", "median", count);
  for (Family& family : families())
    if (argc < 2 || family.name == argv[1]) measure(family);
  return 0;
}
