# quiet.sh: for the other scripts: runs a command and shows its output only when it fails; builds that way.
# SPDX-License-Identifier: MIT

quietly() {
  local log status=0
  log=$(mktemp)
  "$@" > "$log" 2>&1 || { status=$?; cat "$log" >&2; }
  rm -f "$log"
  return "$status"
}

# build_quietly PRESET [TARGET...]
build_quietly() {
  local preset=$1
  shift
  quietly cmake --preset "$preset" && quietly cmake --build "build/$preset" -j "$(nproc)" ${1:+--target "$@"}
}
