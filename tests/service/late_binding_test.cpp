// late_binding_test: which sibling is bound, and what a missing one does to the process.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "service/late_binding.h"
#include "tests/support/process.h"
#include "tests/support/threads.h"

namespace {

// The probe stands in a folder of its own where no sibling is found.
process::Result probe(const std::vector<std::string>& arguments) {
  const std::string folder = process::folder() + "/alone";
#if defined(_WIN32)
  const std::string name = "/late_binding_probe.exe";
#else
  const std::string name = "/late_binding_probe";
#endif
  return process::run(folder + name, arguments, {}, folder);
}

std::string layer(const std::string& stem) { return process::folder() + "/layers/" + process::library_name(stem); }
std::string real_layer() { return process::folder() + "/faulty/" + process::library_name("orin_core"); }

TEST(LateBinding, MissingCoreEndsTheProcess) {
  const process::Result result = probe({"allocate"});
  EXPECT_EQ(result.output, "ORIN FATAL ERROR on load the function orin_serv_allocate\n");
  EXPECT_EQ(result.exit_code, 1);
}

TEST(LateBinding, MissingNameInTheCoreEndsTheProcess) {
  const process::Result result = probe({"load", real_layer(), "core-name", "orin_serv_no_such"});
  EXPECT_EQ(result.output, "ORIN FATAL ERROR on load the function orin_serv_no_such\n");
  EXPECT_EQ(result.exit_code, 1);
}

TEST(LateBinding, MissingThreadingLayerEndsTheProcess) {
  const process::Result result = probe({"dsyr"});
  EXPECT_EQ(result.output, "ORIN FATAL ERROR: Cannot load <orin-thread-layer>\n");
  EXPECT_EQ(result.exit_code, 1);
}

TEST(LateBinding, MissingNameInTheThreadingLayerEndsTheProcess) {
  const process::Result result = probe({"load", layer("orin_sequential"), "layer-name", "orin_blas_no_such"});
  EXPECT_EQ(result.output, "ORIN FATAL ERROR on load the function orin_blas_no_such\n");
  EXPECT_EQ(result.exit_code, 1);
}

// Each fake layer answers with its own name; the order of preference does not depend on the order of loading.
TEST(LateBinding, LoadedThreadingLayersWinInTheirOrder) {
  const std::string ostar = layer("orin_ostar_thread");
  const std::string sequential = layer("orin_sequential");
  const std::string pgi = layer("orin_pgi_thread");
  EXPECT_EQ(probe({"load", pgi, "load", sequential, "load", ostar, "dsyr"}).output, "ostar\n");
  EXPECT_EQ(probe({"load", pgi, "load", sequential, "dsyr"}).output, "sequential\n");
  EXPECT_EQ(probe({"load", pgi, "dsyr"}).output, "pgi\n");
}

TEST(LateBinding, EveryRoutineHasANameOfItsOwn) {
  std::set<std::string> names;
  int count = 0;
#define ORIN_SIBLING_ROUTINE(name, symbol, ...) names.insert(symbol), ++count;
#include "service/threading_layer.def"
#undef ORIN_SIBLING_ROUTINE
  EXPECT_EQ(count, 32);
  EXPECT_EQ(names.size(), 32u);
  EXPECT_TRUE(names.count("orin_blas_xssymm") && names.count("orin_lapack_ps_sdtsvb"));
}

TEST(LateBinding, ThreadsThatComeFirstTogetherBindTheSame) {
  std::vector<void*> blocks(8, nullptr);
  run_threads(8, [&](int i) { blocks[static_cast<std::size_t>(i)] = orin::service::allocate(64, 64); });
  for (void* block : blocks) {
    EXPECT_NE(block, nullptr);
    orin::service::deallocate(block);
  }
}

}  // namespace
