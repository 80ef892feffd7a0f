#include <gst/gst.h>

#include "integrations/gstreamer/VdrTracer.h"
#include "integrations/gstreamer/debugCategory.h"

#define PACKAGE "videodatarecorder"

namespace {

gboolean initPlugin(GstPlugin* plugin) {
    GST_DEBUG_CATEGORY_INIT(vdrDebugCategory, "vdr", 0, "video data recorder");
    return gst_tracer_register(plugin, "vdr", vdr_tracer_get_type());
}

}  // namespace

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, vdr,
                  "Records every frame of a pipeline with the video data recorder: "
                  "GST_TRACERS=\"vdr(root=FOLDER,binary=BOOLEAN,level=1 or 2)\"",
                  initPlugin, VDR_VERSION, "Proprietary", PACKAGE, "https://localhost/")
