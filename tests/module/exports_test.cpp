// exports_test: the export table is the catalogue, name for name, and the DLL leans on the system alone.
// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "tests/module/module.h"

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#endif

namespace {

using Names = std::set<std::string>;

Names catalogue() {
  Names names;
#define ORIN_EXPORT(name) names.insert(#name);
#include "all_exports.inc"
#undef ORIN_EXPORT
#define ORIN_FUNCTION(t, F, SHAPE, LA, HA, EP, cost_la, cost_ha, cost_ep)                    \
  {                                                                                          \
    const bool single = #t[0] == 's' || #t[0] == 'c';                                        \
    for (const char* suffix : {"", "_HA", single ? "_21" : "_50", single ? "_11" : "_26"}) { \
      names.insert(std::string("_kor" #t #F) + suffix);                                      \
    }                                                                                        \
    names.insert("orin_kor_kernel_" #t #F "_ttab");                                          \
    names.insert("orin_kor_kernel_" #t #F "_ctab");                                          \
  }
#include "vector_math/functions.def"
#undef ORIN_FUNCTION
  return names;
}

#if defined(_WIN32)

const unsigned char* image() { return static_cast<const unsigned char*>(module_library()); }

const IMAGE_DATA_DIRECTORY& directory(int index) {
  const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(image());
  const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(image() + dos->e_lfanew);
  return headers->OptionalHeader.DataDirectory[index];
}

Names export_table() {
  const auto* exports =
      reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(image() + directory(IMAGE_DIRECTORY_ENTRY_EXPORT).VirtualAddress);
  const auto* name_addresses = reinterpret_cast<const DWORD*>(image() + exports->AddressOfNames);
  Names names;
  for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
    names.insert(reinterpret_cast<const char*>(image() + name_addresses[i]));
  }
  return names;
}

TEST(Exports, ImportsAreOfTheSystemAlone) {
  Names modules;
  for (const auto* import = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(
           image() + directory(IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress);
       import->Name != 0; ++import) {
    modules.insert(reinterpret_cast<const char*>(image() + import->Name));
  }
  EXPECT_EQ(modules, (Names{"KERNEL32.dll", "msvcrt.dll"}));
}

#else

Names export_table() {
  Names names;
  FILE* listing = popen((std::string(ORIN_NM) + " -D --defined-only --format=posix " + module_path()).c_str(), "r");
  char line[512];
  while (std::fgets(line, sizeof line, listing) != nullptr) {
    names.insert(std::string(line).substr(0, std::string(line).find(' ')));
  }
  pclose(listing);
  return names;
}

#endif

TEST(Exports, AreTheCatalogue) {
  const Names expected = catalogue(), found = export_table();
  std::vector<std::string> missing, extra;
  std::set_difference(expected.begin(), expected.end(), found.begin(), found.end(), std::back_inserter(missing));
  std::set_difference(found.begin(), found.end(), expected.begin(), expected.end(), std::back_inserter(extra));
  EXPECT_EQ(missing, std::vector<std::string>{});
  EXPECT_EQ(extra, std::vector<std::string>{});
}

}  // namespace
