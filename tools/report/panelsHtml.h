#pragma once

#include <string>

#include "tools/explain/Findings.h"
#include "tools/explain/LossCases.h"
#include "tools/names/NodeNames.h"

namespace vdrdump {

struct PanelsHtml {
    std::string html;
    std::string drawnBy;  // empty where nothing could draw them
};

// The panels that plot draws, of the frames of `range`. `findings` of a loss among them, or null.
// Names within the picture begin with `prefix`. `page` stands in front of messages.
PanelsHtml panelsHtml(const SessionHistory& history, const FrameRange& range,
                      const Findings* findings, const NodeNames& names, const std::string& prefix,
                      const std::string& page);

// What stands in their place where nothing can draw them.
PanelsHtml withoutPanels();

}  // namespace vdrdump
