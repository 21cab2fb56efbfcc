// tour: loads the module by name, lets each family work on a real data set and checks the figures.
// SPDX-License-Identifier: MIT
#include "tour.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

#include "mauna_loa_co2.h"
#include "orin/abi.h"

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <dlfcn.h>
#endif

namespace tour {
namespace {

int failures = 0;
int checks = 0;

#if defined(_WIN32)
constexpr const char* module_name = "orin_sse2.dll";
void* load(const char* name) { return LoadLibraryA(name); }
void* find(void* module, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(module), name));
}
#else
constexpr const char* module_name = "liborin_sse2.so";
void* load(const char* name) { return dlopen(name, RTLD_NOW); }
void* find(void* module, const char* name) { return dlsym(module, name); }
#endif

void* module() {
  static void* const loaded = load(module_name);
  if (loaded == nullptr) {
    std::printf("cannot load %s\n", module_name);
    std::exit(2);
  }
  return loaded;
}

}  // namespace

void* exported(const char* name) {
  void* address = find(module(), name);
  if (address == nullptr) {
    std::printf("%s does not export %s\n", module_name, name);
    std::exit(2);
  }
  return address;
}

void heading(const char* text) { std::printf("\n%s\n\n", text); }

const char* tally(bool passed) {
  ++checks;
  if (!passed) ++failures;
  return passed ? "ok" : "WRONG";
}

void check(const char* what, double value, double known, double tolerance) {
  std::printf("  %-44s %18.10g   known %18.10g   %s\n", what, value, known,
              tally(std::fabs(value - known) <= tolerance));
}

void check(const char* what, bool holds) { std::printf("  %-44s %-46s %s\n", what, "", tally(holds)); }

}  // namespace tour

int main() {
  std::printf("A tour of ORIN SSE2\n");
  std::printf("Data: monthly mean CO2 at Mauna Loa, %d months from January %d, in ppm\n", mauna_loa::months,
              mauna_loa::first_year);
  std::printf("Module: %s, processor class %d\n", tour::module_name,
              static_cast<int>(tour::exported<int32_t ORIN_CALL()>("dll_cpu_version")()));
  tour_vector_math();
  tour_functions();
  tour_rng();
  tour_conv(mauna_loa::co2, mauna_loa::months);
  tour_summary_stats();
  tour_data_fitting();
  std::printf("\n%d checks, %d failed\n", tour::checks, tour::failures);
  return tour::failures == 0 ? 0 : 1;
}
