#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/plot/PlotCurves.h"
#include "tools/session/SessionTracker.h"
#include "tools/session/VideoWindows.h"

namespace vdrdump {

// What is drawn: one session, or the frames of it that were chosen.
struct Picture {
    std::string path;  // whose end says in which format
    std::string title;
    FrameRange frames;
    std::vector<FrameRange> missing;
    std::vector<VideoWindow> videos;
    std::optional<uint32_t> lost;
};

// The commands and data with which gnuplot draws it on its standard output.
std::string plotScript(const Picture& picture, const std::vector<Panel>& panels,
                       const PlotCurves& curves);

}  // namespace vdrdump
