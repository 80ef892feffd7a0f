#pragma once

#include <string>
#include <vector>

#include "tools/explain/Findings.h"
#include "tools/explain/FrameMap.h"

namespace vdrdump {

// Allocations that took long, as the records of `range` name them, each once.
std::vector<SlowAllocation> findAllocations(const FrameMap& frames, const FrameRange& range);

// Of load, memory, temperatures and frequencies those that moved up to frame `upTo`, each from the
// first record to the one where it was farthest from that.
std::vector<DeviceMove> findDeviceMoves(const FrameMap& frames, uint32_t upTo);

// Names of what is 0 in every record.
std::vector<std::string> notKnown(const FrameMap& frames);

}  // namespace vdrdump
