#!/usr/bin/env bash
# rng_quality: puts streams of every generator family through dieharder and rewrites docs/rng_quality.md.
# SPDX-License-Identifier: MIT
#
# Results of single tests are kept in build/rng-quality; a run goes on where an earlier one was stopped.
# usage: tools/rng_quality.sh [STREAM...]     (names of the list below; without names all)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

# name identifier seeds
streams='MCG31M1 0x100000 20240613
R250 0x200000 20240613
MRG32K3A 0x300000 1 2 3 4 5 6
MCG59 0x400000 20240613
WH-0 0x500000 1 2 3 4
WH-137 0x500089 1 2 3 4
WH-272 0x500110 1 2 3 4
MT19937 0x800000 20240613
MT2203-0 0x900000 20240613
MT2203-3000 0x900BB8 20240613
MT2203-6023 0x901787 20240613
SFMT19937 0xD00000 20240613
Sobol 0x600000 1
Niederr 0x700000 1'

# Tests that dieharder calls good, with the number of samples for each p-value: fewer for the four that take longest.
tests='0:100 2:25 3:100 4:100 8:100 9:100 10:100 11:100 12:100 13:25 15:100 16:25 100:100 101:25 204:1000 205:1 206:1 207:1 208:1 209:1'

results=build/rng-quality
if [ -z "${RNG_PIPE:-}" ]; then
  . tools/quiet.sh
  build_quietly linux64 rng_pipe
  RNG_PIPE=build/linux64/bin/rng_pipe
fi
mkdir -p "$results"

measure() { # name identifier seeds...
  local name=$1 item number file
  shift
  for item in $tests; do
    number=${item%%:*}
    file=$results/$name.$number
    [ -s "$file" ] && continue
    "$RNG_PIPE" "$@" | dieharder -g 200 -d "$number" -p "${item##*:}" |
      awk -F'|' '/PASSED|WEAK|FAILED/ { gsub(/ /, ""); print $1, $2, $5, $6 }' > "$file.part" || true
    mv "$file.part" "$file"
  done
}

while read -r name arguments; do
  if [ $# -gt 0 ] && [[ " $* " != *" $name "* ]]; then continue; fi
  echo "$name"
  # shellcheck disable=SC2086
  measure "$name" $arguments
done <<< "$streams"

{
  cat << 'EOT'
# Statistical quality of the generators

This page is rewritten by `./run rng-quality`.

The uniform doubles of a stream, as 32-bit integers, go through the tests that dieharder (3.31.1, from Debian) calls
good. Each test gives one or more p-values. A correct generator gets "weak" (p outside 0.005 .. 0.995) about once in a
hundred p-values, and "failed" (p outside 0.000001 .. 0.999999) practically never.

| Stream | Passed | Weak | Failed | Weak or failed tests: name, parameter, p |
|---|---|---|---|---|
EOT
  while read -r name arguments; do
    { cat "$results/$name".[0-9]* 2> /dev/null || true; } | awk -v name="$name" '
      $4 == "PASSED" { passed++ } $4 == "WEAK" { weak++ } $4 == "FAILED" { failed++ }
      $4 != "PASSED" { list = list (list ? "; " : "") $1 " " $2 ": " $3 }
      END { if (!passed && !weak && failed) list = "all"
            printf "| %s | %d | %d | %d | %s |\n", name, passed, weak, failed, list }'
  done <<< "$streams"
  cat tools/rng_quality_notes.md
} > docs/rng_quality.md.part
mv docs/rng_quality.md.part docs/rng_quality.md
echo "docs/rng_quality.md is written"
