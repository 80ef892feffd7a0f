#pragma once

#include <cstdint>

namespace KoOrn {
class CaptureNumCalc;
}

namespace zk::platform {

// Holds a counter of the memory that captures hold, whose size only the camera stack knows. One
// thread at a time.
class CaptureCounter {
public:
    // Makes the counter and calls its Init().
    CaptureCounter();
    ~CaptureCounter();
    CaptureCounter(const CaptureCounter&) = delete;
    CaptureCounter& operator=(const CaptureCounter&) = delete;

    // CountUsedMem(), as it is.
    uint32_t usedMemory() const;
    // UnInit(). To be called once.
    void close();

private:
    KoOrn::CaptureNumCalc* const mCounter;
};

}  // namespace zk::platform
