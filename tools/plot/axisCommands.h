#pragma once

#include <string>

#include "tools/plot/Panel.h"
#include "tools/plot/PlotCurves.h"

namespace vdrdump {

// Range, tics and their format for the axis that gnuplot calls `name`, "y" or "y2". It is close
// around its curves, hardly below 0 where they are not, and over `leastPart` of their size, so that
// what hardly moves does not look as if it did. Without a curve there are no tics.
std::string axisCommands(const std::string& name, const Axis& axis, const PlotCurves& curves,
                         double leastPart);

}  // namespace vdrdump
