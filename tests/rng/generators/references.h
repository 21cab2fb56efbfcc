// references: the generators once more, one output at a time, in plain integer arithmetic.
// SPDX-License-Identifier: MIT
#ifndef ORIN_TESTS_RNG_GENERATORS_REFERENCES_H
#define ORIN_TESTS_RNG_GENERATORS_REFERENCES_H

#include <array>
#include <cstdint>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "orin/rng.h"
#include "tests/rng/support.h"

namespace references {

struct Output {
  std::array<uint32_t, 4> words;  // of the raw output
  long double u;
};
using Generator = std::function<Output()>;

struct Family {
  std::string name;
  int32_t brng;
  std::vector<uint32_t> seeds;
  std::size_t words;  // of an output
  std::function<Generator()> start;
  bool skips, leapfrogs;
  std::size_t outputs_per_raw = 1;  // a raw output can take several
};

inline void PrintTo(const Family& family, std::ostream* out) { *out << family.name; }

// Every family, some with several seeds or sub-streams.
const std::vector<Family>& families();

// Direction numbers of the quasi-random families: columns[c] belongs to bit c of the Gray code.
std::array<uint32_t, 32> sobol_columns(uint32_t dimension);
std::array<uint32_t, 32> niederreiter_columns(uint32_t dimension);
// The polynomial over GF(2) of a dimension, by value among those of its degree.
uint64_t irreducible_polynomial(uint32_t dimension);

Stream new_stream(int32_t brng, const std::vector<uint32_t>& seeds);
Stream copy_of(const Stream& stream);

// The module's outputs.
template <class T>
std::vector<T> uniforms(const Stream& stream, std::size_t n, T a = 0, T b = 1);
std::vector<uint32_t> raw(const Stream& stream, std::size_t n, std::size_t words = 1);

}  // namespace references

#endif
