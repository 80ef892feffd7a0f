#include "platform/CaptureCounter.h"

#include <atomic>

#include "platform/host/DeviceControl.h"

namespace {

std::atomic<uint32_t> captureMemory{0};
std::atomic<int> openCounters{0};

}  // namespace

void zk::host::setCaptureMemory(uint32_t usedMemory) {
    captureMemory = usedMemory;
}

int zk::host::openCaptureCounters() {
    return openCounters;
}

namespace zk::platform {

CaptureCounter::CaptureCounter() : mCounter(nullptr) {
    ++openCounters;
}

CaptureCounter::~CaptureCounter() = default;

uint32_t CaptureCounter::usedMemory() const {
    return captureMemory;
}

void CaptureCounter::close() {
    --openCounters;
}

}  // namespace zk::platform
