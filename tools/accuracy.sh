#!/usr/bin/env bash
# accuracy: builds the scanner and measures functions; see build/linux64/bin/accuracy --help for its options.
# SPDX-License-Identifier: MIT
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. tools/quiet.sh
build_quietly linux64 accuracy
exec build/linux64/bin/accuracy "$@"
