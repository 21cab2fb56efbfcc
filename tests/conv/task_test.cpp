// task_test: the life of a task, its statuses, hooks and choice of kernels.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <limits>

#include "service/late_binding.h"
#include "tests/conv/problem.h"
#include "tests/support/faulty_core.h"

namespace conv_test {
namespace {

// A task that is deleted with the test, nothing of it left.
class Tasks : public testing::Test {
 protected:
  void SetUp() override { blocks_ = faulty_core::live_blocks(); }
  void TearDown() override {
    EXPECT_EQ(__junDeleteTask(&task), 0);
    EXPECT_EQ(faulty_core::live_blocks(), blocks_);
  }
  void create(std::int32_t kind, std::int32_t mode, std::int32_t value_class, std::int32_t precision,
              const Problem& p) {
    ASSERT_EQ(__junDeleteTask(&task), 0);
    ASSERT_EQ(__junNewTask(&task, kind, 77, mode, value_class, precision, p.dims, p.n.data(), p.m.data(), p.l.data()),
              0);
  }

  ConvTask* task = nullptr;

 private:
  long blocks_ = 0;
};

TEST_F(Tasks, StartWithWhatTheyWereGiven) {
  List n{5, 4, 3}, m{3, 4, 2}, strides{1, 5, 20};
  const float x[60] = {};
  ASSERT_EQ(__junNewTaskX(&task, 1, 77, 2, 2, 1, 3, n.data(), m.data(), nullptr, x, strides.data()), 0);
  const List kept = n;
  n = {};  // the record has copies
  const ConvTask& t = *task;
  EXPECT_EQ((std::array{t.status, t.kind, t.job, t.mode, t.extra, t.value_class, t.precision, t.internal_precision,
                        t.dims, t.committed}),
            (std::array{0, 1, 77, 2, 0, 2, 1, 1, 3, 0}));
  for (const void* empty : {static_cast<const void*>(t.start), static_cast<const void*>(t.decimation),
                            static_cast<const void*>(t.zshape), static_cast<const void*>(t.attached)})
    EXPECT_EQ(empty, nullptr);
  EXPECT_EQ(t.xshape, t.xshape_values);
  EXPECT_TRUE(std::equal(kept.begin(), kept.end(), t.xshape));
  EXPECT_EQ(t.fixed_x, x);
  EXPECT_EQ(t.fixed_xstride, t.fixed_xstride_values);
  EXPECT_EQ(t.fixed_xstride[2], 20);
}

TEST_F(Tasks, ListsNeverLeaveTheRecord) {
  std::int32_t many[40];
  for (std::int32_t i = 0; i < 40; ++i) many[i] = 100 + i;
  ASSERT_EQ(__junNewTask(&task, 1, 0, 1, 1, 2, 40, many, nullptr, nullptr), 0);
  EXPECT_EQ(task->xshape_values[6], 106);
  EXPECT_EQ(task->yshape_values[0], 0);
  EXPECT_EQ(__junEditTask(task, 6, many), 0);
  EXPECT_EQ(task->decimation_values[6], 106);
  EXPECT_EQ(task->xshape_values[0], 100);
  double value = 0;
  EXPECT_EQ(__junExec(task, &value, nullptr, &value, nullptr, &value, nullptr), -2000);
}

TEST_F(Tasks, EditsStoreTheirResult) {
  create(1, 0, 1, 2, Problem::full(false, 3, {5, 4, 3}, {3, 4, 2}));
  const std::int32_t values[7] = {11, 12, 13, 14, 15, 16, 17};
  EXPECT_EQ(__junEditTask(nullptr, 3, values), -5);
  task->committed = 1;
  EXPECT_EQ(__junEditTask(task, 3, values), 0);
  EXPECT_EQ(task->mode, 11);
  EXPECT_EQ(task->committed, 0);
  EXPECT_EQ(__junEditTask(task, 4, values + 1), 0);
  EXPECT_EQ(task->extra, 12);
  EXPECT_EQ(__junEditTask(task, 9, values + 2), 0);
  EXPECT_EQ(task->internal_precision, 13);
  EXPECT_EQ(__junEditTask(task, 5, values), 0);
  EXPECT_EQ(task->start, task->start_values);
  EXPECT_EQ(task->start_values[2], 13);
  EXPECT_EQ(task->start_values[3], 0);
  EXPECT_EQ(__junEditTask(task, 6, values + 3), 0);
  EXPECT_EQ(task->decimation_values[2], 16);
  EXPECT_EQ(task->decimation_values[3], 0);

  const auto refused = [&](std::int32_t parameter, const std::int32_t* value) {
    __junccSetStatus(task, 0);
    EXPECT_EQ(__junCommitTask(task), 0);
    const std::int32_t status = __junEditTask(task, parameter, value);
    EXPECT_EQ(__junccGetStatus(task), status);
    EXPECT_EQ(task->committed, 0);
    return status;
  };
  for (const std::int32_t parameter : {1, 2, 7, 8, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19})
    EXPECT_EQ(refused(parameter, values), -2212) << parameter;
  for (const std::int32_t parameter : {0, 20, 1000, -1, -2147483647 - 1})
    EXPECT_EQ(refused(parameter, values), -2211) << parameter;
  EXPECT_EQ(refused(0, nullptr), -5);
}

// A status other than 0 comes back from everything that would work with the task, until it is reset.
TEST_F(Tasks, StatusIsSticky) {
  const Problem p = Problem::full(false, 1, {3}, {2});
  create(1, 1, 1, 2, p);
  const double x[3] = {1, 2, 3}, y[2] = {1, 10};
  double z[4] = {};
  EXPECT_EQ(__junEditTask(task, 3, nullptr), -5);
  ConvTask* copy = reinterpret_cast<ConvTask*>(8);
  EXPECT_EQ(__junExec(task, x, nullptr, y, nullptr, z, nullptr), -5);
  EXPECT_EQ(__junExecX(task, y, nullptr, z, nullptr), -5);
  EXPECT_EQ(__junCommitTask(task), -5);
  EXPECT_EQ(task->committed, 0);
  EXPECT_EQ(__junEditTask(task, 99, p.n.data()), -5);
  EXPECT_EQ(__junCopyTask(&copy, task), -5);
  EXPECT_EQ(copy, reinterpret_cast<ConvTask*>(8));
  EXPECT_EQ(z[0], 0.0);
  EXPECT_EQ(__junccSetStatus(task, 123), -5);
  EXPECT_EQ(__junccSetStatus(task, 0), 123);
  EXPECT_EQ(__junExec(task, x, nullptr, y, nullptr, z, nullptr), 0);
  EXPECT_EQ(z[1], 12.0);
  EXPECT_EQ(task->committed, 1);
  EXPECT_EQ(__junExec(task, nullptr, nullptr, y, nullptr, z, nullptr), -2331);
  EXPECT_EQ(__junccGetStatus(task), -2331);
  EXPECT_EQ(__junExec(task, x, nullptr, y, nullptr, z, nullptr), -2331);
}

TEST_F(Tasks, NullArgumentsAreRefused) {
  const std::int32_t one = 1;
  double value = 0;
  EXPECT_EQ(__junNewTask(nullptr, 1, 0, 0, 1, 2, 1, &one, &one, &one), -5);
  EXPECT_EQ(__junNewTaskX(nullptr, 1, 0, 0, 1, 2, 1, &one, &one, &one, &value, &one), -5);
  EXPECT_EQ(__junCommitTask(nullptr), -5);
  EXPECT_EQ(__junccGetStatus(nullptr), -5);
  EXPECT_EQ(__junccSetStatus(nullptr, 3), -5);
  EXPECT_EQ(__junDeleteTask(nullptr), -5);
  EXPECT_EQ(__junExec(nullptr, &value, &one, &value, &one, &value, &one), -5);
  EXPECT_EQ(__junExecX(nullptr, &value, &one, &value, &one), -5);
  EXPECT_EQ(__junCopyTask(nullptr, task), -5);
  EXPECT_EQ(__junCopyTask(&task, nullptr), -5);
  for (int missing = 0; missing < 3; ++missing) {
    ASSERT_EQ(__junDeleteTask(&task), 0);
    ASSERT_EQ(__junNewTask(&task, 2, 0, 1, 1, 2, 1, missing == 0 ? nullptr : &one, missing == 1 ? nullptr : &one,
                           missing == 2 ? nullptr : &one),
              0);
    EXPECT_EQ(__junExec(task, &value, nullptr, &value, nullptr, &value, nullptr), -2000);
  }
}

TEST_F(Tasks, AllocationFailuresLeaveTheCallersPointer) {
  const Problem p = Problem::full(false, 1, {3}, {2});
  faulty_core::fail_at(0);
  EXPECT_EQ(__junNewTask(&task, 1, 0, 0, 1, 2, 1, p.n.data(), p.m.data(), p.l.data()), -4);
  EXPECT_EQ(task, nullptr);
  faulty_core::fail_at(-1);
  create(1, 0, 1, 2, p);
  ConvTask* copy = nullptr;
  faulty_core::fail_at(0);
  EXPECT_EQ(__junCopyTask(&copy, task), -4);
  faulty_core::fail_at(-1);
  EXPECT_EQ(copy, nullptr);
}

struct HookLog {
  int copies = 0, releases = 0;
  std::int32_t result = 0;
  void* seen = nullptr;
} hook_log;

std::int32_t ORIN_CALL release_hook(ConvTask* task, void* attached) {
  ++hook_log.releases;
  hook_log.seen = attached;
  if (task->extra == 1) task->attached = nullptr;  // the block is freed all the same
  return hook_log.result;
}
std::int32_t ORIN_CALL copy_hook(ConvTask* new_task, void** place, void* attached) {
  ++hook_log.copies;
  hook_log.seen = *place;
  EXPECT_EQ(place, &new_task->attached);
  EXPECT_EQ(*place, attached);
  if (hook_log.result == 0) *place = orin::service::allocate(16, 64);
  return hook_log.result;
}

TEST_F(Tasks, CopiesAreIndependent) {
  List n{5, 4, 3}, m{3, 4, 2}, strides{1, 5, 20};
  ASSERT_EQ(__junNewTaskX(&task, 2, 77, 1, 1, 1, 3, n.data(), m.data(), nullptr, n.data(), strides.data()), 0);
  ASSERT_EQ(__junEditTask(task, 6, strides.data()), 0);
  ASSERT_EQ(__junCommitTask(task), 0);
  ConvTask* copy = nullptr;
  ASSERT_EQ(__junCopyTask(&copy, task), 0);
  EXPECT_EQ((std::array{copy->xshape, copy->yshape, copy->zshape, copy->start, copy->decimation, copy->fixed_xstride}),
            (std::array<std::int32_t*, 6>{copy->xshape_values, copy->yshape_values, nullptr, nullptr,
                                          copy->decimation_values, copy->fixed_xstride_values}));
  EXPECT_EQ(copy->fixed_x, task->fixed_x);
  EXPECT_EQ((std::array{copy->committed, copy->job}), (std::array{1, 77}));
  task->xshape_values[1] = 999;
  EXPECT_EQ(copy->xshape[1], 4);
  EXPECT_EQ(__junDeleteTask(&copy), 0);
  EXPECT_EQ(copy, nullptr);
}

TEST_F(Tasks, HooksGuardAttachedData) {
  const long before = faulty_core::live_blocks();
  const auto with_attachment = [&] {
    create(1, 0, 1, 2, Problem::full(false, 1, {3}, {2}));
    task->attached = orin::service::allocate(16, 64);
    task->release_hook = release_hook;
    task->copy_hook = copy_hook;
    hook_log = {};
  };
  ConvTask* copy = nullptr;
  with_attachment();
  EXPECT_EQ(__junCopyTask(&copy, task), 0);
  EXPECT_EQ(hook_log.copies, 1);
  EXPECT_NE(copy->attached, task->attached);
  EXPECT_EQ(__junDeleteTask(&copy), 0);
  EXPECT_EQ(hook_log.releases, 1);

  hook_log.result = 1;
  EXPECT_EQ(__junCopyTask(&copy, task), -2230);
  EXPECT_EQ(copy, nullptr);
  task->copy_hook = nullptr;
  EXPECT_EQ(__junCopyTask(&copy, task), -2230);
  EXPECT_EQ(__junDeleteTask(&task), -2240);
  EXPECT_EQ(task, nullptr);
  EXPECT_EQ(hook_log.releases, 2);
  with_attachment();
  task->release_hook = nullptr;
  EXPECT_EQ(__junDeleteTask(&task), -2240);
  with_attachment();
  task->extra = 1;
  EXPECT_EQ(__junDeleteTask(&task), 0);
  EXPECT_EQ(faulty_core::live_blocks(), before);
}

// Every kind, class, precision pair, method and rank: a task gives the bits of the kernel it stands for.
TEST_F(Tasks, RunTheirKernels) {
  for (const KernelRow& row : kernel_rows)
    for (const int dims : {1, 2})
      for (const std::int32_t mode : {0, 1, 2, 5}) {
        Problem p = Problem::full(row.correlation, dims, {30, 9}, {20, 40});
        Instance by_kernel(p, row, 8), by_task(p, row, 8), by_fixed(p, row, 8);
        const int method = mode == 1 ? 0 : 1;
        ASSERT_EQ(dims == 1 ? by_kernel.run_one(row, method) : by_kernel.run_all(row, method), 0);
        create(row.correlation ? 2 : 1, mode, row.complex_data ? 2 : 1, row.single_data ? 1 : 2, p);
        const std::int32_t internal = row.single_sums ? 1 : 2;
        ASSERT_EQ(__junEditTask(task, 9, &internal), 0);
        ASSERT_EQ(__junExec(task, by_task.x.data(), nullptr, by_task.y.data(), p.ys.data(), by_task.z.data(), nullptr),
                  0);
        EXPECT_EQ(by_task.z.content(), by_kernel.z.content()) << row.name << " dims " << dims << " mode " << mode;
        task->fixed_x = by_fixed.x.data();
        ASSERT_EQ(__junExecX(task, by_fixed.y.data(), nullptr, by_fixed.z.data(), p.zs.data()), 0);
        EXPECT_EQ(by_fixed.z.content(), by_kernel.z.content());

        // A set start and decimation pick from the same result.
        Problem part = p;
        for (std::size_t d = 0; d < static_cast<std::size_t>(dims); ++d)
          part.start[d] += 3, part.decimation[d] = 2, part.l[d] = (p.l[d] - 3) / 2;
        Instance picked(part, row, 8), picked_by_task(part, row, 8);
        ASSERT_EQ(dims == 1 ? picked.run_one(row, method) : picked.run_all(row, method), 0);
        create(row.correlation ? 2 : 1, mode, row.complex_data ? 2 : 1, row.single_data ? 1 : 2, part);
        ASSERT_EQ(__junEditTask(task, 9, &internal), 0);
        ASSERT_EQ(__junEditTask(task, 5, part.start.data()), 0);
        ASSERT_EQ(__junEditTask(task, 6, part.decimation.data()), 0);
        ASSERT_EQ(__junExec(task, picked.x.data(), nullptr, picked.y.data(), nullptr, picked_by_task.z.data(),
                            part.zs.data()),
                  0);
        EXPECT_EQ(picked_by_task.z.content(), picked.z.content()) << row.name << " dims " << dims << " mode " << mode;
      }
}

// Double data summed in single precision: refused in one dimension, the double kernel in more.
TEST_F(Tasks, MismatchedPrecisions) {
  const std::int32_t single = 1;
  for (const std::int32_t value_class : {1, 2}) {
    const KernelRow& row = kernel_rows[value_class == 2 ? 5 : 2];
    Problem line = Problem::full(false, 1, {3}, {2}), plane = Problem::full(false, 2, {3, 4}, {2, 2});
    Instance run(line, row, 9), by_kernel(plane, row, 9), by_task(plane, row, 9);
    create(1, 1, value_class, 2, line);
    ASSERT_EQ(__junEditTask(task, 9, &single), 0);
    EXPECT_EQ(__junExec(task, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), -2000);
    EXPECT_EQ(__junccGetStatus(task), -2000);
    create(1, 1, value_class, 2, plane);
    ASSERT_EQ(__junEditTask(task, 9, &single), 0);
    EXPECT_EQ(__junExec(task, by_task.x.data(), nullptr, by_task.y.data(), nullptr, by_task.z.data(), nullptr), 0);
    ASSERT_EQ(by_kernel.run_all(row, 0), 0);
    EXPECT_EQ(by_task.z.content(), by_kernel.z.content());
  }
}

TEST_F(Tasks, DenseStridesBeyondTheIntegersAreRefused) {
  List n{70000, 70000, 2}, m{1, 1, 1}, l{1, 1, 1};
  double value = 1;
  ASSERT_EQ(__junNewTask(&task, 1, 0, 1, 1, 2, 3, n.data(), m.data(), l.data()), 0);
  EXPECT_EQ(__junExec(task, &value, nullptr, &value, nullptr, nullptr, nullptr), -2333);
  EXPECT_EQ(__junccSetStatus(task, 0), -2333);
  EXPECT_EQ(__junExec(task, &value, nullptr, &value, nullptr, &value, nullptr), -2001);
  // Products of lengths that are refused in any case leave 64 bits in both directions.
  constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
  for (const std::int32_t length : {lowest, lowest + 1}) {
    n.fill(length), n[1] = std::numeric_limits<std::int32_t>::max();
    ASSERT_EQ(__junDeleteTask(&task), 0);
    ASSERT_EQ(__junNewTask(&task, 1, 0, 1, 1, 2, 7, n.data(), n.data(), n.data()), 0);
    EXPECT_EQ(__junExec(task, &value, nullptr, &value, nullptr, &value, nullptr), -2311);
  }
}

}  // namespace
}  // namespace conv_test
