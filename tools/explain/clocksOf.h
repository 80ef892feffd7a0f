#pragma once

#include "tools/explain/Findings.h"
#include "tools/explain/FrameMap.h"

namespace vdrdump {

// No dump states the clocks and units of its stamps: both are taken from how the stamps go along
// with the frames, at 1 to 1000 frames a second. `stated`: ticks per second of the one clock of all
// stamps, where the user knows it.
StampClocks clocksOf(const FrameMap& frames, std::optional<double> stated);

// When the frame was taken: its own stamp or, where no record has one, when its first node got it.
// 0: not known.
uint64_t frameStamp(const Record& record, const StampClocks& clocks);

// The distance from one stamp to another of the frames' clock, and of the nodes' clock, in
// milliseconds where the unit is known.
double frameTime(uint64_t from, uint64_t to, const StampClocks& clocks);
double nodeTime(uint64_t from, uint64_t to, const StampClocks& clocks);

}  // namespace vdrdump
