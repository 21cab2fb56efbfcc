// registry_test: rows, identifiers of both schemes, registration.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <set>
#include <vector>

#include "rng/generators/generators.h"
#include "tests/rng/probe.h"

extern "C" int32_t rng_row_bytes_in_c(void);

namespace {

struct Family {
  const char* name;
  int32_t brng, sub_streams;
  JunBrngProperties row;
};

#define FUNCTIONS(family) __junBRng##family##InitStream, __junsBRng##family, __jundBRng##family, __juniBRng##family
template <class Slot>
Slot refusing(int32_t(ORIN_CALL* function)(void)) {
  return reinterpret_cast<Slot>(reinterpret_cast<void (*)()>(function));
}
const auto wrong_s = refusing<JunUniformS>(__junBRngAbstractNotSupported);
const auto wrong_d = refusing<JunUniformD>(__junBRngAbstractNotSupported);
const auto wrong_i = refusing<JunRawWords>(__junBRngAbstractNotSupported);

const Family families[] = {
    {"MCG31M1", 0x100000, 1, {24, 1, 0, 4, 31, FUNCTIONS(MCG31M1)}},
    {"R250", 0x200000, 1, {1024, 252, 1, 4, 32, FUNCTIONS(R250)}},
    {"MRG32K3A", 0x300000, 1, {40, 6, 1, 4, 32, FUNCTIONS(MRG32K3A)}},
    {"MCG59", 0x400000, 1, {32, 1, 0, 8, 59, FUNCTIONS(MCG59)}},
    {"WH", 0x500000, 273, {48, 4, 1, 16, 24, FUNCTIONS(WH)}},
    {"Sobol", 0x600000, 1, {11648, 2604, 0, 4, 32, FUNCTIONS(Sobol)}},
    {"Niederr", 0x700000, 1, {43280, 10498, 0, 4, 32, FUNCTIONS(Niederr)}},
    {"MT19937", 0x800000, 1, {2520, 625, 1, 4, 32, FUNCTIONS(MT19937)}},
    {"MT2203", 0x900000, 6024, {312, 70, 1, 4, 32, FUNCTIONS(MT2203)}},
    {"iAbstract", 0xA00000, 1, {40, 0, 1, 4, 32, __junBRngiAbstractInitStream, wrong_s, wrong_d, __juniBRngiAbstract}},
    {"dAbstract", 0xB00000, 1, {56, 0, 1, 4, 32, __junBRngdAbstractInitStream, wrong_s, __jundBRngdAbstract, wrong_i}},
    {"sAbstract", 0xC00000, 1, {48, 0, 1, 4, 32, __junBRngsAbstractInitStream, __junsBRngsAbstract, wrong_d, wrong_i}},
    {"SFMT19937", 0xD00000, 1, {2536, 625, 1, 16, 128, FUNCTIONS(SFMT19937)}},
    {"TRNG",
     0xE00000,
     1,
     {24, 1, 0, 4, 32, __junBRngTRNGInitStream, refusing<JunUniformS>(__junBRngTRNGNotSupported),
      refusing<JunUniformD>(__junBRngTRNGNotSupported), refusing<JunRawWords>(__junBRngTRNGNotSupported)}}};

bool same(const JunBrngProperties& a, const JunBrngProperties& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

// Row of the current scheme that a legacy identifier 0..278 stands for.
int legacy_family(int32_t brng) { return brng < 4 ? brng : brng < 277 ? 4 : brng - 272; }

}  // namespace

TEST(Registry, HoldsTheBuiltInFamilies) {
  EXPECT_EQ(__junGetNumRegBrngs(), 14);
  EXPECT_EQ(rng_row_bytes_in_c(), static_cast<int32_t>(sizeof(JunBrngProperties)));
  for (int i = 0; i < 14; ++i) {
    SCOPED_TRACE(families[i].name);
    EXPECT_TRUE(same(__RegBrngsNew[i], families[i].row));
    JunBrngProperties row = {};
    EXPECT_EQ(__junGetBrngProperties(families[i].brng, &row), 0);
    EXPECT_TRUE(same(row, families[i].row));
    EXPECT_EQ(__junGetBrngProperties(families[i].brng + families[i].sub_streams - 1, &row), 0);
    row.StateBytes = 12345;
    EXPECT_EQ(__junGetBrngProperties(families[i].brng + families[i].sub_streams, &row), JUN_RNG_BAD_IDENTIFIER);
    EXPECT_EQ(row.StateBytes, 12345) << "a refused query writes nothing";
  }
  for (int32_t brng = 0; brng < 279; ++brng) {
    JunBrngProperties row = {};
    EXPECT_EQ(__junGetBrngProperties(brng, &row), 0);
    EXPECT_TRUE(same(row, families[legacy_family(brng)].row)) << brng;
    EXPECT_TRUE(same(__RegBrngs[brng], row)) << brng;
  }
  EXPECT_EQ(__junGetBrngProperties(0x100000, nullptr), JUN_RNG_NULL_POINTER);
}

// Every identifier near a border of either scheme, and a walk over all 2^32 in steps that hit every row.
TEST(Registry, SplitsAndJudgesEveryIdentifier) {
  std::vector<int64_t> brngs;
  for (int64_t base = std::numeric_limits<int32_t>::min(); base <= 0x80000000LL; base += 0x100000) {
    for (int64_t d = -3; d <= 3; ++d) brngs.push_back(base + d);
  }
  for (int64_t brng = -600; brng < 1200; ++brng) brngs.push_back(brng);
  for (int64_t brng = 0x8FFFF0; brng < 0x900000 + 6100; ++brng) brngs.push_back(brng);
  for (int64_t brng = 0x4FFFF0; brng < 0x500000 + 300; ++brng) brngs.push_back(brng);
  for (int64_t brng = std::numeric_limits<int32_t>::min(); brng < 0x80000000LL; brng += 9973) brngs.push_back(brng);
  for (const int64_t wide : brngs) {
    if (wide < std::numeric_limits<int32_t>::min() || wide > std::numeric_limits<int32_t>::max()) continue;
    const auto brng = static_cast<int32_t>(wide);
    const bool legacy = wide < 1048576, wh = wide >= 4 && wide <= 276;
    const int64_t row_expected = legacy ? (wh ? 4 : wide) : wide / 1048576 - 1;
    const int64_t sub_expected = legacy ? (wh ? wide - 4 : 0) : wide % 1048576;
    const bool valid =
        legacy ? wide >= 0 && wide < 279 : row_expected < 14 && sub_expected < families[row_expected].sub_streams;
    int32_t row = -77, sub_stream = -77;
    const JunBrngProperties* table = __junGetBrngBaseOffset(brng, &row, &sub_stream);
    ASSERT_TRUE(table == (legacy ? __RegBrngs : __RegBrngsNew) && row == row_expected && sub_stream == sub_expected)
        << brng;
    ASSERT_EQ(__junIsBrngValid(table, row, sub_stream), valid ? 0 : JUN_RNG_BAD_IDENTIFIER) << brng;
    JunBrngProperties properties;
    ASSERT_EQ(__junGetBrngProperties(brng, &properties), valid ? 0 : JUN_RNG_BAD_IDENTIFIER) << brng;
  }
  EXPECT_EQ(__junIsBrngValid(nullptr, 0, 0), JUN_RNG_BAD_IDENTIFIER);
  EXPECT_EQ(__junIsBrngValid(__RegBrngsNew, -1, 0), JUN_RNG_BAD_IDENTIFIER);
  EXPECT_EQ(__junIsBrngValid(__RegBrngs, 278, 999), 0) << "legacy rows have no sub-streams to check";
}

// Faults are listed in the order in which they are looked for: each record has one fault and every later one.
TEST(Registry, RefusesBadFamiliesInOrder) {
  JunBrngProperties bad = {-1, 0, 5, 12, 0, nullptr, nullptr, nullptr, nullptr};
  EXPECT_EQ(__junRegisterBrng(&bad), -1008);
  bad.StateBytes = 0;
  for (const int32_t bytes : {-4, 0, 1, 2, 12, 15, 32}) {
    bad.WordBytes = bytes;
    EXPECT_EQ(__junRegisterBrng(&bad), -1009) << bytes;
  }
  bad.WordBytes = 8;
  EXPECT_EQ(__junRegisterBrng(&bad), -1010);
  bad.SeedWords = 1;
  EXPECT_EQ(__junRegisterBrng(&bad), -1011);
  bad.ValueBits = 1;
  EXPECT_EQ(__junRegisterBrng(&bad), -5);
  const JunBrngProperties good = probe::properties();
  for (int slot = 0; slot < 4; ++slot) {
    bad = good;
    if (slot == 0) bad.InitStream = nullptr;
    if (slot == 1) bad.sBRng = nullptr;
    if (slot == 2) bad.dBRng = nullptr;
    if (slot == 3) bad.iBRng = nullptr;
    EXPECT_EQ(__junRegisterBrng(&bad), -5) << slot;
  }
  EXPECT_EQ(__junRegisterBrng(nullptr), -5);
  EXPECT_EQ(__junGetNumRegBrngs(), 14) << "nothing was registered";
}

TEST(Registry, RegistersUntilItsRowsAreUsed) {
  JunBrngProperties family = probe::properties();
  family.MayReturnZero = -99;  // stored as it comes
  JunBrngProperties row;
  for (int32_t count = 14; count < JUN_RNG_TABLE_ROWS; ++count) {
    family.StateBytes = count;
    const int32_t brng = (count + 1) * 1048576;
    ASSERT_EQ(__junRegisterBrng(&family), brng);
    ASSERT_EQ(__junGetNumRegBrngs(), count + 1);
    ASSERT_EQ(__junGetBrngProperties(brng, &row), 0);
    ASSERT_TRUE(same(row, family));
    ASSERT_EQ(__junGetBrngProperties(brng + 1, &row), JUN_RNG_BAD_IDENTIFIER);
    ASSERT_EQ(__junGetBrngProperties(brng + 0x100000, &row), JUN_RNG_BAD_IDENTIFIER);
  }
  EXPECT_EQ(__junRegisterBrng(&family), JUN_RNG_TABLE_FULL);
  EXPECT_EQ(__junGetNumRegBrngs(), JUN_RNG_TABLE_ROWS);
  EXPECT_TRUE(same(__RegBrngsNew[0], families[0].row));
}
