#pragma once

#include <string>

#include "tools/names/NodeNames.h"
#include "tools/record/FieldChoice.h"
#include "tools/record/Record.h"

namespace vdrdump {

// The chosen fields of a record in words, a line each: by its name, with its unit where one is
// known, and of an array the elements in use, nodes with their names.
std::string recordText(const Record& record, const FieldChoice& fields, const NodeNames& names);

// The same of all fields that are not 0.
std::string knownText(const Record& record, const NodeNames& names);

}  // namespace vdrdump
