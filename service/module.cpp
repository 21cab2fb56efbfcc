// module: what happens when the system loads and unloads the module and when a thread ends.
// SPDX-License-Identifier: MIT
#include "vector_math/thread_state.h"

#if defined(_WIN32)

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
  switch (reason) {
    case DLL_PROCESS_ATTACH:
      return orin::vector_math::process_attach() ? TRUE : FALSE;
    case DLL_THREAD_DETACH:
      orin::vector_math::thread_detach();
      return TRUE;
    case DLL_PROCESS_DETACH:
      orin::vector_math::process_detach();
      return TRUE;
    default:
      return TRUE;
  }
}

#else

#include <cxxabi.h>

// Unloading and the end of the process run the same destructor. At the end other threads may still run: their records
// are left to them. The end is told apart by an exit handler that counts as another module's, so that unloading does
// not run it.
static constinit bool process_ends = false;
static void note_end(void*) { process_ends = true; }

// The loader offers no way to refuse the load; a thread's end is seen through its slot.
__attribute__((constructor)) static void on_load() {
  abi::__cxa_atexit(note_end, nullptr, &process_ends);
  orin::vector_math::process_attach();
}

__attribute__((destructor)) static void on_unload() {
  if (process_ends) return;
  abi::__cxa_finalize(&process_ends);  // takes the handler back
  orin::vector_math::process_detach();
}

#endif
