#!/usr/bin/env bash
# bench: builds and runs the benchmarks of the named families (default: all) and enters their output in
# docs/performance.md. The 32-bit builds are timed under Wine.
# SPDX-License-Identifier: MIT
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

. tools/quiet.sh

document=docs/performance.md
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

families=("$@")
if [ ${#families[@]} -eq 0 ]; then
  for source in bench/*_bench.cpp; do families+=("$(basename "$source" _bench.cpp)"); done
fi

# enter FAMILY FILE: the family's section becomes the file, fenced; a new section goes to the end.
enter() {
  [ -f "$document" ] || printf '%s\n' '# Performance' '' \
    'Written by `./run bench`. Each section is the output of one benchmark, its method in the head of bench/<family>_bench.cpp.' \
    > "$document"
  { printf '## %s\n\n```\n' "$1"; cat "$2"; printf '```\n'; } > "$work/section"
  awk -v family="$1" -v section="$work/section" '
    function insert(   line) { while ((getline line < section) > 0) print line; done = 1 }
    /^## / { if (inside) { inside = 0; print "" } if ($2 == family) { inside = 1; insert() } }
    !inside { print }
    END { if (!done) { print ""; insert() } }' "$document" > "$work/document"
  cp "$work/document" "$document"
}

for family in "${families[@]}"; do
  target=${family}_bench
  build_quietly linux64 "$target"
  {
    printf 'Machine: %s, %s\n' "$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -1)" "$(g++ --version | head -1)"
    if [ "$family" = vector_math ]; then
      build_quietly win32 "$target"
      cmake/wine.sh "build/win32/bin/$target.exe" --times | tr -d '\r' > "$work/times"
      cmake/wine.sh "build/win32/bin/$target.exe" --costs | tr -d '\r' > docs/costs.txt
      "build/linux64/bin/$target" --other "$work/times"
    else
      "build/linux64/bin/$target"
      if build_quietly win32 "$target" 2> /dev/null; then
        printf '\n32-bit build, under Wine:\n'
        cmake/wine.sh "build/win32/bin/$target.exe" | tr -d '\r'
      fi
    fi
  } | tee "$work/$family"
  enter "$family" "$work/$family"
done
