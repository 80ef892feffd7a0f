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

namespace KoOrn {

class CaptureNumCalc {
public:
    void Init() { ++openCounters; }
    uint32_t CountUsedMem() { return captureMemory; }
    void UnInit() { --openCounters; }
};

}  // namespace KoOrn

namespace zk::platform {

CaptureCounter::CaptureCounter() : mCounter(new KoOrn::CaptureNumCalc) {
    mCounter->Init();
}

CaptureCounter::~CaptureCounter() {
    delete mCounter;
}

uint32_t CaptureCounter::usedMemory() const {
    return mCounter->CountUsedMem();
}

void CaptureCounter::close() {
    mCounter->UnInit();
}

}  // namespace zk::platform
