// loading_test: the siblings loaded by path and unloaded, a thousand times. This program is not linked to them.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "orin/abi.h"
#include "tests/support/process.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <fstream>
#endif

namespace {

const char* const siblings[] = {"orin_core", "orin_sequential"};

process::Library load(const char* sibling) {
  return process::load(process::library_folder() + "/" + process::library_name(sibling));
}

// What a leak at each load would use up: slots of thread-local storage on Windows, mappings of the siblings elsewhere.
long free_resources() {
#if defined(_WIN32)
  std::vector<DWORD> slots;
  for (DWORD slot; (slot = TlsAlloc()) != TLS_OUT_OF_INDEXES;) slots.push_back(slot);
  for (const DWORD slot : slots) TlsFree(slot);
  return static_cast<long>(slots.size());
#else
  std::ifstream maps("/proc/self/maps");
  long mapped = 0;
  for (std::string line; std::getline(maps, line);)
    for (const std::string sibling : siblings) mapped += line.find(sibling + ".so") != std::string::npos;
  return -mapped;
#endif
}

TEST(Loading, AThousandTimesLosesNothing) {
  long before = 0;
  for (int round = 0; round <= 1000; ++round) {
    if (round == 10) before = free_resources();
    process::Library core = load(siblings[0]), sequential = load(siblings[1]);
    ASSERT_TRUE(core != nullptr && sequential != nullptr) << round;
    using Allocate = void*(ORIN_CALL*)(std::uint32_t, std::uint32_t);
    using Release = void(ORIN_CALL*)(void*);
    using Factor = void(ORIN_CALL*)(const char*, const std::int32_t*, double*, const std::int32_t*, std::int32_t*);
    void* block = reinterpret_cast<Allocate>(process::symbol(core, "orin_serv_allocate"))(1000, 128);
    reinterpret_cast<Release>(process::symbol(core, "orin_serv_deallocate"))(block);
    double nine = 9;
    const std::int32_t one = 1;
    std::int32_t info = 99;
    reinterpret_cast<Factor>(process::symbol(sequential, "orin_lapack_dpotrf"))("L", &one, &nine, &one, &info);
    ASSERT_TRUE(block != nullptr && info == 0 && nine == 3) << round;
    process::unload(sequential);
    process::unload(core);
  }
  EXPECT_GE(free_resources(), before);
}

}  // namespace
