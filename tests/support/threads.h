// threads.h: running a function on several threads at once, alike on both systems.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TESTS_SUPPORT_THREADS_H
#define ORIN_TESTS_SUPPORT_THREADS_H

#include <functional>

// Calls body(0) .. body(count - 1), each on a thread of its own, and waits for all.
void run_threads(int count, const std::function<void(int)>& body);

#endif
