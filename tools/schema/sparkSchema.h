#pragma once

#include <string>

namespace vdrdump {

// Spark: a table, and a view each that reads csv and ndjson with its columns and types. Where the
// files are is read from the session's variable "frames".
std::string sparkSchema();

}  // namespace vdrdump
