// process: loading libraries by path and running child processes, alike on both systems.
// SPDX-License-Identifier: MIT
#include "tests/support/process.h"

#include <cstdio>
#include <cstdlib>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>
#else
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace process {

std::string folder() {
  const std::string path = executable();
  return path.substr(0, path.find_last_of("/\\"));
}

#if defined(_WIN32)

std::string executable() {
  char path[MAX_PATH];
  const DWORD length = GetModuleFileNameA(nullptr, path, MAX_PATH);
  return std::string(path, length);
}

std::string library_name(const std::string& stem) { return stem + ".dll"; }
std::string library_folder() { return folder(); }

Library load(const std::string& path) { return LoadLibraryA(path.c_str()); }
void unload(Library library) { FreeLibrary(static_cast<HMODULE>(library)); }
void* symbol(Library library, const char* name) {
  return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}

Result run(const std::string& program, const std::vector<std::string>& arguments,
           const std::vector<std::pair<std::string, std::string>>& environment, const std::string& working_folder) {
  SECURITY_ATTRIBUTES inherit{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
  HANDLE read_end, write_end;
  CreatePipe(&read_end, &write_end, &inherit, 0);
  SetHandleInformation(read_end, HANDLE_FLAG_INHERIT, 0);

  std::string command = "\"" + program + "\"";
  for (const std::string& argument : arguments) command += " \"" + argument + "\"";
  for (const auto& [name, value] : environment) SetEnvironmentVariableA(name.c_str(), value.c_str());

  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = write_end;
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  PROCESS_INFORMATION child{};
  const BOOL started = CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr,
                                      working_folder.empty() ? nullptr : working_folder.c_str(), &startup, &child);
  for (const auto& [name, value] : environment) SetEnvironmentVariableA(name.c_str(), nullptr);
  CloseHandle(write_end);
  if (!started) {
    CloseHandle(read_end);
    return {-1, "cannot start " + program};
  }
  std::string output;
  char buffer[4096];
  DWORD count;
  while (ReadFile(read_end, buffer, sizeof buffer, &count, nullptr) && count > 0) {
    for (DWORD i = 0; i < count; ++i) {
      if (buffer[i] != '\r') output += buffer[i];
    }
  }
  WaitForSingleObject(child.hProcess, INFINITE);
  DWORD code;
  GetExitCodeProcess(child.hProcess, &code);
  CloseHandle(child.hProcess);
  CloseHandle(child.hThread);
  CloseHandle(read_end);
  return {static_cast<int>(code), output};
}

void set_environment(const char* name, const char* value) { SetEnvironmentVariableA(name, value); }

#else

std::string executable() {
  char path[4096];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
  return std::string(path, length > 0 ? static_cast<std::size_t>(length) : 0);
}

std::string library_name(const std::string& stem) { return "lib" + stem + ".so"; }
std::string library_folder() { return folder() + "/../lib"; }

Library load(const std::string& path) { return dlopen(path.c_str(), RTLD_NOW); }
void unload(Library library) { dlclose(library); }
void* symbol(Library library, const char* name) { return library != nullptr ? dlsym(library, name) : nullptr; }

Result run(const std::string& program, const std::vector<std::string>& arguments,
           const std::vector<std::pair<std::string, std::string>>& environment, const std::string& working_folder) {
  int ends[2];
  if (pipe(ends) != 0) return {-1, "no pipe"};
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDOUT_FILENO);
    close(ends[0]);
    close(ends[1]);
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    if (!working_folder.empty() && chdir(working_folder.c_str()) != 0) _exit(127);
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    execv(program.c_str(), argv.data());
    _exit(127);
  }
  close(ends[1]);
  std::string output;
  char buffer[4096];
  for (ssize_t count; (count = read(ends[0], buffer, sizeof buffer)) > 0;) {
    output.append(buffer, static_cast<std::size_t>(count));
  }
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), output};
}

void set_environment(const char* name, const char* value) {
  if (value != nullptr) {
    setenv(name, value, 1);
  } else {
    unsetenv(name);
  }
}

#endif

}  // namespace process
