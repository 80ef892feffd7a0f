#pragma once

#include "records/VDRData1.h"

namespace zk::bench {

// The line of a record as its formats define it: one bounded formatted write per step, each behind
// a measurement of what is there. Appends to the string in `line`, a buffer of 4096 bytes; false
// where it does not fit.
bool formatSteppedLine(const vdr1::VDRData1& record, char* line);

}  // namespace zk::bench
