#!/usr/bin/env bash
# check-exports.sh NM LIBRARY: the library defines one dynamic symbol, the function that hands out
# the recorder. Anything else would be a second interface that somebody comes to depend on.
set -euo pipefail
expected=_ZN2zk27getVideoDataRecoderInstanceEv
exported=$("$1" --dynamic --defined-only --format=posix "$2" | cut -d' ' -f1)
if [[ $exported != "$expected" ]]; then
    printf 'exported by %s:\n%s\nexpected:\n%s\n' "$2" "$exported" "$expected" >&2
    exit 1
fi
