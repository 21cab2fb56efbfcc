// message_probe: a process that prints the messages that its arguments name.
// SPDX-License-Identifier: MIT
#include <cstdlib>

#include "service/messages.h"

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) orin::service::PrintOrinMessage(1, std::atoi(argv[i]), 2, "vdExp", 0);
}
