// environment_mode: the initial mode word as the environment asks for it.
// SPDX-License-Identifier: MIT
//
// Grammar   value = token { "," token };  token = "KOR_" keyword
// A keyword is the first of the table whose characters stand there; what follows it must be "," or the end.
#include "vector_math/environment_mode.h"

#include <array>
#include <cstring>

#include "orin/vector_math.h"
#include "service/platform/platform.h"

namespace orin::vector_math {
namespace {

struct Keyword {
  const char* text;
  std::uint32_t length;
  std::uint32_t bits;
  std::uint32_t high_bits;  // OR-ed into the upper half of the result
};

constexpr Keyword keywords[] = {
    {"LA", 2, KOR_LA, 0},
    {"HA", 2, KOR_HA, 0},
    {"EP", 2, KOR_EP, 0},
    {"DEFAULT_PRECISION", 17, KOR_DEFAULT_PRECISION, 0},
    {"FLOAT_CONSISTENT", 16, KOR_FLOAT_CONSISTENT, 0},
    {"DOUBLE_CONSISTEN", 16, KOR_DOUBLE_CONSISTENT, 0},
    {"RESTORE", 7, KOR_RESTORE, 0},
    {"ERRMODE_IGNORE", 14, KOR_ERRMODE_IGNORE, 0},
    {"ERRMODE_ERRNO", 13, KOR_ERRMODE_ERRNO, 0},
    {"ERRMODE_STDERR", 14, KOR_ERRMODE_STDERR, 0},
    {"ERRMODE_EXCEPT", 14, KOR_ERRMODE_EXCEPT, 0},
    {"ERRMODE_CALLBACK", 16, KOR_ERRMODE_CALLBACK, 0},
    {"ERRMODE_DEFAULT", 15, KOR_ERRMODE_DEFAULT, 0},
};

constexpr char prefix[] = "KOR_";
constexpr std::size_t prefix_length = 4;

// The variable's name is kept scrambled in the module and rebuilt to ask for it.
constexpr std::size_t name_length = 13;
constexpr unsigned char scramble_key = 0x5a;

constexpr std::array<unsigned char, name_length> scramble(const char (&name)[name_length + 1]) {
  std::array<unsigned char, name_length> out{};
  for (std::size_t i = 0; i < name_length; ++i) {
    out[i] = static_cast<unsigned char>(static_cast<unsigned char>(name[i]) ^ (scramble_key + i));
  }
  return out;
}

constexpr auto scrambled_name = scramble("ORIN_KOR_MODE");

// The keyword at text[position], null if there is none.
const Keyword* match_keyword(const char* text, std::size_t position) noexcept {
  for (const Keyword& keyword : keywords) {
    if (position + keyword.length >= environment_capacity) continue;
    if (std::strncmp(text + position, keyword.text, keyword.length) == 0) return &keyword;
  }
  return nullptr;
}

}  // namespace

std::uint64_t parse_mode(const char* text) noexcept {
  if (text[0] == '\0') return mode_not_set;
  std::uint64_t bits = 0;
  for (std::size_t position = 0;;) {
    if (std::strncmp(text + position, prefix, prefix_length) != 0) return mode_not_set;
    position += prefix_length;
    const Keyword* keyword = match_keyword(text, position);
    if (keyword == nullptr) return mode_not_set;
    bits |= keyword->bits | static_cast<std::uint64_t>(keyword->high_bits) << 32;
    position += keyword->length;
    if (text[position] == '\0') return bits;
    if (text[position] != ',') return mode_not_set;
    ++position;
  }
}

std::uint64_t read_environment_mode() noexcept {
  char name[name_length + 1];
  for (std::size_t i = 0; i < name_length; ++i) name[i] = static_cast<char>(scrambled_name[i] ^ (scramble_key + i));
  name[name_length] = '\0';

  char value[environment_capacity];
  const std::size_t length = platform::environment(name, value, sizeof value);
  if (length >= sizeof value) return mode_not_set;
  value[length] = '\0';
  return parse_mode(value);
}

}  // namespace orin::vector_math
