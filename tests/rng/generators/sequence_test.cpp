// sequence_test: every family delivers its sequence, value by value, wherever calls are cut and arrays lie.
// SPDX-License-Identifier: MIT
#include <emmintrin.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

#include "rng/data/wh_parameters.h"
#include "rng/stream_layout.h"
#include "tests/rng/generators/references.h"
#include "tests/support/guard_pages.h"
#include "tests/support/threads.h"

namespace {

using namespace references;

class Sequence : public testing::TestWithParam<Family> {
 protected:
  void TearDown() override { EXPECT_EQ(faulty_core::live_blocks(), blocks_); }
  Stream stream() const { return new_stream(GetParam().brng, GetParam().seeds); }
  JunBrngProperties row() const { return row_of(GetParam().brng); }

 private:
  const long blocks_ = faulty_core::live_blocks();
};

INSTANTIATE_TEST_SUITE_P(Families, Sequence, testing::ValuesIn(families()),
                         [](const auto& family) { return family.param.name; });

// Long enough for every block of every family, for all stretches of MRG32K3A and for many blocks of quasi-random
// points.
constexpr std::size_t length = 30011;

TEST_P(Sequence, RawOutputsFollowTheRecurrence) {
  const Generator next = GetParam().start();
  const std::size_t words = GetParam().words, per_raw = GetParam().outputs_per_raw;
  const std::vector<uint32_t> r = raw(stream(), length, words * per_raw);
  for (std::size_t k = 0; k < length * per_raw; ++k) {
    const Output expected = next();
    for (std::size_t i = 0; i < words; ++i) ASSERT_EQ(r[k * words + i], expected.words[i]) << "output " << k;
  }
}

// The one rounding of a number of [0, 1); what rounds to 1 becomes the value below.
template <class T>
T rounded(long double u) {
  return std::min(static_cast<T>(u), std::nextafter(T{1}, T{0}));
}

// u to a + (b - a) u, each operation rounded; a result that rounds to b becomes the value below it. Wide and narrow
// intervals, some with nothing or little between their ends, empty and reversed ones.
template <class T>
void expect_mapped(const Family& family, const std::vector<T>& u) {
  using Limits = std::numeric_limits<T>;
  constexpr T least = Limits::denorm_min(), most = Limits::max();
  const T intervals[][2] = {{-3, 5},
                            {T(1e-3), T(1e6)},
                            {1, 1 + Limits::epsilon()},
                            {-1, -1 + Limits::epsilon()},
                            {-least, 0},
                            {0, least},
                            {-most / 3, most / 2},
                            {1 / Limits::epsilon(), most},
                            {2.5, 2.5},
                            {5, 3}};
  for (const auto& [a, b] : intervals) {
    const std::vector<T> r = uniforms<T>(new_stream(family.brng, family.seeds), 4001, a, b);
    for (std::size_t k = 0; k < r.size(); ++k) {
      const T product = (b - a) * u[k], mapped = a + product;
      ASSERT_EQ(r[k], a < b ? std::min(mapped, std::nextafter(b, a)) : mapped) << k << " on " << a << ", " << b;
    }
  }
}

TEST_P(Sequence, UniformsAreRoundedOnceAndMapped) {
  const Generator next = GetParam().start();
  const std::vector<double> r = uniforms<double>(stream(), length);
  const std::vector<float> s = uniforms<float>(stream(), length);
  const std::string name = GetParam().name;
  for (std::size_t k = 0; k < length; ++k) {
    const long double u = next().u;
    ASSERT_EQ(s[k], rounded<float>(u)) << k;
    if (name == "MRG32K3A") {
      ASSERT_EQ(r[k], static_cast<double>(std::llround(u * 4294967087.0L)) / 4294967087.0) << k;
    } else if (name.starts_with("WH")) {
      ASSERT_LE(std::abs(r[k] - u), u * 0x1p-53L + 0x1p-60L) << k;
    } else if (name != "MCG31M1") {  // whose doubles have a formula of their own
      ASSERT_EQ(r[k], rounded<double>(u)) << k;
    }
  }
  expect_mapped(GetParam(), s);
  if (name != "MCG31M1") expect_mapped(GetParam(), r);
}

// Outputs of a list, as they come first from a stream: with so few of them, and with the same in front of many more.
template <class T>
T first_uniform(int32_t brng, const std::vector<uint32_t>& seeds) {
  const T r = uniforms<T>(new_stream(brng, seeds), 1)[0];
  EXPECT_EQ(uniforms<T>(new_stream(brng, seeds), 40)[0], r);
  return r;
}

// Numbers whose rounding is hard: halfway and next to it, with any number of leading zeros, nearly 0 and nearly 1.
TEST(Rounding, HardCases) {
  std::vector<uint64_t> hard;  // of 64 bits, most of them in the leading ones
  for (int zeros = 0; zeros < 64; ++zeros)
    for (const uint64_t mantissa : {0x800000ULL, 0x800001ULL, 0xFFFFFFULL, 0xABCDEEULL})
      for (const uint64_t half : {0ULL, 0x7FFFFFFFFFULL, 0x8000000000ULL, 0x8000000001ULL, 0x8000008000ULL})
        hard.push_back((mantissa << 40 | half) >> zeros);
  for (std::size_t at = 0; at < hard.size(); at += 103) {  // an R250 that delivers its table first
    std::vector<uint32_t> table(250);
    for (std::size_t i = 0; i < 103 && at + i < hard.size(); ++i) table[i] = static_cast<uint32_t>(hard[at + i] >> 32);
    const std::vector<float> s = uniforms<float>(new_stream(JUN_BRNG_R250, table), 103);
    for (std::size_t i = 0; i < 103; ++i) ASSERT_EQ(s[i], rounded<float>(table[i] * 0x1p-32L)) << std::hex << table[i];
  }
  for (const uint64_t bits : hard) {
    if (const uint64_t x = bits >> 5; x != 0) {
      const std::vector<uint32_t> seeds = {static_cast<uint32_t>(x), static_cast<uint32_t>(x >> 32)};
      const long double u = static_cast<long double>(x) * 0x1p-59L;
      ASSERT_EQ(first_uniform<float>(JUN_BRNG_MCG59, seeds), rounded<float>(u)) << std::hex << x;
      ASSERT_EQ(first_uniform<double>(JUN_BRNG_MCG59, seeds), rounded<double>(u)) << std::hex << x;
    }
    if (const auto x = static_cast<uint32_t>(bits >> 33); x % 2147483647 != 0) {
      ASSERT_EQ(first_uniform<float>(JUN_BRNG_MCG31M1, {x}), rounded<float>(x / 2147483647.0L)) << x;
    }
  }
  // 1 +- 4 j / (m1 m2) and 1 +- 6 k / (m3 m4), from x and m - x.
  const uint32_t* m = orin::rng::wh_moduli[0];
  for (int64_t j = -40; j <= 40; ++j) {
    for (int64_t k = -5000; k <= 5000; k += 613) {
      if (j == 0 || k == 0) continue;
      std::vector<uint32_t> x(4);
      long double u = 0;
      for (std::size_t i = 0; i < 4; i += 2) {
        const int64_t c = i == 0 ? j : k;
        x[i] = static_cast<uint32_t>(c > 0 ? c : m[i] + c);
        x[i + 1] = static_cast<uint32_t>(c > 0 ? m[i + 1] - c : -c);
        const int64_t apart = int64_t{m[i + 1]} - m[i];
        u += static_cast<long double>(c * apart) / (static_cast<long double>(m[i]) * m[i + 1]);
      }
      u = u < 0 ? 1 + u : u;
      const double r = first_uniform<double>(JUN_BRNG_WH, x);
      ASSERT_LE(std::abs(r - u), u * 0x1p-53L + 0x1p-63L) << j << ' ' << k;
      ASSERT_LT(r, 1);
      ASSERT_NEAR(first_uniform<float>(JUN_BRNG_WH, x), rounded<float>(u), 0x1p-60) << j << ' ' << k;
    }
  }
}

// Calls of all lengths and kinds in a random order, negative ones too, into arrays between guard pages at every 4-byte
// alignment, under all floating-point modes of the caller: rounding down, up and towards zero, subnormals flushed.
TEST_P(Sequence, CutsAlignmentsKindsAndModesOfCallsDoNotMatter) {
  const std::size_t words = GetParam().words, per_raw = GetParam().outputs_per_raw;
  const std::vector<double> d = uniforms<double>(stream(), length, 1e-308, 1.5e-308);
  const std::vector<float> s = uniforms<float>(stream(), length, -2.0f, 3.0f);
  const std::vector<uint32_t> w = raw(stream(), length, words * per_raw);
  const Stream cut = stream();
  std::mt19937 random(static_cast<uint32_t>(GetParam().brng));
  const uint32_t defaults = _mm_getcsr() & ~0x3fU, modes[] = {0, 0x2000, 0x4000, 0x6000, 0x8040};
  std::size_t place = 0;
  for (int call = 0; place + 4 * 900 < length; ++call) {
    const std::size_t n = random() % (call % 8 == 0 ? 900 : call % 2 == 0 ? 70 : 10), offset = 4 * (random() % 4);
    const int32_t none[] = {0, -1, std::numeric_limits<int32_t>::min()};
    const auto count = n != 0 ? static_cast<int32_t>(n) : none[random() % 3];
    const auto expect = [&]<class T>(const T* expected, std::size_t elements, auto fill) {
      GuardedArray<T> r(elements, call % 3 == 0 ? GuardedArray<T>::at_start : GuardedArray<T>::at_end, offset);
      const uint32_t mode = defaults | modes[random() % 5];
      _mm_setcsr(mode);
      const int32_t status = fill(r.data());
      const uint32_t after = _mm_getcsr() & ~0x3fU;
      _mm_setcsr(defaults);
      ASSERT_TRUE(status == JUN_RNG_OK && after == mode) << call;
      ASSERT_TRUE(std::memcmp(r.data(), expected, elements * sizeof(T)) == 0 && r.surroundings_intact()) << call;
    };
    const auto kind = random() % 3;
    if (kind == 0) expect(&d[place], n, [&](double* r) { return row().dBRng(cut.get(), count, r, 1e-308, 1.5e-308); });
    if (kind == 1) expect(&s[place], n, [&](float* r) { return row().sBRng(cut.get(), count, r, -2, 3); });
    if (kind == 2) {
      expect(&w[place * words], n * words * per_raw, [&](uint32_t* r) { return row().iBRng(cut.get(), count, r); });
    }
    ASSERT_FALSE(HasFatalFailure());
    place += kind == 2 ? n * per_raw : n;
  }
}

// The state as any bytes at all: the calls end, and no byte outside the state and the array is touched.
TEST_P(Sequence, CorruptStatesAreHarmless) {
  std::mt19937 random(99);
  for (int round = 0; round < 40; ++round) {
    const Stream s = stream();
    auto* bytes = static_cast<unsigned char*>(s.get());
    const auto size = static_cast<std::size_t>(row().StateBytes);
    for (std::size_t i = sizeof(orin::rng::StreamHeader); i < size; ++i)
      bytes[i] = static_cast<unsigned char>(round % 2 != 0 ? 0xFF : random());
    GuardedArray<double> r(700);
    EXPECT_EQ(row().dBRng(s.get(), 5, r.data(), 0, 1), JUN_RNG_OK);
    EXPECT_EQ(row().dBRng(s.get(), 700, r.data(), 0, 1), JUN_RNG_OK);
    const uint32_t skip[2] = {5, 1};
    row().InitStream(JUN_RNG_SKIP_AHEAD, s.get(), 2, skip);
    EXPECT_EQ(row().dBRng(s.get(), 700, r.data(), 0, 1), JUN_RNG_OK);
  }
}

// Copied, and loaded from a saved image, a stream goes on with the same numbers on whatever thread.
TEST_P(Sequence, ContinuesWhereverItIsCarried) {
  const Stream s = stream();
  uniforms<float>(s, 777);
  std::vector<unsigned char> image(static_cast<std::size_t>(__junGetStreamSize(s.get())));
  ASSERT_EQ(__junSaveStreamM(s.get(), image.data()), JUN_RNG_OK);
  std::vector<double> found[4];
  run_threads(4, [&](int thread) {
    void* mine = nullptr;
    EXPECT_EQ(thread % 2 == 0 ? __junCopyStream(&mine, s.get()) : __junLoadStreamM(&mine, image.data()), JUN_RNG_OK);
    found[thread] = uniforms<double>(Stream(mine), 3001);
  });
  const std::vector<double> expected = uniforms<double>(s, 3001);
  for (const std::vector<double>& numbers : found) EXPECT_EQ(numbers, expected);
}

}  // namespace
