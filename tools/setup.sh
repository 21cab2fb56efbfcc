#!/usr/bin/env bash
# setup: installs the Debian packages that the builds, tests, benchmarks and tools need, as far as they are missing.
# SPDX-License-Identifier: MIT
#
# usage: setup.sh [--windows]    --windows: only what the 32-bit Windows build needs to be made and run
set -euo pipefail
. "$(dirname "${BASH_SOURCE[0]}")/quiet.sh"

packages=(cmake ninja-build ccache g++-mingw-w64-i686-posix g++-mingw-w64-i686-win32 googletest libeigen3-dev)
if [ "${1:-}" != --windows ]; then
  packages+=(g++ clang libclang-rt-14-dev)
  packages+=(liblapack-dev libmpfr-dev libmpc-dev libntl-dev python3-mpmath zip unzip)  # tests
  packages+=(libsleef-dev libxsimd-dev libfftw3-dev libgsl-dev libboost-dev libdsfmt-dev libopenblas-dev dieharder python3-scipy)  # peers
  packages+=(gnuplot-nox)  # documents
fi
wine=(wine wine32:i386)

missing() {
  local package
  for package in "$@"; do
    dpkg-query -W -f '${Status}\n' "$package" 2> /dev/null | grep -q '^install ok installed$' || echo "$package"
  done
}

as_root() { if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi; }
apt() { as_root env DEBIAN_FRONTEND=noninteractive apt-get "$@"; }

mapfile -t wanted < <(missing "${packages[@]}")
mapfile -t wanted_wine < <(missing "${wine[@]}")
if [ ${#wanted[@]} -eq 0 ] && [ ${#wanted_wine[@]} -eq 0 ]; then exit 0; fi
echo "Installing ${wanted[*]} ${wanted_wine[*]}"

quietly apt update || true
if [ ${#wanted[@]} -gt 0 ]; then quietly apt install -y --no-install-recommends "${wanted[@]}"; fi

# 32-bit Wine needs i386 libraries of the very versions of the installed amd64 ones. Where the i386 index of the security
# archive cannot be read, installed security updates have no i386 twin: that archive is set aside for this one
# installation, and apt may go back to the release's versions.
if [ ${#wanted_wine[@]} -gt 0 ]; then
  as_root dpkg --add-architecture i386
  quietly apt update || true
  if ! quietly apt install -y --no-install-recommends "${wanted_wine[@]}" 2> /dev/null; then
    preferences=$(mktemp)
    trap 'rm -f "$preferences"' EXIT
    chmod 644 "$preferences"
    printf 'Package: *\nPin: release l=Debian-Security\nPin-Priority: -1\n' > "$preferences"
    quietly apt -o "Dir::Etc::preferences=$preferences" install -y --allow-downgrades --no-install-recommends \
      "${wanted_wine[@]}"
  fi
fi
