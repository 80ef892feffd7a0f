#pragma once

#include <string>
#include <vector>

#include "tools/explain/gatherLosses.h"

namespace vdrdump {

struct ReportRequest {
    LossRequest which;
    std::string names;                 // a file with names of nodes, or none
    std::string output;                // "-": standard output
    std::vector<std::string> command;  // as it was typed, for whoever wants the same again
};

// Writes a page about the losses that the files tell of, or about the frames asked for, which needs
// nothing beside it: why frames were lost, pictures of the frames around, their records. False
// where something was damaged or could not be read or written. Throws std::runtime_error where
// there is nothing to write, and for a log or names that cannot be read.
bool makeReport(const ReportRequest& request);

}  // namespace vdrdump
