// localised_messages_test: texts from a catalogue module in the folder of the thread's locale.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/support/process.h"

namespace {

#if defined(_WIN32)

process::Result print_in(const std::string& working_folder, const std::vector<std::string>& numbers) {
  return process::run(process::folder() + "/message_probe.exe", numbers, {}, working_folder);
}

TEST(LocalisedMessages, TakenWhereTheLocaleHasACatalogue) {
  const process::Result result = print_in(process::folder() + "/localised", {"735", "736", "735"});
  EXPECT_EQ(result.output,
            "Localised: vdExp has size 0.\n"
            "Error (KOR_STATUS_BADMEM) in vdExp: NULL pointer is passed.\n"
            "Localised: vdExp has size 0.\n");
  EXPECT_EQ(result.exit_code, 0);
}

TEST(LocalisedMessages, BuiltInTextsWithoutACatalogue) {
  EXPECT_EQ(print_in(process::folder(), {"735"}).output,
            "Error (KOR_STATUS_BADSIZE) in vdExp: array size 0 is not positive.\n");
}

TEST(LocalisedMessages, LengthRuleHoldsForThemToo) {
  const process::Result result = print_in(process::folder() + "/localised", {"737"});
  EXPECT_EQ(result.exit_code, 8);
  EXPECT_NE(result.output.find("\nORIN INTERNAL ERROR: message buffer overflow.\n       Message N 737   Lenght: "),
            std::string::npos)
      << result.output;
  EXPECT_NE(result.output.find("   Buffer size: 512\n"), std::string::npos);
}

#else

TEST(LocalisedMessages, OnlyOnWindows) { GTEST_SKIP() << "this system has no numbered locales"; }

#endif

}  // namespace
