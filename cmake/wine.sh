#!/usr/bin/env bash
# Runs a 32-bit Windows program under Wine in a prefix of its own.
# SPDX-License-Identifier: MIT
export WINEDEBUG=-all WINEARCH=win32
export WINEPREFIX="${ORIN_WINEPREFIX:-${XDG_CACHE_HOME:-$HOME/.cache}/orin-wine}"
mkdir -p "$WINEPREFIX"
exec wine "$@"
