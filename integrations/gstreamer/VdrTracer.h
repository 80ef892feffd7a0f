#pragma once

#include <gst/gst.h>
#include <gst/gsttracer.h>

// The tracer "vdr": records the frames of a pipeline with the video data recorder. GStreamer makes
// one where GST_TRACERS names it, and ends it with gst_deinit().
//
// Property "statistics", a structure: pipelines, frames, lost, bare, announced, done, limited,
// unanswered; what is counted at its end for a pipeline is there once that is stopped.
GType vdr_tracer_get_type();
