#!/bin/sh
# fresh: compares a committed data header with what its program prints. fresh.sh PYTHON STEM; 77 without mpmath.
# SPDX-License-Identifier: MIT
"$1" -c 'import mpmath' 2> /dev/null || { echo "mpmath is not installed"; exit 77; }
"$1" "tools/tables/$2.py" | diff - "vector_math/data/$2_data.h"
