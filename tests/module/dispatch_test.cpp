// dispatch_test: tables and entries of every function in the built module.
// SPDX-License-Identifier: MIT
#include <cstdint>
#include <cstring>
#include <set>
#include <string>

#include "orin/vector_math.h"
#include "tests/module/module.h"

namespace {

struct Row {
  std::string function;  // type letter and name
  bool single;
  float costs[3];
};

std::vector<Row> rows() {
  std::vector<Row> out;
#define ORIN_FUNCTION(t, F, SHAPE, LA, HA, EP, cost_la, cost_ha, cost_ep) \
  out.push_back({#t #F, #t[0] == 's' || #t[0] == 'c', {cost_la, cost_ha, cost_ep}});
#include "vector_math/functions.def"
#undef ORIN_FUNCTION
  return out;
}

unsigned char* address(const std::string& name) {
  return static_cast<unsigned char*>(process::symbol(module_library(), name.c_str()));
}

TEST(Dispatch, CostsFollowTheKernels) {
  for (const Row& row : rows()) {
    unsigned char* kernels = address("orin_kor_kernel_" + row.function + "_ttab");
    unsigned char* costs = address("orin_kor_kernel_" + row.function + "_ctab");
    ASSERT_NE(kernels, nullptr) << row.function;
    EXPECT_EQ(costs, kernels + 3 * sizeof(void*)) << row.function;
    EXPECT_EQ(std::memcmp(costs, row.costs, sizeof row.costs), 0) << row.function;
    for (int grade = 0; grade < 3; ++grade) EXPECT_GT(row.costs[grade], 0) << row.function;
  }
}

TEST(Dispatch, PlainEntryIsTheHighAccuracyOne) {
  for (const Row& row : rows()) {
    EXPECT_EQ(address("_kor" + row.function), address("_kor" + row.function + "_HA"));
  }
}

int called_with_slot;

template <int slot>
void ORIN_CALL note_slot() {
  called_with_slot = slot;
}

// A replaced kernel is called by the entries of its grade alone. cdecl leaves the arguments to the caller, so one
// stand-in serves every argument list.
TEST(Dispatch, EntriesReadTheirKernelAtEachCall) {
  using Kernel = void(ORIN_CALL*)();
  using AnyEntry =
      void ORIN_CALL(int64_t, const void*, const void*, const void*, const void*, int64_t, int64_t, int64_t);
  for (const Row& row : rows()) {
    auto* table = reinterpret_cast<Kernel*>(address("orin_kor_kernel_" + row.function + "_ttab"));
    const Kernel saved[3] = {table[0], table[1], table[2]};
    table[0] = &note_slot<0>;
    table[1] = &note_slot<1>;
    table[2] = &note_slot<2>;
    const std::pair<const char*, int> entries[] = {
        {"", 1}, {"_HA", 1}, {row.single ? "_21" : "_50", 0}, {row.single ? "_11" : "_26", 2}};
    for (const auto& [suffix, slot] : entries) {
      called_with_slot = -1;
      exported<AnyEntry>(("_kor" + row.function + suffix).c_str())(0, nullptr, nullptr, nullptr, nullptr, 0, 0, 0);
      EXPECT_EQ(called_with_slot, slot) << row.function << suffix;
    }
    std::copy(saved, saved + 3, table);
  }
}

TEST(Dispatch, IdentityIsZero) { EXPECT_EQ(exported<int32_t ORIN_CALL()>("dll_cpu_version")(), 0); }

}  // namespace
