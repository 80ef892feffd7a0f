#pragma once

#include <string>

#include "tools/record/FieldChoice.h"
#include "tools/record/Record.h"

namespace vdrdump {

// The chosen fields of a record in words, a line each: by its name, with its unit where one is
// known, and of an array the elements in use.
std::string recordText(const Record& record, const FieldChoice& fields);

// The same of all fields that are not 0.
std::string knownText(const Record& record);

}  // namespace vdrdump
