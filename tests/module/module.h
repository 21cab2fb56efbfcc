// module.h: the built module, loaded by its file name.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TESTS_MODULE_MODULE_H
#define ORIN_TESTS_MODULE_MODULE_H

#include <gtest/gtest.h>

#include <string>

#include "tests/support/process.h"

inline std::string module_path() { return process::library_folder() + "/" + process::library_name("orin_sse2"); }

inline process::Library module_library() {
  static const process::Library library = process::load(module_path());
  return library;
}

// The exported function `name`, typed; aborts the program when it is absent.
template <class Function>
Function* exported(const char* name) {
  void* address = process::symbol(module_library(), name);
  if (address == nullptr) {
    ADD_FAILURE() << "not exported: " << name;
    std::abort();
  }
  return reinterpret_cast<Function*>(address);
}

#endif
