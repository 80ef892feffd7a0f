#pragma once

#include <string>

#include "tools/plot/choosePanels.h"
#include "tools/plot/drawSession.h"

namespace vdrdump {

// The commands and data with which gnuplot draws it on its standard output.
std::string plotScript(const Picture& picture, const PanelChoice& choice,
                       const SessionCurves& session, PictureFormat format);

}  // namespace vdrdump
