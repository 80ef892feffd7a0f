#pragma once

#include <cstdint>

namespace vdrdump {

enum class Engine : uint8_t { DuckDb, ClickHouse, Spark, Sqlite };

// Prints the statements that declare all columns of an export with their types, and how the engine
// reads its files. False when it could not be written.
bool printSchema(Engine engine);

}  // namespace vdrdump
