#pragma once

#include <cstdint>

namespace zk {

// Appends one record as a line of text in the columns of record level `vdrLevel` (one that
// there is not is logged and appends nothing). `srcData`: 4096 bytes that nobody changes meanwhile;
// `destData`: a buffer of 4096 bytes with a string in it. Null is logged. Any thread, no lock.
void makeFrameContent(int32_t vdrLevel, const void* srcData, void* destData);

}  // namespace zk
