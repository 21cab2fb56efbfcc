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

// The loader offers no way to refuse the load; a thread's end is seen through its slot.
__attribute__((constructor)) static void on_load() { orin::vector_math::process_attach(); }
__attribute__((destructor)) static void on_unload() { orin::vector_math::process_detach(); }

#endif
