// mode_test: the mode word, its environment variable and its threads.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <string>

#include "orin/vector_math.h"
#include "tests/support/process.h"
#include "tests/support/threads.h"

namespace {

constexpr const char* variable = "ORIN_KOR_MODE";

// The mode word that a thread starts with under a value of the variable (null: absent).
uint32_t initial_mode(const char* value) {
  process::set_environment(variable, value);
  uint32_t word = 0;
  run_threads(1, [&](int) { word = orin_kor_kernel_GetMode(); });
  process::set_environment(variable, nullptr);
  return word;
}

struct EnvironmentCase {
  const char* value;
  uint32_t mode;
};

class Environment : public testing::TestWithParam<EnvironmentCase> {};

TEST_P(Environment, InitialMode) { EXPECT_EQ(initial_mode(GetParam().value), GetParam().mode); }

INSTANTIATE_TEST_SUITE_P(Accepted, Environment,
                         testing::Values(EnvironmentCase{nullptr, 0x1A02},
                                         EnvironmentCase{"KOR_EP,KOR_ERRMODE_IGNORE", 0x103},
                                         EnvironmentCase{"KOR_LA,KOR_HA", 0x3},
                                         EnvironmentCase{"KOR_FLOAT_CONSISTENT", 0x10},
                                         EnvironmentCase{"KOR_DOUBLE_CONSISTEN,KOR_RESTORE,KOR_LA", 0x31},
                                         EnvironmentCase{"KOR_ERRMODE_ERRNO,KOR_ERRMODE_STDERR", 0x600},
                                         EnvironmentCase{"KOR_ERRMODE_EXCEPT,KOR_ERRMODE_CALLBACK", 0x1800},
                                         EnvironmentCase{"KOR_ERRMODE_DEFAULT,KOR_HA", 0x1A02},
                                         EnvironmentCase{"KOR_DEFAULT_PRECISION", 0}));

INSTANTIATE_TEST_SUITE_P(Refused, Environment,
                         testing::Values(EnvironmentCase{"", 0x1A02}, EnvironmentCase{"KOR_EP;KOR_HA", 0x1A02},
                                         EnvironmentCase{"KOR_EP,", 0x1A02}, EnvironmentCase{"KOR_EP,HA", 0x1A02},
                                         EnvironmentCase{"KOR_DOUBLE_CONSISTENT", 0x1A02},
                                         EnvironmentCase{"kor_EP", 0x1A02}, EnvironmentCase{" KOR_EP", 0x1A02},
                                         EnvironmentCase{"KOR_", 0x1A02}, EnvironmentCase{"KOR_E", 0x1A02},
                                         EnvironmentCase{"KOR_EP KOR_LA", 0x1A02}));

// A value of 255 characters is read, one more is not. A keyword that would reach the end of the 256-byte buffer is no
// match, so the longest value that is accepted ends at character 255.
TEST(EnvironmentLength, OfTheBuffer) {
  std::string value = "KOR_HA,KOR_HA,KOR_ERRMODE_ERRNO";
  while (value.size() + 7 <= 255) value += ",KOR_LA";
  ASSERT_EQ(value.size(), 255u);
  EXPECT_EQ(initial_mode(value.c_str()), 0x203u);
  value += "X";
  EXPECT_EQ(initial_mode(value.c_str()), 0x1A02u);
  EXPECT_EQ(initial_mode((value + ",KOR_EP").c_str()), 0x1A02u);
}

// A word of 0 counts as not yet read.
TEST(EnvironmentZero, IsReadAgainUntilTheModeIsSet) {
  uint32_t words[4];
  run_threads(1, [&](int) {
    process::set_environment(variable, "KOR_DEFAULT_PRECISION");
    words[0] = orin_kor_kernel_GetMode();
    process::set_environment(variable, "KOR_EP");
    words[1] = orin_kor_kernel_GetMode();
    process::set_environment(variable, "KOR_HA");
    words[2] = orin_kor_kernel_GetMode();
    words[3] = orin_kor_kernel_SetMode(KOR_LA);
    process::set_environment(variable, nullptr);
  });
  EXPECT_EQ(words[0], 0u);
  EXPECT_EQ(words[1], 3u);
  EXPECT_EQ(words[2], 3u);
  EXPECT_EQ(words[3], 3u);
}

TEST(Environment, WithoutAccuracyThereIsNoTableIndex) {
  process::set_environment(variable, "KOR_ERRMODE_STDERR");
  int32_t index = 0;
  run_threads(1, [&](int) { index = orin_kor_kernel_GetTTableIndex(); });
  process::set_environment(variable, nullptr);
  EXPECT_EQ(index, -1);
}

struct SetCase {
  uint32_t before, wanted, after;
};

TEST(SetMode, ReplacesTheNonZeroFieldsAlone) {
  const SetCase cases[] = {
      {0x1A02, 0, 0x1A02},
      {0x1A02, 0x30, 0x1A02},
      {0x1A02, 0x1, 0x1A01},
      {0x1A01, 0x100, 0x101},
      {0x101, 0x280000, 0x280101},
      {0x280101, 0x140003, 0x140103},
      {0x140103, 0xFFC300F0, 0x140103},
      {0x140103, 0xFFFFFFFF, 0x3CFF0F},
      {0x3CFF0F, 0x141A02, 0x141A02},
  };
  run_threads(1, [&](int) {
    for (const SetCase& c : cases) {
      EXPECT_EQ(_korGetMode(), c.before);
      EXPECT_EQ(_korSetMode(c.wanted), c.before);
      EXPECT_EQ(orin_kor_kernel_GetMode(), c.after) << std::hex << c.wanted;
    }
  });
}

TEST(SetMode, FirstCallInitialises) {
  run_threads(1, [&](int) { EXPECT_EQ(_korSetMode(KOR_EP), 0x1A02u); });
}

TEST(TableIndex, FollowsTheMode) {
  run_threads(1, [&](int) {
    EXPECT_EQ(orin_kor_kernel_GetTTableIndex(), 1);
    orin_kor_kernel_SetMode(KOR_LA);
    EXPECT_EQ(orin_kor_kernel_GetTTableIndex(), 0);
    EXPECT_EQ(orin_kor_kernel_GetTTableIndexM(77, 0x203), 2);
    EXPECT_EQ(orin_kor_kernel_GetTTableIndexM(77, 0x100), -1);
    EXPECT_EQ(orin_kor_kernel_GetTTableIndexM(77, 0xF), 14);
  });
}

TEST(Threads, HaveModeStatusAndBaseOfTheirOwn) {
  constexpr int count = 16;
  uint32_t modes[count];
  int32_t statuses[count];
  run_threads(count, [&](int i) {
    const uint32_t accuracy = static_cast<uint32_t>(i % 3 + 1);
    for (int repeat = 0; repeat < 1000; ++repeat) {
      orin_kor_kernel_SetMode(accuracy);
      orin_kor_kernel_SetErrStatus(i + 1);
    }
    modes[i] = orin_kor_kernel_GetMode();
    statuses[i] = orin_kor_kernel_ClearErrStatus();
  });
  for (int i = 0; i < count; ++i) {
    EXPECT_EQ(modes[i], 0x1A00u + static_cast<uint32_t>(i % 3 + 1));
    EXPECT_EQ(statuses[i], i + 1);
  }
}

}  // namespace
