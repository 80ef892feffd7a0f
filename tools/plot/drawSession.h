#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tools/names/NodeNames.h"
#include "tools/plot/SessionCurves.h"

namespace vdrdump {

enum class PictureFormat : uint8_t { Svg, Png };

// What stands around the curves.
struct Picture {
    std::string title;
    std::string answer;  // why the frame was lost; may be empty
    FrameRange frames;
    std::vector<FrameRange> lost;  // marked in every panel
};

// Draws a session that is finished, a panel below the other over one axis of frames, and gives the
// picture's bytes. Runs gnuplot as a child; none, with the reason on standard error and `name` in
// front, when gnuplot is missing or fails.
std::optional<std::string> drawSession(const Picture& picture, const SessionCurves& session,
                                       const NodeNames& names, PictureFormat format,
                                       const std::string& name);

}  // namespace vdrdump
