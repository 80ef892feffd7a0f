#pragma once

#include <string>

namespace vdrdump {

// ClickHouse: a table that ndjson can be inserted into.
std::string clickhouseSchema();

}  // namespace vdrdump
