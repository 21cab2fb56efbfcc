// messages.h: the numbered message catalogue and its printer.
// SPDX-License-Identifier: MIT
#ifndef ORIN_SERVICE_MESSAGES_H
#define ORIN_SERVICE_MESSAGES_H

#include <cstdint>

namespace orin::service {

constexpr int message_count = 1207;

// Numbers of the rows that the module prints.
constexpr int message_cannot_load = 1;
constexpr int message_cannot_load_function = 3;
constexpr int message_bad_size = 735;
constexpr int message_bad_memory = 736;
constexpr int message_domain = 737;
constexpr int message_singularity = 738;
constexpr int message_overflow = 739;
constexpr int message_underflow = 740;
constexpr int message_unknown_error = 741;
constexpr int message_one_argument_one_result = 742;    // the first of the lines "a", "r"
constexpr int message_one_argument_two_results = 744;   // "a", "y", "z"
constexpr int message_two_arguments_one_result = 747;   // "a", "b", "y"
constexpr int message_two_arguments_two_results = 750;  // "a", "b", "y", "z"
constexpr int message_memory = 760;

// Prints message `number`, expanded with the `argCount` arguments that follow (integers, strings and doubles in the
// order of the text's conversions), and a line end on standard output, then flushes every output stream. A localised
// text is taken where the system offers one. A number outside the catalogue has an empty built-in text. `kind` has no
// effect on the output. An expanded message of more than 513 characters ends the process with code 8.
void PrintOrinMessage(int kind, int number, int argCount, ...) noexcept;

// One row of the catalogue.
struct Message {
  const char* text;
  std::int32_t next;        // number of the following row, 0 after the last
  std::int32_t class_code;  // 4 for most rows
};

// The row of `number`; an empty one for a number outside the catalogue.
const Message& catalogue_row(int number) noexcept;

}  // namespace orin::service

#endif
