#!/usr/bin/env bash
# What pipelines write is the same bytes with the tracer and without: check-output.sh PLUGINS REGISTRY
set -euo pipefail
export GST_PLUGIN_PATH=$1 GST_REGISTRY=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

source='videotestsrc num-buffers=60 ! video/x-raw,width=64,height=48,framerate=30/1'
while read -r pipeline; do
    for run in plain traced; do
        tracers=
        [ $run = plain ] || tracers="vdr(root=$folder/vdr,binary=true)"
        # shellcheck disable=SC2086
        GST_TRACERS=$tracers gst-launch-1.0 --quiet $source $pipeline \
            ! filesink "location=$folder/$run"
    done
    cmp "$folder/plain" "$folder/traced"
    [ -s "$folder/plain" ]
done <<'PIPELINES'
! videoconvert ! video/x-raw,format=RGB
! x264enc bframes=2 threads=1
! queue ! jpegenc ! avimux
! videorate ! video/x-raw,framerate=45/1 ! tee name=t ! queue ! fakesink t. ! queue ! jpegenc
PIPELINES

# The traced ones were recorded, and their clock is stated.
cat "$folder"/vdr/data/vendor/camera/*.bin | wc -c | grep -qx $((4 * 60 * 4096))
grep -qx 'clock nanoseconds' "$folder/vdr/nodes.txt"
