// stack_test: entries called on a stack that is aligned to 4 bytes only, as 32-bit callers may come.
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "tests/module/module.h"

#if defined(__i386__)

#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "vector_math/shapes.h"

// Calls `function` with `count` argument words at an address that is `offset` bytes below a multiple of 16.
extern "C" void call_on_stack(std::uint32_t offset, void* function, const std::uint32_t* words, std::uint32_t count);
asm(R"(
.text
.globl _call_on_stack
_call_on_stack:
  pushl %ebp
  movl %esp, %ebp
  pushl %ebx
  pushl %esi
  movl 20(%ebp), %ecx
  movl 16(%ebp), %esi
  andl $-16, %esp
  leal (,%ecx,4), %eax
  andl $15, %eax
  addl %eax, %esp
  subl $16, %esp
  subl 8(%ebp), %esp
1:
  testl %ecx, %ecx
  jz 2f
  decl %ecx
  pushl (%esi,%ecx,4)
  jmp 1b
2:
  call *12(%ebp)
  leal -8(%ebp), %esp
  popl %esi
  popl %ebx
  popl %ebp
  ret
)");

namespace {

using Words = std::vector<std::uint32_t>;

std::uint32_t word(const void* pointer) { return reinterpret_cast<std::uint32_t>(pointer); }

template <class T>
void append(Words& words, T value) {
  std::uint32_t parts[(sizeof value + 3) / 4] = {};
  std::memcpy(parts, &value, sizeof value);
  words.insert(words.end(), parts, parts + sizeof parts / 4);
}

constexpr int n = 13;

// Arguments that take the fast path, and some that do not.
template <class Real>
std::vector<Real> arguments() {
  std::vector<Real> out;
  for (int i = 0; i < 2 * n; ++i) out.push_back(static_cast<Real>(i % 5 == 4 ? (i % 2 ? 1e38 : -1e38) : 0.1 * i));
  return out;
}

template <class Real>
std::vector<Real> arguments_below_one() {
  std::vector<Real> out;
  for (int i = 0; i < 1000; ++i) out.push_back(static_cast<Real>((i * 37 % 101 - 50) / 51.0));
  return out;
}

// Argument words per shape; a, b: arguments, r: room for two results, m: a mask.
template <class T>
struct WordsOf {
  const void *a, *b;
  void *r1, *r2;
  const std::int32_t* m;

  Words unary() const { return {n, word(a), word(r1)}; }
  Words binary() const { return {n, word(a), word(b), word(r1)}; }
  Words two_results() const { return {n, word(a), word(r1), word(r2)}; }
  Words scalar() const {
    Words words{n, word(a)};
    append(words, *static_cast<const T*>(b));
    append(words, r1);
    return words;
  }
  Words linear_frac() const {
    Words words{n, word(a), word(b)};
    for (int k = 0; k < 4; ++k) append(words, static_cast<const T*>(b)[k]);
    append(words, r1);
    return words;
  }
  Words pack_stride() const { return {n, 0, word(a), 1, 0, word(r1)}; }
  Words pack_array() const { return {n, 0, word(a), word(m), word(r1)}; }
  Words unpack_stride() const { return {n, 0, word(a), word(r1), 1, 0}; }
  Words unpack_array() const { return {n, 0, word(a), word(r1), word(m)}; }
};
#define WORDS_UNARY unary
#define WORDS_UNARY_TO_REAL unary
#define WORDS_UNARY_FROM_REAL unary
#define WORDS_BINARY binary
#define WORDS_TWO_RESULTS two_results
#define WORDS_SCALAR scalar
#define WORDS_LINEAR_FRAC linear_frac
#define WORDS_PACK_STRIDE pack_stride
#define WORDS_PACK_ARRAY pack_array
#define WORDS_UNPACK_STRIDE unpack_stride
#define WORDS_UNPACK_ARRAY unpack_array

template <class T, class Real>
void check(const std::string& name, Words (WordsOf<T>::*words)() const) {
  const std::vector<Real> a = arguments<Real>(), b = arguments<Real>();
  std::vector<std::int32_t> mask;
  for (int i = 0; i < n; ++i) mask.push_back(i % 3);
  std::vector<T> expected(2 * n), found(2 * n);
  std::memset(static_cast<void*>(expected.data()), 0, sizeof(T) * 2 * n);
  void* entry = process::symbol(module_library(), name.c_str());
  ASSERT_NE(entry, nullptr) << name;
  const auto call = [&](std::uint32_t offset, std::vector<T>& results) {
    const Words list = (WordsOf<T>{a.data(), b.data(), results.data(), results.data() + n, mask.data()}.*words)();
    call_on_stack(offset, entry, list.data(), static_cast<std::uint32_t>(list.size()));
  };
  call(0, expected);
  for (std::uint32_t offset : {4u, 8u, 12u}) {
    std::memset(static_cast<void*>(found.data()), 0, sizeof(T) * 2 * n);
    call(offset, found);
    EXPECT_EQ(std::memcmp(found.data(), expected.data(), sizeof(T) * 2 * n), 0) << name << " at offset " << offset;
  }
}

TEST(Stack, EveryEntryAtEveryAlignment) {
  using namespace orin::vector_math;
#define ORIN_FUNCTION(t, F, SHAPE, LA, HA, EP, cost_la, cost_ha, cost_ep)                                     \
  for (const char* suffix :                                                                                   \
       {"_HA", #t[0] == 's' || #t[0] == 'c' ? "_21" : "_50", #t[0] == 's' || #t[0] == 'c' ? "_11" : "_26"}) { \
    check<element_##t, real_##t>(std::string("_kor" #t #F) + suffix, &WordsOf<element_##t>::WORDS_##SHAPE);   \
  }
#include "vector_math/functions.def"
#undef ORIN_FUNCTION
}

// Every working convolution kernel, on sizes that go through transforms, and the life of a task.
TEST(Stack, ConvolutionAtEveryAlignment) {
  constexpr std::uint32_t points = 513, parts = 2;
  const std::int32_t xshape[] = {450}, yshape[] = {64}, zshape[] = {points}, one[] = {1};
  const std::vector<float> singles = arguments_below_one<float>();
  const std::vector<double> doubles = arguments_below_one<double>();
  const auto expect_same_bits = [&](const std::string& what, auto&& call) {
    std::vector<double> expected(points * parts), found;
    call(0, expected.data());
    EXPECT_NE(expected, std::vector<double>(points * parts)) << what;
    for (std::uint32_t offset : {4u, 8u, 12u}) {
      found.assign(points * parts, 0);
      call(offset, found.data());
      EXPECT_EQ(std::memcmp(found.data(), expected.data(), sizeof(double) * points * parts), 0) << what << offset;
    }
  };
  for (const std::string kind : {"Conv", "Corr"}) {
    const std::int32_t start[] = {kind == "Conv" ? 0 : 1 - xshape[0]};
    for (const std::string pair : {"SS", "SD", "DD", "CC", "CZ", "ZZ"}) {
      const bool single = pair[0] == 'S' || pair[0] == 'C';
      const void* x = single ? static_cast<const void*>(singles.data()) : doubles.data();
      for (const std::string method : {"Direct", "Fft"})
        for (const std::string shape : {"1D_dec", "1D_nodec", "All_dec"}) {
          if (shape == "1D_nodec" && pair + method != "SSDirect") continue;
          const std::string name = "_jun" + kind + pair + method + shape;
          void* entry = process::symbol(module_library(), name.c_str());
          ASSERT_NE(entry, nullptr) << name;
          expect_same_bits(name, [&](std::uint32_t offset, double* z) {
            Words line{word(x), 1, word(x), 1, word(z), 1, 450, 64, static_cast<std::uint32_t>(*start), points};
            if (shape == "1D_dec") line.push_back(1);
            const Words all{1,         word(x), word(xshape), word(one), word(x),     word(yshape),
                            word(one), word(z), word(zshape), word(one), word(start), word(one)};
            const Words& words = shape == "All_dec" ? all : line;
            call_on_stack(offset, entry, words.data(), static_cast<std::uint32_t>(words.size()));
          });
        }
    }
  }
  const auto at = [](std::uint32_t offset, const char* name, const Words& words) {
    call_on_stack(offset, process::symbol(module_library(), name), words.data(),
                  static_cast<std::uint32_t>(words.size()));
  };
  expect_same_bits("task ", [&](std::uint32_t offset, double* z) {
    void *task = nullptr, *copy = nullptr;
    at(offset, "__junNewTask", {word(&task), 1, 0, 2, 1, 2, 1, word(xshape), word(yshape), word(zshape)});
    at(offset, "__junEditTask", {word(task), 6, word(one)});
    at(offset, "__junCommitTask", {word(task)});
    at(offset, "__junCopyTask", {word(&copy), word(task)});
    at(offset, "__junExec", {word(copy), word(doubles.data()), 0, word(doubles.data()), 0, word(z), 0});
    for (void** place : {&task, &copy}) at(offset, "__junDeleteTask", {word(place)});
  });
}

}  // namespace

#else

TEST(Stack, EveryEntryAtEveryAlignment) { GTEST_SKIP() << "the calling convention of this target aligns the stack"; }

#endif
