// allocator_test: the aligned allocator of the core module.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstring>
#include <set>
#include <vector>

#include "orin/companions.h"
#include "tests/support/threads.h"

namespace {

bool aligned(const void* block, std::uint32_t alignment) {
  return reinterpret_cast<std::uintptr_t>(block) % (alignment == 0 ? 1 : alignment) == 0;
}

TEST(Allocator, GivesEveryPowerOfTwo) {
  for (const auto allocate : {orin_serv_allocate, orin_serv_orin_malloc})
    for (std::uint32_t alignment = 0; alignment <= 1u << 22; alignment = alignment == 0 ? 1 : 2 * alignment) {
      std::vector<unsigned char*> blocks;
      for (const std::uint32_t size : {0u, 1u, 7u, 16u, 100u, 4096u, 70000u}) {
        auto* block = static_cast<unsigned char*>(allocate(size, alignment));
        ASSERT_NE(block, nullptr) << size << ' ' << alignment;
        ASSERT_TRUE(aligned(block, alignment) && aligned(block, 16)) << size << ' ' << alignment;
        std::memset(block, static_cast<int>(blocks.size() + 1), size);
        blocks.push_back(block);
        ASSERT_TRUE(size == 0 || (block[0] == blocks.size() && block[size - 1] == blocks.size()));
      }
      ASSERT_EQ(blocks[2][6], 3);  // neighbours have not been written over
      for (unsigned char* block : blocks) orin_serv_deallocate(block);
    }
}

TEST(Allocator, EmptyBlocksAreDistinct) {
  std::set<void*> blocks;
  for (int i = 0; i < 100; ++i) blocks.insert(orin_serv_allocate(0, 64));
  EXPECT_EQ(blocks.size(), 100u);
  EXPECT_EQ(blocks.count(nullptr), 0u);
  for (void* block : blocks) orin_serv_deallocate(block);
  orin_serv_deallocate(nullptr);
}

TEST(Allocator, RefusesWhatCannotBe) {
  for (const std::uint32_t alignment : {3u, 5u, 6u, 24u, 63u, 65u, 0x80000001u, 0xFFFFFFFFu})
    EXPECT_EQ(orin_serv_allocate(16, alignment), nullptr) << alignment;
  // More than a 32-bit process has, whatever the arithmetic of the request makes of it.
  constexpr bool small_space = sizeof(void*) == 4;
  for (const std::uint32_t size : {0xFFFFFFFFu, 0xFFFFFFF0u, 0xFFFFFFC0u, 0xFFFFFF00u, 0x80000000u})
    for (const std::uint32_t alignment : {0u, 1u, 16u, 64u, 128u, 4096u, 0x40000000u, 0x80000000u})
      ASSERT_TRUE(!small_space || orin_serv_allocate(size, alignment) == nullptr) << size << ' ' << alignment;
  // A 64-bit process may have it, and then to the last byte; the alignment may be half of a 32-bit address space.
  for (const auto& [size, alignment] : {std::pair{0xFFFFFFFFu, 128u}, {1u, 0x80000000u}}) {
    auto* block = static_cast<unsigned char*>(orin_serv_allocate(size, alignment));
    EXPECT_TRUE(aligned(block, alignment));
    if (block != nullptr) block[size - 1] = block[0] = 1;
    orin_serv_deallocate(block);
  }
}

// Blocks are filled by one thread, checked and released by its neighbour.
TEST(Allocator, ServesManyThreads) {
  constexpr int threads = 4, rounds = 300, count = 16;
  struct Block {
    unsigned char* data;
    std::uint32_t size;
  };
  std::vector<Block> blocks(threads * count, Block{nullptr, 0});
  std::vector<int> wrong(threads);
  for (int round = 0; round < rounds / 30; ++round)
    run_threads(threads, [&](int thread) {
      const int neighbour = (thread + round) % threads;
      for (int repeat = 0; repeat < 30; ++repeat)
        for (int i = 0; i < count; ++i) {
          Block& block = blocks[static_cast<std::size_t>(neighbour * count + i)];
          for (std::uint32_t k = 0; k < block.size; ++k)
            wrong[static_cast<std::size_t>(thread)] += block.data[k] != static_cast<unsigned char>(block.size);
          orin_serv_deallocate(block.data);
          block.size = static_cast<std::uint32_t>(i * 37 + repeat * 11);
          block.data = static_cast<unsigned char*>(orin_serv_allocate(block.size, 1u << i % 9));
          std::memset(block.data, static_cast<int>(block.size), block.size);
        }
    });
  for (const int count_of_wrong : wrong) EXPECT_EQ(count_of_wrong, 0);
  for (const Block& block : blocks) orin_serv_deallocate(block.data);
}

}  // namespace
