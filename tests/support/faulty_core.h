// faulty_core.h: the core module that every unit test runs on: it counts blocks and fails on request.
// SPDX-License-Identifier: MIT
//
// It is loaded from the folder faulty/ beside the test program before main runs, so that the code under test binds to
// it and not to the real one.
#ifndef ORIN_TESTS_SUPPORT_FAULTY_CORE_H
#define ORIN_TESTS_SUPPORT_FAULTY_CORE_H

namespace faulty_core {

// Makes the n-th allocation from now on fail (0 is the next one) and those around it work; -1: none fails.
void fail_at(long n);

// Allocations asked for since the last fail_at.
long allocations();

// Blocks that are not freed.
long live_blocks();

// The most bytes that blocks held at a time since the last fail_at.
long peak_bytes();

// Calls `attempt` with each of its allocations failing in turn until one run needs none that fails; returns the number
// of failing runs. `attempt(failing)` checks its own result; nothing may stay allocated after it.
template <class Attempt>
long fail_each(Attempt attempt) {
  for (long n = 0;; ++n) {
    fail_at(n);
    attempt(true);
    const bool failed = allocations() > n;
    fail_at(-1);
    if (!failed) return n;
  }
}

}  // namespace faulty_core

#endif
