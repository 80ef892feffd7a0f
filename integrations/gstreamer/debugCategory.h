#pragma once

#include <gst/gst.h>

// What the plug-in says appears under GST_DEBUG=vdr:LEVEL.
extern GstDebugCategory* vdrDebugCategory;
#undef GST_CAT_DEFAULT
#define GST_CAT_DEFAULT vdrDebugCategory
