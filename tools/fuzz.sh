#!/usr/bin/env bash
# fuzz [SECONDS]: damaged saved streams against the loader, under libFuzzer and the sanitizers (default: 60 seconds).
# SPDX-License-Identifier: MIT
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

seconds=${1:-60}
mkdir -p build/fuzz/corpus
{
  cmake --preset clang -B build/fuzz -DORIN_SANITIZE=fuzzer-no-link,address,undefined -DORIN_BENCHMARKS=OFF
  cmake --build build/fuzz --target load_stream_fuzz
} > build/fuzz/build.log 2>&1 || { cat build/fuzz/build.log; exit 1; }
exec build/fuzz/bin/load_stream_fuzz -max_total_time="$seconds" -max_len=4096 -timeout=10 \
  -verbosity=0 -print_final_stats=1 -artifact_prefix=build/fuzz/ build/fuzz/corpus
