// tour_rng: one sequence divided among workers by leapfrog and by skipping ahead, and a stream saved, reloaded,
// continued. SPDX-License-Identifier: MIT
//
// The estimate is a bootstrap mean: months drawn at random from the series. It is summed in whole hundredths of a ppm,
// which is exact, so that divided and undivided streams must agree in every bit.
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <vector>

#include "mauna_loa_co2.h"
#include "orin/rng.h"
#include "tour.h"

namespace {

constexpr int workers = 4;
constexpr int32_t draws = 400000, share = draws / workers;

using Numbers = std::vector<double>;

void* seeded(int32_t generator) {
  const uint32_t seeds[1] = {1958};
  void* stream = nullptr;
  tour::exported<decltype(__junNewStreamEx)>("__junNewStreamEx")(&stream, generator, 1, seeds);
  return stream;
}

void remove(void* stream) { tour::exported<decltype(__junDeleteStream)>("__junDeleteStream")(&stream); }

Numbers next(void* stream, int32_t n) {
  Numbers u(static_cast<std::size_t>(n));
  tour::exported<decltype(_jundRngUniform)>("_jundRngUniform")(0, stream, n, u.data(), 0.0, 1.0);
  return u;
}

// Sum of the drawn months, in hundredths of a ppm.
int64_t drawn_sum(const Numbers& u) {
  int64_t sum = 0;
  for (const double x : u) sum += std::llround(100 * mauna_loa::co2[static_cast<int>(x * mauna_loa::months)]);
  return sum;
}

// Each worker takes its part of one sequence; what the parts add up to.
template <class Divide>
int64_t divided_sum(int32_t generator, Divide divide) {
  int64_t sum = 0;
  for (int worker = 0; worker < workers; ++worker) {
    void* stream = seeded(generator);
    divide(stream, worker);
    const int64_t part = drawn_sum(next(stream, share));
    std::printf("  worker %d: %.4f ppm\n", worker, static_cast<double>(part) / 100 / share);
    sum += part;
    remove(stream);
  }
  return sum;
}

double mean_of(int64_t sum) { return static_cast<double>(sum) / 100 / draws; }

void division() {
  tour::heading("Bootstrap mean of 400000 random months: one stream, four leapfrogged, four skipped ahead (MCG59)");
  void* stream = seeded(JUN_BRNG_MCG59);
  const int64_t whole = drawn_sum(next(stream, draws));
  remove(stream);
  tour::check("undivided stream", mean_of(whole), mauna_loa::known::mean, 0.1);
  const int64_t leapfrogged = divided_sum(JUN_BRNG_MCG59, [](void* part, int worker) {
    tour::exported<decltype(__junLeapfrogStream)>("__junLeapfrogStream")(part, worker, workers);
  });
  tour::check("every fourth number each: the same bits", leapfrogged == whole);
  const int64_t skipped = divided_sum(JUN_BRNG_MCG59, [](void* part, int worker) {
    tour::exported<decltype(__junSkipAheadStream)>("__junSkipAheadStream")(part, uint64_t{share} * worker);
  });
  tour::check("a quarter each: the same bits", skipped == whole);
}

void persistence() {
  tour::heading("A Mersenne twister saved to a file after 1000 numbers, loaded and continued");
  constexpr char file[] = "tour_stream.img";
  void *stream = seeded(JUN_BRNG_MT19937), *loaded = nullptr;
  next(stream, 1000);
  const int32_t bytes = tour::exported<decltype(__junGetStreamSize)>("__junGetStreamSize")(stream);
  std::printf("  image of %d bytes\n", static_cast<int>(bytes));
  tour::check("saving", tour::exported<decltype(__junSaveStreamF)>("__junSaveStreamF")(stream, file, -1), 0, 0);
  tour::check("loading", tour::exported<decltype(__junLoadStreamF)>("__junLoadStreamF")(&loaded, file, -1), 0, 0);
  std::remove(file);
  const Numbers expected = next(stream, 5), found = next(loaded, 5);
  for (std::size_t i = 0; i < 5; ++i) std::printf("  %.17g  %.17g\n", expected[i], found[i]);
  tour::check("the next 100000 numbers are the same", next(stream, 100000) == next(loaded, 100000));
  remove(stream);
  remove(loaded);
}

}  // namespace

void tour_rng() {
  division();
  persistence();
}
