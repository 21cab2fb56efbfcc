#!/usr/bin/env bash
# fresh: whether the searches still give the committed parameters: all Wichmann-Hill sets, some twisters.
# SPDX-License-Identifier: MIT
# usage: fresh.sh FOLDER_OF_PROGRAMS
set -euo pipefail
programs=$(cd "$1" && pwd)
data=$(cd "$(dirname "${BASH_SOURCE[0]}")/../../rng/data" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

"$programs/find_wh" | cmp - "$data/wh_parameters.h"

for set in 0 1 3000 6023; do
  "$programs/find_mt2203" "$work/found" "$set" "$set" 1
  grep -o '{0x[^}]*}' "$data/mt2203_parameters.h" | sed -n "$((set + 1))s/{0x\([0-9a-f]*\).*/$set \1/p" >> "$work/committed"
done
cmp "$work/found" "$work/committed"
