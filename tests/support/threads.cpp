// threads: running a function on several threads at once, alike on both systems.
// SPDX-License-Identifier: MIT
#include "tests/support/threads.h"

#include <vector>

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <process.h>
#include <windows.h>

namespace {

struct Job {
  const std::function<void(int)>* body;
  int index;
};

unsigned __stdcall run_job(void* argument) {
  const Job* job = static_cast<const Job*>(argument);
  (*job->body)(job->index);
  return 0;
}

}  // namespace

void run_threads(int count, const std::function<void(int)>& body) {
  std::vector<Job> jobs;
  for (int i = 0; i < count; ++i) jobs.push_back({&body, i});
  std::vector<HANDLE> threads;
  for (Job& job : jobs) {
    threads.push_back(reinterpret_cast<HANDLE>(_beginthreadex(nullptr, 0, run_job, &job, 0, nullptr)));
  }
  for (HANDLE thread : threads) {
    WaitForSingleObject(thread, INFINITE);
    CloseHandle(thread);
  }
}

#else
#include <thread>

void run_threads(int count, const std::function<void(int)>& body) {
  std::vector<std::thread> threads;
  for (int i = 0; i < count; ++i) threads.emplace_back(std::cref(body), i);
  for (std::thread& thread : threads) thread.join();
}

#endif
