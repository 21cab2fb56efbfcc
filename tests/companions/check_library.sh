#!/usr/bin/env bash
# check_library LIBRARY [EXPORTS]: a shared library asks for nothing but what the system has, carries a version resource if
# it is a DLL, and shows the names of the list, where there is one, and no other.
# SPDX-License-Identifier: MIT
set -euo pipefail
library=$1 exports=${2:-}
fail() { printf '%s: %s\n' "$(basename "$library")" "$1" >&2; exit 1; }

case $library in
  *.dll)
    dump=$(i686-w64-mingw32-objdump -p "$library")
    shown=$(sed -n '/^\[Ordinal\/Name Pointer\] Table/,/^$/s/^\s*\[ *[0-9]*\] \(.*\)$/\1/p' <<< "$dump" | sort)
    needed=$(sed -n 's/^\s*DLL Name: //p' <<< "$dump" | sort)
    allowed='^(KERNEL32|msvcrt)\.dll$'
    grep -aqF "$(printf 'VS_VERSION_INFO' | iconv -t UTF-16LE | tr -d '\0')" <(tr -d '\0' < "$library") ||
      fail "no version resource"
    ;;
  *)
    shown=$(nm -D --defined-only "$library" | awk '{ print $3 }' | sort)
    needed=$(objdump -p "$library" | awk '/NEEDED/ { print $2 }')
    allowed='^lib(c|m|dl)\.so|^ld-linux'
    ;;
esac
if [ -n "$exports" ]; then
  expected=$(sed -n 's/^ORIN_EXPORT(\(.*\))$/\1/p' "$exports" | sort)
  [ -n "$expected" ] || fail "no names in $exports"
  diff <(echo "$expected") <(echo "$shown") || fail "shows other names than $exports"
fi
if grep -vE "$allowed" <<< "$needed"; then fail "asks for these libraries"; fi
echo "$(basename "$library"): $(wc -l <<< "$shown") names, needs" $needed
