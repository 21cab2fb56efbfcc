#!/usr/bin/env bash
# accuracy: builds the scanner, measures functions and plots their errors; see build/linux64/bin/accuracy --help.
# SPDX-License-Identifier: MIT
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
. tools/quiet.sh
build_quietly linux64 accuracy
build/linux64/bin/accuracy "$@"

names=()
for word in "$@"; do [[ $word =~ ^[A-Z] ]] && names+=("$word"); done
profiles=build/linux64/profiles
mkdir -p "$profiles" docs/plots
build/linux64/bin/accuracy --profile "$profiles" "${names[@]}"
for data in "$profiles"/vd*.dat; do
  name=$(basename "$data" .dat)
  name=${name#vd}
  gnuplot -e "name='$name'; folder='$profiles'; out='docs/plots/$name.png'" tools/accuracy/plot.gp
done
