// messages_test: catalogue and printer.
// SPDX-License-Identifier: MIT
#include "service/messages.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace {

using namespace orin::service;

template <class... Arguments>
std::string printed(int number, Arguments... arguments) {
  testing::internal::CaptureStdout();
  PrintOrinMessage(1, number, static_cast<int>(sizeof...(arguments)), arguments...);
  return testing::internal::GetCapturedStdout();
}

TEST(Messages, CatalogueIsAChainOfAllRows) {
  for (int number = 0; number < message_count; ++number) {
    EXPECT_EQ(catalogue_row(number).next, number + 1 < message_count ? number + 1 : 0);
    EXPECT_NE(catalogue_row(number).text, nullptr);
  }
}

TEST(Messages, ExpandsIntegersStringsAndDoubles) {
  EXPECT_EQ(printed(735, "vdExp", 0), "Error (KOR_STATUS_BADSIZE) in vdExp: array size 0 is not positive.\n");
  EXPECT_EQ(printed(742, 7, 1e10), "a(7)=1e+10\n");
  EXPECT_EQ(printed(743, -1, -1.0 / 0.0), "r(-1)=-inf\n");
  EXPECT_EQ(printed(760), "ORIN FATAL ERROR: memory allocation error.\n");
}

TEST(Messages, NumberZeroIsALineEndAlone) { EXPECT_EQ(printed(0), "\n"); }

TEST(Messages, NumbersOutsideTheCatalogueHaveAnEmptyText) {
  for (int number : {-1, INT_MIN, message_count, INT_MAX}) EXPECT_EQ(printed(number), "\n") << number;
}

// "Unknown error in %s." has 18 characters around its argument.
TEST(Messages, LengthRule) {
  const std::string longest(513 - 18, 'x');
  EXPECT_EQ(printed(741, longest.c_str()).size(), 514u);
  const std::string too_long(514 - 18, 'x');
  const std::string far_too_long(100000, 'x');
  EXPECT_EXIT(PrintOrinMessage(1, 741, 1, too_long.c_str()), testing::ExitedWithCode(8), "");
  EXPECT_EXIT(PrintOrinMessage(1, 741, 1, far_too_long.c_str()), testing::ExitedWithCode(8), "");
}

}  // namespace
