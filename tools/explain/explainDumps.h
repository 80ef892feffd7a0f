#pragma once

#include <string>

#include "tools/explain/gatherLosses.h"

namespace vdrdump {

struct ExplainRequest {
    LossRequest which;
    std::string names;  // a file with names of nodes, or none
    bool isJson = false;
};

// Explains every loss that the files tell of, on standard output. False where something was damaged
// or could not be read. Throws std::runtime_error for a log or names that cannot be read.
bool explainDumps(const ExplainRequest& request);

}  // namespace vdrdump
