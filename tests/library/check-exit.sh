#!/usr/bin/env bash
# check-exit.sh TIMES COMMAND...: the command's program ends with status 0 so many times of each
# kind, in a folder of its own.
set -euo pipefail
times=$1
shift
root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
mkdir -p "$root/data/vendor/camera" "$root/data/vendor/camera_frame_lost"
for ((i = 0; i < times; i++)); do
    for how in return exit; do
        VDR_ROOT=$root "$@" "$how" || {
            echo "run $i, $how: status $?" >&2
            exit 1
        }
    done
    rm -f "$root"/data/vendor/*/*
done
