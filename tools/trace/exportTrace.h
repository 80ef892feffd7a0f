#pragma once

#include <string>

#include "tools/explain/gatherLosses.h"

namespace vdrdump {

struct TraceRequest {
    LossRequest which;
    std::string names;   // a file with names of nodes, or none
    std::string output;  // "-": standard output
};

// Writes the frames around losses, or those asked for, as trace-event JSON for trace viewers. False
// where something was damaged or could not be read or written. Throws std::runtime_error where
// there is nothing to write, and for a log or names that cannot be read.
bool exportTrace(const TraceRequest& request);

}  // namespace vdrdump
