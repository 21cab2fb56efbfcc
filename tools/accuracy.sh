#!/usr/bin/env bash
# accuracy: builds the scanner and measures functions; see build/linux64/bin/accuracy --help for its options.
# SPDX-License-Identifier: MIT
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
cmake --preset linux64 > /dev/null
cmake --build build/linux64 --target accuracy > /dev/null
exec build/linux64/bin/accuracy "$@"
