#pragma once

#include <gst/gst.h>

#include "integrations/gstreamer/FrameFlow.h"

namespace vdrgst {

// What is known of an element before the first frame has come.
NodeTraits nodeTraitsOf(GstElement* element);

}  // namespace vdrgst
