// process.h: loading libraries by path and running child processes, alike on both systems.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TESTS_SUPPORT_PROCESS_H
#define ORIN_TESTS_SUPPORT_PROCESS_H

#include <string>
#include <utility>
#include <vector>

namespace process {

using Library = void*;

std::string folder();                               // of the running program, without the last separator
std::string executable();                           // path of the running program
std::string library_name(const std::string& stem);  // "orin_core" -> "liborin_core.so" or "orin_core.dll"

// Where the build leaves the shared libraries.
std::string library_folder();

Library load(const std::string& path);  // null where it cannot be loaded
void unload(Library library);
void* symbol(Library library, const char* name);

struct Result {
  int exit_code;
  std::string output;  // standard output, line ends as \n
};

// Runs `program` with the arguments and with additional environment variables, in `working_folder` (empty: this one).
Result run(const std::string& program, const std::vector<std::string>& arguments,
           const std::vector<std::pair<std::string, std::string>>& environment = {},
           const std::string& working_folder = "");

void set_environment(const char* name, const char* value);  // of this process; null removes it

}  // namespace process

#endif
