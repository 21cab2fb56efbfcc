// kernels_test: every kernel against its definition in extended precision, between guard pages.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>

#include "tests/conv/problem.h"
#include "tests/support/faulty_core.h"

namespace conv_test {
namespace {

class Kernels : public testing::TestWithParam<KernelRow> {};
INSTANTIATE_TEST_SUITE_P(, Kernels, testing::ValuesIn(kernel_rows), row_name);

// A problem with gaps, broadcasts, reversed axes, decimation and any part of the result.
Problem random_problem(const KernelRow& row, int dims, std::int32_t longest, std::mt19937& random) {
  const auto pick = [&](std::int32_t low, std::int32_t high) {
    return std::uniform_int_distribution<std::int32_t>(low, high)(random);
  };
  Problem p;
  p.correlation = row.correlation;
  p.dims = dims;
  std::int32_t zspan = 1;
  for (std::size_t d = 0; d < static_cast<std::size_t>(dims); ++d) {
    p.n[d] = pick(1, longest);
    p.m[d] = pick(1, longest);
    const std::int32_t positions = p.positions(static_cast<int>(d));
    const std::int32_t skipped = pick(0, 2) == 0 ? pick(0, positions - 1) : 0;
    p.start[d] = p.first_position(static_cast<int>(d)) + skipped;
    p.decimation[d] = pick(0, 1) == 0 ? 1 : pick(1, 7);
    p.l[d] = pick(0, 2) == 0 ? pick(1, (positions - skipped - 1) / p.decimation[d] + 1)
                             : (positions - skipped - 1) / p.decimation[d] + 1;
    p.xs[d] = pick(0, 1) == 0 && d == 0 ? 1 : pick(-3, 3) * (d == 0 ? 1 : p.n[0]);
    p.ys[d] = pick(0, 1) == 0 && d == 0 ? 1 : pick(-3, 3) * (d == 0 ? 1 : p.m[0]);
    p.zs[d] = zspan * pick(1, 2) * (pick(0, 2) == 0 ? -1 : 1);
    zspan = std::abs(p.zs[d]) * p.l[d];
  }
  return p;
}

// Compares every output; what lies between the outputs must be as it was.
void expect_exact_within_bounds(const KernelRow& row, Instance& run, int method) {
  const Problem& p = run.problem;
  const long double unit = row.single_sums ? 0x1p-24L : 0x1p-53L;
  const long double storing = row.single_data && !row.single_sums ? 0x1p-24L : 0;
  long double difference = 0, norm = 0;
  std::vector<bool> written(run.z.elements());
  double positions = 1;
  for (int d = 0; d < p.dims; ++d) positions *= p.positions(d);
  for_each_index(p.dims, p.l, [&](const List& i) {
    const Sum exact = exact_output(p, run.x, run.y, i);
    const std::size_t at = place(p.dims, p.l, p.zs, i);
    written[at] = true;
    const long double error = std::abs(run.z.get(at) - exact.value);
    if (method == 0) {
      const long double terms = static_cast<long double>(exact.terms) * (row.complex_data ? 3 : 1);
      ASSERT_LE(error, terms * unit * exact.moduli + storing * std::abs(exact.value) + 0x1p-1074L) << "output " << i[0];
    }
    difference += error * error;
    // The norm of the whole result is at least that of the part, and its scale that of one full sum.
    norm = std::max(norm, exact.moduli);
  });
  if (method == 1) {
    const long double levels = std::log2(std::max(2.0, positions));
    const long double outputs = static_cast<long double>(written.size());
    EXPECT_LE(std::sqrt(difference), (10 * levels * unit + storing) * norm * std::sqrt(outputs));
  }
  for (std::size_t i = 0; i < written.size(); ++i) ASSERT_TRUE(written[i] || run.z.untouched(i)) << "gap " << i;
  EXPECT_TRUE(run.z.surroundings_intact());
}

TEST_P(Kernels, OneDimensionMatchesTheDefinition) {
  const KernelRow& row = GetParam();
  std::mt19937 random(1);
  for (unsigned round = 0; round < 240; ++round) {
    const Problem p = random_problem(row, 1, round < 120 ? 40 : 300, random);
    for (const int method : {0, 1}) {
      SCOPED_TRACE(testing::Message() << "round " << round << " method " << method << " N " << p.n[0] << " M " << p.m[0]
                                      << " L " << p.l[0] << " S " << p.start[0] << " D " << p.decimation[0]
                                      << " strides " << p.xs[0] << ' ' << p.ys[0] << ' ' << p.zs[0]);
      Instance one(p, row, round, round % 2 == 0), all(p, row, round, round % 2 == 1);
      ASSERT_EQ(one.run_one(row, method), 0);
      expect_exact_within_bounds(row, one, method);
      ASSERT_EQ(all.run_all(row, method), 0);
      EXPECT_EQ(one.z.content(), all.z.content());
      if (HasFatalFailure() || HasNonfatalFailure()) return;
    }
  }
}

TEST_P(Kernels, MoreDimensionsMatchTheDefinition) {
  const KernelRow& row = GetParam();
  std::mt19937 random(2);
  constexpr std::int32_t longest[] = {0, 0, 25, 8, 5, 3, 3, 3};
  for (int dims = 2; dims <= 7; ++dims)
    for (unsigned round = 0; round < (dims == 2 ? 40U : 8U); ++round) {
      const Problem p = random_problem(row, dims, longest[dims], random);
      for (const int method : {0, 1}) {
        SCOPED_TRACE(testing::Message() << "dims " << dims << " round " << round << " method " << method);
        Instance run(p, row, round, round % 2 == 0);
        ASSERT_EQ(run.run_all(row, method), 0);
        expect_exact_within_bounds(row, run, method);
        if (HasFatalFailure() || HasNonfatalFailure()) return;
      }
    }
}

// An infinity or NaN of either operand is met by the outputs whose sums contain it, and by no other one. Problems are
// small enough for the FFT kernels to sum directly in one dimension.
TEST_P(Kernels, NonFiniteElementsStayInTheirSums) {
  const KernelRow& row = GetParam();
  std::mt19937 random(3);
  constexpr long double kinds[] = {INFINITY, -INFINITY, NAN};
  const auto expect_part = [](long double found, long double exact, long double bound) {
    if (std::isfinite(exact)) return std::abs(found - exact) <= bound;
    return std::isnan(exact) ? std::isnan(found) : found == exact;
  };
  for (unsigned round = 0; round < 300; ++round) {
    const int dims = round < 200 ? 1 : 2, method = round % 2 == 0 && dims == 1 ? 1 : 0;
    const Problem p = random_problem(row, dims, dims == 1 ? (round < 180 ? 60 : 200) : 12, random);
    Instance run(p, row, round);
    for (Array* operand : {&run.x, &run.y})
      for (auto k = random() % 3; k > 0; --k) {
        const Exact odd{kinds[random() % 3], 0.5L};
        operand->set(random() % operand->elements(), random() % 2 == 0 ? odd : Exact{odd.imag(), odd.real()});
      }
    SCOPED_TRACE(testing::Message() << "round " << round << " N " << p.n[0] << " M " << p.m[0]);
    ASSERT_EQ(dims == 1 ? run.run_one(row, method) : run.run_all(row, method), 0);
    for_each_index(dims, p.l, [&](const List& i) {
      const Sum exact = exact_output(p, run.x, run.y, i);
      const Exact found = run.z.get(place(dims, p.l, p.zs, i));
      const long double bound = (3 * static_cast<long double>(exact.terms) + 1) * exact.moduli * 0x1p-24L;
      ASSERT_TRUE(expect_part(found.real(), exact.value.real(), bound)) << i[0] << ' ' << i[1];
      if (row.complex_data) {
        ASSERT_TRUE(expect_part(found.imag(), exact.value.imag(), bound)) << i[0] << ' ' << i[1];
      }
    });
    if (HasFatalFailure()) return;
  }
}

// Lengths around every rule of the engine: direct, one transform, blocks, pieces; whole result and a decimated part.
TEST_P(Kernels, FftAgreesWithDirectAroundThresholds) {
  const KernelRow& row = GetParam();
  constexpr std::int32_t sizes[][2] = {{449, 63},    {449, 64},    {448, 64},   {64, 449},   {512, 64},   {191, 64},
                                       {192, 64},    {193, 64},    {300, 200},  {600, 400},  {1000, 100}, {100, 999},
                                       {384, 129},   {4095, 3},    {4096, 3},   {4097, 5},   {8192, 63},  {3000, 1000},
                                       {2999, 1000}, {2049, 2048}, {20000, 65}, {1239, 100}, {1240, 100}, {12289, 20}};
  for (const auto& size : sizes) {
    SCOPED_TRACE(testing::Message() << size[0] << " x " << size[1]);
    Problem p = Problem::full(row.correlation, 1, {size[0]}, {size[1]});
    Instance direct(p, row, 3), fft(p, row, 3);
    ASSERT_EQ(direct.run_one(row, 0), 0);
    ASSERT_EQ(fft.run_one(row, 1), 0);
    const double unit = row.single_sums ? 0x1p-24 : 0x1p-53, stored = row.single_data ? 0x1p-24 : 0x1p-53;
    long double difference = 0, norm = 0;
    for (std::size_t i = 0; i < direct.z.elements(); ++i) {
      difference += std::norm(direct.z.get(i) - fft.z.get(i));
      norm += std::norm(direct.z.get(i));
    }
    EXPECT_LE(std::sqrt(difference / norm), 10 * std::log2(p.l[0]) * unit + 2 * (stored > unit ? stored : 0));

    Problem part = p;
    part.start[0] += 5, part.decimation[0] = 3, part.l[0] = (p.l[0] - 6) / 3 + 1;
    Instance decimated(part, row, 3);
    ASSERT_EQ(decimated.run_one(row, 1), 0);
    for (std::size_t i = 0; i < decimated.z.elements(); ++i)
      ASSERT_EQ(decimated.z.get(i), fft.z.get(5 + 3 * i)) << "output " << i;
  }
}

TEST_P(Kernels, JoinedDimensionsGoThroughTransforms) {
  const KernelRow& row = GetParam();
  for (const auto& [n, m] : {std::pair<List, List>{{40, 30}, {20, 10}}, {{9, 8, 30}, {5, 4, 7}}, {{100, 4}, {8, 9}}}) {
    const int dims = n[2] > 0 ? 3 : 2;
    Problem p = Problem::full(row.correlation, dims, n, m);
    Instance whole(p, row, 4);
    ASSERT_EQ(whole.run_all(row, 1), 0);
    expect_exact_within_bounds(row, whole, 1);
    p.xs[0] = -p.xs[0], p.ys[1] = -p.ys[1], p.decimation[1] = 2, p.l[1] = (p.l[1] + 1) / 2;
    Instance part(p, row, 4);
    ASSERT_EQ(part.run_all(row, 1), 0);
    expect_exact_within_bounds(row, part, 1);
  }
}

// Decimation 1 and no decimation are the same sums; a broadcast is its copies; a reversed array its reversal.
TEST(Strides, MeanWhatTheySay) {
  const float data[4] = {1, 2, 3, 4}, reversed[4] = {4, 3, 2, 1}, same[4] = {1, 1, 1, 1}, filter[2] = {10, 100};
  const auto run = [&](const float* x, std::int32_t stride) {
    std::array<float, 5> z{};
    EXPECT_EQ(_junConvSSDirect1D_dec(x, stride, filter, 1, z.data(), 1, 4, 2, 0, 5, 1), 0);
    std::array<float, 5> nodec{};
    EXPECT_EQ(_junConvSSDirect1D_nodec(x, stride, filter, 1, nodec.data(), 1, 4, 2, 0, 5), 0);
    EXPECT_EQ(z, nodec);
    return z;
  };
  EXPECT_EQ(run(data, 1), (std::array<float, 5>{10, 120, 230, 340, 400}));
  EXPECT_EQ(run(data, -1), run(reversed, 1));
  EXPECT_EQ(run(data, 0), run(same, 1));
  std::array<float, 5> backwards{};
  EXPECT_EQ(_junCorrSSDirect1D_nodec(data, 1, filter, 1, backwards.data(), -1, 4, 2, -3, 5), 0);
  EXPECT_EQ(backwards, (std::array<float, 5>{100, 210, 320, 430, 40}));
}

// One failing allocation after the other: the status of the site, an untouched result, nothing leaked.
TEST_P(Kernels, AllocationFailuresAreReported) {
  const KernelRow& row = GetParam();
  const long before = faulty_core::live_blocks();
  const auto expect_failures = [&](const Problem& p, int method, bool all, bool transforms) {
    long copies = 0, engines = 0;
    const long sites = faulty_core::fail_each([&](bool) {
      Instance run(p, row, 5);
      const std::int32_t status = all ? run.run_all(row, method) : run.run_one(row, method);
      copies += status == ORIN_CONV_NO_MEMORY;
      engines += status == ORIN_CONV_TRANSFORM_FAILED;
      if (status == 0) return;
      for (std::size_t i = 0; i < run.z.elements(); ++i) ASSERT_TRUE(run.z.untouched(i));
    });
    EXPECT_EQ(copies + engines, sites);
    EXPECT_EQ(engines, transforms ? 1 : 0);
    return sites;
  };
  const bool converted = row.single_data != row.single_sums;
  Problem dense = Problem::full(row.correlation, 1, {700}, {80});
  Problem strided = dense;
  strided.xs = {2}, strided.ys = {-3}, strided.zs = {2};
  Problem plane = Problem::full(row.correlation, 2, {40, 30}, {20, 10});
  EXPECT_EQ(expect_failures(dense, 0, false, false), row.correlation ? 0 : 1);
  EXPECT_EQ(expect_failures(strided, 0, false, false), 2);
  // A correlation reverses x, so that copy is needed in any case.
  EXPECT_EQ(expect_failures(dense, 1, false, true), converted ? 4 : row.correlation ? 2 : 1);
  EXPECT_EQ(expect_failures(strided, 1, false, true), 4);
  EXPECT_GE(expect_failures(plane, 0, true, false), 1);
  EXPECT_EQ(expect_failures(plane, 1, true, true), converted ? 4 : 3);
  EXPECT_EQ(faulty_core::live_blocks(), before);
}

// Few outputs of a strided operand: read in place, whatever the order of the allocations.
TEST(Packing, FewOutputsAreReadInPlace) {
  const KernelRow& conv = kernel_rows[2];
  const KernelRow& corr = kernel_rows[8];
  const auto allocations = [](const KernelRow& row, std::int32_t n, std::int32_t m, std::int32_t l) {
    Problem p = Problem::full(row.correlation, 1, {n}, {m});
    p.l[0] = l, p.xs[0] = 2, p.ys[0] = 2;
    Instance run(p, row, 6);
    faulty_core::fail_at(-1);
    EXPECT_EQ(run.run_one(row, 0), 0);
    return faulty_core::allocations();
  };
  EXPECT_EQ(allocations(conv, 10, 100, 20), 1);  // 20 x 10 <= 2 x 100
  EXPECT_EQ(allocations(conv, 10, 100, 21), 2);
  EXPECT_EQ(allocations(conv, 100, 10, 20), 1);
  EXPECT_EQ(allocations(corr, 10, 100, 19), 0);  // 19 x 10 < 2 x 100
  EXPECT_EQ(allocations(corr, 10, 100, 20), 2);
  EXPECT_EQ(allocations(corr, 100, 10, 19), 0);
}

// The same bits on every target: a digest of many results, direct and by transform.
TEST(Digest, IsTheSameOnEveryTarget) {
  std::uint64_t digest = 14695981039346656037U;
  for (const KernelRow& row : kernel_rows)
    for (const int method : {0, 1})
      for (const auto& size : {std::pair{300, 200}, {600, 400}, {1000, 100}, {40000, 20000}}) {
        if (method == 0 && size.first > 1000) continue;
        Instance run(Problem::full(row.correlation, 1, {size.first}, {size.second}), row, 7);
        ASSERT_EQ(run.run_one(row, method), 0);
        for (const unsigned char byte : run.z.content()) digest = (digest ^ byte) * 1099511628211U;
      }
  EXPECT_EQ(digest, 198490099468543861U);
}

}  // namespace
}  // namespace conv_test
