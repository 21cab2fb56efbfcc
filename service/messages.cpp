// messages: the numbered message catalogue and its printer.
// SPDX-License-Identifier: MIT
//
// The catalogue is numbered for the whole product family; the rows of other components have an empty text here.
#include "service/messages.h"

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "service/platform/platform.h"

namespace orin::service {
namespace {

struct TextRow {
  int number;
  const char* text;
};

constexpr TextRow texts[] = {
    {0, "\n"},
    {1, "ORIN FATAL ERROR: Cannot load %s"},
    {2, "ORIN FATAL ERROR: Cannot load neither %s nor %s"},
    {3, "ORIN FATAL ERROR on load the function %s"},
    {4, "ORIN WARNING: ORIN_DEBUG_CPU_TYPE=%d not convenient for this processor."},
    {5, "ORIN WARNING: library %s (ORIN type %d) not convenient for this processor (ORIN type %d)."},
    {735, "Error (KOR_STATUS_BADSIZE) in %s: array size %d is not positive."},
    {736, "Error (KOR_STATUS_BADMEM) in %s: NULL pointer is passed."},
    {737, "Error (KOR_STATUS_ERRDOM) in %s: argument is out of domain."},
    {738, "Error (KOR_STATUS_SING) in %s: argument caused singularity."},
    {739, "Error (KOR_STATUS_OVERFLOW) in %s: argument caused overflow."},
    {740, "Error (KOR_STATUS_UNDERFLOW) in %s: argument caused underflow."},
    {741, "Unknown error in %s."},
    {742, "a(%d)=%g"},
    {743, "r(%d)=%g"},
    {744, "a(%d)=%g"},
    {745, "y(%d)=%g"},
    {746, "z(%d)=%g"},
    {747, "a(%d)=%g"},
    {748, "b(%d)=%g"},
    {749, "y(%d)=%g"},
    {750, "a(%d)=%g"},
    {751, "b(%d)=%g"},
    {752, "y(%d)=%g"},
    {753, "z(%d)=%g"},
    {754, "The CPU is not supported in this ORIN version."},
    {755, "ORIN FATAL ERROR: can`t load %s."},
    {756, "ORIN FATAL ERROR: can`t load neither %s nor %s."},
    {757, "ORIN FATAL ERROR: dynamic library %s isn`t convenient for this processor."},
    {758, "ORIN func load error: cpu specific dynamic library isn`t loaded."},
    {759, "ORIN func load error: %s."},
    {760, "ORIN FATAL ERROR: memory allocation error."},
};

constexpr std::array<Message, message_count> make_catalogue() {
  std::array<Message, message_count> rows{};
  for (int number = 0; number < message_count; ++number) {
    rows[static_cast<std::size_t>(number)] = {"", (number + 1) % message_count, 4};
  }
  for (const TextRow& row : texts) rows[static_cast<std::size_t>(row.number)].text = row.text;
  return rows;
}

constinit const std::array<Message, message_count> catalogue = make_catalogue();
constexpr Message empty_row = {"", 0, 0};

// What the size rule speaks of, and what the buffer really holds: an expansion is never cut before it is measured
// against the rule, and the longest one that the rule lets pass fits.
constexpr int size_limit = 512;
constexpr std::size_t expansion_capacity = 1024;

struct Printer {
  bool first_call = true;
  bool built_in_only = true;
  platform::Module catalogue_module = nullptr;
  char expansion[expansion_capacity] = {};
};

constinit Printer printer;

// The localised catalogue stands in a folder named by the locale number; it is asked for once per process.
void look_for_localised_catalogue() noexcept {
  if (!printer.first_call) return;
  printer.first_call = false;
  char path[64];
  std::snprintf(path, sizeof path, "%lu/%s", platform::thread_locale(), "orin_msg.dll");
  printer.catalogue_module = platform::load_module(path);
  if (printer.catalogue_module != nullptr) printer.built_in_only = false;
}

// The localised text of a message without its line end; null when the built-in one is to be used.
char* localised_text(int number) noexcept {
  if (printer.built_in_only) return nullptr;
  const std::uint32_t id = 0x80000000u + static_cast<std::uint32_t>(number);
  char* text = platform::message_allocate(printer.catalogue_module, id);
  if (text == nullptr) return nullptr;
  const std::size_t length = std::strlen(text);
  if (length >= 2 && text[length - 2] == '\r' && text[length - 1] == '\n') text[length - 2] = '\0';
  return text;
}

[[noreturn]] void report_overflow(int number, int length) noexcept {
  std::printf("\nORIN INTERNAL ERROR: message buffer overflow.");
  std::fflush(nullptr);
  std::printf("\n       Message N %d   Lenght: %d   Buffer size: %d\n", number, length, size_limit);
  std::fflush(nullptr);
  std::exit(8);
}

}  // namespace

const Message& catalogue_row(int number) noexcept {
  return number >= 0 && number < message_count ? catalogue[static_cast<std::size_t>(number)] : empty_row;
}

void PrintOrinMessage(int, int number, int argCount, ...) noexcept {
  if (number == 0) {
    std::printf("\n");
    return;
  }
  look_for_localised_catalogue();
  char* const localised = localised_text(number);
  const char* text = localised != nullptr ? localised : catalogue_row(number).text;

  int length;
  if (argCount > 0) {
    va_list arguments;
    va_start(arguments, argCount);
    length = std::vsnprintf(printer.expansion, sizeof printer.expansion, text, arguments);
    va_end(arguments);
    text = printer.expansion;
  } else {
    length = static_cast<int>(std::strlen(text));
  }
  if (length - 1 > size_limit) report_overflow(number, length - 1);

  std::printf("%s", text);
  std::printf("\n");
  std::fflush(nullptr);
  platform::message_free(localised);
}

}  // namespace orin::service
