#pragma once

#include <string>
#include <vector>

#include "tools/explain/LossCases.h"
#include "tools/names/NodeNames.h"

namespace vdrdump {

struct RecordList {
    const SessionHistory* history = nullptr;
    std::vector<FrameRange> ranges;  // what is listed; they may overlap
    std::vector<FrameRange> lost;
    std::string anchor;  // with its frame's number the name of a record, to which pictures lead
};

// Records to unfold: each a line that says how long its frame took, and behind that its fields.
std::string recordsHtml(const RecordList& list, const NodeNames& names);

}  // namespace vdrdump
