#!/usr/bin/env bash
# check-alignment.sh READELF LIBRARY: every segment that is loaded can be mapped where pages have
# 16 KiB, as on newer devices.
set -euo pipefail
segments=$("$1" --program-headers --wide "$2" | grep '^ *LOAD ')
if grep -v ' 0x4000$' <<<"$segments"; then
    echo "segments of $2 that are not aligned to 16 KiB" >&2
    exit 1
fi
