#pragma once

#include <string>

#include "tools/names/NodeNames.h"
#include "tools/report/Timeline.h"

namespace vdrdump {

// Draws it as an SVG element: a row per node and in it a bar per frame, above them when each frame
// was taken and what changed, below them the time. `findings`, of a loss among the frames or null,
// say what is marked. Bars lead to `anchor` with the number of their frame. Colours come from the
// style of the page.
std::string timelineSvg(const Timeline& timeline, const Findings* findings, const NodeNames& names,
                        const std::string& anchor);

}  // namespace vdrdump
