#!/usr/bin/env bash
# No object outlives its pipeline because of the tracer, in the eyes of GStreamer's own tracer of
# leaks: check-leaks.sh PLUGINS REGISTRY
set -euo pipefail
export GST_PLUGIN_PATH=$1 GST_REGISTRY=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

while read -r pipeline; do
    # shellcheck disable=SC2086
    GST_TRACERS="leaks(check-refs=true);vdr(root=$folder/vdr,binary=true)" \
        GST_DEBUG="GST_TRACER:7,vdr:4" GST_DEBUG_NO_COLOR=1 GST_DEBUG_FILE=$folder/log \
        gst-launch-1.0 --quiet videotestsrc num-buffers=60 $pipeline >/dev/null 2>&1 || true
    grep -q 'recording this pipeline' "$folder/log"
    if grep -E 'object-alive, type-name=.string.[^%]' "$folder/log"; then
        echo "still there after: $pipeline" >&2
        exit 1
    fi
done <<'PIPELINES'
! queue ! x264enc ! fakesink
! tee name=t ! queue leaky=downstream max-size-buffers=1 ! jpegenc ! fakesink t. ! queue ! fakesink
! identity drop-probability=0.2 ! videorate ! fakesink
! identity error-after=20 ! fakesink
PIPELINES
