// lifecycle_test: loading, unloading and threads leave nothing behind.
// SPDX-License-Identifier: MIT
#include <cstdint>

#include "orin/vector_math.h"
#include "tests/module/module.h"
#include "tests/support/threads.h"

#if defined(_WIN32)
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

#include <vector>
#else
#include <malloc.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>
#endif

namespace {

#if defined(_WIN32)

// Busy blocks of all heaps of the process.
long live_blocks() {
  HANDLE heaps[64];
  const DWORD count = GetProcessHeaps(64, heaps);
  long busy = 0;
  for (DWORD i = 0; i < count; ++i) {
    PROCESS_HEAP_ENTRY entry{};
    while (HeapWalk(heaps[i], &entry)) busy += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0;
  }
  return busy;
}

#else

long live_blocks() { return static_cast<long>(mallinfo2().uordblks / 32); }

#endif

// Far below one block for each of the thousands of loads and threads, above what the system keeps for itself.
constexpr long tolerance = 1000;

// More often than a process has thread-local slots; instrumented modules take long to load.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int loads = 100;
#else
constexpr int loads = 1200;
#endif

TEST(Lifecycle, ManyLoadsAndUnloads) {
  long after_ten = 0;
  for (int i = 0; i < loads; ++i) {
    const process::Library library = process::load(module_path());
    ASSERT_NE(library, nullptr) << "load " << i;
    auto* get_mode = reinterpret_cast<uint32_t(ORIN_CALL*)()>(process::symbol(library, "_korGetMode"));
    ASSERT_EQ(get_mode(), 0x1A02u);
    process::unload(library);
    if (i == 10) after_ten = live_blocks();
  }
  EXPECT_LT(live_blocks() - after_ten, tolerance);
}

TEST(Lifecycle, ThousandsOfThreadsLeakNothing) {
  const process::Library library = process::load(module_path());
  ASSERT_NE(library, nullptr);
  auto* set_mode = reinterpret_cast<uint32_t(ORIN_CALL*)(uint32_t)>(process::symbol(library, "_korSetMode"));
  const auto batch = [&] { run_threads(20, [&](int) { set_mode(KOR_EP); }); };
  batch();
  const long before = live_blocks();
  for (int i = 0; i < 150; ++i) batch();
  EXPECT_LT(live_blocks() - before, tolerance);
  process::unload(library);
}

// A thread that outlives the module: its record went with the heap, and its end must not reach into unloaded code.
TEST(Lifecycle, UnloadUnderALivingThread) {
  const process::Library library = process::load(module_path());
  ASSERT_NE(library, nullptr);
  auto* get_mode = reinterpret_cast<uint32_t(ORIN_CALL*)()>(process::symbol(library, "_korGetMode"));
  uint32_t word = 0;
  run_threads(1, [&](int) {
    word = get_mode();
    process::unload(library);
  });
  EXPECT_EQ(word, 0x1A02u);
}

#if !defined(_WIN32)

std::atomic<long> beats{0};

// Streams are flushed when the modules have already been told of the end: the thread must beat on for two more beats,
// so that one lies between them, or the process fails.
ssize_t write_while_the_thread_beats(void*, const char*, std::size_t size) {
  const long seen = beats;
  for (int i = 0; i < 5000 && beats < seen + 2; ++i) usleep(1000);
  if (beats < seen + 2) _exit(1);
  return static_cast<ssize_t>(size);
}

[[noreturn]] void exit_under_a_running_thread() {
  const process::Library library = process::load(module_path());
  auto* set_status = reinterpret_cast<int32_t(ORIN_CALL*)(int32_t)>(process::symbol(library, "_korSetErrStatus"));
  auto* get_status = reinterpret_cast<int32_t(ORIN_CALL*)()>(process::symbol(library, "_korGetErrStatus"));
  std::thread([=] {
    set_status(KOR_STATUS_SING);
    while (get_status() == KOR_STATUS_SING) ++beats;
  }).detach();
  while (beats == 0) std::this_thread::yield();
  std::fputc('x', fopencookie(nullptr, "w", {nullptr, write_while_the_thread_beats, nullptr, nullptr}));
  std::exit(0);
}

// Windows ends the other threads before it tells the module; here they run on, with their records.
TEST(Lifecycle, ExitUnderARunningThread) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(exit_under_a_running_thread(), testing::ExitedWithCode(0), "");
}

#endif

}  // namespace
