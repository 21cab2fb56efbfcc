// task_test: the record, its slots and editors, creation and deletion.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <map>
#include <utility>

#include "stats_task.h"

namespace {

using namespace stats;

// In record order: parameter, whether it takes integers, status when null. Typed from the description of the record,
// not taken from the code.
struct Row {
  int parameter;
  bool integers;
  int null_status;
};
constexpr Row rows[] = {
    {1, true, -4001},   {2, true, -4002},   {5, true, -4004},   {3, false, -4032},  {6, false, -4005},
    {23, false, -4020}, {4, true, -4044},   {60, false, -4071}, {61, true, -4044},  {7, false, -4006},
    {8, false, -4007},  {9, false, -4008},  {10, false, -4009}, {11, false, -4010}, {12, false, -4011},
    {13, false, -4012}, {14, false, -4013}, {15, false, -4014}, {18, false, -4017}, {16, false, -4015},
    {17, false, -4016}, {20, true, -4044},  {19, false, -4018}, {22, true, -4044},  {21, false, -4019},
    {28, true, -4038},  {32, true, -4038},  {33, false, -4037}, {35, false, -4036}, {34, true, -4044},
    {30, false, -4035}, {31, false, -4034}, {29, true, -4044},  {24, true, -4022},  {25, false, -4021},
    {26, false, -4023}, {27, false, -4024}, {44, true, -4044},  {64, true, -4069},  {65, false, -4068},
    {66, false, -4070}, {62, true, -4066},  {63, false, -4065}, {37, true, -4043},  {38, false, -4042},
    {39, false, -4028}, {40, false, -4027}, {36, true, -4044},  {41, true, -4040},  {42, false, -4039},
    {43, false, -4041}, {45, true, -4045},  {46, false, -4046}, {47, true, -4044},  {48, false, -4047},
    {49, true, -4044},  {50, true, -4049},  {51, false, -4048}, {52, true, -4052},  {53, false, -4053},
    {58, true, -4061},  {59, false, -4062}, {54, true, -4055},  {55, false, -4054}, {56, true, -4056},
    {57, false, -4057},
};
constexpr std::size_t first_slot = sizeof(void*) == 4 ? 12 : 16;

const void* slot_at(const SSTask* task, std::size_t index) {
  const void* pointer;
  std::memcpy(&pointer, reinterpret_cast<const char*>(task) + first_slot + index * sizeof(void*), sizeof pointer);
  return pointer;
}

struct Bare {
  SSTask* task = nullptr;
  int p = 1;
  Bare() { EXPECT_EQ(__jundSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0), 0); }
  ~Bare() { __junSSDeleteTask(&task); }
};

TEST(SsTask, EveryNumberReachesItsPlaceThroughItsEditorAlone) {
  double value[2];
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    const Row& row = rows[i];
    Bare bare;
    const auto right = row.integers ? &__juniSSEditTask : &__jundSSEditTask;
    const auto wrong = row.integers ? &__junsSSEditTask : &__juniSSEditTask;
    const void* before = slot_at(bare.task, i);
    EXPECT_EQ(wrong(bare.task, row.parameter, value), -3) << row.parameter;
    EXPECT_EQ(wrong(bare.task, row.parameter, nullptr), -3) << row.parameter;
    EXPECT_EQ(right(bare.task, row.parameter, nullptr), row.null_status) << row.parameter;
    EXPECT_EQ(right(nullptr, row.parameter, value), -4031);
    EXPECT_EQ(slot_at(bare.task, i), before);
    EXPECT_EQ(right(bare.task, row.parameter, value), 0) << row.parameter;
    EXPECT_EQ(right(bare.task, row.parameter, value + 1), 0) << row.parameter;
    for (std::size_t j = 0; j < std::size(rows); ++j) {
      EXPECT_EQ(slot_at(bare.task, j), j == i   ? value + 1
                                       : j == 0 ? static_cast<const void*>(&bare.p)
                                                : nullptr)
          << row.parameter << " " << rows[j].parameter;
    }
  }
  Bare bare;
  constexpr std::int64_t high = std::int64_t{1} << 32;
  for (const std::int64_t parameter : {std::int64_t{0}, std::int64_t{-1}, std::int64_t{67}, high, high + 7, high + 4}) {
    EXPECT_EQ(__jundSSEditTask(bare.task, parameter, value), -3) << parameter;
    EXPECT_EQ(__juniSSEditTask(bare.task, parameter, value), -3) << parameter;
  }
}

// A grouped editor called with markers: the k-th argument goes to the k-th of `parameters`, null ones change nothing.
template <class... Pointers>
void check_group(int32_t(ORIN_CALL* editor)(SSTask*, Pointers...), std::vector<int> parameters) {
  char markers[sizeof...(Pointers)];
  const auto call = [&](SSTask* task, auto pointer_of) {
    return [&]<std::size_t... k>(std::index_sequence<k...>) { return editor(task, pointer_of(k)...); }
    (std::index_sequence_for<Pointers...>());
  };
  Bare bare;
  std::map<int, const void*> expected{{1, &bare.p}};
  for (const std::size_t given : {sizeof...(Pointers), std::size_t{0}, parameters.size() - 1}) {
    // First all of them, then none, then all but the first one with one marker.
    const bool all = given == sizeof...(Pointers);
    for (std::size_t k = 0; k < given; ++k) expected[parameters[all ? k : k + 1]] = markers + (all ? k : 0);
    EXPECT_EQ(call(bare.task,
                   [&](std::size_t k) -> char* {
                     return all ? markers + k : given != 0 && k != 0 ? markers : nullptr;
                   }),
              0);
    for (std::size_t i = 0; i < std::size(rows); ++i) {
      EXPECT_EQ(slot_at(bare.task, i), expected[rows[i].parameter]) << parameters[0] << " " << rows[i].parameter;
    }
  }
  EXPECT_EQ(call(nullptr, [&](std::size_t k) { return markers + k; }), -4031);
}

TEST(SsTask, GroupedEditorsReplaceWhatIsGiven) {
  check_group(&__jundSSEditMoments, {7, 8, 9, 10, 11, 12, 13});
  check_group(&__junsSSEditCovCor, {7, 19, 20, 21, 22});
  check_group(&__jundSSEditQuantiles, {24, 25, 26, 27, 44});
  check_group(&__junsSSEditStreamQuantiles, {64, 65, 66, 62, 63});
  check_group(&__jundSSEditOutDetect, {41, 42, 43});
  check_group(&__junsSSEditPooledCovariance, {28, 30, 31, 32, 33, 35});
  check_group(&__jundSSEditPartialCovCor, {45, 19, 20, 21, 22, 46, 47, 48, 49});
  check_group(&__junsSSEditMissingVals, {50, 51, 52, 53, 58, 59, 54, 55, 56, 57});
  check_group(&__jundSSEditRCov, {36, 37, 38, 39, 40});
  check_group(&__junsSSEditMtxParametrz, {21, 22, 60, 61});
}

// Not an SSTask: whatever stands at the address must survive a refused creation.
SSTask* const untouched = reinterpret_cast<SSTask*>(std::uintptr_t{0x1234});

TEST(SsTask, CreationChecksInOrder) {
  SSTask* task = untouched;
  const double x[1] = {};
  const int good = 1, zero = 0, negative = -1, rows_storage = 65536, other = 65537;
  const auto create = [&](const void* p, const void* n, const void* storage, const void* data) {
    return __jundSSNewTask(&task, p, n, storage, data, nullptr, nullptr, 0);
  };
  EXPECT_EQ(__jundSSNewTask(nullptr, &good, &good, &rows_storage, x, nullptr, nullptr, 0), -4031);
  EXPECT_EQ(create(nullptr, nullptr, nullptr, x), -4001);
  EXPECT_EQ(create(&zero, &good, &rows_storage, x), -4001);
  EXPECT_EQ(create(&negative, &good, &rows_storage, nullptr), -4001);
  EXPECT_EQ(create(&good, nullptr, nullptr, x), -4044);
  EXPECT_EQ(create(&good, nullptr, &other, x), -4003);
  EXPECT_EQ(create(&good, nullptr, &rows_storage, x), -4002);
  EXPECT_EQ(create(&good, &zero, &rows_storage, x), -4002);
  EXPECT_EQ(create(&good, &negative, &rows_storage, x), -4002);
  faulty_core::fail_at(0);
  EXPECT_EQ(create(&good, &good, &rows_storage, x), -4000);
  faulty_core::fail_at(-1);
  EXPECT_EQ(task, untouched);
  EXPECT_EQ(create(&good, &zero, &other, nullptr), 0);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(task) % 128, 0u);
  EXPECT_EQ(task->wide_integers, 0);
  EXPECT_EQ(task->tag, 2);
  EXPECT_EQ(task->double_precision, 1);
  EXPECT_EQ(task->release_count, 0);
  EXPECT_EQ(__junSSDeleteTask(&task), 0);
  EXPECT_EQ(__junsSSNewTask(&task, &good, &good, &rows_storage, x, nullptr, nullptr, 0), 0);
  EXPECT_EQ(task->double_precision, 0);
  EXPECT_EQ(__junSSDeleteTask(&task), 0);
}

// Both halves of a wide integer count, at any address.
TEST(SsTask, WideIntegers) {
  char memory[4 + 3 * 8];
  const auto put = [&](int index, std::int64_t value) {
    std::memcpy(memory + 4 + 8 * index, &value, 8);
    return memory + 4 + 8 * index;
  };
  const double x[1] = {};
  SSTask* task = nullptr;
  const auto create = [&](std::int64_t p, std::int64_t n, std::int64_t storage) {
    return __jundSSNewTask(&task, put(0, p), put(1, n), put(2, storage), x, nullptr, nullptr, -1);
  };
  constexpr std::int64_t high = std::int64_t{1} << 32;
  EXPECT_EQ(create(1 - high, 1, 65536), -4001);
  EXPECT_EQ(create(1, 1 - high, 65536), -4002);
  EXPECT_EQ(create(1, 1, 65536 + high), -4003);
  EXPECT_EQ(create(high, 1, 131072), 0);
  EXPECT_EQ(task->wide_integers, -1);
  EXPECT_EQ(__junSSDeleteTask(&task), 0);
}

int released = 0;
int32_t ORIN_CALL count_release(SSTask* task) {
  released += task->tag;
  return 0;
}

TEST(SsTask, DeletionReleasesAndClears) {
  EXPECT_EQ(__junSSDeleteTask(nullptr), -4031);
  SSTask* none = nullptr;
  EXPECT_EQ(__junSSDeleteTask(&none), -4031);
  const long before = faulty_core::live_blocks();
  {
    Bare bare;
    bare.task->release_count = 2;
    bare.task->release[0] = bare.task->release[1] = &count_release;
    released = 0;
    EXPECT_EQ(__junSSDeleteTask(&bare.task), 0);
    EXPECT_EQ(bare.task, nullptr);
  }
  EXPECT_EQ(released, 4);
  EXPECT_EQ(faulty_core::live_blocks(), before);
}

}  // namespace
