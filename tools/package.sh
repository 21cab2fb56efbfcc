#!/usr/bin/env bash
# package: makes dist/orin-sse2-VERSION.zip: DLLs, import libraries for mingw and MSVC, headers, CMake package, docs.
# SPDX-License-Identifier: MIT
#
# usage: package.sh [--as-built] [FOLDER]
#   --as-built   take the DLLs that build/win32 holds without building them
#   FOLDER       where the zip goes (default: dist)
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. tools/quiet.sh

libraries=(orin_sse2 orin_core orin_sequential)
build=build/win32
tools=i686-w64-mingw32

if [ "${1:-}" = --as-built ]; then
  shift
else
  build_quietly win32 "${libraries[@]}"
fi
folder=${1:-dist}

version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$build/CMakeCache.txt")
name=orin-sse2-$version
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
stage=$work/$name
mkdir -p "$stage"/{bin,lib/cmake/orin,docs} "$folder"

# The names a DLL exports, as lines of a .def file; those outside the code are data, which callers reach by address.
exports() {
  "$tools-objdump" -h -p "$1" | awk '
    function number(text,    i, value) {  # from hexadecimal
      value = 0
      for (i = 1; i <= length(text); i++) value = value * 16 + index("0123456789abcdef", substr(text, i, 1)) - 1
      return value
    }
    /^ImageBase/ { base = number($2) }
    $2 == ".text" { first = number($4); last = first + number($3) }
    /Export RVA$/ { sub(/.*\+base\[ *[0-9]+\] */, ""); address[count++] = number($1) + base }
    /^\[Ordinal\/Name Pointer\]/ { names = 1; next }
    names && /^\t\[/ {
      sub(/^\t\[ */, "")
      ordinal = $0 + 0
      sub(/^[0-9]+\] */, "")
      name[ordinal] = $0
      next
    }
    { names = 0 }
    END {
      for (i = 0; i < count; i++) print "  " name[i] (address[i] >= first && address[i] < last ? "" : " DATA")
    }'
}

for library in "${libraries[@]}"; do
  "$tools-strip" -o "$stage/bin/$library.dll" "$build/bin/$library.dll"
  cp "$build/lib/lib$library.dll.a" "$stage/lib/"
  { echo "LIBRARY $library.dll" && echo EXPORTS && exports "$build/bin/$library.dll"; } > "$work/$library.def"
  "$tools-dlltool" -m i386 -d "$work/$library.def" -l "$stage/lib/$library.lib"
done
cp -r include "$stage/"
cp cmake/package/orinConfig.cmake "$stage/lib/cmake/orin/"
sed -e "s/@version@/$version/" -e "s/@major@/${version%%.*}/" cmake/package/orinConfigVersion.cmake.in \
  > "$stage/lib/cmake/orin/orinConfigVersion.cmake"
cp LICENSE "$stage/"
sed -e '/^## See it work/,/^## Use it/{/^## Use it/!d}' -e '/HACKING/d' README.md > "$stage/README.md"  # no ./run there
cp -r docs/plots docs/*.txt docs/*.md "$stage/docs/"
rm "$stage/docs/HACKING.md"

zip=$(cd "$folder" && pwd)/$name.zip
rm -f "$zip"
(cd "$work" && find "$name" -type f | LC_ALL=C sort > list && cmake -E tar cf "$zip" --format=zip --files-from=list)
echo "$zip"
