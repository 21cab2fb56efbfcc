// work_buffer_test: ownership and failure of work memory.
// SPDX-License-Identifier: MIT
#include "service/work_buffer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

#include "tests/support/faulty_core.h"

namespace {

using orin::service::WorkBuffer;

TEST(WorkBuffer, OwnsOneBlock) {
  const long before = faulty_core::live_blocks();
  {
    WorkBuffer<double, 128> first;
    ASSERT_TRUE(first.allocate(10));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(first.data()) % 128, 0u);
    ASSERT_TRUE(first.allocate(1000));
    EXPECT_EQ(faulty_core::live_blocks(), before + 1);
    WorkBuffer<double, 128> second(std::move(first));
    EXPECT_EQ(first.data(), nullptr);
    EXPECT_EQ(second.size(), 1000u);
    first = std::move(second);
    EXPECT_EQ(faulty_core::live_blocks(), before + 1);
  }
  EXPECT_EQ(faulty_core::live_blocks(), before);
}

TEST(WorkBuffer, FailureLeavesItEmpty) {
  WorkBuffer<double> buffer;
  ASSERT_TRUE(buffer.allocate(1));
  faulty_core::fail_at(0);
  EXPECT_FALSE(buffer.allocate(1));
  faulty_core::fail_at(-1);
  EXPECT_EQ(buffer.data(), nullptr);
  EXPECT_EQ(buffer.size(), 0u);
}

TEST(WorkBuffer, RefusesSizesThatDoNotFitIn32Bits) {
  WorkBuffer<double> buffer;
  EXPECT_FALSE(buffer.allocate(UINT32_MAX / sizeof(double) + 1));
  EXPECT_FALSE(buffer.allocate(SIZE_MAX));
}

TEST(WorkBuffer, ReleaseGivesTheBlockUp) {
  WorkBuffer<int> buffer;
  ASSERT_TRUE(buffer.allocate(3));
  int* block = buffer.release();
  EXPECT_EQ(buffer.data(), nullptr);
  orin::service::deallocate(block);
}

}  // namespace
