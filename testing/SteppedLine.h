#pragma once

#include "records/VDRData1.h"

namespace zk::test {

// The line of a record as its formats define it: one bounded formatted write per step, each behind
// a measurement of what is there. Appends to the string in `line`, a buffer of 4096 bytes; false
// where it does not fit, and what fits is there. Counts are trusted: where they may exceed their
// arrays, or a text have no end, appendSteppedLine() is for it.
bool formatSteppedLine(const vdr1::VDRData1& record, char* line);

// The same for any 4096 bytes, behind which there are zeros, and a string that may fill its buffer
// to the last byte.
bool appendSteppedLine(const void* block, char* line);

}  // namespace zk::test
