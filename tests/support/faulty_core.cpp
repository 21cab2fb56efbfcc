// faulty_core: the core module that every unit test runs on: it counts blocks and fails on request.
// SPDX-License-Identifier: MIT
#include "tests/support/faulty_core.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include "tests/support/process.h"

namespace faulty_core {
namespace {

struct Module {
  Module() {
    const process::Library library = process::load(process::folder() + "/faulty/" + process::library_name("orin_core"));
    fail_at = reinterpret_cast<void (*)(long)>(process::symbol(library, "faulty_core_fail_at"));
    allocations = reinterpret_cast<long (*)()>(process::symbol(library, "faulty_core_allocations"));
    live_blocks = reinterpret_cast<long (*)()>(process::symbol(library, "faulty_core_live_blocks"));
    peak_bytes = reinterpret_cast<long (*)()>(process::symbol(library, "faulty_core_peak_bytes"));
    if (fail_at == nullptr || allocations == nullptr || live_blocks == nullptr || peak_bytes == nullptr) {
      std::fprintf(stderr, "cannot load the fault-injecting core module\n");
      std::exit(2);
    }
  }
  void (*fail_at)(long);
  long (*allocations)();
  long (*live_blocks)();
  long (*peak_bytes)();
};

const Module module;

}  // namespace

void fail_at(long n) { module.fail_at(n); }
long allocations() { return module.allocations(); }
long live_blocks() { return module.live_blocks(); }
long peak_bytes() { return module.peak_bytes(); }

}  // namespace faulty_core
