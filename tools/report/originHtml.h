#pragma once

#include <string>

#include "tools/report/makeReport.h"

namespace vdrdump {

// What a page was made of and how, and what to type for more. `drawnBy`: what drew the panels,
// empty where nothing did. `lost`: the first of the losses, if there is any.
std::string originHtml(const ReportRequest& request, const std::vector<ReadFile>& files,
                       const std::string& drawnBy, std::optional<uint32_t> lost);

}  // namespace vdrdump
