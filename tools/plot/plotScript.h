#pragma once

#include <string>

#include "tools/plot/PlotCurves.h"
#include "tools/session/VideoWindows.h"
#include "tools/sink/RecordSink.h"

namespace vdrdump {

// The commands and data with which gnuplot draws one session on its standard output, in the format
// that the end of `path` asks for.
std::string plotScript(const std::string& path, const DumpFile& file, const SessionSummary& session,
                       const VideoWindows& videos, const PlotCurves& curves);

}  // namespace vdrdump
