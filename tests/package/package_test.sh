#!/usr/bin/env bash
# package_test SOURCE_FOLDER: makes the zip of the present build, unpacks it in another place, builds a small project that
# finds the package there, and runs it.
# SPDX-License-Identifier: MIT
set -euo pipefail
source=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

zip=$("$source/tools/package.sh" --as-built "$work/dist")
mkdir "$work/elsewhere"
(cd "$work/elsewhere" && cmake -E tar xf "$zip")
root=$(echo "$work"/elsewhere/orin-sse2-*)
for needed in LICENSE README.md include/orin/abi.h include/orin/orin.h lib/cmake/orin/orinConfig.cmake; do
  [ -s "$root/$needed" ] || { echo "the package lacks $needed" >&2; exit 1; }
done
if grep -F ./run "$root/README.md"; then echo "the packaged README speaks of what is not in the package" >&2; exit 1; fi

cmake -S "$source/tests/package/consumer" -B "$work/build" -DCMAKE_TOOLCHAIN_FILE="$source/cmake/mingw-i686.cmake" \
  -DCMAKE_PREFIX_PATH="$root" > "$work/log" || { cat "$work/log" >&2; exit 1; }
cmake --build "$work/build" >> "$work/log" || { cat "$work/log" >&2; exit 1; }
cp "$root"/bin/*.dll "$work/build/"
for program in consumer consumer_msvc; do
  "$source/cmake/wine.sh" "$work/build/$program.exe"
done

# A request for another major version, and a 64-bit project, are turned away.
refused() {
  ! cmake -S "$work/wrong" -B "$work/wrong-build$RANDOM" -DCMAKE_PREFIX_PATH="$root" "$@" > "$work/log" 2>&1 &&
    grep -q "$reason" "$work/log" || { echo "not refused: $*" >&2; cat "$work/log" >&2; exit 1; }
}
mkdir "$work/wrong"
sed 's/orin 1.0/orin 2.0/' "$source/tests/package/consumer/CMakeLists.txt" > "$work/wrong/CMakeLists.txt"
reason='requested version "2.0"'
refused -DCMAKE_TOOLCHAIN_FILE="$source/cmake/mingw-i686.cmake"
cp "$source/tests/package/consumer/CMakeLists.txt" "$work/wrong/"
reason='32-bit Windows DLLs'
refused
