#pragma once

#include "tools/DamageLog.h"
#include "tools/Record.h"

namespace vdrdump {

// Notes a record in which a count exceeds its array: the pipeline may set a count to anything.
void checkCounts(const Record& record, DamageLog& damage);

}  // namespace vdrdump
