#pragma once

#include "tools/read/DamageLog.h"
#include "tools/record/Record.h"

namespace vdrdump {

// Notes a record in which a count exceeds its array: the pipeline may set a count to anything.
void checkCounts(const Record& record, DamageLog& damage);

}  // namespace vdrdump
