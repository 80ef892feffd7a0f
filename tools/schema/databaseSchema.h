#pragma once

#include <string>

#include "tools/record/FieldChoice.h"

namespace vdrdump {

// The statements that make the tables of an exported database, with the columns of `fields`.
std::string databaseTables(const FieldChoice& fields);

// Those that complete it, once all rows are in: gaps, indexes, and the views whose columns are
// there.
std::string databaseViews(const FieldChoice& fields);

// Columns in front of those of the layout.
inline constexpr int kFrameKeys = 3;    // file, session, record
inline constexpr int kElementKeys = 5;  // those, frameNumber and element

}  // namespace vdrdump
