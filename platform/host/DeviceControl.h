#pragma once

#include <cstdint>

// The small services of the Linux stand-in: thermal state, capture memory, frame numbering. Any
// thread.
namespace zk::host {

void setThermalStateWord(uint32_t word);
// While set, the thermal service hands out no observer.
void withholdThermalObserver(bool withhold);
void setCaptureMemory(uint32_t usedMemory);
// Init calls minus UnInit calls so far.
int openCaptureCounters();
void setFirstAppFrameNumber(uint32_t frameNumber);

}  // namespace zk::host
