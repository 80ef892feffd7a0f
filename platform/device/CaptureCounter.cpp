#include "platform/CaptureCounter.h"

#include <CaptureNumCalc.h>

// To be adapted: the header's name. It must be the camera stack's own, which alone knows the size.

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
