#pragma once

#include <string>

namespace vdrdump {

// DuckDB: a table, and a table function each that reads csv and ndjson with its columns and types.
std::string duckdbSchema();

}  // namespace vdrdump
