#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vdrdump {

struct ExplainRequest {
    std::vector<std::string> files;  // "-": standard input
    std::optional<uint32_t> lost;
    std::string log;    // a logcat, or none
    std::string names;  // a file with names of nodes, or none
    bool isJson = false;
};

// Explains every loss that the files tell of, on standard output. False where something was damaged
// or could not be read. Throws std::runtime_error for a log or names that cannot be read.
bool explainDumps(const ExplainRequest& request);

}  // namespace vdrdump
