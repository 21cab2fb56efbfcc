// vector_math_peers.h: what a user would call instead, by function name.
// SPDX-License-Identifier: MIT
#ifndef ORIN_BENCH_VECTOR_MATH_PEERS_H
#define ORIN_BENCH_VECTOR_MATH_PEERS_H

#include <cstdint>
#include <vector>

template <class T>
struct Peer {
  const char* function;  // "Exp"
  const char* name;      // "SLEEF u10"
  int ulp;               // its error class: 1, or 4 for those that promise less
  bool scalar;
  // n any number for a scalar one, else a multiple of four; b is for functions of two arguments.
  void (*call)(std::int32_t n, const T* a, const T* b, T* r);
};

// Empty where the bench is built for Windows: the peers are native libraries.
template <class T>
std::vector<Peer<T>> peers();

#endif
