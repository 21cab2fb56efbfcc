#!/usr/bin/env bash
# Links with the compiler of the win32 thread model in place of the posix one: no thread runtime, whose TLS slot would
# be lost at every load and unload of the DLL.
# SPDX-License-Identifier: MIT
exec "${1/-posix/-win32}" "${@:2}"
