// checks_test: the order of the kernels' tests, the names without a kernel, sizes at the edge of the integers.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <functional>
#include <limits>

#include "tests/conv/problem.h"
#include "tests/support/faulty_core.h"

namespace conv_test {
namespace {

class Checks : public testing::TestWithParam<KernelRow> {};
INSTANTIATE_TEST_SUITE_P(, Checks, testing::ValuesIn(kernel_rows), row_name);

constexpr std::int32_t largest = std::numeric_limits<std::int32_t>::max();

// A call with pointers that may be taken away.
struct Call {
  Problem p;
  const void* x;
  const void* y;
  void* z;

  std::int32_t one(const KernelRow& row, int method) const {
    return row.one[method](x, p.xs[0], y, p.ys[0], z, p.zs[0], p.n[0], p.m[0], p.start[0], p.l[0], p.decimation[0]);
  }
  std::int32_t nodec(const KernelRow& row, int method) const {
    return row.one_nodec[method](x, p.xs[0], y, p.ys[0], z, p.zs[0], p.n[0], p.m[0], p.start[0], p.l[0]);
  }
  std::int32_t all(const KernelRow& row, int method) const {
    return row.all[method](p.dims, x, p.n.data(), p.xs.data(), y, p.m.data(), p.ys.data(), z, p.l.data(), p.zs.data(),
                           p.start.data(), p.decimation.data());
  }
};

struct Fault {
  std::int32_t status;
  std::function<void(Call&, std::size_t d)> make;  // in dimension d
};

// In the order of the tests.
std::vector<Fault> faults(bool correlation) {
  return {
      {-2331, [](Call& c, std::size_t) { c.x = nullptr; }},
      {-2311, [](Call& c, std::size_t d) { c.p.n[d] = 0; }},
      {-2332, [](Call& c, std::size_t) { c.y = nullptr; }},
      {-2312, [](Call& c, std::size_t d) { c.p.m[d] = -1; }},
      {-2333, [](Call& c, std::size_t) { c.z = nullptr; }},
      {-2313, [](Call& c, std::size_t d) { c.p.l[d] = 0; }},
      {-2323, [](Call& c, std::size_t d) { c.p.zs[d] = 0; }},
      {-2302, [=](Call& c, std::size_t d) { c.p.start[d] = correlation ? -c.p.n[d] : -1; }},
      {-2302, [=](Call& c, std::size_t d) { c.p.start[d] = correlation ? c.p.m[d] : c.p.n[d] + c.p.m[d] - 1; }},
      {-2303, [](Call& c, std::size_t d) { c.p.decimation[d] = 0; }},
      {-2303, [](Call& c, std::size_t d) { c.p.l[d] = c.p.l[d] + 1; }},
      {-2303, [](Call& c, std::size_t d) { c.p.decimation[d] = largest; }},
  };
}

// Every fault alone, and every pair of faults in different dimensions: the earlier test decides and nothing is written.
TEST_P(Checks, FirstFailingTestDecides) {
  const KernelRow& row = GetParam();
  const List n{5, 4, 3}, m{3, 4, 2};
  for (const int dims : {1, 3})
    for (const int method : {0, 1}) {
      Instance run(Problem::full(row.correlation, dims, n, m), row, 1);
      const auto expect = [&](const Call& call, std::int32_t status, const char* what, std::size_t i, std::size_t j) {
        EXPECT_EQ(call.all(row, method), status) << what << i << ' ' << j;
        if (dims == 1) {
          EXPECT_EQ(call.one(row, method), status) << what << i << ' ' << j;
        }
        const bool has_nodec = dims == 1 && method == 0 && row.single_sums && !row.complex_data;
        if (has_nodec && call.p.decimation[0] == 1) {
          EXPECT_EQ(call.nodec(row, method), status) << what << i << ' ' << j;
        }
        for (std::size_t k = 0; k < run.z.elements(); ++k) ASSERT_TRUE(run.z.untouched(k));
      };
      const Call good{run.problem, run.x.data(), run.y.data(), run.z.data()};
      const std::vector<Fault> list = faults(row.correlation);
      for (std::size_t i = 0; i < list.size(); ++i)
        for (std::size_t j = i; j < list.size(); ++j) {
          if (j > i && list[i].status == list[j].status) continue;
          // The later fault first and in an earlier dimension, so that the order of tests, not of dimensions, shows.
          Call bad = good;
          if (j > i) list[j].make(bad, 0);
          list[i].make(bad, static_cast<std::size_t>(dims) - 1);
          expect(bad, list[i].status, "faults ", i, j);
        }
    }
}

TEST_P(Checks, DimensionsAndListsComeFirst) {
  const KernelRow& row = GetParam();
  Instance run(Problem::full(row.correlation, 2, {5, 4}, {3, 2}), row, 1);
  Problem& p = run.problem;
  for (const int method : {0, 1}) {
    for (const std::int32_t dims : {0, -1, 8, largest})
      EXPECT_EQ(row.all[method](dims, nullptr, p.n.data(), p.xs.data(), nullptr, p.m.data(), p.ys.data(), nullptr,
                                p.l.data(), p.zs.data(), p.start.data(), p.decimation.data()),
                -2000);
    for (int missing = 0; missing < 8; ++missing) {
      const auto list = [&](int which, List& values) { return which == missing ? nullptr : values.data(); };
      EXPECT_EQ(row.all[method](2, nullptr, list(0, p.n), list(1, p.xs), nullptr, list(2, p.m), list(3, p.ys), nullptr,
                                list(4, p.l), list(5, p.zs), list(6, p.start), list(7, p.decimation)),
                -2000);
    }
  }
}

TEST_P(Checks, NamesWithoutKernelRefuse) {
  const KernelRow& row = GetParam();
  Instance run(Problem::full(row.correlation, 1, {5}, {3}), row, 1);
  const Problem& p = run.problem;
  const bool single_real = row.single_sums && !row.complex_data;
  for (const int method : {0, 1}) {
    const Call call{p, run.x.data(), run.y.data(), run.z.data()};
    EXPECT_EQ(row.all_nodec[method](1, run.x.data(), p.n.data(), p.xs.data(), run.y.data(), p.m.data(), p.ys.data(),
                                    run.z.data(), p.l.data(), p.zs.data(), p.start.data()),
              -2000);
    EXPECT_EQ(row.all_nodec[method](0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                    nullptr),
              -2000);
    if (method == 1 || !single_real) {
      EXPECT_EQ(call.nodec(row, method), -2000);
    }
  }
  for (std::size_t i = 0; i < run.z.elements(); ++i) EXPECT_TRUE(run.z.untouched(i));
}

// The last positions are reachable and nothing beyond them, also where sums of sizes leave 32 bits.
TEST_P(Checks, ExtentsAreMathematical) {
  const KernelRow& row = GetParam();
  const std::int32_t first = row.correlation ? 1 - 5 : 0, last = row.correlation ? 3 - 1 : 5 + 3 - 2;
  Instance run(Problem::full(row.correlation, 1, {5}, {3}), row, 1);
  Call call{run.problem, run.x.data(), run.y.data(), run.z.data()};
  for (const int method : {0, 1}) {
    for (const auto& [start, length, decimation, status] : {std::array{last, 1, 1, 0},
                                                            {last, 1, largest, 0},
                                                            {last, 2, 1, -2303},
                                                            {first, 2, last - first, 0},
                                                            {first, 2, last - first + 1, -2303},
                                                            {first, 1, largest, 0},
                                                            {first, largest, largest, -2303},
                                                            {first, largest, 1, -2303},
                                                            {last, largest, 2, -2303},
                                                            {first - 1, 1, 1, -2302},
                                                            {last + 1, 1, 1, -2302},
                                                            {largest, largest, largest, -2302},
                                                            {-largest - 1, 1, 1, -2302}}) {
      call.p.start[0] = start, call.p.l[0] = length, call.p.decimation[0] = decimation;
      EXPECT_EQ(call.one(row, method), status) << start << ' ' << length << ' ' << decimation;
      EXPECT_EQ(call.all(row, method), status) << start << ' ' << length << ' ' << decimation;
    }
    // Broadcast operands whose lengths add up beyond 32 bits: the positions exist, the memory does not.
    Problem huge = run.problem;
    huge.n[0] = huge.m[0] = largest;
    huge.xs[0] = huge.ys[0] = 0, huge.l[0] = 1, huge.decimation[0] = 1,
    huge.start[0] = row.correlation ? 0 : largest - 1;
    if (method == 1) {
      EXPECT_EQ((Call{huge, run.x.data(), run.y.data(), run.z.data()}.one(row, method)), -2001);
    }
    // A product of lengths beyond 64 bits.
    Problem volume = Problem::full(row.correlation, 7, {2, 2, 2, 2, 2, 2, 2}, {1, 1, 1, 1, 1, 1, 1});
    volume.n.fill(largest), volume.m.fill(largest), volume.xs.fill(0), volume.ys.fill(0), volume.l.fill(1);
    volume.start.fill(row.correlation ? 0 : largest - 1);
    EXPECT_EQ((Call{volume, run.x.data(), run.y.data(), run.z.data()}.all(row, method)), -2001);
  }
}

}  // namespace
}  // namespace conv_test
