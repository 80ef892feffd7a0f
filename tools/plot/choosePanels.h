#pragma once

#include <string>
#include <vector>

#include "tools/names/NodeNames.h"
#include "tools/plot/SessionCurves.h"

namespace vdrdump {

struct PanelChoice {
    std::vector<Panel> panels;
    std::vector<std::string> leftOut;  // what has no curve and why, a line each
};

// What of a session is worth a curve: interval and latency of the frames, the slowest nodes and
// algorithms, then the device, each as far as it is known and anything but 0. Fields that were
// chosen are all shown.
PanelChoice choosePanels(const SessionCurves& session, const NodeNames& names);

}  // namespace vdrdump
