#pragma once

#include <gst/gst.h>

namespace vdrgst {

// Some elements carry several streams side by side (multiqueue, as every decodebin has one): what
// happens in one of them says nothing of the others. Each stream has a lane, from a sink pad that
// was asked for to the source pad that came with it. Returns that sink pad, by its address only;
// null where the element is one place for all that passes it.
GstPad* laneOf(GstPad* pad);

}  // namespace vdrgst
