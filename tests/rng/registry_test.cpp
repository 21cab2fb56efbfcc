// registry_test: rows, identifiers of both schemes, registration.
// SPDX-License-Identifier: MIT
#include <cstring>
#include <limits>
#include <vector>

#include "tests/rng/support.h"

extern "C" int32_t rng_row_bytes_in_c(void);

namespace {

struct Family {
  int32_t sub_streams, numbers[5];  // StateBytes, SeedWords, MayReturnZero, WordBytes, ValueBits
};
const Family families[14] = {{1, {24, 1, 0, 4, 31}},        {1, {1024, 252, 1, 4, 32}}, {1, {40, 6, 1, 4, 32}},
                             {1, {32, 1, 0, 8, 59}},        {273, {48, 4, 1, 16, 24}},  {1, {11648, 2604, 0, 4, 32}},
                             {1, {43280, 10498, 0, 4, 32}}, {1, {2520, 625, 1, 4, 32}}, {6024, {312, 70, 1, 4, 32}},
                             {1, {40, 0, 1, 4, 32}},        {1, {56, 0, 1, 4, 32}},     {1, {48, 0, 1, 4, 32}},
                             {1, {2536, 625, 1, 16, 128}},  {1, {24, 1, 0, 4, 32}}};

bool same(const JunBrngProperties& a, const JunBrngProperties& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

}  // namespace

TEST(Registry, HoldsTheBuiltInFamilies) {
  EXPECT_EQ(__junGetNumRegBrngs(), 14);
  EXPECT_EQ(rng_row_bytes_in_c(), static_cast<int32_t>(sizeof(JunBrngProperties)));
  for (int32_t i = 0; i < 14; ++i) {
    const JunBrngProperties row = row_of((i + 1) << 20);
    EXPECT_EQ(std::memcmp(&row, families[i].numbers, 20), 0) << i;
    EXPECT_TRUE(row.InitStream && row.sBRng && row.dBRng && row.iBRng) << i;
  }
  for (int32_t brng = 0; brng < 279; ++brng) {
    const int32_t family = brng < 4 ? brng : brng < 277 ? 4 : brng - 272;
    EXPECT_TRUE(same(row_of(brng), row_of((family + 1) << 20)) && same(row_of(brng), __RegBrngs[brng])) << brng;
  }
}

// Every identifier near a border of either scheme, and a walk over all 2^32 in steps that hit every row.
TEST(Registry, SplitsAndJudgesEveryIdentifier) {
  constexpr int64_t least = std::numeric_limits<int32_t>::min(), most = std::numeric_limits<int32_t>::max();
  std::vector<int64_t> brngs;
  for (int64_t base = least; base <= most + 1; base += 0x100000) {
    for (const int64_t d : {-1, 0, 1, 272, 273, 6023, 6024}) brngs.push_back(base + d);
  }
  for (int64_t brng = -600; brng < 1200; ++brng) brngs.push_back(brng);
  for (int64_t brng = least; brng <= most; brng += 9973) brngs.push_back(brng);
  for (const int64_t wide : brngs) {
    if (wide < least || wide > most) continue;
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
    JunBrngProperties properties = {};
    ASSERT_EQ(__junGetBrngProperties(brng, &properties), valid ? 0 : JUN_RNG_BAD_IDENTIFIER) << brng;
    ASSERT_EQ(properties.StateBytes != 0, valid) << "a refused query writes nothing";
  }
  EXPECT_EQ(__junIsBrngValid(nullptr, 0, 0), JUN_RNG_BAD_IDENTIFIER);
  EXPECT_EQ(__junIsBrngValid(__RegBrngsNew, -1, 0), JUN_RNG_BAD_IDENTIFIER);
}

// Each step repairs the fault that was found; all later ones are still there.
TEST(Registry, RefusesBadFamiliesInOrder) {
  const JunBrngProperties good = probe::properties();
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
  bad.dBRng = good.dBRng, bad.sBRng = good.sBRng, bad.iBRng = good.iBRng;
  EXPECT_EQ(__junRegisterBrng(&bad), -5);
  EXPECT_EQ(__junGetNumRegBrngs(), 14) << "nothing was registered";
}

TEST(Registry, RegistersUntilItsRowsAreUsed) {
  JunBrngProperties family = probe::properties(), row;
  family.MayReturnZero = -99;  // stored as it comes
  for (int32_t count = 14; count < JUN_RNG_TABLE_ROWS; ++count) {
    family.StateBytes = count;
    const int32_t brng = (count + 1) * 1048576;
    ASSERT_EQ(__junRegisterBrng(&family), brng);
    ASSERT_EQ(__junGetNumRegBrngs(), count + 1);
    ASSERT_TRUE(same(row_of(brng), family));
    ASSERT_EQ(__junGetBrngProperties(brng + 1, &row), JUN_RNG_BAD_IDENTIFIER);
    ASSERT_EQ(__junGetBrngProperties(brng + 0x100000, &row), JUN_RNG_BAD_IDENTIFIER);
  }
  EXPECT_EQ(__junRegisterBrng(&family), JUN_RNG_TABLE_FULL);
  EXPECT_EQ(__junGetNumRegBrngs(), JUN_RNG_TABLE_ROWS);
}
